#pragma once
// The bytes of a data-stream property (essence, above all), read on request in
// pieces, never as a whole: streams run to gigabytes.
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "../Status.h"

namespace aafkit {

class StreamContent {
public:
    virtual ~StreamContent() = default;
    virtual uint64_t size() const = 0;
    // Exactly `n` bytes from `offset`; an error (never a short read) when they cannot be had.
    virtual Status read(uint64_t offset, uint8_t* out, size_t n) const = 0;
};

// Bytes held in memory: small streams built by the caller, and tests.
class MemoryStream : public StreamContent {
public:
    explicit MemoryStream(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}
    uint64_t size() const override { return bytes_.size(); }
    Status read(uint64_t offset, uint8_t* out, size_t n) const override;

private:
    std::vector<uint8_t> bytes_;
};

// The chunk size of every streamed copy.
constexpr size_t kCopyChunk = 256 * 1024;

// Hands the content to `sink` in order, a bounded chunk at a time.
using ChunkSink = std::function<Status(const uint8_t* bytes, size_t size)>;
Status copyChunks(const StreamContent& from, const ChunkSink& sink);

// The whole content, for streams known to be small (tests, headers).
Status readAll(const StreamContent& from, std::vector<uint8_t>& out);

}  // namespace aafkit
