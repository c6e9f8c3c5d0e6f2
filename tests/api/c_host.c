/* A host written in C: it builds against the public headers alone, links the shared
 * library, writes a small composition and reads it back. Exit code 0 on success. */
#include <stdio.h>
#include <wchar.h>

#include "aafbridge/aaf_reader.h"
#include "aafbridge/aaf_writer.h"

static int fail(const char* what) {
    fprintf(stderr, "c_host: %s\n", what);
    return 1;
}

int main(int argc, char** argv) {
    wchar_t path[512];
    AafWriterContext* writer = NULL;
    AafParseContext* reader = NULL;
    wchar_t text[64];
    if (argc != 2 || swprintf(path, 512, L"%s", argv[1]) < 0) return fail("usage: c_host OUTPUT.aaf");
    remove(argv[1]);
    CreateAafWriterContext(&writer);
    if (InitComposition(25, 1, 100, false, 90000, L"From C", writer) != 0) return fail("InitComposition");
    if (AddTrackToComposition(true, 25.0, writer) != 0) return fail("AddTrackToComposition");
    if (AppendFiller(0, 40, writer) != 0) return fail("AppendFiller");
    if (AddMarker(10, L"note", writer) != 0) return fail("AddMarker");
    if (WriteAafFile(path, writer) != 0) return fail("WriteAafFile");
    FreeAafWriterContext(writer);

    if (OpenAafFile(path, &reader) != 0) return fail("OpenAafFile");
    ParseClips(reader);
    ParseComposition(reader);
    if (GetNumTracks(reader) != 1 || GetNumEvents(0, reader) != 1 || GetEventLen(0, 0, reader) != 40)
        return fail("the track did not read back");
    if (GetNumMarkers(reader) != 1 || GetMarkerText(0, text, 63, reader) != 0 || wcscmp(text, L"note") != 0)
        return fail("the marker did not read back");
    CloseFile(reader);
    remove(argv[1]);
    return 0;
}
