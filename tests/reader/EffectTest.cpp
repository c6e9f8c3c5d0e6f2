// Operation groups: effect kinds and inputs, parameter values by byte size, the order of
// key-frame times and values, and the speed change's in-point fix-up.
#include "aafkit/meta/EditorIds.h"
#include "InMemoryFile.h"
#include "aafbridge/aaf_writer.h"  // the pan parameter id

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

TEST_F(Effects, EachEffectFollowsItsInputsAndIsNamedByOperation) {
    Object& gain = s.group(kAAFOperationDef_MonoAudioGain, 30);
    s.input(gain, s.clip(kMaster, 1, 30, 5));
    Object& outer = s.group(kUnknownOperation, 30);
    s.input(outer, gain);
    Object& sequence = aafkit::createSequence(s.file(), kAAFDataDef_Sound);
    aafkit::appendComponent(sequence, outer);
    aafkit::appendComponent(sequence, s.group(kAAFOperationDef_MonoAudioPan, 5));
    aafkit::appendComponent(sequence, s.group(kAAFOperationDef_Superimpose, 5));
    compose(sequence);
    EXPECT_EQ(s.parse(), "");
    ASSERT_EQ(GetNumEvents(0, c()), 5u) << "clip, gain, outer effect, then groups without inputs";
    const uint32_t types[] = {0, 5, 1, 2};
    for (uint32_t e = 1; e < 5; ++e) EXPECT_EQ(GetEffectType(0, e, c()), types[e - 1]) << e;
    EXPECT_EQ(GetEffectNumInputs(0, 2, c()), 1u);
    wchar_t id[40];
    ASSERT_EQ(GetEffectElementId(0, 1, 0, id, 39, c()), 0);
    EXPECT_STREQ(id, L"{00000064000000000000000000000000}");
    ASSERT_EQ(GetEffectElementId(0, 2, 0, id, 39, c()), 0) << "the gain is the outer effect's input";
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
    s.file().dictionary()->find(PID_Dictionary_OperationDefinitions)->objects().clear();
    s.file().setsChanged();
    EXPECT_EQ(readertest::lines(s.parse()).size(), 1u);
    ASSERT_EQ(GetNumEvents(0, c()), 1u) << "only the filler before the group";
    EXPECT_EQ(IsEventFiller(0, 0, c()), 1u);
}

TEST_F(Effects, ConstantsOfFourBytesAreIntegersOfEightRationals) {
    Object& group = s.group(kAAFOperationDef_MonoAudioGain, 48);
    rational(group, kAAFParameterDef_Amplitude, {3, 2});
    rational(group, kAAFParameterDef_Opacity, {5, 0});
    int32_t minusSeven = -7;
    s.constant(group, kAAFParameterDef_Ratio, kAAFTypeID_Int32, &minusSeven, 4);
    int16_t two = 2;
    s.constant(group, kAAFParameterDef_Pan, kAAFTypeID_Int16, &two, 2);  // neither 4 nor 8 bytes
    rational(group, kAAFParameterDef_Level, {1, 1});                      // not a parameter the host reads
    compose(group);
    EXPECT_EQ(s.parse(), "");
    ASSERT_EQ(GetEffectParamCount(0, 0, c()), 3u);
    EXPECT_EQ(GetEffectParam(0, 0, 0, c()), 1.5);
    EXPECT_EQ(GetEffectParam(0, 0, 1, c()), 0.0) << "zero denominator";
    EXPECT_EQ(GetEffectParam(0, 0, 2, c()), -7.0);
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

// One input of length 31 under a speed change of length 60.
enum class Input { Master, SubClip, Filler };
struct SpeedCase {
    aafRational_t ratio;
    bool varying;   // a ratio stored as a varying value is not read: the speed stays 1
    int32_t phase;  // 0: no phase parameter
    Input input;    // a sub-clip starts at 100 on the master
    int64_t start, inPoint, length;
};

class Speed : public readertest::Composed, public testing::WithParamInterface<SpeedCase> {};

TEST_P(Speed, MovesAClipsInPointByTheMasterOrSubClipFormulaOrScalesAFiller) {
    const SpeedCase& p = GetParam();
    Object& speed = s.group(kUnknownOperation, 60);
    if (p.varying) {
        s.point(s.varying(speed, kAAFParameterDef_SpeedRatio), {0, 1}, kAAFTypeID_Rational, &p.ratio, 8);
    } else {
        s.constant(speed, kAAFParameterDef_SpeedRatio, kAAFTypeID_Rational, &p.ratio, 8);
    }
    if (p.phase) s.constant(speed, kAAFParameterDef_AvidPhase, kAAFTypeID_Int32, &p.phase, 4);
    s.slot(s.mob(AUID_AAFCompositionMob, 60, L"sub", &kAAFUsage_SubClip), 1, s.clip(kMaster, 1, 500, 100));
    const uint32_t source = p.input == Input::SubClip ? 60 : kMaster;
    s.input(speed, p.input == Input::Filler ? s.filler(31) : s.clip(source, 1, 31, p.start));
    compose(speed);
    s.parse();
    ASSERT_EQ(GetNumEvents(0, c()), 2u);
    EXPECT_EQ(GetEventInPoint(0, 0, c()), p.inPoint);
    EXPECT_EQ(GetEventLen(0, 0, c()), p.length) << "a moved clip takes the effect's length";
}

INSTANTIATE_TEST_SUITE_P(Effects, Speed,
                         testing::Values(SpeedCase{{2, 1}, false, 3, Input::Master, 25, 53, 60},   // 2 x (25 / 1) + 3
                                         SpeedCase{{1, 2}, false, 0, Input::Master, 25, 12, 60},   // 1 x (25 / 2)
                                         SpeedCase{{1, 2}, false, 0, Input::Master, -7, -3, 60},   // toward zero
                                         SpeedCase{{3, 2}, false, 3, Input::SubClip, 21, 181, 60}, // (121 x 3) / 2
                                         SpeedCase{{2, 1}, true, 0, Input::Master, 25, 25, 31},
                                         SpeedCase{{1, 2}, false, 0, Input::Filler, 0, 0, 15}));  // floor(31 x 0.5)

}  // namespace
