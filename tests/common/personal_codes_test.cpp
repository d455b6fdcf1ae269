#include "common/personal_codes.h"

#include <gtest/gtest.h>

#include <climits>
#include <utility>

namespace parser {
namespace {

using nlohmann::json;

TEST(PersonalCodesTest, Sex) {
    struct Case {
        const char* code;
        json sex;
    };
    const Case cases[] = {
        {"1", "male"},   {"M", "male"},   {"m", "male"},        {"2", "female"},
        {"F", "female"}, {"f", "female"}, {"9", "unspecified"}, {"MX", "male"},
        {"X", nullptr},  {"0", nullptr},  {"", nullptr},        {" M", nullptr},
    };
    for (const Case& c : cases) EXPECT_EQ(sexFromCode(c.code), c.sex) << c.code;
}

TEST(PersonalCodesTest, Height) {
    struct Case {
        const char* code;
        int cm;
        int inch;
    };
    // Inches below 100, centimetres from 100 to 300, feet and inches above.
    const Case cases[] = {
        {"070", 178, 70}, {"99", 251, 99},   {"0", 0, 0},     {"-5", -13, -5},  {"100", 100, 39},
        {"180", 180, 71}, {"300", 300, 118}, {"301", 94, 37}, {"510", 178, 70}, {"600", 183, 72},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(heightFromCode(c.code), json({{"cm", c.cm}, {"inch", c.inch}})) << c.code;
    }
    for (const char* bad : {"", "5'10", "70 ", "abc", "2147483648"}) {
        EXPECT_TRUE(heightFromCode(bad).is_null()) << bad;
    }
    // Extremes must neither overflow nor be refused.
    EXPECT_EQ(heightFromCode("2147483647")["inch"], 47 + 21474836 * 12);
    EXPECT_EQ(heightFromCode("-2147483648")["inch"], INT_MIN);
}

// Plain codes are table lookups; these rows are the aliases and the refusals.
TEST(PersonalCodesTest, Colours) {
    const std::pair<const char*, json> eyes[] = {
        {"BRO", "brown"},  {"BRN", "brown"},   {"BR", "brown"},    {"HZL", "hazel"},
        {"HA", "hazel"},   {" BLU\n", "blue"}, {"hazel", "hazel"}, {"gray", "gray"},
        {"grey", nullptr}, {"Brown", nullptr}, {"B", nullptr},     {"", nullptr},
    };
    for (const auto& [code, colour] : eyes) EXPECT_EQ(eyeColourFromCode(code), colour) << code;
    const std::pair<const char*, json> hair[] = {
        {"GRY", "grey"}, {"\tRED ", "red"}, {"BRN", nullptr}, {"red", nullptr}, {"grey", nullptr},
    };
    for (const auto& [code, colour] : hair) EXPECT_EQ(hairColourFromCode(code), colour) << code;
}

}  // namespace
}  // namespace parser
