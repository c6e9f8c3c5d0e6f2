#include <gtest/gtest.h>

#include <memory>

#include "aafkit/Builders.h"
#include "aafkit/Checked.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"

namespace {

using aafkit::Object;

class Builders : public ::testing::Test {
protected:
    AAFRESULT append(Object& component, Object* sequence = nullptr) {
        try {
            aafkit::appendComponent(sequence ? *sequence : sequence_, component);
            return AAFRESULT_SUCCESS;
        } catch (const aafkit::ResultException& failure) {
            return failure.result();
        }
    }
    int64_t length(const Object& component) {
        int64_t out = -1;
        aafkit::getInt64(component, PID_Component_Length, out);
        return out;
    }
    Object& filler(int64_t length, const aafUID_t& dataDef = kAAFDataDef_Picture) {
        return aafkit::createFiller(*file_, dataDef, length);
    }
    Object& transition(int64_t length) {
        return aafkit::createTransition(*file_, kAAFDataDef_Picture, length, 0,
                                        aafkit::createObject(*file_, AUID_AAFOperationGroup));
    }
    Object& marker(int64_t position, bool comment = false) {
        Object& event = comment ? aafkit::createObject(*file_, AUID_AAFCommentMarker)
                                : aafkit::createDescriptiveMarker(*file_);
        aafkit::setDataDefinition(event, kAAFDataDef_DescriptiveMetadata);
        aafkit::setInt64(event, PID_Event_Position, position);
        return event;
    }

    std::unique_ptr<aafkit::File> file_ = aafkit::File::createNew(aafkit::ProductIdentification());
    Object& sequence_ = aafkit::createSequence(*file_, kAAFDataDef_Picture);
};

TEST_F(Builders, AppendingRefusesWhatASequenceCannotHold) {
    EXPECT_EQ(append(transition(3)), AAFRESULT_LEADING_TRAN);
    Object& first = filler(5);
    ASSERT_EQ(append(first), AAFRESULT_SUCCESS);
    EXPECT_EQ(append(first), AAFRESULT_OBJECT_ALREADY_ATTACHED);
    EXPECT_EQ(append(transition(6)), AAFRESULT_INSUFF_TRAN_MATERIAL);
    ASSERT_EQ(append(transition(4)), AAFRESULT_SUCCESS);
    EXPECT_EQ(append(transition(1)), AAFRESULT_ADJACENT_TRAN);
    EXPECT_EQ(append(filler(3)), AAFRESULT_INSUFF_TRAN_MATERIAL);
    EXPECT_EQ(append(filler(9, kAAFDataDef_Sound)), AAFRESULT_INVALID_DATADEF);
    Object& noLength = aafkit::createObject(*file_, AUID_AAFFiller);
    aafkit::setDataDefinition(noLength, kAAFDataDef_Picture);
    EXPECT_EQ(append(noLength), AAFRESULT_PROP_NOT_PRESENT);
    const std::vector<Object*>* components = nullptr;
    ASSERT_EQ(aafkit::getObjects(sequence_, PID_Sequence_Components, components), 0);
    EXPECT_EQ(components->size(), 2u);
    EXPECT_EQ(length(sequence_), 1);
    EXPECT_THROW(aafkit::createTimecode(*file_, 10, {0, 2, 25}), aafkit::ResultException);  // drop is 0 or 1
}

TEST_F(Builders, EventsStayInOrderAndAmongThemselves) {
    Object& markers = aafkit::createSequence(*file_, kAAFDataDef_DescriptiveMetadata);
    ASSERT_EQ(append(marker(10), &markers), AAFRESULT_SUCCESS);
    ASSERT_EQ(append(marker(10), &markers), AAFRESULT_SUCCESS);
    EXPECT_EQ(append(marker(9), &markers), AAFRESULT_EVENT_SEMANTICS);
    EXPECT_EQ(length(markers), -1);  // events without length leave the sequence without one
    EXPECT_EQ(append(marker(20, true), &markers), AAFRESULT_EVENT_SEMANTICS);
    EXPECT_EQ(append(marker(30)), AAFRESULT_INVALID_DATADEF);
}

// Callers pass lengths and positions unchecked: sums stop at the 64-bit limits.
TEST_F(Builders, SequenceLengthsStopAtTheLimitsInsteadOfWrapping) {
    ASSERT_EQ(append(filler(INT64_MAX)), AAFRESULT_SUCCESS);
    ASSERT_EQ(append(filler(INT64_MAX)), AAFRESULT_SUCCESS);
    EXPECT_EQ(length(sequence_), INT64_MAX);
    Object& negative = aafkit::createSequence(*file_, kAAFDataDef_Picture);
    ASSERT_EQ(append(filler(INT64_MIN), &negative), AAFRESULT_SUCCESS);
    ASSERT_EQ(append(filler(-1), &negative), AAFRESULT_SUCCESS);
    EXPECT_EQ(length(negative), INT64_MIN);

    Object& markers = aafkit::createSequence(*file_, kAAFDataDef_DescriptiveMetadata);
    Object& first = marker(INT64_MIN);
    aafkit::setInt64(first, PID_Component_Length, 0);
    Object& last = marker(INT64_MAX);
    aafkit::setInt64(last, PID_Component_Length, 5);
    ASSERT_EQ(append(first, &markers), AAFRESULT_SUCCESS);
    ASSERT_EQ(append(last, &markers), AAFRESULT_SUCCESS);
    EXPECT_EQ(length(markers), INT64_MAX);  // from the first position to past the last
}

}  // namespace
