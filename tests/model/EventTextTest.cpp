// Event texts: cut as a fixed buffer cuts them, and shared only between equal texts.
#include <gtest/gtest.h>

#include <string>

#include "model/Text.h"

TEST(EventText, CutAtTheBufferSize) {
    const std::wstring longName(kTextLength + 20, L'n');
    const std::wstring cut(kTextLength - 1, L'n');
    TextPool pool;
    EXPECT_EQ(std::wstring(pool.text(longName.c_str()).c_str()), cut);
    // The cut text and the long one are the same event text.
    EXPECT_EQ(pool.text(longName.c_str()).c_str(), pool.text(cut.c_str()).c_str());
    EXPECT_EQ(std::wstring(EventText().c_str()), L"");
    EXPECT_EQ(std::wstring(pool.text(nullptr).c_str()), L"");
}

TEST(EventText, EqualTextsShareOneCopyAndOthersKeepTheirOwn) {
    TextPool pool;
    std::wstring name = L"Clip 1";
    const EventText first = pool.text(name.c_str());
    name[5] = L'2';  // the caller's buffer is reused for the next text
    const EventText second = pool.text(name.c_str());
    EXPECT_EQ(std::wstring(first.c_str()), L"Clip 1");
    EXPECT_EQ(std::wstring(second.c_str()), L"Clip 2");
    EXPECT_EQ(pool.text(L"Clip 1").c_str(), first.c_str());
    EXPECT_NE(first.c_str(), second.c_str());
}

TEST(EventText, OutlivesItsPool) {
    EventText kept;
    {
        TextPool pool;
        kept = pool.text(L"Kept after the pool is gone");
    }
    EXPECT_EQ(std::wstring(kept.c_str()), L"Kept after the pool is gone");
}
