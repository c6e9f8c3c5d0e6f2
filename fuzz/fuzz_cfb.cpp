// Any bytes: open as a compound file and read every stream of every storage.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "aafkit/cfb/CompoundFileReader.h"

using aafkit::cfb::CompoundFileReader;
using aafkit::cfb::EntryType;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CompoundFileReader reader;
    if (!CompoundFileReader::open(std::vector<uint8_t>(data, data + size), reader)) return 0;
    std::vector<uint8_t> contents;
    for (uint32_t id = 0; id < reader.entryCount(); ++id) {
        const auto& entry = reader.entry(id);
        if (entry.type == EntryType::Stream) reader.readStream(entry, contents);
        for (uint32_t child : reader.children(entry)) reader.child(entry, reader.name(reader.entry(child)));
    }
    return 0;
}
