#pragma once
// Runs a program as a child process and answers its wall time and peak memory
// (wait4's rusage of that one child), for benchmarks of whole commands.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <chrono>
#include <string>
#include <vector>

extern char** environ;

struct ChildRun {
    bool ok = false;  // started and exited with status 0
    int exitCode = -1;
    double seconds = 0;
    double cpuSeconds = 0;  // user and system
    double peakMiB = 0;
};

// Output goes to /dev/null: the benchmarks measure, they do not show.
inline ChildRun runChild(std::vector<std::string> args) {
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    ChildRun run;
    const auto start = std::chrono::steady_clock::now();
    pid_t pid = 0;
    const bool started = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    struct rusage usage {};
    if (!started || wait4(pid, &status, 0, &usage) != pid) return run;
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const auto toSeconds = [](const timeval& t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    run.cpuSeconds = toSeconds(usage.ru_utime) + toSeconds(usage.ru_stime);
    run.peakMiB = double(usage.ru_maxrss) / 1024.0;  // kilobytes on Linux
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.ok = run.exitCode == 0;
    return run;
}

// This process's own peak resident set so far.
inline double selfPeakMiB() {
    struct rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0;
}
