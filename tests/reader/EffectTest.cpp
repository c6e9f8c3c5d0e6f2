// Operation groups: effect kinds and inputs, parameter values by byte size, the order of
// key-frame times and values, and the speed change's in-point fix-up.
#include "AafParser/composition.h"
#include "aafbridge/aaf_writer.h"
#include "AafParser/reader_ids.h"
#include "InMemoryFile.h"

namespace {

using readertest::kMaster;
using readertest::kUnknownOperation;
using readertest::Object;

class Effects : public readertest::Composed {
protected:
    void rational(Object& group, const aafUID_t& id, aafRational_t value) {
        s.constant(group, id, kAAFTypeID_Rational, &value, sizeof value);
    }
};

TEST_F(Effects, EffectFollowsItsInputAndNamesItByOperation) {
    Object& gain = s.group(kAAFOperationDef_MonoAudioGain, 30);
    s.input(gain, s.clip(kMaster, 1, 30, 5));
    Object& outer = s.group(kUnknownOperation, 30);
    s.input(outer, gain);
    compose(outer);
    EXPECT_EQ(s.parse(), "");
    ASSERT_EQ(GetNumEvents(0, c()), 3u) << "clip, inner effect, outer effect";
    EXPECT_EQ(GetEffectType(0, 1, c()), 0u);
    EXPECT_EQ(GetEffectType(0, 2, c()), 5u);
    EXPECT_EQ(GetEffectNumInputs(0, 2, c()), 1u);
    wchar_t id[40];
    ASSERT_EQ(GetEffectElementId(0, 1, 0, id, 39, c()), 0);
    EXPECT_STREQ(id, L"{00000064000000000000000000000000}");
    ASSERT_EQ(GetEffectElementId(0, 2, 0, id, 39, c()), 0) << "the inner effect is the outer one's input";
    EXPECT_STREQ(id, L"");
    EXPECT_EQ(GetEffectElementId(0, 2, 1, id, 39, c()), AAFRESULT(0x80000003u));
}

TEST_F(Effects, GroupWhoseDefinitionIsMissingIsDroppedWithItsInputs) {
    Object& gain = s.group(kAAFOperationDef_MonoAudioGain, 30);
    s.input(gain, s.clip(kMaster, 1, 30, 5));
    Object& sequence = aafkit::createSequence(s.file(), kAAFDataDef_Sound);
    aafkit::appendComponent(sequence, s.filler(4));
    aafkit::appendComponent(sequence, gain);
    compose(sequence);
    s.file().dictionary()->find(PID_Dictionary_OperationDefinitions)->objects.clear();
    s.file().setsChanged();
    EXPECT_EQ(readertest::lines(s.parse()).size(), 1u);
    ASSERT_EQ(GetNumEvents(0, c()), 1u) << "only the filler before the group";
    EXPECT_EQ(IsEventFiller(0, 0, c()), 1u);
}

TEST_F(Effects, PanAndSuperimposeCodes) {
    Object& sequence = aafkit::createSequence(s.file(), kAAFDataDef_Sound);
    aafkit::appendComponent(sequence, s.group(kAAFOperationDef_MonoAudioPan, 5));
    aafkit::appendComponent(sequence, s.group(kAAFOperationDef_Superimpose, 5));
    compose(sequence);
    s.parse();
    ASSERT_EQ(GetNumEvents(0, c()), 2u) << "groups without inputs still make effects";
    EXPECT_EQ(GetEffectType(0, 0, c()), 1u);
    EXPECT_EQ(GetEffectType(0, 1, c()), 2u);
}

TEST_F(Effects, ConstantValuesByTheirSize) {
    Object& group = s.group(kAAFOperationDef_MonoAudioGain, 48);
    rational(group, kAAFParameterDef_Amplitude, {3, 2});
    rational(group, kAAFParameterDef_Opacity, {5, 0});
    int32_t seven = 7;
    s.constant(group, kAAFParameterDef_Ratio, kAAFTypeID_Int32, &seven, 4);
    int16_t two = 2;
    s.constant(group, kAAFParameterDef_Pan, kAAFTypeID_Int16, &two, 2);  // neither 4 nor 8 bytes
    rational(group, kAAFParameterDef_Level, {1, 1});                      // not a parameter the host reads
    compose(group);
    EXPECT_EQ(s.parse(), "");
    ASSERT_EQ(GetEffectParamCount(0, 0, c()), 3u);
    EXPECT_EQ(GetEffectParam(0, 0, 0, c()), 1.5);
    EXPECT_EQ(GetEffectParam(0, 0, 1, c()), 0.0) << "zero denominator";
    EXPECT_EQ(GetEffectParam(0, 0, 2, c()), 7.0);
    EXPECT_EQ(GetEffectKeyFrameCount(0, 0, c()), 0u);
}

TEST_F(Effects, VaryingValuesStoreEachTimeBeforeItsValue) {
    Object& group = s.group(kAAFOperationDef_MonoAudioPan, 48);
    Object& pan = s.varying(group, avidVarPanParam);
    const aafRational_t values[] = {{-1, 1}, {0, 1}, {1, 1}};
    const aafRational_t times[] = {{0, 1}, {1, 2}, {1, 1}};
    for (int i = 0; i < 3; ++i) s.point(pan, times[i], kAAFTypeID_Rational, &values[i], 8);
    int16_t shortValue = 1;
    s.point(pan, {3, 4}, kAAFTypeID_Int16, &shortValue, 2);
    compose(group);
    s.parse();
    ASSERT_EQ(GetEffectKeyFrameCount(0, 0, c()), 4u) << "a 2-byte value keeps its time";
    EXPECT_EQ(GetEffectKeyFrame(0, 0, 1, c()), 24);
    EXPECT_EQ(GetEffectKeyFrame(0, 0, 2, c()), 48);
    EXPECT_EQ(GetEffectKeyFrame(0, 0, 3, c()), 36);
    ASSERT_EQ(GetEffectParamCount(0, 0, c()), 3u);
    EXPECT_EQ(GetEffectParam(0, 0, 0, c()), -1.0);
    EXPECT_EQ(GetEffectParam(0, 0, 2, c()), 1.0);
}

TEST_F(Effects, SpeedRatioMovesTheInPointDivisionFirstPlusPhase) {
    Object& speed = s.group(kUnknownOperation, 60);
    rational(speed, kAAFParameterDef_SpeedRatio, {2, 1});
    int32_t phase = 3;
    s.constant(speed, kAAFParameterDef_AvidPhase, kAAFTypeID_Int32, &phase, 4);
    s.input(speed, s.clip(kMaster, 1, 30, 25));
    compose(speed);
    s.parse();
    ASSERT_EQ(GetNumEvents(0, c()), 2u);
    EXPECT_EQ(GetEventInPoint(0, 0, c()), 53) << "2 x (25 / 1) + 3";
    EXPECT_EQ(GetEventLen(0, 0, c()), 60) << "the clip takes the effect's length at speed 1";
}

TEST_F(Effects, SlowSpeedTruncatesTheMasterInPoint) {
    Object& speed = s.group(kUnknownOperation, 60);
    rational(speed, kAAFParameterDef_SpeedRatio, {1, 2});
    s.input(speed, s.clip(kMaster, 1, 30, 25));
    compose(speed);
    s.parse();
    EXPECT_EQ(GetEventInPoint(0, 0, c()), 12) << "1 x (25 / 2)";
}

TEST_F(Effects, SubClipInPointMultipliesFirstAndIgnoresPhase) {
    Object& sub = s.mob(AUID_AAFCompositionMob, 60, L"sub", &kAAFUsage_SubClip);
    s.slot(sub, 1, s.clip(kMaster, 1, 500, 100));
    Object& speed = s.group(kUnknownOperation, 60);
    rational(speed, kAAFParameterDef_SpeedRatio, {3, 2});
    int32_t phase = 3;
    s.constant(speed, kAAFParameterDef_AvidPhase, kAAFTypeID_Int32, &phase, 4);
    s.input(speed, s.clip(60, 1, 30, 21));
    compose(speed);
    s.parse();
    EXPECT_EQ(GetEventInPoint(0, 0, c()), 181) << "(121 x 3) / 2; the master formula would give 183";
}

TEST_F(Effects, SpeedOverAFillerOnlyScalesItsLength) {
    Object& speed = s.group(kUnknownOperation, 60);
    rational(speed, kAAFParameterDef_SpeedRatio, {1, 2});
    s.input(speed, s.filler(31));
    compose(speed);
    s.parse();
    EXPECT_EQ(GetEventLen(0, 0, c()), 15) << "floor(31 x 0.5)";
    EXPECT_EQ(GetEventLen(0, 1, c()), 60);
}

TEST_F(Effects, SpeedRatioAsAVaryingValueLeavesTheDefault) {
    Object& speed = s.group(kUnknownOperation, 60);
    Object& ratio = s.varying(speed, kAAFParameterDef_SpeedRatio);
    aafRational_t two = {2, 1};
    s.point(ratio, {0, 1}, kAAFTypeID_Rational, &two, 8);
    s.input(speed, s.clip(kMaster, 1, 30, 25));
    compose(speed);
    s.parse();
    EXPECT_EQ(GetEventInPoint(0, 0, c()), 25);
    EXPECT_EQ(GetEventLen(0, 0, c()), 30);
}

TEST_F(Effects, LastOfTwoNamedConstantsWins) {
    Object& group = s.group(kUnknownOperation, 60);
    rational(group, kAAFParameterDef_SpeedRatio, {3, 1});
    rational(group, kAAFParameterDef_SpeedRatio, {5, 1});
    int32_t out[2] = {1, 1};
    GetParamValue(group, kAAFParameterDef_SpeedRatio, out);
    EXPECT_EQ(out[0], 5);
    EXPECT_EQ(out[1], 1);
}

TEST(SpeedFixUp, TheTwoIntegerFormulas) {
    EXPECT_EQ(speedAdjustedInPoint(25, {2, 1}, 0, false), 50);
    EXPECT_EQ(speedAdjustedInPoint(25, {1, 2}, 0, false), 12);
    EXPECT_EQ(speedAdjustedInPoint(25, {3, 2}, 4, false), 40);  // 3 x 12 + 4
    EXPECT_EQ(speedAdjustedInPoint(25, {3, 2}, 4, true), 37);   // (25 x 3) / 2
    EXPECT_EQ(speedAdjustedInPoint(-7, {1, 2}, 0, false), -3) << "integer division truncates toward zero";
}

TEST(ParameterBytes, FourAreAnIntegerEightARational) {
    double value = -1.0;
    EXPECT_TRUE(valueAsDouble({7, 0, 0, 0}, value));
    EXPECT_EQ(value, 7.0);
    EXPECT_TRUE(valueAsDouble({0xff, 0xff, 0xff, 0xff}, value));
    EXPECT_EQ(value, -1.0);
    EXPECT_TRUE(valueAsDouble({3, 0, 0, 0, 2, 0, 0, 0}, value));
    EXPECT_EQ(value, 1.5);
    EXPECT_TRUE(valueAsDouble({3, 0, 0, 0, 0, 0, 0, 0}, value));
    EXPECT_EQ(value, 0.0);
    EXPECT_FALSE(valueAsDouble({1, 0}, value));
}

}  // namespace
