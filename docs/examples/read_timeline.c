/* Reading an AAF file: its clips, then its composition track by track, event by event.
 *
 *   read_timeline FILE.aaf
 *
 * The reader answers one value per call. Queries never fail: a bad index answers a
 * neutral value, so a host checks counts first and walks within them. */
#include <locale.h>
#include <stdio.h>
#include <stdlib.h>
#include <wchar.h>

#include <aafbridge/aaf_reader.h>

/* Text copies write up to n characters and a zero after them: n + 1 slots. */
#define TEXT_CHARS 255
typedef wchar_t Text[TEXT_CHARS + 1];

static const char* clipKind(uint32_t kind) {
    switch (kind) {
        case AAF_CLIP_VIDEO: return "picture";
        case AAF_CLIP_AUDIO: return "sound";
        case AAF_CLIP_VIDEO_AND_AUDIO: return "picture and sound";
        default: return "no media";
    }
}

/* Step 2: the clip catalogue, one clip per master mob. */
static void printClips(AafParseContext* session) {
    const uint32_t clips = GetNumClips(session);
    printf("clips: %u\n", clips);
    for (uint32_t c = 0; c < clips; ++c) {
        Text name, path;
        LoadClipName(c, name, TEXT_CHARS, session);
        LoadClipPath(c, path, TEXT_CHARS, session);
        printf("  clip %u: \"%ls\", %s, at \"%ls\"\n", c, name, clipKind(LoadClipType(c, session)), path);
    }
}

static const char* effectName(uint32_t type) {
    switch (type) {
        case AAF_EFFECT_VOLUME: return "volume";
        case AAF_EFFECT_PAN: return "pan";
        case AAF_EFFECT_COMPOSITE: return "composite";
        case AAF_EFFECT_SPEED:
        case AAF_EFFECT_SPEED_NO_FLAG: return "speed";
        default: return "other";
    }
}

/* An effect covers the events before it; its key frames are offsets in edit units. */
static void printEffect(uint32_t track, uint32_t event, AafParseContext* session) {
    const uint32_t keyFrames = GetEffectKeyFrameCount(track, event, session);
    const uint32_t params = GetEffectParamCount(track, event, session);
    printf("%s effect, %u key frames:", effectName(GetEffectType(track, event, session)), keyFrames);
    for (uint32_t k = 0; k < keyFrames && k < params; ++k)
        printf(" %lld=%.2f", (long long)GetEffectKeyFrame(track, event, k, session),
               GetEffectParam(track, event, k, session));
    if (keyFrames == 0 && params > 0) printf(" constant %.2f", GetEffectParam(track, event, 0, session));
}

/* Step 4: one event. A clip is the event that none of the three kind tests claims. */
static void printEvent(uint32_t track, uint32_t event, AafParseContext* session) {
    printf("    event %u, %lld units: ", event, (long long)GetEventLen(track, event, session));
    if (IsEventFiller(track, event, session)) {
        printf("filler");
    } else if (IsEventTransition(track, event, session)) {
        printf("transition cutting at %lld", (long long)GetTransitionCutPoint(track, event, session));
    } else if (IsEventEffect(track, event, session)) {
        printEffect(track, event, session);
    } else {
        Text name;
        GetEventName(track, event, name, TEXT_CHARS, session);
        printf("clip \"%ls\" from %lld, slot %u", name, (long long)GetEventInPoint(track, event, session),
               GetEventSlot(track, event, session));
    }
    printf("\n");
}

/* Step 3: the composition's timecode, markers and tracks. */
static void printComposition(AafParseContext* session) {
    uint32_t start = 0, fps = 0, dropFrame = 0;
    GetTimeCode(&start, &fps, &dropFrame, session);
    printf("timecode: frame %u at %u fps%s\n", start, fps, dropFrame ? " drop-frame" : "");
    for (uint32_t m = 0; m < GetNumMarkers(session); ++m) {
        Text text;
        GetMarkerText(m, text, TEXT_CHARS, session);
        printf("marker at %lld: %ls\n", (long long)GetMarkerPosition(m, session), text);
    }
    const uint32_t tracks = GetNumTracks(session);
    for (uint32_t t = 0; t < tracks; ++t) {
        const uint32_t events = GetNumEvents(t, session);
        printf("track %u: %s at %g units/s, %u events\n", t,
               GetTrackType(t, session) == AAF_TRACK_VIDEO ? "picture" : "sound", GetTrackEditRate(t, session),
               events);
        for (uint32_t e = 0; e < events; ++e) printEvent(t, e, session);
    }
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: read_timeline FILE.aaf\n");
        return 2;
    }
    setlocale(LC_ALL, "");
    wchar_t path[4096];
    if (mbstowcs(path, argv[1], 4096) >= 4096) {
        fprintf(stderr, "read_timeline: path too long or not in the locale's encoding\n");
        return 1;
    }
    /* Step 1: open. After a failure the handle is not a session: do not close it. */
    AafParseContext* session = NULL;
    if (OpenAafFile(path, &session) != AAFRESULT_SUCCESS) {
        fprintf(stderr, "read_timeline: cannot open %s as an AAF file\n", argv[1]);
        return 1;
    }
    if (IsProToolsFile(session)) printf("written by Pro Tools\n");
    ParseClips(session); /* before ParseComposition: it tells track kinds from the clips */
    printClips(session);
    ParseComposition(session);
    printComposition(session);
    /* Step 5: close once; everything read through the session goes with it. */
    CloseFile(session);
    return 0;
}
