#include "drive/json_line.h"

#include <charconv>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace boxlift::drive {
namespace {

TEST(JsonText, PassesUtf8Through) {
    EXPECT_EQ(jsonText(""), R"("")");
    EXPECT_EQ(jsonText("a b/c.mov"), R"("a b/c.mov")");
    EXPECT_EQ(jsonText("é · 1920×1080 … 日本 🎬"), "\"é · 1920×1080 … 日本 🎬\"");
}

TEST(JsonText, EscapesWhatJsonReserves) {
    EXPECT_EQ(jsonText(R"(say "hi" \o/)"), R"("say \"hi\" \\o/")");
}

TEST(JsonText, EscapesControlCharacters) {
    EXPECT_EQ(jsonText("a\nb\tc\x1F"), R"("a\u000ab\u0009c\u001f")");
    EXPECT_EQ(jsonText(std::string_view("\0", 1)), R"("\u0000")");
    EXPECT_EQ(jsonText("\x7F"), "\"\x7F\"");
}

TEST(JsonText, MakesLoneSurrogatesOfBytesThatAreNotUtf8) {
    EXPECT_EQ(jsonText("caf\xE9.mov"), R"("caf\udce9.mov")");
    EXPECT_EQ(jsonText("\x80\xFF"), R"("\udc80\udcff")");
}

TEST(JsonText, MakesASurrogateOfEachByteOfACharacterThatBreaksOff) {
    EXPECT_EQ(jsonText("\xE2\x82"), R"("\udce2\udc82")");
    EXPECT_EQ(jsonText("\xF0\x9F\x8E!"), R"("\udcf0\udc9f\udc8e!")");
    EXPECT_EQ(jsonText("\xC3\xC3\xA9"), "\"\\udcc3é\"");
}

TEST(JsonText, TakesOverlongFormsForInvalid) {
    EXPECT_EQ(jsonText("\xC0\xAF"), R"("\udcc0\udcaf")");
    EXPECT_EQ(jsonText("\xE0\x80\xAF"), R"("\udce0\udc80\udcaf")");
    EXPECT_EQ(jsonText("\xF0\x80\x80\xAF"), R"("\udcf0\udc80\udc80\udcaf")");
}

TEST(JsonText, TakesSurrogatesAndTooLargeCodesForInvalid) {
    EXPECT_EQ(jsonText("\xED\xA0\x80"), R"("\udced\udca0\udc80")");
    EXPECT_EQ(jsonText("\xED\xB2\x80"), R"("\udced\udcb2\udc80")");
    EXPECT_EQ(jsonText("\xF4\x90\x80\x80"), R"("\udcf4\udc90\udc80\udc80")");
}

TEST(JsonText, TakesTheCharactersAtTheEdgesForValid) {
    for (const char* edge : {"\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
                             "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"})
        EXPECT_EQ(jsonText(edge), "\"" + std::string(edge) + "\"");
}

TEST(JsonNumber, IsTheShortestThatReadsBack) {
    EXPECT_EQ(jsonNumber(0.42), "0.42");
    EXPECT_EQ(jsonNumber(0.0), "0");
    EXPECT_EQ(jsonNumber(1.0), "1");
    EXPECT_EQ(jsonNumber(12.345), "12.345");
    EXPECT_EQ(jsonNumber(-2.5), "-2.5");
    EXPECT_EQ(jsonNumber(0.1 + 0.2), "0.30000000000000004");
}

TEST(JsonNumber, ReadsBackAtTheExtremes) {
    for (const double value : {1.0 / 3, std::numeric_limits<double>::max(),
                               std::numeric_limits<double>::denorm_min(), 1e21, 123456789.125}) {
        const std::string text = jsonNumber(value);
        double readBack = 0;
        std::from_chars(text.data(), text.data() + text.size(), readBack);
        EXPECT_EQ(readBack, value) << text;
    }
}

TEST(JsonNumber, IsNullWhenNotFinite) {
    EXPECT_EQ(jsonNumber(std::nan("")), "null");
    EXPECT_EQ(jsonNumber(std::numeric_limits<double>::infinity()), "null");
    EXPECT_EQ(jsonNumber(-std::numeric_limits<double>::infinity()), "null");
}

TEST(JsonObject, HasItsMembersInTheOrderInWhichTheyWereAdded) {
    EXPECT_EQ(JsonObject().line(), "{}");
    EXPECT_EQ(JsonObject()
                  .text("z", "t")
                  .number("n", 1.5)
                  .integer("i", -3)
                  .boolean("yes", true)
                  .boolean("no", false)
                  .object("o", JsonObject().text("a", "b"))
                  .line(),
              R"({"z":"t","n":1.5,"i":-3,"yes":true,"no":false,"o":{"a":"b"}})");
}

TEST(JsonObject, WritesNullForWhatIsAbsent) {
    EXPECT_EQ(JsonObject()
                  .textOrNull("a", std::nullopt)
                  .textOrNull("b", "x")
                  .objectOrNull("c", std::nullopt)
                  .objectOrNull("d", JsonObject())
                  .line(),
              R"({"a":null,"b":"x","c":null,"d":{}})");
}

} // namespace
} // namespace boxlift::drive
