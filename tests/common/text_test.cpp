#include "common/text.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>
#include <vector>

namespace parser {
namespace {

using nlohmann::json;

std::vector<std::string> strings(const std::vector<ParserStringRef>& refs) {
    std::vector<std::string> out;
    out.reserve(refs.size());
    for (ParserStringRef r : refs) out.push_back(r.str());
    return out;
}

TEST(CharsetTest, BoundaryBytes) {
    // For each set: bytes just inside and just outside its edges.
    struct Case {
        Charset charset;
        std::string in;
        std::string out;
    };
    const Case cases[] = {
        {Charset::Numeric, "09", "/:."},
        {Charset::Decimal, "09.", "/:,"},
        {Charset::Alphabetic, "AZaz", "@[`{0"},
        {Charset::Alphanumeric, "09AZaz", "/:@[`{"},
        {Charset::General, std::string("\0\x7F\xFF", 3), ""},
        {Charset::DlidSpecial, "\x20\x23\x25\x2F\x3A\x40\x5B\x60", "\x1F$09AZaz\x7B\x7F\xC0"},
        {Charset::Vin, "09AHJNPRZ", "IOQaz"},
        {Charset::LimitedExtendedAscii, "\xC0\xFF",
         "\x7F\xBF"
         "A"},
        {static_cast<Charset>(8), "", "A0"},
    };
    for (const Case& c : cases) {
        for (unsigned char b : c.in) EXPECT_TRUE(isCharInCharset(b, c.charset)) << int{b};
        for (unsigned char b : c.out) EXPECT_FALSE(isCharInCharset(b, c.charset)) << int{b};
    }
}

TEST(CharsetTest, Ranges) {
    const std::string empty;
    EXPECT_FALSE(isInCharset(ParserStringRef(empty), Charset::General));
    EXPECT_TRUE(isInCharset(ParserStringRef("0123"), Charset::Numeric));
    EXPECT_FALSE(isInCharset(ParserStringRef("01a3"), Charset::Numeric));
    const std::string mixed = "AB12-";
    EXPECT_FALSE(isInCharsets(mixed.data(), mixed.data() + mixed.size(),
                              {Charset::Alphabetic, Charset::Numeric}));
    EXPECT_TRUE(isInCharsets(mixed.data(), mixed.data() + mixed.size(),
                             std::vector<Charset>{Charset::Alphanumeric, Charset::DlidSpecial}));
    EXPECT_TRUE(isCharInAnyCharset('$', {Charset::Numeric, Charset::General}));
    EXPECT_FALSE(isCharInAnyCharset('$', std::vector<Charset>{Charset::DlidSpecial}));
}

TEST(CharsetTest, RangeAgreesWithBytes) {
    // A range belongs to a set exactly when each of its bytes does, the bytes
    // of an unknown set included.
    for (int set = 0; set <= 8; ++set) {
        const auto charset = static_cast<Charset>(set);
        int member = 0;
        while (member < 255 && !isCharInCharset(static_cast<unsigned char>(member), charset)) {
            ++member;
        }
        for (int b = 0; b < 256; ++b) {
            const std::string one(1, static_cast<char>(b));
            const std::string last = std::string(2, static_cast<char>(member)) + one;
            const bool expected = isCharInCharset(static_cast<unsigned char>(b), charset);
            EXPECT_EQ(isInCharset(ParserStringRef(one), charset), expected) << set << ' ' << b;
            EXPECT_EQ(isInCharset(ParserStringRef(last), charset),
                      expected && isCharInCharset(static_cast<unsigned char>(member), charset))
                << set << ' ' << b;
        }
    }
}

TEST(CharsetDeathTest, EmptyListAborts) {
    const std::string text = "1";
    EXPECT_DEATH(isCharInAnyCharset('1', std::vector<Charset>{}),
                 "parser: .*charset list must not be empty");
    EXPECT_DEATH(isInCharsets(text.data(), text.data() + 1, std::vector<Charset>{}),
                 "charset list must not be empty");
    // The list is checked even when the range is empty.
    EXPECT_DEATH(isInCharsets(text.data(), text.data(), std::vector<Charset>{}),
                 "charset list must not be empty");
}

TEST(TextTest, Utf8Length) {
    const std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";  // a, e-acute, euro, emoji
    EXPECT_EQ(utf8Length(text.data(), text.data() + text.size()), 4u);
    EXPECT_EQ(utf8Length(text.data(), text.data()), 0u);
}

TEST(TextTest, LookAlikeTransforms) {
    EXPECT_EQ(transformDigitsToLetters("0126834"), "OIZGB34");
    EXPECT_EQ(transformLettersToDigits("BDGIOQS"), "80610QS");
    EXPECT_EQ(transformLetterToDigit('Q'), 'Q');
    EXPECT_EQ(transformLetterToDigit('o'), 'o');
    EXPECT_EQ(transformDigitToLetter('\xFF'), '\xFF');
    // Not inverses: D reads as 0, 0 reads back as O.
    EXPECT_EQ(transformDigitToLetter(transformLetterToDigit('D')), 'O');
}

TEST(TextTest, SplitBySubstring) {
    struct Case {
        const char* text;
        const char* separator;
        std::vector<std::string> pieces;
    };
    const Case cases[] = {
        {"a//b", "//", {"a", "b"}}, {"//", "//", {"", ""}},       {"abc", "//", {"abc"}},
        {"", "//", {""}},           {"a///b", "//", {"a", "/b"}}, {"a//b//", "//", {"a", "b", ""}},
        {"abc", "", {"abc"}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(strings(splitBySubstring(c.text, c.separator)), c.pieces) << c.text;
    }
}

TEST(TextTest, CountOccurrences) {
    EXPECT_EQ(countOccurrences("aaa", "aa"), 2u);
    EXPECT_EQ(countOccurrences("abab", "ba"), 1u);
    EXPECT_EQ(countOccurrences("abc", ""), 0u);
    EXPECT_EQ(countOccurrences("a", "aa"), 0u);
}

TEST(TextTest, SplitByChar) {
    struct Case {
        std::string text;
        std::vector<std::string> pieces;
    };
    const Case cases[] = {
        {"a,b,c", {"a", "b", "c"}}, {"a,b,", {"a", "b"}}, {",a", {"", "a"}},
        {"a,,b", {"a", "", "b"}},   {",", {""}},          {"", {}},
    };
    for (const Case& c : cases) {
        std::vector<std::string> pieces;
        splitByChar(c.text, ',', pieces);
        EXPECT_EQ(pieces, c.pieces) << c.text;
    }
    std::vector<std::string> kept = {"x"};
    splitByChar("y", ',', kept);
    EXPECT_EQ(kept, (std::vector<std::string>{"x", "y"}));
}

TEST(TextTest, Trimming) {
    std::string all = " \t\n\v\f\rA B\r\f\v\n\t ";
    trimWhitespace(all);
    EXPECT_EQ(all, "A B");
    std::string blank = " \t ";
    trimWhitespace(blank);
    EXPECT_EQ(blank, "");
    // Non-breaking spaces (Latin-1 and UTF-8) are not C white space.
    std::string nbsp = "\xA0x\xC2\xA0";
    trimWhitespace(nbsp);
    EXPECT_EQ(nbsp, "\xA0x\xC2\xA0");
    EXPECT_EQ(trimWhitespace(ParserStringRef("  ab \n")).str(), "ab");
    EXPECT_TRUE(trimWhitespace(ParserStringRef("   ")).empty());

    std::string padded = "<<a<b>>";
    trimChars(padded, "<>");
    EXPECT_EQ(padded, "a<b");
    std::string gone = "<<>";
    trimChars(gone, "<>");
    EXPECT_EQ(gone, "");
}

TEST(TextTest, SplitToJsonArray) {
    EXPECT_EQ(splitToJsonArray("a,b,c", ',', false), json({"c", "b", "a"}));
    EXPECT_EQ(splitToJsonArray(" a , b", ',', true), json({"b", "a"}));
    EXPECT_EQ(splitToJsonArray(" a , b", ',', false), json({" b", " a "}));
    EXPECT_EQ(splitToJsonArray("a,", ',', false), json::array({"a"}));
    EXPECT_TRUE(splitToJsonArray("", ',', false).is_null());
    EXPECT_EQ(splitToJsonArray(",a", ',', false), json({"a", ""}));
    EXPECT_EQ(splitToJsonArray(",,", ',', false), json({"", ""}));
    EXPECT_EQ(splitToJsonArray(" , ", ',', true), json({"", ""}));
    EXPECT_EQ(splitToJsonArray("a b", ',', true), json::array({"a b"}));
}

TEST(TextTest, AddMemberInAnyOrder) {
    // Members in key order go in at the end; others still land in place.
    json object = json::object();
    for (const char* key : {"b", "d", "a", "c", "e"}) addMember(object, key, key);
    EXPECT_EQ(object.dump(), R"({"a":"a","b":"b","c":"c","d":"d","e":"e"})");
}

TEST(TextTest, IntFieldValue) {
    struct Case {
        const char* text;
        json value;
    };
    // clang-format off
    const Case cases[] = {
        {"42", 42},       {" \t007", 7},    {"2147483647", INT_MAX}, {"", nullptr},
        {"   ", nullptr}, {"+1", nullptr},  {"-1", nullptr},         {"4 2", nullptr},
        {"42 ", nullptr}, {"1.5", nullptr}, {"2147483648", nullptr},
        // Every C white-space byte may lead; a non-breaking space (0xA0) may not.
        {"\v\f\r\n 5", 5}, {"\xA0\x35", nullptr}, {"00000000000000000042", 42},
        {"99999999999999999999", nullptr}, {"- 1", nullptr}, {"0", 0},
    };
    // clang-format on
    for (const Case& c : cases) EXPECT_EQ(intFieldValue(c.text), c.value) << c.text;
}

TEST(TextTest, BooleanFieldValue) {
    for (const char* t : {"1", "Y", "y"}) EXPECT_EQ(booleanFieldValue(t), json("true")) << t;
    for (const char* t : {"0", "N", "n"}) EXPECT_EQ(booleanFieldValue(t), json("false")) << t;
    for (const char* t : {"11", "", "T", " 1"}) EXPECT_TRUE(booleanFieldValue(t).is_null()) << t;
}

TEST(TextTest, ReadInt) {
    // clang-format off
    const std::pair<const char*, int> accepted[] = {
        {"12", 12}, {" 12", 12}, {"+7", 7}, {"-7", -7}, {"-2147483648", INT_MIN},
        {"\t\n\v\f\r9", 9}, {"+007", 7}, {"-0", 0}, {"2147483647", INT_MAX}};
    for (const auto& [text, expected] : accepted) {
        int value = 0;
        EXPECT_TRUE(readInt(text, value)) << text;
        EXPECT_EQ(value, expected) << text;
    }
    for (const char* text : {"12x", "12 ", "", "x", "2147483648", "1,000", "0x1F", "+", "-", " ",
                             "+-5", "-+5", "- 5", "++5", "-2147483649", "99999999999999999999",
                             "\xA0\x35", "1e3"}) {
        // clang-format on
        int value = 0;
        EXPECT_FALSE(readInt(text, value)) << text;
    }
}

TEST(TextTest, Base64Encode) {
    // Successive prefixes of "foobar" walk through every padding case.
    const char* expected[] = {"", "Zg==", "Zm8=", "Zm9v", "Zm9vYg==", "Zm9vYmE=", "Zm9vYmFy"};
    for (std::size_t n = 0; n <= 6; ++n)
        EXPECT_EQ(base64Encode(std::string("foobar", n)), expected[n]);
    EXPECT_EQ(base64Encode(std::string("\xFB\xFF\x00", 3)), "+/8A");
}

TEST(TextTest, Messages) {
    EXPECT_EQ(invalidValueMessage("13", "month"), "'13' is invalid month value");
    EXPECT_EQ(lengthMismatchMessage("Expiry", 6, 12),
              "Expiry should contain 6 character(s) but contain 12");
}

}  // namespace
}  // namespace parser
