#include "mrtd/mrtd_gbk.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <set>
#include <string>

namespace {

using parser::decodeGbkLetters;
using parser::unicodeFromGbk;

struct CodeCase {
    std::uint16_t code;
    std::uint32_t codePoint;
};

// Pairs on which two independent converters agree, spread over every region,
// with the first and last trail of many lead bytes and holes inside rows.
constexpr CodeCase kSampled[] = {
#include "mrtd_gbk_spot_checks.inc"
};

TEST(Gbk, SampledCodesMatchIndependentConverters) {
    EXPECT_GT(std::size(kSampled), 250u);
    for (const CodeCase& c : kSampled) {
        EXPECT_EQ(unicodeFromGbk(c.code), c.codePoint) << std::hex << "code 0x" << c.code;
    }
}

TEST(Gbk, SingleBytesEuroAndUnassignedCodes) {
    const CodeCase cases[] = {
        {0x0000, 0x0000},
        {0x0041, 0x0041},
        {0x007F, 0x007F},
        {0x0080, 0x20AC},
        {0x0081, 0},
        {0x00FF, 0},
        {0x0100, 0},
        {0x8000, 0},
        {0x813F, 0},
        {0x817F, 0},
        {0x81FF, 0},
        {0xFEFF, 0},
        {0xFF80, 0},
        {0xFFFF, 0},
        {0xA140, 0},  // user-defined area
        {0xAAA1, 0},
        {0xF8A1, 0},
        {0xFE50, 0},
        {0xA2E3, 0},
        // Where code page 936 departs from GB 2312 usage.
        {0xA1A4, 0x00B7},
        {0xA1AA, 0x2014},
        {0xA844, 0x2015},
        {0xFE4F, 0xFA29},
    };
    for (const CodeCase& c : cases) {
        EXPECT_EQ(unicodeFromGbk(c.code), c.codePoint) << std::hex << "code 0x" << c.code;
    }
}

TEST(Gbk, DoubleByteCodesAreOneToOneAndCountMatches) {
    int mapped = 0;
    std::set<std::uint32_t> seen;
    for (std::uint32_t code = 0x100; code <= 0xFFFF; ++code) {
        const std::uint32_t cp = unicodeFromGbk(static_cast<std::uint16_t>(code));
        if (cp == 0) continue;
        ++mapped;
        EXPECT_TRUE(code >= 0x8140 && code <= 0xFEFE) << std::hex << code;
        EXPECT_TRUE(cp >= 0x80 && cp <= 0xFFFF && !(cp >= 0xE000 && cp <= 0xF8FF))
            << std::hex << code;
        EXPECT_TRUE(seen.insert(cp).second) << "second code for U+" << std::hex << cp;
    }
    EXPECT_EQ(mapped, 21791);
}

TEST(Gbk, DecodesLetterGroups) {
    const struct {
        const char* letters;
        std::string utf8;
    } cases[] = {
        {"LAKB", "\xE5\x95\x8A"},                  // 0xB0A1, U+554A
        {"NCLL", "\xE4\xB8\x80"},                  // 0xD2BB, U+4E00
        {"LAKBNCLL", "\xE5\x95\x8A\xE4\xB8\x80"},  // two characters in order
        {"", ""},
        {"AAEB", "A"},                   // single byte: one UTF-8 byte
        {"KBKE", "\xC2\xB7"},            // 0xA1A4, U+00B7: two bytes
        {"KGKB", "\xCE\x91"},            // 0xA6A1, U+0391: two bytes
        {"AAIA", "\xE2\x82\xAC"},        // 0x0080, the euro sign
        {"IAAA", std::string(1, '\0')},  // unassigned code: one NUL
        {"AAAALAKB", std::string("\0\xE5\x95\x8A", 4)},
        {"ABC", ""},  // not whole groups
        {"LAKBN", ""},
        {"LAKBNCLQ", ""},  // Q in a later group voids all
        {"QAAA", ""},
        {"lakb", ""},
        {"LAK@", ""},
        {"LAKB<<<<", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(decodeGbkLetters(c.letters), c.utf8) << c.letters;
    }
}

}  // namespace
