// Known facts of the object model that the reader and writer lean on; each would break a
// real file if the generator mapped a column, an AUID or a row wrongly.
#include <string>
#include <vector>

#include "ModelLookup.h"

namespace modeltest {
namespace {

const BaselineClass& theClass(const std::string& name) { return found(classNamed(name), name); }
const BaselineType& theType(const std::string& name) { return found(typeNamed(name), name); }

const BaselineProperty& theProperty(const std::string& owner, const std::string& name) {
    return found(propertyNamed(owner, name), owner + "." + name);
}

const BaselineTypeMember& theMember(const std::string& type, const std::string& name) {
    return found(findRow(baselineTypeMembers(),
                         [&](const BaselineTypeMember& m) { return type == m.type && name == m.name; }),
                 type + "." + name);
}

std::vector<std::string> memberNames(const std::string& type) {
    std::vector<std::string> names;
    for (const BaselineTypeMember& m : baselineTypeMembers())
        if (type == m.type) names.push_back(m.name);
    return names;
}

TEST(ModelFacts, AuidsKeepTheirTextForm) {
    EXPECT_EQ(aafkit::auidToText(theClass("Header").id), "0d010101-0101-2f00-060e-2b3402060101");
    const aafUID_t picture = {0x01030202, 0x0100, 0x0000, {0x06, 0x0e, 0x2b, 0x34, 0x04, 0x01, 0x01, 0x01}};
    const BaselineDefinition& definition = found(
        findRow(baselineDefinitions(),
                [](const BaselineDefinition& d) { return d.name == std::string("DataDef_Picture"); }),
        "DataDef_Picture");
    EXPECT_EQ(definition.id, picture);
    EXPECT_EQ(definition.group, DefinitionGroup::DataDefs);
    EXPECT_STREQ(definition.description, "Picture data");
}

TEST(ModelFacts, ClassesAndProperties) {
    EXPECT_STREQ(theClass("SourceClip").parent, "SourceReference");
    EXPECT_TRUE(theClass("SourceClip").concrete);
    EXPECT_FALSE(theClass("Mob").concrete);

    const BaselineProperty& identifications = found(
        findRow(baselineProperties(),
                [](const BaselineProperty& p) { return p.owner == std::string("Header") && p.pid == 0x3b06; }),
        "Header pid 3b06");
    EXPECT_STREQ(identifications.name, "IdentificationList");
    EXPECT_FALSE(identifications.optional);
    EXPECT_STREQ(found(heldClass(identifications), "IdentificationList objects").name, "Identification");

    const BaselineProperty& mobKey = found(
        findRow(baselineProperties(),
                [](const BaselineProperty& p) { return p.owner == std::string("Mob") && p.uniqueId; }),
        "Mob's unique id");
    EXPECT_STREQ(mobKey.name, "MobID");
    EXPECT_EQ(mobKey.pid, 0x4401);
    EXPECT_EQ(mobKey.type, theType("MobIDType").id);
    EXPECT_TRUE(theProperty("InterchangeObject", "Generation").optional);
}

TEST(ModelFacts, TypeDetails) {
    EXPECT_EQ(theType("aafInt32").kind, TypeKind::Integer);
    EXPECT_EQ(theType("aafInt32").size, 4);
    EXPECT_TRUE(theType("aafInt32").isSigned);
    EXPECT_EQ(theType("aafUInt16").size, 2);
    EXPECT_FALSE(theType("aafUInt16").isSigned);

    EXPECT_EQ(theType("aafUUID").kind, TypeKind::FixedArray);
    EXPECT_EQ(theType("aafUUID").count, 16u);
    EXPECT_EQ(theType("aafUUID").element, theType("aafUInt8").id);
    EXPECT_EQ(theType("aafPositionType").kind, TypeKind::Rename);
    EXPECT_EQ(theType("aafPositionType").element, theType("aafInt64").id);
    EXPECT_EQ(theType("aafString").element, theType("aafCharacter").id);
    EXPECT_EQ(theType("UsageType").kind, TypeKind::ExtEnum);
    EXPECT_EQ(theType("kAAFTypeID_MobStrongReferenceSet").element,
              theType("kAAFTypeID_MobStrongReference").id);
}

TEST(ModelFacts, TypeMembers) {
    EXPECT_EQ(memberNames("Rational"), (std::vector<std::string>{"Numerator", "Denominator"}));
    EXPECT_EQ(theMember("Rational", "Numerator").memberType, theType("aafInt32").id);
    EXPECT_EQ(theMember("Rational", "Denominator").memberType, theType("aafInt32").id);
    EXPECT_EQ(memberNames("TimeStamp"), (std::vector<std::string>{"date", "time"}));
    EXPECT_EQ(theMember("TimeStamp", "date").memberType, theType("DateStruct").id);

    EXPECT_EQ(theMember("RGBAComponentKind", "CompRed").value, 82);
    EXPECT_EQ(theMember("ColorSitingType", "UnknownSiting").value, 255);
    EXPECT_EQ(theMember("UsageType", "Usage_TopLevel").extValue,
              auid("0d010102-0101-0700-060e-2b3404010101"));
}

// The path holds the Root's Header property (not a property of any model class), then
// Header's Dictionary and Dictionary's DataDefinitions.
TEST(ModelFacts, DataDefinitionWeakReferencePath) {
    const BaselineType& ref = theType("DataDefinitionWeakReference");
    EXPECT_EQ(ref.kind, TypeKind::WeakRef);
    EXPECT_STREQ(ref.target, "DataDefinition");
    ASSERT_EQ(ref.pathLength, 3);
    EXPECT_EQ(ref.path[0], auid("0d010301-0102-0100-060e-2b3401010102"));
    EXPECT_EQ(propertyWithId(ref.path[0]), nullptr);
    const BaselineProperty& dictionary = found(propertyWithId(ref.path[1]), "path step 1");
    const BaselineProperty& dataDefinitions = found(propertyWithId(ref.path[2]), "path step 2");
    EXPECT_STREQ(dictionary.owner, "Header");
    EXPECT_STREQ(dictionary.name, "Dictionary");
    EXPECT_EQ(dictionary.pid, 0x3b04);
    EXPECT_STREQ(dataDefinitions.owner, "Dictionary");
    EXPECT_STREQ(dataDefinitions.name, "DataDefinitions");
    EXPECT_EQ(dataDefinitions.pid, 0x2605);
}

// The Avid tables repeat baseline rows; those stay baseline and appear once, while what
// only Avid files carry is marked and has no fixed pid.
TEST(ModelFacts, ExtensionRows) {
    EXPECT_FALSE(theClass("CommentMarker").extension);
    EXPECT_TRUE(theClass("Avid MC Mob Reference").extension);
    EXPECT_FALSE(theType("ColorSitingType").extension);
    EXPECT_TRUE(theType("AvidPannerKindType").extension);
    EXPECT_FALSE(theMember("ColorSitingType", "LineAlternating").extension);
    EXPECT_TRUE(theMember("AvidPannerKindType", "AvidPannerKind_Stereo").extension);
    EXPECT_TRUE(theMember("ColorPrimariesType", "ColorPrimaries_SMPTE_RP431").extension);

    EXPECT_TRUE(theProperty("Header", "ProjectName").extension);
    EXPECT_EQ(theProperty("Header", "ProjectName").pid, 0);
    // A later baseline property: its pid is dynamic too, yet it is no extension.
    EXPECT_FALSE(theProperty("MPEGVideoDescriptor", "SingleSequence").extension);
    EXPECT_EQ(theProperty("MPEGVideoDescriptor", "SingleSequence").pid, 0);
}

}  // namespace
}  // namespace modeltest
