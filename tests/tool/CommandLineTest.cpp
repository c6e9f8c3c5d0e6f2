// The tool's command line: help and version, options wherever they stand, usage
// errors with exit status 2, and failures that name the command and the reason.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "ToolRunner.h"
#include "support/SampleFiles.h"

namespace {

using testsupport::runTool;

const char* const kCommands[] = {"info", "objects", "timeline", "copy", "write", "demo"};

using testsupport::testFile;

TEST(CommandLine, ToolHelpListsEveryCommandAndTheExitCodes) {
    for (const char* help : {"--help", "-h"}) {
        const testsupport::ToolRun run = runTool(help, false);
        EXPECT_EQ(run.exitCode, 0) << help;
        for (const char* command : kCommands)
            EXPECT_NE(run.output.find(std::string("\n  ") + command + " "), std::string::npos) << command;
        EXPECT_NE(run.output.find("2  usage error"), std::string::npos);
    }
    const testsupport::ToolRun bare = runTool("");
    EXPECT_EQ(bare.exitCode, 2);
    EXPECT_NE(bare.output.find("usage: aafbridge"), std::string::npos);
}

TEST(CommandLine, EveryCommandHasHelpOnStandardOutput) {
    for (const char* command : kCommands) {
        for (const char* help : {" --help", " -h", " some-file -h"}) {
            const testsupport::ToolRun run = runTool(std::string(command) + help, false);
            EXPECT_EQ(run.exitCode, 0) << command << help;
            EXPECT_EQ(run.output.rfind(std::string("usage: aafbridge ") + command + " ", 0), 0u) << run.output;
            EXPECT_NE(run.output.find("-h, --help"), std::string::npos) << command;
        }
    }
}

TEST(CommandLine, VersionIsTheProjectVersion) {
    const testsupport::ToolRun run = runTool("--version");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, std::string("aafbridge ") + AAFBRIDGE_VERSION + "\n");
}

TEST(CommandLine, UsageErrorsExitWithTwoAndNameTheProblem) {
    const struct {
        const char* arguments;
        const char* message;
    } cases[] = {
        {"frobnicate", "aafbridge: unknown command \"frobnicate\""},
        {"objects", "aafbridge objects: missing operand FILE\nusage: aafbridge objects FILE [--json]\n"},
        {"copy a", "aafbridge copy: missing operand OUT\n"},
        {"timeline a b", "aafbridge timeline: unexpected operand \"b\"\n"},
        {"objects --xml a", "aafbridge objects: unknown option --xml\n"},
        {"objects --json=yes a", "aafbridge objects: option --json takes no value\n"},
    };
    for (const auto& c : cases) {
        const testsupport::ToolRun run = runTool(c.arguments);
        EXPECT_EQ(run.exitCode, 2) << c.arguments;
        EXPECT_EQ(run.output.rfind(c.message, 0), 0u) << c.arguments << "\n" << run.output;
    }
}

TEST(CommandLine, OptionsMayComeBeforeOrAfterTheOperands) {
    const std::string file = testFile(".aaf");
    std::filesystem::remove(file);
    ASSERT_EQ(runTool("demo " + file).exitCode, 0);
    for (const char* command : {"objects", "timeline"}) {
        const testsupport::ToolRun after = runTool(std::string(command) + " " + file + " --json", false);
        const testsupport::ToolRun before = runTool(std::string(command) + " --json " + file, false);
        const testsupport::ToolRun text = runTool(std::string(command) + " " + file, false);
        EXPECT_EQ(after.exitCode, 0) << command;
        EXPECT_EQ(before.output, after.output) << command;
        EXPECT_EQ(after.output.rfind("{", 0), 0u) << command;
        EXPECT_NE(text.output, after.output) << command;
    }
    std::filesystem::remove(file);
}

// A file whose name starts with a dash is still an operand after "--".
TEST(CommandLine, DoubleDashEndsTheOptions) {
    const std::string directory = testFile("-dir");
    std::filesystem::create_directories(directory);
    const testsupport::ToolRun run = runTool("demo -- " + directory + "/-cut.aaf");
    EXPECT_EQ(run.exitCode, 0) << run.output;
    EXPECT_TRUE(std::filesystem::exists(directory + "/-cut.aaf"));
    std::filesystem::remove_all(directory);
}

TEST(CommandLine, FailuresNameTheCommandWhatFailedAndTheSystemReason) {
    const std::string missing = testFile("-absent/x.aaf");
    const struct {
        std::string arguments;
        std::string message;
    } cases[] = {
        {"demo " + missing, "aafbridge demo: cannot write " + missing + ": No such file or directory\n"},
        {"objects " + missing, "aafbridge objects: cannot open " + missing + ": No such file or directory\n"},
        {"timeline " + missing, "aafbridge timeline: cannot open " + missing + ": No such file or directory\n"},
        {"copy " + missing + " /tmp/x", "aafbridge copy: cannot open " + missing + ": No such file or directory\n"},
        {"write " + missing + " /tmp/x", "aafbridge write: cannot open " + missing + ": No such file or directory\n"},
    };
    for (const auto& c : cases) {
        const testsupport::ToolRun run = runTool(c.arguments);
        EXPECT_EQ(run.exitCode, 1) << c.arguments;
        EXPECT_EQ(run.output, c.message);
    }
}

TEST(CommandLine, CopyIntoAMissingFolderSaysSoAndLeavesNothing) {
    const std::string source = testFile(".aaf");
    const std::string target = testFile("-absent/copy.aaf");
    ASSERT_EQ(runTool("demo " + source).exitCode, 0);
    const testsupport::ToolRun run = runTool("copy " + source + " " + target);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.output, "aafbridge copy: cannot write " + target + ": No such file or directory\n");
    EXPECT_FALSE(std::filesystem::exists(target));
    std::filesystem::remove(source);
}

TEST(CommandLine, NotAnAafFileIsNamed) {
    const std::string text = testFile(".txt");
    { std::ofstream(text) << "plain text, long enough to be anything but a compound file header"; }
    const testsupport::ToolRun run = runTool("objects " + text);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.output, "aafbridge objects: " + text + " is not an AAF file\n");
    std::filesystem::remove(text);
}

}  // namespace
