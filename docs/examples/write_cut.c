/* Writing an AAF file: a two-clip cut with a dissolve, a faded audio track and a marker.
 *
 *   write_cut OUTPUT.aaf
 *
 * Each step is one or a few calls on a writer context; every call answers a result code
 * that the program checks, and the context is freed on every path. */
#include <locale.h>
#include <stdio.h>
#include <stdlib.h>
#include <wchar.h>

#include <aafbridge/aaf_writer.h>

/* Reports a refused call and answers whether it was accepted. */
static int accepted(const char* call, AAFRESULT result) {
    if (result == AAFRESULT_SUCCESS) return 1;
    fprintf(stderr, "write_cut: %s answered 0x%08X\n", call, (unsigned)result);
    return 0;
}

/* Step 1: register the media. Clips are numbered from 1, their tracks from 1. A master
 * clip's tracks follow its AddClip, before the next clip; each track then gets its
 * picture or sound format. */
static int registerClips(AafWriterContext* context) {
    const int32_t interview = AddClip(L"Interview", L"/Volumes/Media/interview.mov", 3000, 90000, false, NULL, NULL,
                                      25, 1, context);
    if (interview < 1 || !accepted("AddClipTrack", AddClipTrack(interview, true, 25, 1, 3000, context)) ||
        !accepted("SetVideoTrackInfo", SetVideoTrackInfo(interview, 1, 1920, 1080, context)))
        return 0;
    const int32_t sound = AddClip(L"Interview sound", L"/Volumes/Media/interview.wav", 3000, 90000, false, NULL, NULL,
                                  25, 1, context);
    /* mono, 24-bit, 48 kHz: 3000 frames at 25 per second are 5,760,000 samples */
    return sound == 2 && accepted("AddClipTrack", AddClipTrack(sound, false, 25, 1, 3000, context)) &&
           accepted("SetAudioTrackInfo", SetAudioTrackInfo(sound, 1, 1, 24, 48000, 5760000, context));
}

/* Step 2: the composition at 25 frames per second, timecode from 10:00:00:00. */
static int startComposition(AafWriterContext* context) {
    return accepted("InitComposition", InitComposition(25, 1, 1000, false, 90000, L"Cut 1", context));
}

/* Step 3: a picture track. Lengths and in-points are in the track's edit units (frames
 * here); the transition overlaps the clips on either side, cutting 12 frames in. */
static int videoTrack(AafWriterContext* context) {
    const uint32_t track = AddTrackToComposition(true, 25.0, context);
    if (track == AAF_NONE) return accepted("AddTrackToComposition", AAFRESULT_NULL_PARAM);
    return accepted("AppendFiller", AppendFiller(track, 25, context)) &&
           accepted("AppendClipToTrack", AppendClipToTrack(track, 100, 250, false, 1, 1, context)) &&
           accepted("AppendTransition", AppendTransition(track, 12, 25, context)) &&
           accepted("AppendClipToTrack", AppendClipToTrack(track, 1000, 200, false, 1, 1, context));
}

/* Step 4: a sound track whose clip fades in and out: a volume effect over the clip
 * before it, with key frames as fractions of the effect's length and one gain each. */
static int audioTrack(AafWriterContext* context) {
    static const double gains[] = {0.0, 1.0, 1.0, 0.0};
    static const double keyFrames[] = {0.0, 0.1, 0.9, 1.0};
    const uint32_t track = AddTrackToComposition(false, 25.0, context);
    if (track == AAF_NONE) return accepted("AddTrackToComposition", AAFRESULT_NULL_PARAM);
    return accepted("AppendClipToTrack", AppendClipToTrack(track, 100, 500, false, 2, 1, context)) &&
           accepted("AppendVolumeEffect", AppendVolumeEffect(track, 500, gains, 4, keyFrames, 4, context));
}

static int describe(AafWriterContext* context) {
    return registerClips(context) && startComposition(context) && videoTrack(context) && audioTrack(context) &&
           accepted("AddMarker", AddMarker(50, L"Name title here", context));
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: write_cut OUTPUT.aaf\n");
        return 2;
    }
    /* Paths cross the interface as wide strings: convert from the locale's encoding. */
    setlocale(LC_ALL, "");
    wchar_t path[4096];
    if (mbstowcs(path, argv[1], 4096) >= 4096) {
        fprintf(stderr, "write_cut: path too long or not in the locale's encoding\n");
        return 1;
    }
    AafWriterContext* context = NULL;
    if (!accepted("CreateAafWriterContext", CreateAafWriterContext(&context))) return 1;
    /* Step 5: the only call that touches the disk. It never replaces an existing file. */
    const int written = describe(context) && accepted("WriteAafFile", WriteAafFile(path, context));
    FreeAafWriterContext(context);
    if (written) printf("wrote %s\n", argv[1]);
    return written ? 0 : 1;
}
