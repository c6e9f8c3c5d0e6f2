// A host that reads and writes on several threads at once, each thread with its own
// session or context, through the shared library alone. Every reader must see exactly
// what a lone reader saw; the files written at once must not share identifiers. Run
// under ThreadSanitizer in CI, where any data race fails it.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "aafbridge/aaf_reader.h"
#include "aafbridge/aaf_writer.h"
#include "support/SampleFiles.h"

namespace {

constexpr int kWriters = 3;
constexpr int kReaders = 3;
constexpr int kRounds = 2;

std::wstring wide(const std::string& text) { return std::wstring(text.begin(), text.end()); }

std::string narrow(const wchar_t* text) {
    std::string out;
    for (; *text; ++text) out += char(*text);
    return out;
}

// A composition of `clips` clips, each on the picture track, with a fade on the sound track.
AAFRESULT writeCut(const std::string& path, int clips) {
    AafWriterContext* context = nullptr;
    CreateAafWriterContext(&context);
    InitComposition(25, 1, 100 * clips, false, 90000, wide("Cut of " + std::to_string(clips)).c_str(), context);
    const uint32_t picture = AddTrackToComposition(true, 25.0, context);
    const uint32_t sound = AddTrackToComposition(false, 25.0, context);
    for (int c = 1; c <= clips; ++c) {
        const std::wstring name = wide("Shot " + std::to_string(c));
        const std::wstring media = wide("/media/shot" + std::to_string(c) + ".mov");
        AddClip(name.c_str(), media.c_str(), 1000, 0, false, nullptr, nullptr, 25, 1, context);
        AddClipTrack(c, true, 25, 1, 1000, context);
        AppendClipToTrack(picture, 10 * c, 100, false, c, 1, context);
    }
    AppendFiller(sound, 50, context);
    const double gains[] = {0.0, 1.0};
    const double keyFrames[] = {0.0, 1.0};
    AddClip(L"Sound", L"/media/sound.wav", 1000, 0, false, nullptr, nullptr, 25, 1, context);
    AddClipTrack(clips + 1, false, 25, 1, 1000, context);
    AppendClipToTrack(sound, 0, 100, false, clips + 1, 1, context);
    AppendVolumeEffect(sound, 100, gains, 2, keyFrames, 2, context);
    std::filesystem::remove(path);
    const AAFRESULT written = WriteAafFile(wide(path).c_str(), context);
    FreeAafWriterContext(context);
    return written;
}

struct Reading {
    std::string summary;           // every answer of the query functions, in walk order
    std::set<std::string> mobIds;  // the mobs the clips reference
};

void readEvent(AafParseContext* session, uint32_t t, uint32_t e, Reading& reading) {
    wchar_t text[256];
    reading.summary += " " + std::to_string(GetEventLen(t, e, session)) + "/" +
                       std::to_string(GetEventInPoint(t, e, session)) + "/" +
                       std::to_string(IsEventFiller(t, e, session)) + std::to_string(IsEventTransition(t, e, session)) +
                       std::to_string(IsEventEffect(t, e, session));
    if (IsEventEffect(t, e, session))
        for (uint32_t k = 0; k < GetEffectKeyFrameCount(t, e, session); ++k)
            reading.summary += "@" + std::to_string(GetEffectKeyFrame(t, e, k, session)) + "=" +
                               std::to_string(GetEffectParam(t, e, k, session));
    if (GetEventName(t, e, text, 255, session) == AAFRESULT_SUCCESS) reading.summary += narrow(text);
    if (GetEventId(t, e, text, 255, session) == AAFRESULT_SUCCESS && text[0]) reading.mobIds.insert(narrow(text));
}

Reading readFile(const std::string& path) {
    Reading reading;
    AafParseContext* session = nullptr;
    if (OpenAafFile(wide(path).c_str(), &session) != AAFRESULT_SUCCESS) return {"cannot open", {}};
    ParseClips(session);
    ParseComposition(session);
    reading.summary = std::to_string(GetNumClips(session)) + " clips, " + std::to_string(GetNumMarkers(session)) +
                      " markers";
    for (uint32_t t = 0; t < GetNumTracks(session); ++t) {
        reading.summary += "\ntrack " + std::to_string(GetTrackType(t, session)) + " " +
                           std::to_string(GetTrackEditRate(t, session)) + ":";
        for (uint32_t e = 0; e < GetNumEvents(t, session); ++e) readEvent(session, t, e, reading);
    }
    CloseFile(session);
    return reading;
}

std::string writtenPath(const std::string& name) { return testsupport::temporaryPath("threads-" + name + ".aaf"); }

TEST(ThreadedHost, ReadersAndWritersAtOnceEachWithItsOwnContext) {
    // What the readers read: the samples, when there, and files written beforehand.
    std::vector<std::string> files = testsupport::sampleFiles();
    for (int i = 0; i < 2; ++i) {
        files.push_back(writtenPath("source-" + std::to_string(i)));
        ASSERT_EQ(writeCut(files.back(), 3 + i), AAFRESULT_SUCCESS);
    }
    std::vector<std::string> expected;
    for (const std::string& file : files) expected.push_back(readFile(file).summary);

    std::vector<std::vector<std::string>> seen(kReaders);
    std::vector<std::vector<Reading>> written(kWriters);
    std::vector<std::thread> threads;
    // The samples' own error lines stay on standard error, where a sanitizer reports too.
    for (int r = 0; r < kReaders; ++r)
        threads.emplace_back([&, r] {
            for (int round = 0; round < kRounds; ++round)
                for (size_t f = 0; f < files.size(); ++f) seen[r].push_back(readFile(files[(f + r) % files.size()]).summary);
        });
    for (int w = 0; w < kWriters; ++w)
        threads.emplace_back([&, w] {
            for (int round = 0; round < kRounds; ++round) {
                const std::string path = writtenPath(std::to_string(w) + "-" + std::to_string(round));
                if (writeCut(path, 2 + w) == AAFRESULT_SUCCESS) written[w].push_back(readFile(path));
                std::filesystem::remove(path);
            }
        });
    for (std::thread& thread : threads) thread.join();

    for (int r = 0; r < kReaders; ++r) {
        ASSERT_EQ(seen[r].size(), kRounds * files.size());
        for (size_t i = 0; i < seen[r].size(); ++i)
            EXPECT_EQ(seen[r][i], expected[(i % files.size() + r) % files.size()]) << "reader " << r << " read " << i;
    }
    std::set<std::string> mobIds;
    size_t clipReferences = 0;
    for (int w = 0; w < kWriters; ++w) {
        ASSERT_EQ(written[w].size(), size_t(kRounds)) << "writer " << w;
        for (const Reading& reading : written[w]) {
            EXPECT_EQ(reading.summary, written[w][0].summary) << "writer " << w;
            EXPECT_EQ(reading.mobIds.size(), size_t(2 + w + 1));
            clipReferences += reading.mobIds.size();
            mobIds.insert(reading.mobIds.begin(), reading.mobIds.end());
        }
    }
    // New mobs get new identifiers: no two files written at once share one.
    EXPECT_EQ(mobIds.size(), clipReferences);
    for (int i = 0; i < 2; ++i) std::filesystem::remove(writtenPath("source-" + std::to_string(i)));
}

}  // namespace
