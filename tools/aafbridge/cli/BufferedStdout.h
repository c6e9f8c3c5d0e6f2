#pragma once
// Standard output through one large buffer: a listing printed a few characters at a time
// then costs one stdio write per 64 KiB instead of one per piece.
#include <cstdio>
#include <streambuf>

class BufferedStdout : public std::streambuf {
public:
    BufferedStdout() { setp(buffer_, buffer_ + sizeof buffer_); }
    ~BufferedStdout() override { sync(); }
    BufferedStdout(const BufferedStdout&) = delete;
    BufferedStdout& operator=(const BufferedStdout&) = delete;

protected:
    int_type overflow(int_type c) override;
    // Hands everything buffered to standard output; -1 when it could not be written.
    int sync() override;

private:
    bool writeBuffered();

    char buffer_[1 << 16];
};
