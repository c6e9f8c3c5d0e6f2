#pragma once
// The 512-byte header at the start of a compound file, field by field.
#include <cstdint>

#include "aafkit/io/ByteReader.h"
#include "aafkit/io/ByteWriter.h"
#include "aafkit/cfb/CompoundFileFormat.h"

namespace aafkit::cfb {

struct FileHeader {
    uint8_t signature[8] = {};
    uint8_t clsid[16] = {};
    uint16_t minorVersion = 0;
    uint16_t majorVersion = 0;
    uint16_t byteOrder = 0;
    uint16_t sectorShift = 0;
    uint16_t miniSectorShift = 0;
    uint32_t directorySectorCount = 0;  // zero in version 3 files
    uint32_t fatSectorCount = 0;
    uint32_t firstDirectorySector = 0;
    uint32_t transactionSignature = 0;
    uint32_t miniStreamCutoff = 0;
    uint32_t firstMiniFatSector = 0;
    uint32_t miniFatSectorCount = 0;
    uint32_t firstDifatSector = 0;
    uint32_t difatSectorCount = 0;
    uint32_t difat[kHeaderDifatCount] = {};  // the first FAT sector ids

    // False if fewer than kHeaderSize bytes remain.
    bool read(ByteReader& in);
    // Writes exactly kHeaderSize bytes.
    void write(ByteWriter& out) const;
};

}  // namespace aafkit::cfb
