// Any sequence of the exported writer calls with any arguments a host could pass
// (valid pointers, arrays as long as their counts, texts of any length and any
// characters), then WriteAafFile, then the written file read back through the reader.
#include <fuzzer/FuzzedDataProvider.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "ReaderQueries.h"
#include "aafbridge/aaf_writer.h"

namespace {

// Mostly the values that break arithmetic: the limits, zero, small and raw numbers.
template <class T>
T anyInteger(FuzzedDataProvider& input) {
    switch (input.ConsumeIntegralInRange(0, 4)) {
    case 0: return std::numeric_limits<T>::max();
    case 1: return std::numeric_limits<T>::min();
    case 2: return input.ConsumeIntegralInRange<T>(0, 3);
    case 3: return T(input.ConsumeIntegralInRange<int>(-2, 300));
    default: return input.ConsumeIntegral<T>();
    }
}

double anyDouble(FuzzedDataProvider& input) {
    switch (input.ConsumeIntegralInRange(0, 4)) {
    case 0: return std::numeric_limits<double>::infinity();
    case 1: return std::numeric_limits<double>::quiet_NaN();
    case 2: return -std::numeric_limits<double>::max();
    case 3: return input.ConsumeIntegralInRange(-2, 60) / 2.0;
    default: return input.ConsumeFloatingPoint<double>();
    }
}

// Names up to past the 1,024 characters a clip keeps, with any code unit, beyond U+FFFF too.
std::wstring anyText(FuzzedDataProvider& input) {
    const size_t length = input.ConsumeBool() ? input.ConsumeIntegralInRange<size_t>(0, 8)
                                              : input.ConsumeIntegralInRange<size_t>(1000, 1100);
    std::wstring text;
    const auto filler = wchar_t(input.ConsumeIntegralInRange<uint32_t>(1, 0x10FFFF));
    for (size_t i = 0; i < length; ++i) {
        const bool any = input.ConsumeBool();
        wchar_t unit = any ? wchar_t(input.ConsumeIntegral<uint32_t>()) : filler;
        text.push_back(unit == 0 ? L'x' : unit);
    }
    // Often a media path, so that the MXF branches are taken too.
    if (input.ConsumeBool()) text += input.ConsumeBool() ? L".mxf" : L".MOV";
    return text;
}

aafMobID_t anyMobId(FuzzedDataProvider& input) {
    aafMobID_t id = {};
    input.ConsumeData(&id, sizeof id);
    return id;
}

std::vector<double> anyDoubles(FuzzedDataProvider& input) {
    std::vector<double> values(input.ConsumeIntegralInRange<size_t>(0, 6));
    for (double& value : values) value = anyDouble(input);
    return values;
}

AAFRESULT appendEffect(FuzzedDataProvider& input, AafWriterContext* c) {
    const auto kind = input.ConsumeIntegralInRange(0, 3);
    const auto track = anyInteger<uint32_t>(input);
    const auto length = anyInteger<int64_t>(input);
    const bool flag = input.ConsumeBool();
    const std::vector<double> values = anyDoubles(input), keyFrames = anyDoubles(input);
    const auto valueCount = input.ConsumeIntegralInRange<uint32_t>(0, uint32_t(values.size()));
    const auto keyFrameCount = input.ConsumeIntegralInRange<int32_t>(-1, int32_t(keyFrames.size()));
    const double* v = values.empty() ? nullptr : values.data();
    const double* k = keyFrames.empty() ? nullptr : keyFrames.data();
    switch (kind) {
    case 0: return AppendVolumeEffect(track, length, v, valueCount, k, keyFrameCount, c);
    case 1: return AppendPanEffect(track, length, v, valueCount, k, keyFrameCount, c);
    case 2: return AppendVideoCompositeEffect(track, length, v, valueCount, k, keyFrameCount, c);
    default: return AppendSpeedEffect(track, flag, length, v, valueCount, k, keyFrameCount, c);
    }
}

void addClip(FuzzedDataProvider& input, AafWriterContext* c) {
    const std::wstring name = anyText(input), path = anyText(input);
    const auto length = anyInteger<int64_t>(input), start = anyInteger<int64_t>(input);
    const bool drop = input.ConsumeBool();
    const aafMobID_t tape = anyMobId(input), file = anyMobId(input);
    const bool hasTape = input.ConsumeBool(), hasFile = input.ConsumeBool();
    const auto numerator = anyInteger<int32_t>(input), denominator = anyInteger<int32_t>(input);
    AddClip(name.c_str(), path.c_str(), length, start, drop, hasTape ? &tape : nullptr, hasFile ? &file : nullptr,
            numerator, denominator, c);
}

void addSubClip(FuzzedDataProvider& input, AafWriterContext* c) {
    const std::wstring name = anyText(input), parent = anyText(input);
    const auto length = anyInteger<int64_t>(input), start = anyInteger<int64_t>(input);
    AddSubClip(name.c_str(), parent.c_str(), length, start, c);
}

// Clips and tracks are addressed by small numbers mostly, so that calls find them.
uint32_t anyIndex(FuzzedDataProvider& input) {
    return input.ConsumeBool() ? input.ConsumeIntegralInRange<uint32_t>(0, 4) : anyInteger<uint32_t>(input);
}

void oneCall(FuzzedDataProvider& input, AafWriterContext* c) {
    switch (input.ConsumeIntegralInRange(0, 12)) {
    case 0: addClip(input, c); break;
    case 1: addSubClip(input, c); break;
    case 2:
        AddClipTrack(int32_t(anyIndex(input)), input.ConsumeBool(), anyInteger<uint32_t>(input),
                     anyInteger<uint32_t>(input), anyInteger<int64_t>(input), c);
        break;
    case 3:
        SetVideoTrackInfo(anyIndex(input), anyIndex(input), anyInteger<uint32_t>(input), anyInteger<uint32_t>(input),
                          c);
        break;
    case 4:
        SetAudioTrackInfo(anyIndex(input), anyIndex(input), anyInteger<uint32_t>(input), anyInteger<uint32_t>(input),
                          anyInteger<uint32_t>(input), anyInteger<int64_t>(input), c);
        break;
    case 5: {
        const std::wstring name = anyText(input);
        InitComposition(anyInteger<uint32_t>(input), anyInteger<uint32_t>(input), anyInteger<int64_t>(input),
                        input.ConsumeBool(), anyInteger<uint32_t>(input), name.c_str(), c);
        break;
    }
    case 6: AddTrackToComposition(input.ConsumeBool(), anyDouble(input), c); break;
    case 7:
        AppendClipToTrack(anyIndex(input), anyInteger<int64_t>(input), anyInteger<int64_t>(input), input.ConsumeBool(),
                          anyIndex(input), anyIndex(input), c);
        break;
    case 8: AppendFiller(anyIndex(input), anyInteger<int64_t>(input), c); break;
    case 9: AppendTransition(anyIndex(input), anyInteger<int64_t>(input), anyInteger<int64_t>(input), c); break;
    case 10: appendEffect(input, c); break;
    case 11: {
        const std::wstring text = anyText(input);
        AddMarker(anyInteger<int64_t>(input), text.c_str(), c);
        break;
    }
    default: {
        // A clip with a picture and a sound track: most calls after it have something to refer to.
        const int32_t clip = AddClip(L"clip", L"/media/clip.mov", 100, 90000, false, nullptr, nullptr, 25, 1, c);
        AddClipTrack(clip, true, 25, 1, 100, c);
        AddClipTrack(clip, false, 48000, 1, 192000, c);
        break;
    }
    }
}

std::string newPath() {
    char name[] = "/tmp/fuzz-writer-XXXXXX";
    const int fd = mkstemp(name);
    if (fd < 0) return std::string();
    close(fd);
    unlink(name);  // the writer never replaces a file
    return std::string(name) + ".aaf";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    AafWriterContext* context = nullptr;
    if (CreateAafWriterContext(&context) != 0) return 0;
    while (input.remaining_bytes() > 0) oneCall(input, context);
    const std::string path = newPath();
    const std::wstring widePath(path.begin(), path.end());
    if (!path.empty()) {
        // A refused write still saves what it wrote: that file must read too.
        WriteAafFile(widePath.c_str(), context);
        readEverything(widePath.c_str());
        std::remove(path.c_str());
    }
    FreeAafWriterContext(context);
    return 0;
}
