#include "Marker.h"

#include <cctype>

namespace composition {

namespace {

struct NamedColour {
    const char* name;
    double red, green, blue;
};

// OpenTimelineIO's marker colours, at full scale.
constexpr NamedColour kColours[] = {
    {"PINK", 1.0, 0.7, 0.8},  {"RED", 1.0, 0.0, 0.0},    {"ORANGE", 1.0, 0.5, 0.0}, {"YELLOW", 1.0, 1.0, 0.0},
    {"GREEN", 0.0, 1.0, 0.0}, {"CYAN", 0.0, 1.0, 1.0},   {"BLUE", 0.0, 0.0, 1.0},   {"PURPLE", 0.5, 0.0, 0.5},
    {"MAGENTA", 1.0, 0.0, 1.0}, {"BLACK", 0.0, 0.0, 0.0}, {"WHITE", 1.0, 1.0, 1.0},
};

std::string upperCase(std::string text) {
    for (char& c : text) c = char(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

std::string nearestColour(const Rgb& rgb) {
    const double r = rgb.red / 65535.0, g = rgb.green / 65535.0, b = rgb.blue / 65535.0;
    const NamedColour* best = &kColours[0];
    double bestDistance = 1e9;
    for (const NamedColour& colour : kColours) {
        const double distance = (r - colour.red) * (r - colour.red) + (g - colour.green) * (g - colour.green) +
                                (b - colour.blue) * (b - colour.blue);
        if (distance < bestDistance) {
            bestDistance = distance;
            best = &colour;
        }
    }
    return best->name;
}

}  // namespace

std::string colourName(const Marker& marker) {
    const std::string named = upperCase(marker.colour);
    for (const NamedColour& colour : kColours)
        if (named == colour.name) return named;
    return marker.rgb ? nearestColour(*marker.rgb) : std::string();
}

}  // namespace composition
