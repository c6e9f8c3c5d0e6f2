#pragma once
// A data stream of a loaded file, read from the file on request: loading an
// object never reads its essence.
#include <string>

#include "../cfb/CompoundFileReader.h"
#include "../io/StreamContent.h"

namespace aafkit {

class StoredStream : public StreamContent {
public:
    // Keeps its own copy of the entry and its name: the directory is let go once
    // the objects are loaded.
    StoredStream(const cfb::CompoundFileReader& storage, const cfb::DirectoryEntry& entry)
        : storage_(storage), entry_(entry), name_(storage.name(entry)) {}
    uint64_t size() const override { return entry_.size; }
    Status read(uint64_t offset, uint8_t* out, size_t n) const override {
        Status s = storage_.readStreamRange(entry_, offset, out, n, cursor_);
        return s ? s : Status::error(s.message() + " in stream '" + name_ + "'");
    }

private:
    const cfb::CompoundFileReader& storage_;
    const cfb::DirectoryEntry entry_;
    const std::string name_;
    mutable cfb::ChainCursor cursor_;  // sequential reads walk the chain once
};

}  // namespace aafkit
