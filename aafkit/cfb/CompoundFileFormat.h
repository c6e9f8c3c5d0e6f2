#pragma once
// On-disk constants of the compound file, shared by the reader and the writer.
#include <cstddef>
#include <cstdint>

namespace aafkit::cfb {

constexpr uint8_t kSignature[8] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
constexpr uint16_t kByteOrderMark = 0xFFFE;
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

// Byte offsets inside the header.
namespace header {
constexpr size_t kClsid = 8;
constexpr size_t kMinorVersion = 24;
constexpr size_t kMajorVersion = 26;
constexpr size_t kByteOrder = 28;
constexpr size_t kSectorShift = 30;
constexpr size_t kMiniSectorShift = 32;
constexpr size_t kDirectorySectorCount = 40;
constexpr size_t kFatSectorCount = 44;
constexpr size_t kFirstDirectorySector = 48;
constexpr size_t kMiniStreamCutoff = 56;
constexpr size_t kFirstMiniFatSector = 60;
constexpr size_t kMiniFatSectorCount = 64;
constexpr size_t kFirstDifatSector = 68;
constexpr size_t kDifatSectorCount = 72;
constexpr size_t kDifat = 76;
}  // namespace header

// Byte offsets inside a 128-byte directory entry.
namespace entry {
constexpr size_t kNameLength = 64;
constexpr size_t kType = 66;
constexpr size_t kColor = 67;
constexpr size_t kLeft = 68;
constexpr size_t kRight = 72;
constexpr size_t kChild = 76;
constexpr size_t kClsid = 80;
constexpr size_t kStartSector = 116;
constexpr size_t kSize = 120;
}  // namespace entry

constexpr uint8_t kRed = 0;
constexpr uint8_t kBlack = 1;

}  // namespace aafkit::cfb
