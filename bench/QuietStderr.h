#pragma once
// Standard error sent to /dev/null while one lives: what the code under measurement prints
// about its input (a sample's error line, write's notes) stays out of the report.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

class QuietStderr {
public:
    QuietStderr() : saved_(dup(STDERR_FILENO)) {
        std::fflush(stderr);
        int null = open("/dev/null", O_WRONLY);
        dup2(null, STDERR_FILENO);
        close(null);
    }
    ~QuietStderr() {
        std::fflush(stderr);
        dup2(saved_, STDERR_FILENO);
        close(saved_);
    }

private:
    int saved_;
};
