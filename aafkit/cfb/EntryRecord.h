#pragma once
// One 128-byte directory entry exactly as stored, field by field.
#include <cstdint>

#include "aafkit/io/ByteReader.h"
#include "aafkit/io/ByteWriter.h"
#include "aafkit/cfb/CompoundFileFormat.h"

namespace aafkit::cfb {

struct EntryRecord {
    char16_t name[kMaxNameUnits + 1] = {};
    uint16_t nameLength = 0;  // in bytes, with the terminating zero; 0 for no name
    uint8_t type = 0;
    uint8_t color = 0;  // kRed or kBlack; unused entries are all zero but for their links
    uint32_t left = kNoStream;
    uint32_t right = kNoStream;
    uint32_t child = kNoStream;
    uint8_t clsid[16] = {};
    uint32_t stateBits = 0;
    uint64_t created = 0;
    uint64_t modified = 0;
    uint32_t startSector = 0;
    uint64_t size = 0;

    // False if fewer than kEntrySize bytes remain.
    bool read(ByteReader& in);
    // Writes exactly kEntrySize bytes.
    void write(ByteWriter& out) const;
};

}  // namespace aafkit::cfb
