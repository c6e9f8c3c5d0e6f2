#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "WriterTestSupport.h"
#include "WrittenFile.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/meta/MetaModel.h"

// Written effects where they go beyond the reference files: constants from one key
// frame, a constant composite, reversed and repeated speed changes, and the private
// properties and attributes as the file's own dictionary names them.
namespace {

using aafkit::Object;

const aafUID_t kOpacity = {0x8d56813d, 0x847e, 0x11d5, {0x93, 0x5a, 0x50, 0xf8, 0x57, 0xc1, 0x00, 0x00}};
const aafUID_t kVValExtrapolation = {0x8f2b8bae, 0xb685, 0x4939, {0xb3, 0xa5, 0x63, 0x73, 0x63, 0x3b, 0x3e, 0x6c}};
const aafUID_t kVValFieldCount = {0x2902558b, 0xacfa, 0x439e, {0xa1, 0xcd, 0x9f, 0xa1, 0xe8, 0xf8, 0x91, 0xef}};
const aafUID_t kConstantExtrapolation = {0x0e24dd54, 0x66cd, 0x4f1a, {0xb0, 0xa0, 0x67, 0x0a, 0xc3, 0xa7, 0xa0, 0xb3}};
const aafUID_t kComponentAttributes = {0x60958184, 0x47b1, 0x11d4, {0xa0, 0x1c, 0x00, 0x04, 0xac, 0x96, 0x9f, 0x50}};

Object& onlyParameter(const Object& group) {
    const auto& parameters = objects(group, PID_OperationGroup_Parameters);
    EXPECT_EQ(parameters.size(), 1u);
    return *parameters.at(0);
}

// An indirect value of the given type, read as T: the file is little-endian, as is the host.
template <typename T>
T indirect(const Object& o, uint16_t pid, const aafUID_t& expectedType) {
    aafUID_t type;
    std::vector<uint8_t> value;
    EXPECT_TRUE(aafkit::getIndirectType(o, pid, type) == 0 && type == expectedType);
    T out{};
    if (aafkit::getIndirectValue(o, pid, value) != 0 || value.size() != sizeof out)
        ADD_FAILURE() << "no indirect value of " << sizeof out << " bytes";
    else
        std::memcpy(&out, value.data(), sizeof out);
    return out;
}

std::pair<int32_t, int32_t> ratio(const Object& o, uint16_t pid) {
    auto r = indirect<aafRational_t>(o, pid, kAAFTypeID_Rational);
    return {r.numerator, r.denominator};
}

// The component attributes (name -> value) an object carries.
std::map<std::wstring, int32_t> attributes(const aafkit::File& file, const Object& o) {
    std::map<std::wstring, int32_t> found;
    const aafkit::meta::PropertyDef* property = file.model().findPropertyById(kComponentAttributes);
    const std::vector<Object*>* list = nullptr;
    if (!property || aafkit::getObjects(o, property->pid, list) != 0) return found;
    for (const Object* tagged : *list)
        found[text(*tagged, PID_TaggedValue_Name)] =
            indirect<int32_t>(*tagged, PID_TaggedValue_Value, kAAFTypeID_Int32);
    return found;
}

// A started 30 fps context; the picture track (0) holds speed changes of 2, -1 and 0.5,
// an opacity curve and a constant opacity, the sound track (1) a volume of one value at
// one key frame and one of two values at one key frame; each over a 100-frame clip.
class Effects : public ::testing::Test {
protected:
    void SetUp() override {
        AafWriterContext* c = context_.get();
        AddClip(L"Pic", L"/m/pic.mov", 1000, 0, false, nullptr, nullptr, 30, 1, c);
        AddClipTrack(1, true, 30, 1, 1000, c);
        AddClip(L"Snd", L"/m/snd.wav", 1000, 0, false, nullptr, nullptr, 30, 1, c);
        AddClipTrack(2, false, 48000, 1, 1000, c);
        InitComposition(30, 1, 100, false, 0, L"Fx", c);
        AddTrackToComposition(true, 30.0, c);
        AddTrackToComposition(false, 30.0, c);
        const double speeds[] = {2.0, -1.0, 0.5}, opacity[] = {1.0, 0.5, 1.0}, times[] = {0.0, 0.5, 1.0};
        for (int i = 0; i < 3; ++i) {
            AppendClipToTrack(0, 50, 100, false, 1, 1, c);
            AppendSpeedEffect(0, i != 1, 100, speeds + i, 1, nullptr, 0, c);
        }
        AppendClipToTrack(0, 0, 100, false, 1, 1, c);
        AppendVideoCompositeEffect(0, 100, opacity, 3, times, 3, c);
        AppendClipToTrack(0, 0, 100, false, 1, 1, c);
        AppendVideoCompositeEffect(0, 100, opacity + 1, 1, nullptr, 0, c);
        for (uint32_t count = 1; count <= 2; ++count) {
            AppendClipToTrack(1, 50, 100, false, 2, 1, c);
            AppendVolumeEffect(1, 100, opacity + 1, count, times, 1, c);
        }
        written_ = writeAndLoad(c, ::testing::UnitTest::GetInstance()->current_test_info()->name());
        ASSERT_EQ(written_.result, AAFRESULT_SUCCESS);
    }
    const Object& effect(size_t track, size_t index) { return *trackComponents(*written_.file, track).at(index); }

    ContextPtr context_ = newContext();
    WrittenFile written_;
};

TEST_F(Effects, OneKeyFrameMakesAConstantVolume) {
    const aafUID_t definitions[] = {kAAFParameterDef_Amplitude, avidVarVolumeParam};  // one value, then two
    for (size_t i = 0; i < 2; ++i) {
        const Object& value = onlyParameter(effect(1, i));
        EXPECT_EQ(className(value), "ConstantValue");
        EXPECT_TRUE(auid(value, PID_Parameter_Definition) == definitions[i]);
        EXPECT_EQ(ratio(value, PID_ConstantValue_Value), std::make_pair(5, 10));
    }
}

TEST_F(Effects, OpacityCurvesCarryThePrivatePropertiesConstantsDoNot) {
    const auto* extrapolation = written_.file->model().findPropertyById(kVValExtrapolation);
    const auto* fieldCount = written_.file->model().findPropertyById(kVValFieldCount);
    ASSERT_TRUE(extrapolation && fieldCount);
    const Object& curve = onlyParameter(effect(0, 3));
    EXPECT_TRUE(auid(curve, PID_Parameter_Definition) == kOpacity);
    EXPECT_TRUE(auid(curve, extrapolation->pid) == kConstantExtrapolation);
    EXPECT_EQ(bytes(curve, fieldCount->pid), (std::vector<uint8_t>{2, 0}));
    const Object& constant = onlyParameter(effect(0, 4));
    EXPECT_EQ(className(constant), "ConstantValue");
    EXPECT_TRUE(auid(constant, PID_Parameter_Definition) == kOpacity);
    EXPECT_EQ(constant.find(extrapolation->pid), nullptr);
}

TEST_F(Effects, EverySpeedChangeButAReversalCarriesItsRate) {
    auto rate = [](int32_t numerator) {
        return std::map<std::wstring, int32_t>{{L"_MIXMATCH_RATE_NUM", numerator}, {L"_MIXMATCH_RATE_DENOM", 1}};
    };
    auto input = [&](size_t index) -> const Object& {
        return *objects(effect(0, index), PID_OperationGroup_InputSegments).at(0);
    };
    EXPECT_EQ(attributes(*written_.file, input(0)), rate(15));  // 30 fps at twice the speed
    EXPECT_EQ(attributes(*written_.file, input(2)), rate(60));
    const Object& reversed = effect(0, 1);
    EXPECT_TRUE(attributes(*written_.file, reversed).empty());
    EXPECT_TRUE(attributes(*written_.file, input(1)).empty());
    EXPECT_EQ(i64(component(input(1), 0), PID_Component_Length), 100);  // a speed of -1 scales by 1
    bool ratioFound = false;
    for (const Object* parameter : objects(reversed, PID_OperationGroup_Parameters)) {
        if (auid(*parameter, PID_Parameter_Definition) != kAAFParameterDef_SpeedRatio) continue;
        ratioFound = true;
        EXPECT_EQ(ratio(*parameter, PID_ConstantValue_Value), std::make_pair(-1001, 1001));
    }
    EXPECT_TRUE(ratioFound);
}

TEST(EffectsRefused, AnEffectFirstOnItsTrackFailsTheWriteAndKeepsTheFile) {
    const double value[] = {0.5};
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    InitComposition(25, 1, 100, false, 0, L"Bad", c);
    AddTrackToComposition(false, 25.0, c);
    AddTrackToComposition(false, 25.0, c);
    AppendFiller(0, 10, c);
    AppendVolumeEffect(1, 10, value, 1, nullptr, 0, c);
    WrittenFile written = writeAndLoad(c, "effect_first");
    EXPECT_EQ(written.result, AAFRESULT_INVALID_PARAM);
    const Object& mob = compositionMob(*written.file);
    ASSERT_EQ(objects(mob, PID_Mob_Slots).size(), 3u);  // timecode, the track written, the failing one
    EXPECT_EQ(objects(segment(slot(mob, 1)), PID_Sequence_Components).size(), 1u);
}

}  // namespace
