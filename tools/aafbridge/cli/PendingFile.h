#pragma once
// An output file written under a temporary name beside its place and moved there only
// when complete: a failed or interrupted command never leaves a partial file that looks
// finished.
#include <string>

#include "aafkit/Status.h"

class PendingFile {
public:
    explicit PendingFile(std::string path);
    ~PendingFile();  // removes the temporary file unless committed
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;

    const std::string& path() const { return path_; }
    const std::string& temporaryPath() const { return temporary_; }
    aafkit::Status commit();

private:
    std::string path_;
    std::string temporary_;
    bool committed_ = false;
};
