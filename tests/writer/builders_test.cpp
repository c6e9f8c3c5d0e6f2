#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "aafkit/Builders.h"
#include "aafkit/Checked.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/Values.h"
#include "aafkit/meta/Ids.h"

namespace {

using aafkit::Object;

AAFRESULT appended(Object& sequence, Object& component) {
    try {
        aafkit::appendComponent(sequence, component);
        return AAFRESULT_SUCCESS;
    } catch (const aafkit::ResultException& failure) {
        return failure.result();
    }
}

int64_t lengthOf(const Object& component) {
    int64_t length = -1;
    aafkit::getInt64(component, PID_Component_Length, length);
    return length;
}

class Builders : public ::testing::Test {
protected:
    Object& filler(int64_t length) { return aafkit::createFiller(*file_, kAAFDataDef_Picture, length); }
    Object& transition(int64_t length) {
        Object& group = aafkit::createObject(*file_, AUID_AAFOperationGroup);
        return aafkit::createTransition(*file_, kAAFDataDef_Picture, length, 0, group);
    }

    std::unique_ptr<aafkit::File> file_ = aafkit::File::createNew(aafkit::ProductIdentification());
    Object& sequence_ = aafkit::createSequence(*file_, kAAFDataDef_Picture);
};

TEST_F(Builders, AppendingKeepsTheSequenceLength) {
    ASSERT_EQ(appended(sequence_, filler(10)), AAFRESULT_SUCCESS);
    EXPECT_EQ(lengthOf(sequence_), 10);
    ASSERT_EQ(appended(sequence_, transition(3)), AAFRESULT_SUCCESS);
    EXPECT_EQ(lengthOf(sequence_), 7);
    ASSERT_EQ(appended(sequence_, filler(7)), AAFRESULT_SUCCESS);
    EXPECT_EQ(lengthOf(sequence_), 14);
    aafkit::setInt64(sequence_, PID_Component_Length, 100);  // an explicit length is the base
    ASSERT_EQ(appended(sequence_, filler(5)), AAFRESULT_SUCCESS);
    EXPECT_EQ(lengthOf(sequence_), 105);
}

TEST_F(Builders, AppendingRefusesWhatASequenceCannotHold) {
    EXPECT_EQ(appended(sequence_, transition(3)), AAFRESULT_LEADING_TRAN);
    Object& first = filler(5);
    ASSERT_EQ(appended(sequence_, first), AAFRESULT_SUCCESS);
    EXPECT_EQ(appended(sequence_, first), AAFRESULT_OBJECT_ALREADY_ATTACHED);
    EXPECT_EQ(appended(sequence_, transition(6)), AAFRESULT_INSUFF_TRAN_MATERIAL);
    ASSERT_EQ(appended(sequence_, transition(4)), AAFRESULT_SUCCESS);
    EXPECT_EQ(appended(sequence_, transition(1)), AAFRESULT_ADJACENT_TRAN);
    EXPECT_EQ(appended(sequence_, filler(3)), AAFRESULT_INSUFF_TRAN_MATERIAL);
    EXPECT_EQ(appended(sequence_, aafkit::createFiller(*file_, kAAFDataDef_Sound, 9)), AAFRESULT_INVALID_DATADEF);
    Object& noLength = aafkit::createObject(*file_, AUID_AAFFiller);
    aafkit::setDataDefinition(noLength, kAAFDataDef_Picture);
    EXPECT_EQ(appended(sequence_, noLength), AAFRESULT_PROP_NOT_PRESENT);
    const std::vector<Object*>* components = nullptr;
    ASSERT_EQ(aafkit::getObjects(sequence_, PID_Sequence_Components, components), 0);
    EXPECT_EQ(components->size(), 2u);
    EXPECT_EQ(lengthOf(sequence_), 1);
}

TEST_F(Builders, EventsStayInOrderAndAmongThemselves) {
    Object& markers = aafkit::createSequence(*file_, kAAFDataDef_DescriptiveMetadata);
    auto marker = [&](int64_t position) -> Object& {
        Object& event = aafkit::createDescriptiveMarker(*file_);
        aafkit::setDataDefinition(event, kAAFDataDef_DescriptiveMetadata);
        aafkit::setInt64(event, PID_Event_Position, position);
        return event;
    };
    ASSERT_EQ(appended(markers, marker(10)), AAFRESULT_SUCCESS);
    ASSERT_EQ(appended(markers, marker(10)), AAFRESULT_SUCCESS);
    EXPECT_EQ(appended(markers, marker(9)), AAFRESULT_EVENT_SEMANTICS);
    EXPECT_EQ(lengthOf(markers), -1);  // events without length leave the sequence without one
    Object& comment = aafkit::createObject(*file_, AUID_AAFCommentMarker);
    aafkit::setDataDefinition(comment, kAAFDataDef_DescriptiveMetadata);
    aafkit::setInt64(comment, PID_Event_Position, 20);
    EXPECT_EQ(appended(markers, comment), AAFRESULT_EVENT_SEMANTICS);
    EXPECT_EQ(appended(sequence_, marker(30)), AAFRESULT_INVALID_DATADEF);
}

TEST_F(Builders, NewMobsCarryIdTimesAndSlots) {
    Object& mob = aafkit::createMob(*file_, AUID_AAFMasterMob);
    aafMobID_t first, second;
    ASSERT_EQ(aafkit::getMobId(mob, PID_Mob_MobID, first), AAFRESULT_SUCCESS);
    ASSERT_EQ(aafkit::getMobId(aafkit::createMob(*file_, AUID_AAFMasterMob), PID_Mob_MobID, second), 0);
    EXPECT_TRUE(first != second);
    const uint8_t label[13] = {0x06, 0x0a, 0x2b, 0x34, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x0f, 0x00, 0x13};
    EXPECT_EQ(0, std::memcmp(&first, label, 13));
    EXPECT_NE(mob.find(PID_Mob_CreationTime), nullptr);
    EXPECT_NE(mob.find(PID_Mob_LastModified), nullptr);
    EXPECT_NE(mob.find(PID_Mob_Slots), nullptr);
    Object& timecode = aafkit::createTimecode(*file_, 10, {0, 0, 25});
    const aafkit::Property* dataDef = timecode.find(PID_Component_DataDefinition);
    ASSERT_NE(dataDef, nullptr);
    uint8_t legacy[16];
    aafkit::encodeAuid(kAAFDataDef_LegacyTimecode, legacy);
    EXPECT_EQ(dataDef->weak.at(0).key, std::vector<uint8_t>(legacy, legacy + 16));
    EXPECT_THROW(aafkit::createTimecode(*file_, 10, {0, 2, 25}), aafkit::ResultException);
}

}  // namespace
