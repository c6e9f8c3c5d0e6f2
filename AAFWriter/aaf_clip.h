#pragma once
// The clip registry: master clips with their tracks, and sub-clips, in registration order.
// The host names a clip by its 1-based position in the list.
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <vector>

#include "aafkit/AafTypes.h"

struct AafWriterContext;
namespace aafkit {
class Object;
}

constexpr size_t kClipTextLength = 1024;

enum ClipTrackKind : uint32_t {
    kClipTrackPicture = 0,
    kClipTrackSound = 1,
};

struct ClipTrack {
    uint32_t kind = kClipTrackPicture;
    aafRational_t editRate = {0, 0};
    int64_t length = 0;
    uint32_t trackNumber = 0;  // 1-based position within the clip
    uint32_t widthOrChannels = 0;
    uint32_t heightOrBits = 0;
    uint32_t sampleRate = 0;
    int64_t sampleLength = 0;
};

struct Clip {
    wchar_t name[kClipTextLength] = {};
    wchar_t path[kClipTextLength] = {};  // a sub-clip holds its parent's path
    aafMobID_t masterMobId = {};         // set when written
    std::vector<ClipTrack> tracks;
    int64_t length = 0;
    int64_t startTimecode = 0;  // a sub-clip: its start inside the parent
    bool dropFrame = false;
    aafMobID_t tapeMobId = {};
    bool hasTapeMobId = false;
    aafMobID_t fileMobId = {};
    bool hasFileMobId = false;
    aafMobID_t writtenFileMobId = {};
    int32_t rateNumerator = 0;
    int32_t rateDenominator = 0;
    bool isSubClip = false;
};

// The first master clip whose path equals key exactly; sub-clips never match.
bool FindClip(const wchar_t* key, const std::vector<Clip>& clips, Clip& out);
// True when the path ends in ".mxf", in any case.
bool isMxfFile(const wchar_t* path);
// Caller-given mob IDs carry the material's leading fields in network order.
aafMobID_t mobIdToHostOrder(const aafMobID_t& networkOrder);

// Writing (inside WriteAafFile): master, file and import source mobs; sub-clip mobs.
AAFRESULT WriteClips(AafWriterContext* context);
AAFRESULT WriteSubClips(AafWriterContext* context);
AAFRESULT writeSubClip(Clip& subClip, AafWriterContext* context);
void createSourceMob(Clip& clip, const ClipTrack& track, int64_t startTimecode, aafkit::Object& masterMob,
                     const wchar_t* path, aafkit::Object& importSourceMob, AafWriterContext* context);
// A source clip of the track's picture or sound kind and length; another kind throws 0x8012016A.
aafkit::Object& createSourceClip(const aafSourceRef_t& sourceRef, const ClipTrack& track,
                                 AafWriterContext* context);
// Appends a timeline slot (origin 0, empty name) numbered after the mob's slots; tracks 1
// and 2 both get physical number 1. Answers the slot ID.
uint32_t addTimelineSlot(aafkit::Object& mob, const aafRational_t& editRate, aafkit::Object& segment,
                         uint32_t trackNumber, AafWriterContext* context);
