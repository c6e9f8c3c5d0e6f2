// Frame counts as timecode, drop frame included: the frame numbers skipped each minute but
// every tenth, at 29.97 and 59.94.
#include <gtest/gtest.h>

#include "composition/TimecodeText.h"

using composition::timecodeText;

TEST(TimecodeText, CountsWholeRatesPlainly) {
    EXPECT_EQ(timecodeText(86400, 24, false), "01:00:00:00");
    EXPECT_EQ(timecodeText(90000 + 24, 25, false), "01:00:00:24");
    EXPECT_EQ(timecodeText(24 * 86400 + 1, 24, false), "00:00:00:01") << "a day wraps";
}

TEST(TimecodeText, DropFrameSkipsTheFirstNumbersOfEachMinuteButEveryTenth) {
    EXPECT_EQ(timecodeText(1799, 30, true), "00:00:59;29");
    EXPECT_EQ(timecodeText(1800, 30, true), "00:01:00;02");
    EXPECT_EQ(timecodeText(17981, 30, true), "00:09:59;29");
    EXPECT_EQ(timecodeText(17982, 30, true), "00:10:00;00");
    EXPECT_EQ(timecodeText(107892, 30, true), "01:00:00;00");
    EXPECT_EQ(timecodeText(3600, 60, true), "00:01:00;04");
}

TEST(TimecodeText, NothingForWhatIsNoTimecode) {
    EXPECT_EQ(timecodeText(-1, 30, false), "");
    EXPECT_EQ(timecodeText(10, 0, false), "");
}
