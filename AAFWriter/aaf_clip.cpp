// Registering clips, their tracks and sub-clips before a write.
#include "aaf_clip.h"

#include <cstring>
#include <cwctype>
#include <utility>

#include "aafkit/ResultCodes.h"
#include "context.h"
#include "model/Text.h"

namespace {

void swapBytes(uint8_t* bytes, size_t count) {
    for (size_t i = 0; i < count / 2; ++i) std::swap(bytes[i], bytes[count - 1 - i]);
}

// The 1-based clip, or null when the index addresses no clip.
Clip* clipAt(AafWriterContext* context, uint32_t clipIndex) {
    if (clipIndex < 1 || clipIndex > context->clips.size()) return nullptr;
    return &context->clips[clipIndex - 1];
}

// The 1-based track of a 1-based clip, or null.
ClipTrack* trackAt(AafWriterContext* context, uint32_t clipIndex, uint32_t trackIndex) {
    Clip* clip = clipAt(context, clipIndex);
    if (!clip || trackIndex < 1 || trackIndex > clip->tracks.size()) return nullptr;
    return &clip->tracks[trackIndex - 1];
}

// A record with the fields master clips and sub-clips share.
Clip namedClip(const wchar_t* name, const wchar_t* path, int64_t length, int64_t start) {
    Clip clip;
    copyText(clip.name, kClipTextLength, name);
    copyText(clip.path, kClipTextLength, path);
    clip.length = length;
    clip.startTimecode = start;
    return clip;
}

int32_t appendClip(AafWriterContext* context, Clip&& clip) {
    context->clips.push_back(std::move(clip));
    return int32_t(context->clips.size());
}

}  // namespace

aafMobID_t mobIdToHostOrder(const aafMobID_t& networkOrder) {
    uint8_t bytes[sizeof(aafMobID_t)];
    std::memcpy(bytes, &networkOrder, sizeof bytes);
    swapBytes(bytes + 16, 4);
    swapBytes(bytes + 20, 2);
    swapBytes(bytes + 22, 2);
    aafMobID_t hostOrder;
    std::memcpy(&hostOrder, bytes, sizeof bytes);
    return hostOrder;
}

bool FindClip(const wchar_t* key, const std::vector<Clip>& clips, Clip& out) {
    for (const Clip& clip : clips) {
        if (!clip.isSubClip && std::wcscmp(clip.path, key) == 0) {
            out = clip;
            return true;
        }
    }
    return false;
}

bool isMxfFile(const wchar_t* path) {
    static const wchar_t kExtension[] = L".mxf";
    size_t length = std::wcslen(path);
    if (length < 4) return false;
    for (size_t i = 0; i < 4; ++i)
        if (std::towlower(wint_t(path[length - 4 + i])) != wint_t(kExtension[i])) return false;
    return true;
}

int32_t AddClip(const wchar_t* name, const wchar_t* path, int64_t length, int64_t startTimecode, bool dropFrame,
                const aafMobID_t* tapeMobId, const aafMobID_t* fileMobId, int32_t rateNumerator,
                int32_t rateDenominator, AafWriterContext* context) {
    if (!context || !name || !path) return -1;
    Clip clip = namedClip(name, path, length, startTimecode);
    clip.dropFrame = dropFrame;
    clip.hasTapeMobId = tapeMobId != nullptr;
    if (tapeMobId) clip.tapeMobId = mobIdToHostOrder(*tapeMobId);
    clip.hasFileMobId = fileMobId != nullptr;
    if (fileMobId) clip.fileMobId = mobIdToHostOrder(*fileMobId);
    clip.rateNumerator = rateNumerator;
    clip.rateDenominator = rateDenominator;
    return appendClip(context, std::move(clip));
}

int32_t AddSubClip(const wchar_t* name, const wchar_t* parentPath, int64_t length, int64_t start,
                   AafWriterContext* context) {
    if (!context || !name || !parentPath) return -1;
    Clip clip = namedClip(name, parentPath, length, start);
    clip.isSubClip = true;
    return appendClip(context, std::move(clip));
}

AAFRESULT AddClipTrack(int32_t clipIndex, bool isVideo, uint32_t editRateNumerator, uint32_t editRateDenominator,
                       int64_t length, AafWriterContext* context) {
    // Tracks go to the clip registered last, so a clip's tracks follow its AddClip.
    if (!context || clipIndex < 1 || size_t(clipIndex) != context->clips.size()) return AAFRESULT_INVALID_PARAM;
    Clip& clip = context->clips[clipIndex - 1];
    ClipTrack track;
    track.kind = isVideo ? kClipTrackPicture : kClipTrackSound;
    track.editRate = {int32_t(editRateNumerator), int32_t(editRateDenominator)};
    track.length = length;
    track.trackNumber = uint32_t(clip.tracks.size()) + 1;
    clip.tracks.push_back(track);
    return AAFRESULT_SUCCESS;
}

AAFRESULT SetVideoTrackInfo(uint32_t clipIndex, uint32_t trackIndex, uint32_t width, uint32_t height,
                            AafWriterContext* context) {
    ClipTrack* track = context ? trackAt(context, clipIndex, trackIndex) : nullptr;
    if (!track || track->kind != kClipTrackPicture) return AAFRESULT_INVALID_PARAM;
    track->widthOrChannels = width;
    track->heightOrBits = height;
    return AAFRESULT_SUCCESS;
}

AAFRESULT SetAudioTrackInfo(uint32_t clipIndex, uint32_t trackIndex, uint32_t channels, uint32_t bitsPerSample,
                            uint32_t sampleRate, int64_t sampleLength, AafWriterContext* context) {
    ClipTrack* track = context ? trackAt(context, clipIndex, trackIndex) : nullptr;
    if (!track || track->kind != kClipTrackSound) return AAFRESULT_INVALID_PARAM;
    track->widthOrChannels = channels;
    track->heightOrBits = bitsPerSample;
    track->sampleRate = sampleRate;
    track->sampleLength = sampleLength;
    return AAFRESULT_SUCCESS;
}
