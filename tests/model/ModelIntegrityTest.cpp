// Every name and AUID the generated tables refer to must lead somewhere: a dangling
// reference here becomes an unreadable property or a wrong MetaDictionary on write.
#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "ModelLookup.h"

namespace modeltest {
namespace {

std::string text(const aafUID_t& id) { return aafkit::auidToText(id); }

// The root object's two properties lead every weak-reference path; the root is no class of
// the model, so they are not among its properties.
const std::map<std::string, std::string> kRootProperties = {
    {"0d010301-0101-0100-060e-2b3401010102", "MetaDictionary"},
    {"0d010301-0102-0100-060e-2b3401010102", "Header"},
};

TEST(ModelIntegrity, ClassesAreUniqueAndDescendFromARoot) {
    const std::set<std::string> expectedRoots = {"InterchangeObject", "MetaDefinition", "MetaDictionary"};
    std::set<std::string> names, ids, roots;
    for (const BaselineClass& c : baselineClasses()) {
        EXPECT_TRUE(names.insert(c.name).second) << "class listed twice: " << c.name;
        EXPECT_TRUE(ids.insert(text(c.id)).second) << "class AUID listed twice: " << c.name;
        if (*c.parent == '\0') {
            roots.insert(c.name);
        } else {
            EXPECT_NE(classNamed(c.parent), nullptr) << c.name << " has parent " << c.parent;
        }
        EXPECT_TRUE(std::any_of(expectedRoots.begin(), expectedRoots.end(),
                                [&](const std::string& root) { return isSameOrSubclass(&c, root); }))
            << c.name << " does not descend from a root";
    }
    EXPECT_EQ(roots, expectedRoots);
}

TEST(ModelIntegrity, PropertiesResolveToTheirOwnerAndType) {
    std::set<std::string> ids;
    std::map<uint16_t, std::string> pids;
    for (const BaselineProperty& p : baselineProperties()) {
        std::string where = std::string(p.owner) + "." + p.name;
        EXPECT_TRUE(ids.insert(text(p.id)).second) << "property listed twice: " << where;
        EXPECT_NE(classNamed(p.owner), nullptr) << where;
        EXPECT_NE(typeWithId(p.type), nullptr) << where << " has type " << text(p.type);
        if (p.pid == 0) continue;
        EXPECT_FALSE(p.extension) << where << ": extension pids are dynamic";
        EXPECT_LT(p.pid, 0x8000) << where << ": a fixed pid in the dynamic range";
        auto [it, fresh] = pids.emplace(p.pid, where);
        EXPECT_TRUE(fresh) << where << " and " << it->second << " share a pid";
    }
}

TEST(ModelIntegrity, TypeReferencesResolve) {
    // aafISO7's 7-bit character type is named by AUID in the tables but not defined there.
    const aafUID_t undefinedIso7Character = auid("01100300-0000-0000-060e-2b3401040101");
    std::set<std::string> ids;
    for (const BaselineType& t : baselineTypes()) {
        EXPECT_TRUE(ids.insert(text(t.id)).second) << "type listed twice: " << t.name;
        switch (t.kind) {
        case TypeKind::Integer:
            EXPECT_TRUE(t.size == 1 || t.size == 2 || t.size == 4 || t.size == 8) << t.name;
            break;
        case TypeKind::FixedArray:
            EXPECT_GT(t.count, 0u) << t.name;
            [[fallthrough]];
        case TypeKind::Enum:
        case TypeKind::VariableArray:
        case TypeKind::Set:
        case TypeKind::String:
        case TypeKind::Rename:
            if (t.element != undefinedIso7Character) {
                EXPECT_NE(typeWithId(t.element), nullptr) << t.name << " element " << text(t.element);
            }
            break;
        case TypeKind::StrongRef:
        case TypeKind::WeakRef:
            EXPECT_NE(classNamed(t.target), nullptr) << t.name << " targets " << t.target;
            break;
        default:
            EXPECT_EQ(t.element, aafkit::kNullAuid) << t.name;
        }
        EXPECT_EQ(t.path != nullptr, t.kind == TypeKind::WeakRef) << t.name;
        EXPECT_EQ(t.pathLength > 0, t.kind == TypeKind::WeakRef) << t.name;
    }
}

TEST(ModelIntegrity, MembersBelongToATypeOfTheirKind) {
    const std::map<MemberKind, TypeKind> owners = {{MemberKind::Record, TypeKind::Record},
                                                   {MemberKind::Enum, TypeKind::Enum},
                                                   {MemberKind::ExtEnum, TypeKind::ExtEnum}};
    std::set<std::string> seen;
    for (const BaselineTypeMember& m : baselineTypeMembers()) {
        std::string where = std::string(m.type) + "." + m.name;
        EXPECT_TRUE(seen.insert(where).second) << "member listed twice: " << where;
        const BaselineType* owner = typeNamed(m.type);
        ASSERT_NE(owner, nullptr) << where;
        EXPECT_EQ(owner->kind, owners.at(m.kind)) << where;
        if (m.kind == MemberKind::Record) {
            EXPECT_NE(typeWithId(m.memberType), nullptr) << where;
        } else if (m.kind == MemberKind::ExtEnum) {
            EXPECT_NE(m.extValue, aafkit::kNullAuid) << where;
        }
    }
    for (const BaselineType& t : baselineTypes()) {
        if (t.kind != TypeKind::Record && t.kind != TypeKind::Enum) continue;
        auto members = findRow(baselineTypeMembers(),
                               [&](const BaselineTypeMember& m) { return t.name == std::string(m.type); });
        EXPECT_NE(members, nullptr) << t.name << " has no members";
    }
}

// Each step of a weak-reference path must be a property of the class the step before leads
// to, and the last must be the set that holds the target class's objects.
TEST(ModelIntegrity, WeakReferencePathsLeadToTheirTargets) {
    for (const BaselineType& t : baselineTypes()) {
        if (t.kind != TypeKind::WeakRef) continue;
        ASSERT_GE(t.pathLength, 2) << t.name;
        auto root = kRootProperties.find(text(t.path[0]));
        ASSERT_NE(root, kRootProperties.end()) << t.name << " starts at " << text(t.path[0]);
        const BaselineClass* at = classNamed(root->second);
        const BaselineProperty* step = nullptr;
        for (uint8_t i = 1; i < t.pathLength; ++i) {
            step = propertyWithId(t.path[i]);
            ASSERT_NE(step, nullptr) << t.name << " step " << int(i) << " " << text(t.path[i]);
            ASSERT_TRUE(isSameOrSubclass(at, step->owner)) << t.name << " step " << step->name;
            at = heldClass(*step);
        }
        ASSERT_NE(at, nullptr) << t.name << " ends at " << step->name << ", which holds no objects";
        EXPECT_EQ(found(typeWithId(step->type), step->name).kind, TypeKind::Set) << t.name;
        EXPECT_TRUE(isSameOrSubclass(classNamed(t.target), at->name)) << t.name;
    }
}

}  // namespace
}  // namespace modeltest
