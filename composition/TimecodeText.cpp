#include "TimecodeText.h"

#include <cstdio>

namespace composition {

namespace {

// The frame number a drop-frame timecode shows for `frames` counted without gaps.
int64_t withDroppedNumbers(int64_t frames, uint16_t fps) {
    const int64_t dropped = fps / 15;  // 2 at 30, 4 at 60
    const int64_t perMinute = int64_t(fps) * 60 - dropped;
    const int64_t perTenMinutes = perMinute * 10 + dropped;
    const int64_t tens = frames / perTenMinutes, rest = frames % perTenMinutes;
    const int64_t skipped = dropped * 9 * tens + (rest > dropped ? dropped * ((rest - dropped) / perMinute) : 0);
    return frames + skipped;
}

}  // namespace

std::string timecodeText(int64_t frames, uint16_t fps, bool drop) {
    if (frames < 0 || fps == 0) return {};
    if (drop && fps % 30 == 0) frames = withDroppedNumbers(frames, fps);
    const int64_t perHour = int64_t(fps) * 3600;
    char text[40];
    std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld%c%02lld", (long long)(frames / perHour % 24),
                  (long long)(frames / (int64_t(fps) * 60) % 60), (long long)(frames / fps % 60), drop ? ';' : ':',
                  (long long)(frames % fps));
    return text;
}

}  // namespace composition
