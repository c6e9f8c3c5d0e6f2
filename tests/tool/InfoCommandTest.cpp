// aafbridge info: the summary of a file the tool wrote, whose every figure is known,
// and of samples whose embedded essence olefile measured independently.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>

#include "ToolRunner.h"
#include "support/SampleFiles.h"

namespace {

using Json = nlohmann::json;

// ctest runs the tests in parallel: each writes its own demo file.
struct InfoCommand : testing::Test {
    std::string demo = testsupport::testFile(".aaf");
    void SetUp() override {
        std::filesystem::remove(demo);
        ASSERT_EQ(testsupport::runTool("demo " + demo).exitCode, 0);
    }
    void TearDown() override { std::filesystem::remove(demo); }

    static Json info(const std::string& path) {
        const testsupport::ToolRun run = testsupport::runTool("info --json " + testsupport::quoted(path), false);
        EXPECT_EQ(run.exitCode, 0) << path;
        return Json::parse(run.output, nullptr, false);
    }
};

TEST_F(InfoCommand, DemoFileFactsAndWriter) {
    const Json facts = info(demo);
    EXPECT_EQ(facts["file"]["kind"], "AAF 4K binary");
    EXPECT_EQ(facts["file"]["sectorSize"], 4096);
    EXPECT_EQ(facts["file"]["size"].get<uint64_t>(), std::filesystem::file_size(demo));
    ASSERT_EQ(facts["identifications"].size(), 1u);
    const Json& writer = facts["identifications"][0];
    EXPECT_EQ(writer["company"], "Corvane");
    EXPECT_EQ(writer["product"], "Staveline");
    EXPECT_EQ(writer["version"], "12");
    EXPECT_EQ(writer["platform"], "Windows");
    EXPECT_GE(std::stoi(writer["date"].get<std::string>().substr(0, 4)), 2024);
    // Three clips: a master mob and a file source mob each.
    EXPECT_EQ(facts["mobs"]["composition"], 1);
    EXPECT_EQ(facts["mobs"]["master"], 3);
    EXPECT_EQ(facts["mobs"]["file source"], 3);
    EXPECT_EQ(facts["essence"], Json({{"streams", 0}, {"bytes", 0}}));
}

TEST_F(InfoCommand, DemoCompositionTracks) {
    const Json facts = info(demo);
    ASSERT_EQ(facts["compositions"].size(), 1u);
    const Json& composition = facts["compositions"][0];
    EXPECT_EQ(composition["name"], "Demo");
    EXPECT_EQ(composition["length"], 1000);
    EXPECT_EQ(composition["editRate"], Json({25, 1}));
    std::map<std::string, std::pair<std::string, int64_t>> tracks;
    for (const Json& track : composition["tracks"])
        tracks[track["name"]] = {track["kind"], track["length"].get<int64_t>()};
    // Video: 250 + 300 + 200 + 50 less the 25 the transition overlaps; audio: 500 + 250.
    EXPECT_EQ(tracks["Video track"], std::make_pair(std::string("DataDef_Picture"), int64_t(775)));
    EXPECT_EQ(tracks["Audio track"], std::make_pair(std::string("DataDef_Sound"), int64_t(750)));
    EXPECT_EQ(tracks["Timecode"].second, 1000);
}

TEST_F(InfoCommand, TextSummary) {
    const testsupport::ToolRun run = testsupport::runTool("info " + demo, false);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output.rfind("file: AAF 4K binary, 4096-byte sectors, ", 0), 0u) << run.output;
    EXPECT_NE(run.output.find("\n  Corvane Staveline 12, Windows, "), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("\ncomposition \"Demo\": length 1000 at 25/1, 4 tracks\n"), std::string::npos);
    EXPECT_NE(run.output.find("\nembedded essence: 0 streams, 0 bytes\n"), std::string::npos);
}

TEST_F(InfoCommand, EmbeddedEssenceIsCountedFromTheStreams) {
    SKIP_WITHOUT_SAMPLES();
    const struct {
        const char* file;
        uint64_t bytes;
    } cases[] = {{"pro-tools/PT_PCM_Internal.aaf", 64000}, {"premiere/PR_WAV_Internal.aaf", 102548}};
    for (const auto& c : cases) {
        const Json facts = info(testsupport::sample(c.file));
        EXPECT_EQ(facts["essence"], Json({{"streams", 1}, {"bytes", c.bytes}})) << c.file;
    }
}

TEST_F(InfoCommand, EverySampleSummarises) {
    SKIP_WITHOUT_SAMPLES();
    for (const std::string& path : testsupport::sampleFiles()) {
        const Json facts = info(path);
        ASSERT_FALSE(facts.is_discarded()) << path;
        EXPECT_EQ(facts["file"]["size"].get<uint64_t>(), std::filesystem::file_size(path)) << path;
        EXPECT_FALSE(facts["identifications"].empty()) << path;
        EXPECT_EQ(facts["compositions"].size(), facts["mobs"].value("composition", 0)) << path;
    }
}

}  // namespace
