#include "cli/PendingFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

PendingFile::PendingFile(std::string path) : path_(std::move(path)), temporary_(path_ + ".partial") {
    std::remove(temporary_.c_str());
}

PendingFile::~PendingFile() {
    if (!committed_) std::remove(temporary_.c_str());
}

aafkit::Status PendingFile::commit() {
    if (std::rename(temporary_.c_str(), path_.c_str()) != 0)
        return aafkit::Status::error("cannot write " + path_ + ": " + std::strerror(errno));
    committed_ = true;
    return aafkit::Status();
}
