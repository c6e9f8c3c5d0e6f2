#pragma once
// A new AAF file holding one EssenceData stream of generated content: the
// smallest file with essence, for tests of stream access.
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "aafkit/Builders.h"
#include "aafkit/Essence.h"
#include "aafkit/File.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"
#include "support/PatternStream.h"
#include "support/SampleFiles.h"

namespace testsupport {

inline std::unique_ptr<aafkit::File> fileWithEssence(uint64_t essenceSize) {
    aafkit::ProductIdentification id;
    id.productName = L"stream test";
    std::unique_ptr<aafkit::File> file = aafkit::File::createNew(id);
    aafkit::addEssenceData(*file, aafkit::newMobId(), std::make_unique<PatternStream>(essenceSize));
    return file;
}

// The one EssenceData stream of a file made by fileWithEssence.
inline const aafkit::StreamContent* essenceOf(const aafkit::File& file) {
    const std::vector<aafkit::Object*>* all = nullptr;
    const aafkit::StreamContent* stream = nullptr;
    if (aafkit::getObjects(*file.contentStorage(), PID_ContentStorage_EssenceData, all) != 0 || all->size() != 1 ||
        aafkit::getStream(*all->front(), PID_EssenceData_Data, stream) != 0)
        return nullptr;
    return stream;
}

// Whether `n` bytes at `offset` read back as the pattern.
inline bool readsAsPattern(const aafkit::StreamContent& stream, uint64_t offset, size_t n) {
    std::vector<uint8_t> bytes(n);
    if (!stream.read(offset, bytes.data(), n)) return false;
    for (size_t i = 0; i < n; ++i)
        if (bytes[i] != patternByte(offset + i)) return false;
    return true;
}

}  // namespace testsupport
