#include "StreamContent.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace aafkit {

Status MemoryStream::read(uint64_t offset, uint8_t* out, size_t n) const {
    if (offset > bytes_.size() || n > bytes_.size() - offset)
        return Status::error("read of " + std::to_string(n) + " bytes at " + std::to_string(offset) +
                             " past the end of a " + std::to_string(bytes_.size()) + "-byte stream");
    if (n) std::memcpy(out, bytes_.data() + offset, n);
    return Status();
}

Status copyChunks(const StreamContent& from, const ChunkSink& sink) {
    const uint64_t total = from.size();
    std::vector<uint8_t> chunk(size_t(std::min<uint64_t>(total, kCopyChunk)));
    for (uint64_t at = 0; at < total;) {
        const size_t n = size_t(std::min<uint64_t>(total - at, chunk.size()));
        if (Status s = from.read(at, chunk.data(), n); !s) return s;
        if (Status s = sink(chunk.data(), n); !s) return s;
        at += n;
    }
    return Status();
}

Status readAll(const StreamContent& from, std::vector<uint8_t>& out) {
    out.clear();
    out.reserve(size_t(from.size()));
    return copyChunks(from, [&](const uint8_t* bytes, size_t size) {
        out.insert(out.end(), bytes, bytes + size);
        return Status();
    });
}

}  // namespace aafkit
