#include "cli/FileStream.h"

aafkit::Status FileStream::open(const std::string& path, std::unique_ptr<FileStream>& out) {
    std::unique_ptr<aafkit::io::InputFile> file;
    if (aafkit::Status s = aafkit::io::InputFile::open(path, file); !s) return s;
    out.reset(new FileStream(std::move(file)));
    return aafkit::Status();
}
