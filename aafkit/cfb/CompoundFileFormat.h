#pragma once
// On-disk constants of the compound file, shared by the reader and the writer.
#include <cstddef>
#include <cstdint>

namespace aafkit::cfb {

constexpr uint8_t kSignature[8] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
constexpr uint16_t kByteOrderMark = 0xFFFE;
// The header CLSID of AAF files: the file-kind signature of each sector size.
constexpr uint8_t kAafSignature512[16] = {0x41, 0x41, 0x46, 0x42, 0x0d, 0x00, 0x4f, 0x4d,
                                          0x06, 0x0e, 0x2b, 0x34, 0x01, 0x01, 0x01, 0xff};
constexpr uint8_t kAafSignature4096[16] = {0x01, 0x02, 0x01, 0x0d, 0x00, 0x02, 0x00, 0x00,
                                           0x06, 0x0e, 0x2b, 0x34, 0x03, 0x02, 0x01, 0x01};
constexpr uint16_t kMinorVersion = 0x003E;

// Sector ids at and above kMaxRegularSector are markers, never sectors.
constexpr uint32_t kMaxRegularSector = 0xFFFFFFFA;
constexpr uint32_t kDifatSector = 0xFFFFFFFC;
constexpr uint32_t kFatSector = 0xFFFFFFFD;
constexpr uint32_t kEndOfChain = 0xFFFFFFFE;
constexpr uint32_t kFreeSector = 0xFFFFFFFF;
constexpr uint32_t kNoStream = 0xFFFFFFFF;

constexpr uint16_t kMiniSectorShift = 6;
constexpr uint32_t kMiniSectorSize = 1u << kMiniSectorShift;
constexpr uint32_t kMiniStreamCutoff = 4096;

constexpr size_t kHeaderSize = 512;
constexpr size_t kHeaderDifatCount = 109;
constexpr size_t kEntrySize = 128;
constexpr size_t kMaxNameUnits = 31;  // plus the terminating zero in 64 bytes

// Whole sectors (or mini sectors) needed for `bytes`.
constexpr uint64_t unitsFor(uint64_t bytes, uint32_t unitSize) {
    return bytes / unitSize + (bytes % unitSize != 0);
}

constexpr uint8_t kRed = 0;
constexpr uint8_t kBlack = 1;

}  // namespace aafkit::cfb
