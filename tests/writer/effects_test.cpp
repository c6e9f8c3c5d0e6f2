#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "WriterTestSupport.h"
#include "WrittenFile.h"
#include "aafkit/Dictionary.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/meta/MetaModel.h"

namespace {

using aafkit::Object;

const aafUID_t kOpacity = {0x8d56813d, 0x847e, 0x11d5, {0x93, 0x5a, 0x50, 0xf8, 0x57, 0xc1, 0x00, 0x00}};
const aafUID_t kAvidPhase = {0x5b22ff71, 0xc51b, 0x11d3, {0xa0, 0x69, 0x00, 0x60, 0x94, 0xeb, 0x75, 0xcb}};
const aafUID_t kSuperimpose = {0xf9ff09d2, 0xcc85, 0x3d29, {0xa9, 0x82, 0xa8, 0x77, 0x68, 0x42, 0xda, 0xc0}};
const aafUID_t kVValExtrapolation = {0x8f2b8bae, 0xb685, 0x4939, {0xb3, 0xa5, 0x63, 0x73, 0x63, 0x3b, 0x3e, 0x6c}};
const aafUID_t kVValFieldCount = {0x2902558b, 0xacfa, 0x439e, {0xa1, 0xcd, 0x9f, 0xa1, 0xe8, 0xf8, 0x91, 0xef}};
const aafUID_t kComponentAttributes = {0x60958184, 0x47b1, 0x11d4, {0xa0, 0x1c, 0x00, 0x04, 0xac, 0x96, 0x9f, 0x50}};

// A started context with one picture track (0) and one sound track (1), each
// starting with a 100-unit clip at source frame 50.
ContextPtr effectContext(uint32_t rateNumerator = 30, uint32_t rateDenominator = 1) {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    AddClip(L"Pic", L"/m/pic.mov", 1000, 0, false, nullptr, nullptr, 30, 1, c);
    AddClipTrack(1, true, 30, 1, 1000, c);
    AddClip(L"Snd", L"/m/snd.wav", 1000, 0, false, nullptr, nullptr, 30, 1, c);
    AddClipTrack(2, false, 48000, 1, 1000, c);
    InitComposition(rateNumerator, rateDenominator, 100, false, 0, L"Fx", c);
    AddTrackToComposition(true, 30.0, c);
    AddTrackToComposition(false, 30.0, c);
    AppendClipToTrack(0, 50, 100, false, 1, 1, c);
    AppendClipToTrack(1, 50, 100, false, 2, 1, c);
    return context;
}

// The components of a track slot of the composition mob.
const std::vector<Object*>& trackComponents(const aafkit::File& file, size_t track) {
    const Object& mob = *mobsOfKind(file, aafkit::kAAFCompMob).at(0);
    return objects(segment(slot(mob, track + 1)), PID_Sequence_Components);
}

Object& onlyParameter(const Object& group) {
    const auto& parameters = objects(group, PID_OperationGroup_Parameters);
    EXPECT_EQ(parameters.size(), 1u);
    return *parameters.at(0);
}

std::vector<uint8_t> indirect(const Object& o, uint16_t pid, const aafUID_t& expectedType) {
    aafUID_t type;
    EXPECT_EQ(aafkit::getIndirectType(o, pid, type), 0);
    EXPECT_TRUE(type == expectedType);
    std::vector<uint8_t> value;
    EXPECT_EQ(aafkit::getIndirectValue(o, pid, value), 0);
    return value;
}

std::pair<int32_t, int32_t> rationalValue(const std::vector<uint8_t>& value) {
    int32_t parts[2] = {0, 0};
    if (value.size() == 8) std::memcpy(parts, value.data(), 8);  // little-endian file on a little-endian host
    return {parts[0], parts[1]};
}

int32_t int32Value(const std::vector<uint8_t>& value) {
    int32_t v = 0;
    if (value.size() == 4) std::memcpy(&v, value.data(), 4);
    return v;
}

// The component attributes (name -> value) an object carries.
std::map<std::wstring, int32_t> attributes(const aafkit::File& file, const Object& o) {
    std::map<std::wstring, int32_t> found;
    const aafkit::meta::PropertyDef* property = file.model().findPropertyById(kComponentAttributes);
    const std::vector<Object*>* list = nullptr;
    if (!property || aafkit::getObjects(o, property->pid, list) != 0) return found;
    for (const Object* tagged : *list)
        found[text(*tagged, PID_TaggedValue_Name)] = int32Value(indirect(*tagged, PID_TaggedValue_Value, kAAFTypeID_Int32));
    return found;
}

size_t definitionCount(const aafkit::File& file, uint16_t setPid) {
    const std::vector<Object*>* definitions = nullptr;
    return aafkit::getObjects(*file.dictionary(), setPid, definitions) == 0 ? definitions->size() : 0;
}

TEST(Effects, VolumeIsConstantOrACurveByKeyFrames) {
    ContextPtr context = effectContext();
    AafWriterContext* c = context.get();
    const double one[] = {0.5};
    const double curve[] = {0.0, 0.5, 1.0};
    const double times[] = {0.0, 0.25, 1.0};
    AppendVolumeEffect(1, 100, one, 1, times, 1, c);
    AppendClipToTrack(1, 0, 100, false, 2, 1, c);
    AppendVolumeEffect(1, 100, curve, 3, times, 3, c);
    AppendClipToTrack(1, 0, 100, false, 2, 1, c);
    AppendVolumeEffect(1, 100, curve + 1, 2, times, 1, c);  // several values, one key frame
    AppendClipToTrack(1, 0, 100, false, 2, 1, c);
    AppendPanEffect(1, 100, curve, 3, times, 3, c);
    WrittenFile written = writeAndLoad(c, "volume");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    const auto& components = trackComponents(*written.file, 1);
    ASSERT_EQ(components.size(), 4u);

    const Object& constant = *components[0];
    EXPECT_TRUE(definitionId(referenced(constant, PID_OperationGroup_Operation)) == kAAFOperationDef_MonoAudioGain);
    EXPECT_EQ(i64(constant, PID_Component_Length), 100);
    const Object& input = *objects(constant, PID_OperationGroup_InputSegments).at(0);
    EXPECT_EQ(className(input), "SourceClip");
    EXPECT_EQ(i64(input, PID_SourceClip_StartTime), 50);
    const Object& amplitude = onlyParameter(constant);
    EXPECT_EQ(className(amplitude), "ConstantValue");
    EXPECT_TRUE(auid(amplitude, PID_Parameter_Definition) == kAAFParameterDef_Amplitude);
    EXPECT_EQ(rationalValue(indirect(amplitude, PID_ConstantValue_Value, kAAFTypeID_Rational)), std::make_pair(5, 10));

    const Object& curveValue = onlyParameter(*components[1]);
    EXPECT_EQ(className(curveValue), "VaryingValue");
    EXPECT_TRUE(auid(curveValue, PID_Parameter_Definition) == avidVarVolumeParam);
    EXPECT_TRUE(definitionId(referenced(curveValue, PID_VaryingValue_Interpolation)) == kAAFInterpolationDef_Linear);
    const auto& points = objects(curveValue, PID_VaryingValue_PointList);
    ASSERT_EQ(points.size(), 3u);
    EXPECT_EQ(rationalValue(indirect(*points[1], PID_ControlPoint_Value, kAAFTypeID_Rational)), std::make_pair(5, 10));
    EXPECT_EQ(rational(*points[1], PID_ControlPoint_Time), std::make_pair(25, 100));
    EXPECT_EQ(rational(*points[2], PID_ControlPoint_Time), std::make_pair(1, 1));
    EXPECT_TRUE(attributes(*written.file, *components[1]).empty());

    const Object& firstOfMany = onlyParameter(*components[2]);
    EXPECT_EQ(className(firstOfMany), "ConstantValue");
    EXPECT_TRUE(auid(firstOfMany, PID_Parameter_Definition) == avidVarVolumeParam);
    EXPECT_EQ(rationalValue(indirect(firstOfMany, PID_ConstantValue_Value, kAAFTypeID_Rational)),
              std::make_pair(5, 10));

    const Object& pan = onlyParameter(*components[3]);
    EXPECT_TRUE(definitionId(referenced(*components[3], PID_OperationGroup_Operation)) == kAAFOperationDef_MonoAudioPan);
    EXPECT_TRUE(auid(pan, PID_Parameter_Definition) == avidVarPanParam);

    const aafkit::File& file = *written.file;
    EXPECT_EQ(definitionCount(file, PID_Dictionary_InterpolationDefinitions), 1u);  // two curves, one definition
    Object* linear = nullptr;
    ASSERT_EQ(aafkit::lookupDefinition(file, PID_Dictionary_InterpolationDefinitions, kAAFInterpolationDef_Linear,
                                       linear), 0);
    EXPECT_EQ(text(*linear, PID_DefinitionObject_Name), L"LinearInterp");
    EXPECT_EQ(text(*linear, PID_DefinitionObject_Description), L"Linear keyframe interpolation");
    EXPECT_EQ(definitionCount(file, PID_Dictionary_OperationDefinitions), 2u);  // gain and pan
    Object* gain = nullptr;
    aafkit::lookupDefinition(file, PID_Dictionary_OperationDefinitions, kAAFOperationDef_MonoAudioGain, gain);
    ASSERT_NE(gain, nullptr);
    EXPECT_EQ(text(*gain, PID_DefinitionObject_Name), L"Audio Effect");
    EXPECT_EQ(bytes(*gain, PID_OperationDefinition_IsTimeWarp), std::vector<uint8_t>{0});
    EXPECT_EQ(u32(*gain, PID_OperationDefinition_Bypass), 1u);
    EXPECT_TRUE(definitionId(referenced(*gain, PID_OperationDefinition_DataDefinition)) == kAAFDataDef_Sound);
    Object* amplitudeDef = nullptr;
    ASSERT_EQ(aafkit::lookupDefinition(file, PID_Dictionary_ParameterDefinitions, kAAFParameterDef_Amplitude,
                                       amplitudeDef), 0);
    EXPECT_EQ(text(*amplitudeDef, PID_DefinitionObject_Name), L"");
}

TEST(Effects, CompositeHasAScopeInputAndOpacityCurveProperties) {
    ContextPtr context = effectContext();
    AafWriterContext* c = context.get();
    const double values[] = {1.0, 0.5, 1.0};
    const double times[] = {0.0, 0.5, 1.0};
    AppendVideoCompositeEffect(0, 100, values, 3, times, 3, c);
    AppendClipToTrack(0, 0, 100, false, 1, 1, c);
    AppendVideoCompositeEffect(0, 100, values + 1, 1, nullptr, 0, c);
    WrittenFile written = writeAndLoad(c, "composite");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    const aafkit::File& file = *written.file;
    const auto& components = trackComponents(file, 0);
    ASSERT_EQ(components.size(), 2u);
    const Object& group = *components[0];
    EXPECT_TRUE(definitionId(referenced(group, PID_OperationGroup_Operation)) == kSuperimpose);
    const auto& inputs = objects(group, PID_OperationGroup_InputSegments);
    ASSERT_EQ(inputs.size(), 2u);
    const Object& scope = component(*inputs[0], 0);
    EXPECT_EQ(className(scope), "ScopeReference");
    EXPECT_EQ(u32(scope, PID_ScopeReference_RelativeScope), 1u);
    EXPECT_EQ(u32(scope, PID_ScopeReference_RelativeSlot), 1u);
    EXPECT_EQ(i64(scope, PID_Component_Length), 100);
    EXPECT_EQ(className(*inputs[1]), "SourceClip");

    const Object& opacity = onlyParameter(group);
    EXPECT_TRUE(auid(opacity, PID_Parameter_Definition) == kOpacity);
    const auto* extrapolation = file.model().findPropertyById(kVValExtrapolation);
    const auto* fieldCount = file.model().findPropertyById(kVValFieldCount);
    ASSERT_TRUE(extrapolation && fieldCount);
    EXPECT_GE(extrapolation->pid, 0x8000);
    EXPECT_NE(extrapolation->pid, fieldCount->pid);
    const aafUID_t extrapolationValue = {0x0e24dd54, 0x66cd, 0x4f1a, {0xb0, 0xa0, 0x67, 0x0a, 0xc3, 0xa7, 0xa0, 0xb3}};
    EXPECT_TRUE(auid(opacity, extrapolation->pid) == extrapolationValue);
    EXPECT_EQ(bytes(opacity, fieldCount->pid), (std::vector<uint8_t>{2, 0}));

    const Object& constantOpacity = onlyParameter(*components[1]);
    EXPECT_EQ(className(constantOpacity), "ConstantValue");
    EXPECT_EQ(constantOpacity.find(extrapolation->pid), nullptr);
    Object* video = nullptr;
    aafkit::lookupDefinition(file, PID_Dictionary_OperationDefinitions, kSuperimpose, video);
    ASSERT_NE(video, nullptr);
    EXPECT_EQ(text(*video, PID_DefinitionObject_Name), L"Video Effect");
    int32_t inputsDeclared = 0;
    aafkit::getInt32(*video, PID_OperationDefinition_NumberInputs, inputsDeclared);
    EXPECT_EQ(inputsDeclared, 1);
}

TEST(Effects, SpeedChangeScalesTheClipAndCarriesAttributes) {
    ContextPtr context = effectContext();
    AafWriterContext* c = context.get();
    const double speed[] = {2.0, 3.0};
    AppendSpeedEffect(0, true, 100, speed, 2, nullptr, 0, c);
    AppendClipToTrack(0, 0, 100, false, 1, 1, c);
    const double reverse[] = {-1.0};
    AppendSpeedEffect(0, false, 100, reverse, 1, nullptr, 0, c);
    AppendClipToTrack(0, 0, 100, false, 1, 1, c);
    const double slow[] = {0.5};
    AppendSpeedEffect(0, true, 100, slow, 1, nullptr, 0, c);
    WrittenFile written = writeAndLoad(c, "speed");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    const aafkit::File& file = *written.file;
    const auto& components = trackComponents(file, 0);
    ASSERT_EQ(components.size(), 3u);

    const Object& group = *components[0];
    EXPECT_TRUE(definitionId(referenced(group, PID_OperationGroup_Operation)) == kAAFOperationDef_VideoSpeedControl);
    EXPECT_EQ(i64(group, PID_Component_Length), 100);
    const Object& wrapping = *objects(group, PID_OperationGroup_InputSegments).at(0);
    EXPECT_EQ(className(wrapping), "Sequence");
    const Object& clip = component(wrapping, 0);
    EXPECT_EQ(i64(clip, PID_Component_Length), 50);
    EXPECT_EQ(i64(clip, PID_SourceClip_StartTime), 25);
    const auto& parameters = objects(group, PID_OperationGroup_Parameters);
    ASSERT_EQ(parameters.size(), 2u);
    for (const Object* parameter : parameters) {
        if (auid(*parameter, PID_Parameter_Definition) == kAAFParameterDef_SpeedRatio) {
            EXPECT_EQ(rationalValue(indirect(*parameter, PID_ConstantValue_Value, kAAFTypeID_Rational)),
                      std::make_pair(2002, 1001));
        } else {
            EXPECT_TRUE(auid(*parameter, PID_Parameter_Definition) == kAvidPhase);
            EXPECT_EQ(int32Value(indirect(*parameter, PID_ConstantValue_Value, kAAFTypeID_Int32)), 3);
        }
    }
    Object* phaseDef = nullptr;
    ASSERT_EQ(aafkit::lookupDefinition(file, PID_Dictionary_ParameterDefinitions, kAvidPhase, phaseDef), 0);
    EXPECT_EQ(text(*phaseDef, PID_DefinitionObject_Name), L"AvidPhase");
    EXPECT_EQ((attributes(file, wrapping)),
              (std::map<std::wstring, int32_t>{{L"_MIXMATCH_RATE_NUM", 15}, {L"_MIXMATCH_RATE_DENOM", 1}}));
    EXPECT_EQ((attributes(file, group)),
              (std::map<std::wstring, int32_t>{{L"_SFX_RENDER", 4}, {L"_MIXMATCH_MOTIONADAPTER", 2}}));
    const auto* list = file.model().findPropertyById(kComponentAttributes);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->name, "ComponentAttributeList");

    const Object& reversed = *components[1];
    const Object& reversedClip = component(*objects(reversed, PID_OperationGroup_InputSegments).at(0), 0);
    EXPECT_EQ(i64(reversedClip, PID_Component_Length), 100);  // a speed of -1 scales by 1
    EXPECT_TRUE(attributes(file, reversed).empty());
    const Object& slowed = *objects(*components[2], PID_OperationGroup_InputSegments).at(0);
    EXPECT_EQ((attributes(file, slowed)),  // a second speed change in the file gets its attributes too
              (std::map<std::wstring, int32_t>{{L"_MIXMATCH_RATE_NUM", 60}, {L"_MIXMATCH_RATE_DENOM", 1}}));
    for (const Object* parameter : objects(reversed, PID_OperationGroup_Parameters)) {
        if (auid(*parameter, PID_Parameter_Definition) == kAAFParameterDef_SpeedRatio) {
            EXPECT_EQ(rationalValue(indirect(*parameter, PID_ConstantValue_Value, kAAFTypeID_Rational)),
                      std::make_pair(-1001, 1001));
        }
    }
}

TEST(Effects, NtscRateAttributesAndStackedEffectsNest) {
    ContextPtr context = effectContext(30000, 1001);
    AafWriterContext* c = context.get();
    const double normal[] = {1.0};
    AppendSpeedEffect(0, true, 100, normal, 1, nullptr, 0, c);
    const double values[] = {0.5};
    AppendVolumeEffect(1, 100, values, 1, nullptr, 0, c);
    AppendPanEffect(1, 100, values, 1, nullptr, 0, c);
    WrittenFile written = writeAndLoad(c, "stacked");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    const aafkit::File& file = *written.file;
    const Object& speed = *trackComponents(file, 0).at(0);
    EXPECT_EQ((attributes(file, *objects(speed, PID_OperationGroup_InputSegments).at(0))),
              (std::map<std::wstring, int32_t>{{L"_MIXMATCH_RATE_NUM", 30000}, {L"_MIXMATCH_RATE_DENOM", 1001}}));

    const auto& audio = trackComponents(file, 1);
    ASSERT_EQ(audio.size(), 1u);
    const Object& pan = *audio[0];
    EXPECT_TRUE(definitionId(referenced(pan, PID_OperationGroup_Operation)) == kAAFOperationDef_MonoAudioPan);
    const Object& nested = *objects(pan, PID_OperationGroup_InputSegments).at(0);
    EXPECT_EQ(className(nested), "Sequence");
    ASSERT_EQ(objects(nested, PID_Sequence_Components).size(), 1u);
    const Object& volume = component(nested, 0);
    EXPECT_TRUE(definitionId(referenced(volume, PID_OperationGroup_Operation)) == kAAFOperationDef_MonoAudioGain);
    EXPECT_EQ(className(*objects(volume, PID_OperationGroup_InputSegments).at(0)), "SourceClip");
}

TEST(Effects, AnEffectWithNothingToCoverFailsTheWriteAndKeepsTheFile) {
    const double value[] = {0.5};
    ContextPtr first = newContext();
    InitComposition(25, 1, 100, false, 0, L"Bad", first.get());
    AddTrackToComposition(false, 25.0, first.get());
    AddTrackToComposition(false, 25.0, first.get());
    AppendFiller(0, 10, first.get());
    AppendVolumeEffect(1, 10, value, 1, nullptr, 0, first.get());
    WrittenFile firstOnTrack = writeAndLoad(first.get(), "effect_first");
    EXPECT_EQ(firstOnTrack.result, AAFRESULT_INVALID_PARAM);
    const Object& mob = *mobsOfKind(*firstOnTrack.file, aafkit::kAAFCompMob).at(0);
    ASSERT_EQ(objects(mob, PID_Mob_Slots).size(), 3u);  // timecode, the track written, the failing one
    EXPECT_EQ(objects(segment(slot(mob, 1)), PID_Sequence_Components).size(), 1u);
    EXPECT_TRUE(first->sequence.tracks[0].events.empty());
    EXPECT_EQ(first->sequence.tracks[1].events.size(), 1u);  // the failing track keeps its events

    ContextPtr second = newContext();
    InitComposition(25, 1, 100, false, 0, L"Bad", second.get());
    AddTrackToComposition(false, 25.0, second.get());
    AppendFiller(0, 10, second.get());
    AppendVolumeEffect(0, 10, value, 1, nullptr, 0, second.get());
    WrittenFile afterFiller = writeAndLoad(second.get(), "effect_after_filler");
    EXPECT_EQ(afterFiller.result, AAFRESULT_INVALID_EFFECTARG);
    EXPECT_EQ(mobsOfKind(*afterFiller.file, aafkit::kAAFCompMob).size(), 1u);
}

}  // namespace
