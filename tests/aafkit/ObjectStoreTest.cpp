// A file's objects as the file changes: lookups that follow elements added after
// them, and every object leading back to the file that owns it.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "aafkit/Builders.h"
#include "aafkit/Dictionary.h"
#include "aafkit/File.h"
#include "aafkit/NewFileBuilder.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/meta/Ids.h"
#include "aafkit/om/Values.h"

namespace {

std::unique_ptr<aafkit::File> newFile() { return aafkit::File::createNew(aafkit::ProductIdentification()); }

aafMobID_t mobIdOf(const aafkit::Object& mob) {
    aafMobID_t id{};
    EXPECT_EQ(aafkit::getMobId(mob, PID_Mob_MobID, id), AAFRESULT_SUCCESS);
    return id;
}

aafkit::Object& addMasterMob(aafkit::File& file) {
    aafkit::Object& mob = aafkit::createMob(file, AUID_AAFMasterMob);
    aafkit::addMob(file, mob);
    return mob;
}

aafkit::Object& addDataDefinition(aafkit::File& file) {
    aafkit::Object& definition =
        aafkit::newDefinition(file, AUID_AAFDataDefinition, aafkit::newAuid(), L"Extra", L"");
    return aafkit::registerDefinition(file, PID_Dictionary_DataDefinitions, definition);
}

aafkit::Object* referenced(const aafkit::Object& holder) {
    aafkit::Object* target = nullptr;
    return aafkit::getReferenced(holder, PID_Component_DataDefinition, target) == AAFRESULT_SUCCESS ? target
                                                                                                     : nullptr;
}

TEST(ObjectStore, MobLookupFindsMobsAddedAfterEarlierLookups) {
    auto file = newFile();
    aafkit::Object& first = addMasterMob(*file);
    EXPECT_EQ(file->lookupMob(mobIdOf(first)), &first);
    aafkit::Object& second = addMasterMob(*file);
    EXPECT_EQ(file->lookupMob(mobIdOf(second)), &second);
    EXPECT_EQ(file->lookupMob(mobIdOf(first)), &first);
}

TEST(ObjectStore, WeakReferencesResolveToDefinitionsAddedAfterEarlierResolutions) {
    auto file = newFile();
    aafkit::Object* picture = nullptr;
    ASSERT_EQ(aafkit::lookupDefinition(*file, PID_Dictionary_DataDefinitions, kAAFDataDef_Picture, picture),
              AAFRESULT_SUCCESS);
    aafkit::Object& before = *file->create(AUID_AAFFiller);
    ASSERT_EQ(aafkit::setReference(before, PID_Component_DataDefinition, *picture), AAFRESULT_SUCCESS);
    EXPECT_EQ(referenced(before), picture);  // indexes the whole set as it is now

    aafkit::Object& extra = addDataDefinition(*file);
    aafkit::Object& after = *file->create(AUID_AAFFiller);
    ASSERT_EQ(aafkit::setReference(after, PID_Component_DataDefinition, extra), AAFRESULT_SUCCESS);
    EXPECT_EQ(referenced(after), &extra);
    EXPECT_EQ(referenced(before), picture);
}

TEST(ObjectStore, EveryObjectLeadsToItsOwnFile) {
    auto one = newFile();
    auto other = newFile();
    EXPECT_EQ(&aafkit::fileOf(addMasterMob(*one)), one.get());
    EXPECT_EQ(&aafkit::fileOf(*other->create(AUID_AAFSequence)), other.get());
    EXPECT_EQ(&aafkit::fileOf(*other->header()), other.get());

    std::vector<uint8_t> bytes;
    ASSERT_TRUE(one->saveToBytes(bytes).ok());
    std::unique_ptr<aafkit::File> loaded;
    ASSERT_TRUE(aafkit::File::load(std::move(bytes), loaded).ok());
    for (size_t i = 0; i < loaded->objectCount(); ++i)
        ASSERT_EQ(&aafkit::fileOf(loaded->objectAt(i)), loaded.get()) << "object " << i;
}

}  // namespace
