// aafbridge objects: the tree as text and JSON, deterministic, with values
// decoded by their types.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ToolRunner.h"
#include "support/SampleFiles.h"

namespace {

TEST(ObjectsCommand, DecodesOneClipAndIsDeterministic) {
    SKIP_WITHOUT_SAMPLES();
    const std::string path = testsupport::quoted(testsupport::sample("media-composer/one_clip.aaf"));
    const testsupport::ToolRun first = testsupport::runTool("objects " + path);
    ASSERT_EQ(first.exitCode, 0) << first.output;
    EXPECT_EQ(testsupport::runTool("objects " + path).output, first.output);
    // A SourceClip's picture data definition, resolved through the Dictionary.
    EXPECT_NE(first.output.find("DataDefinition = -> DataDefinition {01030202-0100-0000-060e-2b3404010101}"),
              std::string::npos);
    EXPECT_NE(first.output.find("ByteOrder = 18761"), std::string::npos);  // 'II'
    EXPECT_NE(first.output.find("UsageCode = Usage_TopLevel"), std::string::npos);
    EXPECT_NE(first.output.find("EditRate = Numerator=24 Denominator=1"), std::string::npos);
    EXPECT_NE(first.output.find("CreationTime = date={year="), std::string::npos);  // nested records
    EXPECT_EQ(first.output.rfind("Header\n", 0), 0u);
}

TEST(ObjectsCommand, JsonHasTheSameTree) {
    SKIP_WITHOUT_SAMPLES();
    const std::string path = testsupport::quoted(testsupport::sample("resolve/DR_Markers.aaf"));
    const testsupport::ToolRun run = testsupport::runTool("objects " + path + " --json");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    const nlohmann::json tree = nlohmann::json::parse(run.output);
    EXPECT_EQ(tree["class"], "Header");
    bool hasContent = false;
    for (const auto& p : tree["properties"])
        if (p["name"] == "Content") hasContent = p["object"]["class"] == "ContentStorage";
    EXPECT_TRUE(hasContent);
}

}  // namespace
