// Files made from scratch: what a new file holds, a small composition that
// survives save and load, and a large generated file.
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "aafkit/File.h"
#include "aafkit/NewFileBuilder.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"
#include "support/TreeCheck.h"
#include "support/TreeCompare.h"

namespace {

aafkit::ProductIdentification identification() {
    aafkit::ProductIdentification id;
    id.companyName = L"Corvane";
    id.productName = L"Staveline";
    id.productVersionString = L"12";
    id.platform = L"Windows";
    return id;
}

std::unique_ptr<aafkit::File> saveAndLoad(aafkit::File& file) {
    std::vector<uint8_t> bytes;
    aafkit::Status saved = file.saveToBytes(bytes);
    EXPECT_TRUE(saved.ok()) << saved.message();
    std::unique_ptr<aafkit::File> loaded;
    aafkit::Status status = aafkit::File::load(std::move(bytes), loaded);
    EXPECT_TRUE(status.ok()) << status.message();
    return loaded;
}

aafMobID_t mobId(uint32_t n) {
    aafMobID_t id{};
    id.length = 0x13;
    id.material.Data1 = n;
    return id;
}

aafkit::Object& dataDefinition(aafkit::File& file, const aafUID_t& id) {
    const std::vector<aafkit::Object*>* defs = nullptr;
    aafkit::getObjects(*file.dictionary(), PID_Dictionary_DataDefinitions, defs);
    for (aafkit::Object* d : *defs) {
        aafUID_t key;
        aafkit::getAuid(*d, PID_DefinitionObject_Identification, key);
        if (key == id) return *d;
    }
    throw std::runtime_error("no data definition");
}

aafkit::Object& sourceClip(aafkit::File& file, int64_t length, const aafMobID_t& source) {
    aafkit::Object& clip = *file.create(AUID_AAFSourceClip);
    aafkit::setReference(clip, PID_Component_DataDefinition, dataDefinition(file, kAAFDataDef_Picture));
    aafkit::setInt64(clip, PID_Component_Length, length);
    aafkit::setMobId(clip, PID_SourceReference_SourceID, source);
    aafkit::setUInt32(clip, PID_SourceReference_SourceMobSlotID, 1);
    aafkit::setInt64(clip, PID_SourceClip_StartTime, 0);
    return clip;
}

aafkit::Object& addMob(aafkit::File& file, const aafUID_t& classId, uint32_t n, const std::wstring& name) {
    aafkit::Object& mob = *file.create(classId);
    aafkit::setMobId(mob, PID_Mob_MobID, mobId(n));
    aafkit::setString(mob, PID_Mob_Name, name);
    mob.ensure(PID_Mob_Slots, aafkit::StoredForm::StrongRefVector);
    EXPECT_EQ(aafkit::addToSet(*file.contentStorage(), PID_ContentStorage_Mobs, mob), AAFRESULT_SUCCESS);
    return mob;
}

void addSlot(aafkit::File& file, aafkit::Object& mob, uint32_t slotId, aafkit::Object& segment) {
    aafkit::Object& slot = *file.create(AUID_AAFTimelineMobSlot);
    aafkit::setUInt32(slot, PID_MobSlot_SlotID, slotId);
    aafkit::setRational(slot, PID_TimelineMobSlot_EditRate, {25, 1});
    aafkit::setInt64(slot, PID_TimelineMobSlot_Origin, 0);
    aafkit::setObject(slot, PID_MobSlot_Segment, segment);
    aafkit::appendObject(mob, PID_Mob_Slots, slot);
}

TEST(NewFile, HoldsHeaderIdentificationAndBuiltinDefinitions) {
    auto file = aafkit::File::createNew(identification());
    auto loaded = saveAndLoad(*file);
    ASSERT_TRUE(loaded);
    const std::vector<aafkit::Object*>* list = nullptr;
    ASSERT_EQ(aafkit::getObjects(*loaded->header(), PID_Header_IdentificationList, list), AAFRESULT_SUCCESS);
    ASSERT_EQ(list->size(), 1u);
    std::wstring text;
    aafkit::getString(*list->back(), PID_Identification_Platform, text);
    EXPECT_EQ(text, L"Windows");
    aafkit::getString(*list->back(), PID_Identification_CompanyName, text);
    EXPECT_EQ(text, L"Corvane");
    const std::vector<aafkit::Object*>* defs = nullptr;
    ASSERT_EQ(aafkit::getObjects(*loaded->dictionary(), PID_Dictionary_DataDefinitions, defs), AAFRESULT_SUCCESS);
    EXPECT_EQ(defs->size(), 11u);
    ASSERT_EQ(aafkit::getObjects(*loaded->dictionary(), PID_Dictionary_ContainerDefinitions, defs), AAFRESULT_SUCCESS);
    EXPECT_EQ(defs->size(), 93u);
    const std::vector<aafkit::Object*>* mobs = nullptr;
    ASSERT_EQ(aafkit::getObjects(*loaded->contentStorage(), PID_ContentStorage_Mobs, mobs), AAFRESULT_SUCCESS);
    EXPECT_TRUE(mobs->empty());
    uint32_t version = 0;
    EXPECT_EQ(aafkit::getUInt32(*loaded->header(), PID_Header_ObjectModelVersion, version), AAFRESULT_SUCCESS);
    EXPECT_EQ(version, 1u);
    EXPECT_EQ(aafkit::getString(*list->back(), PID_Identification_Platform + 0x100, text), AAFRESULT_PROP_NOT_PRESENT);
}

TEST(NewFile, MasterAndCompositionMobsRoundTrip) {
    auto file = aafkit::File::createNew(identification());
    aafkit::Object& master = addMob(*file, AUID_AAFMasterMob, 2, L"clip \U0001F3AC");
    addSlot(*file, master, 1, sourceClip(*file, 100, mobId(9)));
    aafkit::Object& composition = addMob(*file, AUID_AAFCompositionMob, 1, L"Sequence");
    aafkit::Object& sequence = *file->create(AUID_AAFSequence);
    aafkit::setReference(sequence, PID_Component_DataDefinition, dataDefinition(*file, kAAFDataDef_Picture));
    aafkit::appendObject(sequence, PID_Sequence_Components, sourceClip(*file, 50, mobId(2)));
    addSlot(*file, composition, 1, sequence);

    auto loaded = saveAndLoad(*file);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(testsupport::firstDifference(*file, *loaded), "");
    const std::vector<std::string> problems = testsupport::unresolved(*loaded);
    EXPECT_TRUE(problems.empty()) << problems.size() << " unresolved, first: " << problems.front();
    // Mobs enumerate by key: MobID material 1 before 2.
    const std::vector<aafkit::Object*>* mobs = nullptr;
    aafkit::getObjects(*loaded->contentStorage(), PID_ContentStorage_Mobs, mobs);
    ASSERT_EQ(mobs->size(), 2u);
    EXPECT_TRUE((*mobs)[0]->isA(AUID_AAFCompositionMob));
    EXPECT_TRUE((*mobs)[1]->isA(AUID_AAFMob));
    std::wstring name;
    aafkit::getString(*loaded->lookupMob(mobId(2)), PID_Mob_Name, name);
    EXPECT_EQ(name, L"clip \U0001F3AC");
    aafkit::Object* slot = nullptr;
    aafkit::Object* segment = nullptr;
    slot = (*loaded->lookupMob(mobId(2))->find(PID_Mob_Slots)).objects().at(0);
    ASSERT_EQ(aafkit::getObject(*slot, PID_MobSlot_Segment, segment), AAFRESULT_SUCCESS);
    aafkit::Object* definition = nullptr;
    ASSERT_EQ(aafkit::getReferenced(*segment, PID_Component_DataDefinition, definition), AAFRESULT_SUCCESS);
    aafUID_t id;
    aafkit::getAuid(*definition, PID_DefinitionObject_Identification, id);
    EXPECT_TRUE(id == kAAFDataDef_Picture);
}

TEST(NewFile, ExtensionPropertyGetsDynamicPidAndSurvives) {
    auto file = aafkit::File::createNew(identification());
    const aafkit::meta::ClassDef& component = *file->model().findClass(AUID_AAFComponent);
    const aafUID_t myProperty = {0x11111111, 0x2222, 0x3333, {1, 2, 3, 4, 5, 6, 7, 8}};
    const aafkit::meta::PropertyDef* p =
        file->model().declareProperty(component, myProperty, "MyProperty", kAAFTypeID_Int32, true);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->pid, 0xffff);
    aafkit::Object& master = addMob(*file, AUID_AAFMasterMob, 3, L"m");
    aafkit::Object& clip = sourceClip(*file, 10, mobId(4));
    aafkit::setInt32(clip, p->pid, -7);
    addSlot(*file, master, 1, clip);
    auto loaded = saveAndLoad(*file);
    ASSERT_TRUE(loaded);
    const aafkit::meta::PropertyDef* read = loaded->model().findPropertyById(myProperty);
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->pid, 0xffff);
    EXPECT_EQ(read->name, "MyProperty");
    EXPECT_EQ(testsupport::firstDifference(*file, *loaded), "");
}

TEST(NewFile, TwoHundredThousandObjectsRoundTrip) {
    auto file = aafkit::File::createNew(identification());
    aafkit::Object& composition = addMob(*file, AUID_AAFCompositionMob, 1, L"big");
    for (int track = 0; track < 10; ++track) {
        aafkit::Object& sequence = *file->create(AUID_AAFSequence);
        aafkit::setReference(sequence, PID_Component_DataDefinition, dataDefinition(*file, kAAFDataDef_Picture));
        for (int i = 0; i < 20000; ++i) aafkit::appendObject(sequence, PID_Sequence_Components, sourceClip(*file, i, mobId(1)));
        addSlot(*file, composition, track + 1, sequence);
    }
    auto loaded = saveAndLoad(*file);
    ASSERT_TRUE(loaded);
    EXPECT_GT(loaded->objectCount(), 200000u);
    EXPECT_EQ(testsupport::firstDifference(*file, *loaded), "");
}

}  // namespace

namespace {

// A chain of sequences nested `depth` deep under one mob slot.
std::unique_ptr<aafkit::File> nestedFile(int depth) {
    auto file = aafkit::File::createNew(identification());
    aafkit::Object& mob = addMob(*file, AUID_AAFCompositionMob, 1, L"deep");
    aafkit::Object* outer = file->create(AUID_AAFSequence);
    addSlot(*file, mob, 1, *outer);
    for (int i = 0; i < depth; ++i) {
        aafkit::Object* inner = file->create(AUID_AAFSequence);
        aafkit::appendObject(*outer, PID_Sequence_Components, *inner);
        outer = inner;
    }
    return file;
}

TEST(NewFile, DeepNestingSavesAndLoadsWithinTheLimit) {
    std::vector<uint8_t> bytes;
    ASSERT_TRUE(nestedFile(900)->saveToBytes(bytes).ok());
    std::unique_ptr<aafkit::File> loaded;
    EXPECT_TRUE(aafkit::File::load(bytes, loaded).ok());
    // Far deeper than any editor writes: saved without recursion, refused on load with a reason.
    ASSERT_TRUE(nestedFile(20000)->saveToBytes(bytes).ok());
    aafkit::Status status = aafkit::File::load(std::move(bytes), loaded);
    EXPECT_NE(status.message().find("nested too deeply"), std::string::npos) << status.message();
}

// Writers on several threads draw identifiers at once: each is a version-4 random
// identifier and none repeats, within a thread or across them.
TEST(NewFile, IdentifiersDrawnOnManyThreadsAreDistinct) {
    constexpr int kThreads = 4, kEach = 2000;
    std::vector<std::vector<aafUID_t>> drawn(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&drawn, t] {
            for (int i = 0; i < kEach; ++i) drawn[t].push_back(aafkit::newAuid());
        });
    for (std::thread& thread : threads) thread.join();
    std::set<std::string> distinct;
    for (const std::vector<aafUID_t>& ids : drawn)
        for (const aafUID_t& id : ids) {
            EXPECT_EQ(id.Data3 >> 12, 4);
            EXPECT_EQ(id.Data4[0] & 0xc0, 0x80);
            distinct.insert(std::string(reinterpret_cast<const char*>(&id), sizeof id));
        }
    EXPECT_EQ(distinct.size(), size_t(kThreads * kEach));
}

}  // namespace
