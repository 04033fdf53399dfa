#include "worker/protocol/text.h"

#include <gtest/gtest.h>

namespace boxlift::worker {

TEST(IsLine, TakesUtf8) {
    for (const char* text :
         {"", "plain", "caf\u00e9", "\u20ac", "\U0001f3ac", "\u07ff\u0800\uffff"})
        EXPECT_TRUE(isLine(text)) << text;
}

TEST(IsLine, RefusesWhatIsNoUtf8) {
    for (const char* text :
         {"\x80", "caf\xe9", "\xc0\x80", "\xc1\xbf", "\xe0\x9f\xbf", "\xed\xa0\x80",
          "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf5\x80", "\xe2\x82", "\xe2\x82 ", "\xff"})
        EXPECT_FALSE(isLine(text));
}

TEST(IsLine, RefusesControlCharacters) {
    for (const char* text : {"a\nb", "\t", "\x1b[2J", "\x7f"})
        EXPECT_FALSE(isLine(text));
}

TEST(MakePrintable, LeavesOnlyControlCharactersOut) {
    std::string text = "a\nb\x1b caf\xe9 \u20ac";
    makePrintable(text);
    EXPECT_EQ(text, "a?b? caf\xe9 \u20ac");
}

} // namespace boxlift::worker
