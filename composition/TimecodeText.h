#pragma once
// Frame counts as editors read them.
#include <cstdint>
#include <string>

namespace composition {

// "HH:MM:SS:FF" ("HH:MM:SS;FF" for drop frame) of `frames` since midnight at `fps` frames per
// second; drop-frame counting skips frame numbers 0 and 1 (2 and 3 at 60) each minute but every
// tenth. Negative counts and an fps of 0 give "".
std::string timecodeText(int64_t frames, uint16_t fps, bool drop);

}  // namespace composition
