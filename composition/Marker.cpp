#include "Marker.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace composition {

namespace {

struct NamedHue {
    const char* name;
    double degrees;
};

// OpenTimelineIO's chromatic marker colours by hue.
constexpr NamedHue kHues[] = {{"RED", 0},    {"ORANGE", 30},  {"YELLOW", 60},  {"GREEN", 120}, {"CYAN", 180},
                              {"BLUE", 240}, {"PURPLE", 270}, {"MAGENTA", 300}, {"PINK", 330}};
constexpr const char* kNamed[] = {"PINK", "RED",    "ORANGE",  "YELLOW", "GREEN", "CYAN",
                                  "BLUE", "PURPLE", "MAGENTA", "BLACK",  "WHITE"};

std::string upperCase(std::string text) {
    for (char& c : text) c = char(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

double hueDistance(double a, double b) {
    const double d = std::fabs(a - b);
    return d > 180 ? 360 - d : d;
}

// By hue, as a person names a colour: editors' palettes differ in their exact values (Resolve's
// purple is 144/19/254, Avid's cyan 51/204/204), not in their hues. Dark is black, pale white.
std::string nearestColour(const Rgb& rgb) {
    const double r = rgb.red / 65535.0, g = rgb.green / 65535.0, b = rgb.blue / 65535.0;
    const double high = std::max({r, g, b}), low = std::min({r, g, b}), range = high - low;
    if (high < 0.2) return "BLACK";
    if (range < 0.2 * high) return high > 0.8 ? "WHITE" : "BLACK";
    double hue = high == r ? 60 * std::fmod((g - b) / range + 6, 6.0) : high == g ? 60 * ((b - r) / range + 2)
                                                                                  : 60 * ((r - g) / range + 4);
    const NamedHue* best = &kHues[0];
    for (const NamedHue& named : kHues)
        if (hueDistance(hue, named.degrees) < hueDistance(hue, best->degrees)) best = &named;
    return best->name;
}

}  // namespace

std::string colourName(const Marker& marker) {
    const std::string named = upperCase(marker.colour);
    for (const char* colour : kNamed)
        if (named == colour) return named;
    return marker.rgb ? nearestColour(*marker.rgb) : std::string();
}

}  // namespace composition
