// aafbridge copy: every sample copied by the tool loads again with the same
// object tree, and Debian's olefile reads every stream of every copy.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

#include "ToolRunner.h"
#include "aafkit/File.h"
#include "aafkit/ResultCodes.h"
#include "support/SampleFiles.h"
#include "support/TreeCheck.h"
#include "support/TreeCompare.h"

namespace {

bool olefileAvailable() { return std::system("/usr/bin/python3 -c 'import olefile' 2>/dev/null") == 0; }

// Reads every stream of every file with olefile; answers its complaint, or "".
std::string olefileProblems(const std::vector<std::string>& paths) {
    std::string script =
        "import olefile, sys\n"
        "for p in sys.argv[1:]:\n"
        "    o = olefile.OleFileIO(p)\n"
        "    for s in o.listdir(streams=True, storages=False):\n"
        "        n = o.get_size('/'.join(s))\n"
        "        d = o.openstream('/'.join(s)).read()\n"
        "        assert len(d) == n, (p, s)\n"
        "    assert o.exists('Header-2/properties'), p\n";
    std::string command = "/usr/bin/python3 -c \"" + script + "\"";
    for (const std::string& p : paths) command += " " + testsupport::quoted(p);
    command += " 2>&1";
    std::string output;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[512];
        while (fgets(buffer, sizeof buffer, pipe)) output += buffer;
        if (pclose(pipe) != 0 && output.empty()) output = "olefile failed";
    }
    return output;
}

TEST(CopyCommand, EverySampleCopiesToTheSameTree) {
    SKIP_WITHOUT_SAMPLES();
    std::vector<std::string> written;
    for (const std::string& path : testsupport::sampleFiles()) {
        const std::string out = testsupport::temporaryPath("copy-" + std::to_string(written.size()) + ".aaf");
        std::remove(out.c_str());
        const testsupport::ToolRun run = testsupport::runTool("copy " + testsupport::quoted(path) + " " + out);
        ASSERT_EQ(run.exitCode, 0) << path << ": " << run.output;
        written.push_back(out);
        std::unique_ptr<aafkit::File> original, copy;
        ASSERT_EQ(aafkit::File::openExistingRead(path, original), AAFRESULT_SUCCESS) << path;
        ASSERT_EQ(aafkit::File::openExistingRead(out, copy), AAFRESULT_SUCCESS) << path;
        EXPECT_EQ(testsupport::firstDifference(*original, *copy), "") << path;
        EXPECT_TRUE(testsupport::unresolved(*copy).empty()) << path;
    }
    const bool olefile = olefileAvailable();
    if (olefile) {
        EXPECT_EQ(olefileProblems(written), "");
    }
    for (const std::string& p : written) std::remove(p.c_str());
    if (!olefile) GTEST_SKIP() << "/usr/bin/python3 has no olefile module: the copies were not read by olefile";
}

TEST(CopyCommand, RefusesWhatItCannotRead) {
    const testsupport::ToolRun run = testsupport::runTool("copy /nonexistent/in.aaf /tmp/never-written.aaf");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.output.find("cannot open /nonexistent/in.aaf: No such file or directory"), std::string::npos) << run.output;
    EXPECT_EQ(testsupport::runTool("copy only-one-argument").exitCode, 2);
}

}  // namespace
