#pragma once
// Debian's olefile as an independent compound-file reader: every stream of every file
// is read back at its stated size.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace testsupport {

inline bool olefileAvailable() { return std::system("/usr/bin/python3 -c 'import olefile' 2>/dev/null") == 0; }

// Answers olefile's complaint, or "" when it reads everything.
inline std::string olefileProblems(const std::vector<std::string>& paths) {
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

}  // namespace testsupport
