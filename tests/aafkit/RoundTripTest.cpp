// Saving a loaded file and loading it again gives the same object tree, and what
// aafkit writes is a compound file an independent reader accepts.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <memory>

#include "aafkit/File.h"
#include "aafkit/ResultCodes.h"
#include "support/SampleFiles.h"
#include "support/TreeCheck.h"
#include "support/TreeCompare.h"

namespace {

std::unique_ptr<aafkit::File> reload(aafkit::File& file) {
    std::vector<uint8_t> bytes;
    aafkit::Status saved = file.saveToBytes(bytes);
    EXPECT_TRUE(saved.ok()) << saved.message();
    std::unique_ptr<aafkit::File> again;
    aafkit::Status loaded = aafkit::File::load(std::move(bytes), again);
    EXPECT_TRUE(loaded.ok()) << loaded.message();
    return again;
}

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
    for (const std::string& p : paths) command += " '" + p + "'";
    command += " 2>&1";
    std::string output;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[512];
        while (fgets(buffer, sizeof buffer, pipe)) output += buffer;
        if (pclose(pipe) != 0 && output.empty()) output = "olefile failed";
    }
    return output;
}

TEST(RoundTrip, EverySampleSavesToTheSameTree) {
    SKIP_WITHOUT_SAMPLES();
    std::vector<std::string> written;
    for (const std::string& path : testsupport::sampleFiles()) {
        std::unique_ptr<aafkit::File> file;
        ASSERT_EQ(aafkit::File::openExistingRead(path, file), AAFRESULT_SUCCESS) << path;
        std::unique_ptr<aafkit::File> again = reload(*file);
        ASSERT_TRUE(again) << path;
        EXPECT_EQ(testsupport::firstDifference(*file, *again), "") << path;
        EXPECT_TRUE(testsupport::unresolved(*again).empty()) << path;
        const std::string out = testsupport::temporaryPath("copy-" + std::to_string(written.size()) + ".aaf");
        ASSERT_TRUE(file->save(out).ok());
        written.push_back(out);
    }
    if (olefileAvailable()) {
        EXPECT_EQ(olefileProblems(written), "");
    }
    for (const std::string& p : written) std::remove(p.c_str());
}

}  // namespace
