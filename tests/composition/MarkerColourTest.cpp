// Marker colours as OpenTimelineIO names them: the editor's own name where it gives one, else
// the hue of the stored RGB, whatever palette the editor uses.
#include <gtest/gtest.h>

#include "composition/Marker.h"

namespace {

std::string colourOf(uint16_t red, uint16_t green, uint16_t blue, const std::string& named = "") {
    composition::Marker marker;
    marker.rgb = composition::Rgb{red, green, blue};
    marker.colour = named;
    return composition::colourName(marker);
}

}  // namespace

TEST(MarkerColour, TheEditorsNameWinsWhenOpenTimelineIOKnowsIt) {
    EXPECT_EQ(colourOf(0, 0, 65535, "Red"), "RED");
    EXPECT_EQ(colourOf(0, 0, 65535, "Cyan"), "CYAN");
    EXPECT_EQ(colourOf(0, 0, 65535, "Teal"), "BLUE") << "an unknown name falls back to the RGB";
    EXPECT_EQ(composition::colourName(composition::Marker()), "") << "neither name nor RGB";
}

TEST(MarkerColour, EditorsPalettesAreNamedByHue) {
    EXPECT_EQ(colourOf(41471, 12134, 6564), "RED");      // Media Composer's red
    EXPECT_EQ(colourOf(13107, 52428, 52428), "CYAN");    // and cyan
    EXPECT_EQ(colourOf(58981, 58981, 6553), "YELLOW");   // and yellow
    EXPECT_EQ(colourOf(57600, 9216, 256), "RED");        // Resolve's red
    EXPECT_EQ(colourOf(36864, 4864, 65024), "PURPLE");   // and purple, nearer magenta by distance
    EXPECT_EQ(colourOf(65535, 0, 65535), "MAGENTA");
    EXPECT_EQ(colourOf(0, 65535, 0), "GREEN");
    EXPECT_EQ(colourOf(65535, 32768, 0), "ORANGE");
    EXPECT_EQ(colourOf(1000, 1000, 1000), "BLACK");
    EXPECT_EQ(colourOf(62000, 62000, 60000), "WHITE");
}
