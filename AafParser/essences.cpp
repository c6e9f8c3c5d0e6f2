#include "essences.h"

#include <vector>

#include "aaf_basic.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"

namespace {
constexpr char kErrorSource[] = "AafParser/essences";

using aafkit::Object;

AAFRESULT readRequired(AAFRESULT (*get)(const Object&, uint16_t, uint32_t&), const Object& o, uint16_t pid,
                       uint32_t& out) {
    return requiredProperty(get(o, pid, out), o, pid);
}

// The file descriptor's sample rate as a double; the field is left as it was on failure.
void readSampleRate(const Object& descriptor, double& out) {
    aafRational_t rate = {0, 0};
    AAFRESULT result = requiredProperty(aafkit::getRational(descriptor, PID_FileDescriptor_SampleRate, rate),
                                        descriptor, PID_FileDescriptor_SampleRate);
    if (!AAF_FAILED(result)) out = rationalToDouble(rate);
}

// AIFC and WAVE: a readable summary marks the clip as sound.
void processSoundSummary(SourceClip& clip, const Object& descriptor, uint16_t summaryPid) {
    std::vector<uint8_t> summary;
    AAFRESULT result = requiredProperty(aafkit::getBytes(descriptor, summaryPid, summary), descriptor, summaryPid);
    if (AAF_FAILED(result)) return;
    clip.hasAudio = 1;
    readSampleRate(descriptor, clip.sampleRate);
}

void processMultiple(SourceClip& clip, const Object& descriptor) {
    const std::vector<Object*>* parts = nullptr;
    AAFRESULT result = requiredProperty(aafkit::getObjects(descriptor, PID_MultipleDescriptor_FileDescriptors, parts),
                                        descriptor, PID_MultipleDescriptor_FileDescriptors);
    if (AAF_FAILED(result) || !parts) return;
    for (Object* part : *parts) {
        if (!clip.hasVideo && part->isA(AUID_AAFCDCIDescriptor)) {
            processCDCI(clip, *part);
        } else if (!clip.hasAudio && part->isA(AUID_AAFPCMDescriptor)) {
            clip.hasAudio = 1;
            readSampleRate(*part, clip.sampleRate);
        }
    }
}

}  // namespace

AAFRESULT processCDCI(SourceClip& clip, const Object& descriptor) {
    clip.hasVideo = 1;
    uint32_t height = 0;
    uint32_t width = 0;
    AAFRESULT result = readRequired(aafkit::getUInt32, descriptor, PID_DigitalImageDescriptor_StoredHeight, height);
    if (result == AAFRESULT_SUCCESS)
        result = readRequired(aafkit::getUInt32, descriptor, PID_DigitalImageDescriptor_StoredWidth, width);
    if (!AAF_FAILED(result)) {
        clip.height = height;
        clip.width = width;
    }
    readSampleRate(descriptor, clip.frameRate);
    return AAFRESULT_SUCCESS;
}

void processEssenceDescriptor(SourceClip& clip, const Object& descriptor) {
    if (descriptor.isA(AUID_AAFCDCIDescriptor))
        processCDCI(clip, descriptor);
    else if (descriptor.isA(AUID_AAFAIFCDescriptor))
        processSoundSummary(clip, descriptor, PID_AIFCDescriptor_Summary);
    else if (descriptor.isA(AUID_AAFWAVEDescriptor))
        processSoundSummary(clip, descriptor, PID_WAVEDescriptor_Summary);
    else if (descriptor.isA(AUID_AAFMultipleDescriptor))
        processMultiple(clip, descriptor);
}
