// The named values of the public headers are the values the library answers: the
// result codes as the AAF model tables define them, the kinds as the timeline model
// records them.
#include <gtest/gtest.h>

#include <string>

#include "aafbridge/aaf_reader.h"
#include "aafbridge/aaf_writer.h"
#include "aafkit/meta/BaselineModel.h"
#include "model/Effect.h"
#include "model/TrackEvent.h"

namespace {

static_assert(AAF_EVENT_CLIP == kEventClip && AAF_EVENT_FILLER == kEventFiller &&
              AAF_EVENT_TRANSITION == kEventTransition && AAF_EVENT_EFFECT == kEventEffect);
static_assert(AAF_EFFECT_VOLUME == kEffectGain && AAF_EFFECT_PAN == kEffectPan &&
              AAF_EFFECT_COMPOSITE == kEffectSuperimpose && AAF_EFFECT_SPEED == kEffectSpeed &&
              AAF_EFFECT_SPEED_NO_FLAG == kEffectSpeedAlternate && AAF_EFFECT_OTHER == kEffectOther);
static_assert(AAF_CLIP_TRACK_IS_VIDEO(7u) == 1u && AAF_CLIP_TRACK_SLOT_ID(7u) == 3u);

uint32_t modelCode(const std::string& name) {
    for (const auto& row : aafkit::meta::resultCodes())
        if (name == row.name.c_str()) return row.code;
    ADD_FAILURE() << name << " is not an AAF result code";
    return 0;
}

TEST(NamedValues, ResultCodesAreTheModelsCodes) {
    const struct {
        const char* name;
        AAFRESULT value;
    } named[] = {
        {"AAFRESULT_SUCCESS", AAFRESULT_SUCCESS},
        {"AAFRESULT_CONTAINERWRITE", AAFRESULT_CONTAINERWRITE},
        {"AAFRESULT_FILE_NOT_FOUND", AAFRESULT_FILE_NOT_FOUND},
        {"AAFRESULT_FILE_EXISTS", AAFRESULT_FILE_EXISTS},
        {"AAFRESULT_INVALID_EFFECTARG", AAFRESULT_INVALID_EFFECTARG},
        {"AAFRESULT_NULL_PARAM", AAFRESULT_NULL_PARAM},
        {"AAFRESULT_ALREADY_INITIALIZED", AAFRESULT_ALREADY_INITIALIZED},
        {"AAFRESULT_NOT_INITIALIZED", AAFRESULT_NOT_INITIALIZED},
        {"AAFRESULT_INTERNAL_ERROR", AAFRESULT_INTERNAL_ERROR},
        {"AAFRESULT_ILLEGAL_VALUE", AAFRESULT_ILLEGAL_VALUE},
        {"AAFRESULT_INVALID_PARAM", AAFRESULT_INVALID_PARAM},
    };
    for (const auto& n : named) EXPECT_EQ(uint32_t(n.value), modelCode(n.name)) << n.name;
    // The two COM-style codes of the reader's text copies.
    EXPECT_EQ(uint32_t(AAFBRIDGE_E_OUTOFMEMORY), 0x80000002u);
    EXPECT_EQ(uint32_t(AAFBRIDGE_E_INVALIDARG), 0x80000003u);
    EXPECT_LT(AAFBRIDGE_E_INVALIDARG, 0);
}

}  // namespace
