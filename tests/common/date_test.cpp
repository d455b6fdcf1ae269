// Calendar arithmetic by day number, the printed-date readers and the
// two-digit-year window.
#include "common/date.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace parser {

// Found by argument lookup, so that failures print dates readably.
std::ostream& operator<<(std::ostream& out, const Date& d) {
    return out << d.year << "-" << d.month << "-" << d.day;
}

namespace {

TEST(Date, ValidityAndMonthLengths) {
    const std::pair<Date, bool> cases[] = {
        {{2000, 2, 29}, true},  {{1900, 2, 29}, false},
        {{2023, 2, 29}, false}, {{2021, 2, 0}, false},
        {{2021, 13, 1}, false}, {{2021, 4, 31}, false},
        {{1, 1, 1}, true},      {{INT_MIN, INT_MIN, INT_MIN}, false},
    };
    for (const auto& [date, valid] : cases) EXPECT_EQ(date.isValid(), valid) << date;
    EXPECT_EQ((Date{2000, 1, 1}.julianDayNumber()), 2451545);

    EXPECT_EQ(Date::getLastDayOfMonth(2, 2024), 29);
    EXPECT_EQ(Date::getLastDayOfMonth(2, 2100), 28);
    EXPECT_EQ(Date::getLastDayOfMonth(2024, 2), 0);  // month first, then year
    Date undefined{2021, 2, 0}, badMonth{2021, 13, 0};
    undefined.setDayToLastDayOfMonthIfUndefined();
    badMonth.setDayToLastDayOfMonthIfUndefined();
    EXPECT_EQ(undefined, (Date{2021, 2, 28}));
    EXPECT_EQ(badMonth.day, 0);
}

TEST(Date, Arithmetic) {
    struct Case {
        Date from;
        char unit;
        int amount;
        Date expected;
    };
    const Case cases[] = {
        {{2024, 2, 29}, 'y', 1, {2025, 2, 29}},
        {{2021, 11, 15}, 'm', 1, {2022, 0, 15}},
        {{2021, 12, 15}, 'm', 0, {2022, 0, 15}},
        {{2021, 5, 31}, 'm', 25, {2023, 6, 31}},
        {{2021, 3, 15}, 'm', -3, {2020, 12, 15}},
        {{2021, 3, 15}, 'm', -2, {2021, 1, 15}},
        {{2021, 1, 15}, 'm', -13, {2019, 12, 15}},
        {{2021, 3, 1}, 'm', -24, {2019, 3, 1}},
        {{2021, 3, 1}, 'm', INT_MIN, {2021 - 178956971, 7, 1}},
        {{2021, 1, 31}, 'd', 1, {2021, 2, 1}},
        {{2024, 3, 1}, 'd', -1, {2024, 2, 29}},
        {{2022, 0, 15}, 'd', 0, {2021, 12, 15}},
        {{2021, 3, 0}, 'd', 0, {2021, 2, 28}},
    };
    for (const auto& c : cases) {
        const Date got = c.unit == 'y'   ? c.from.addYears(c.amount)
                         : c.unit == 'm' ? c.from.addMonths(c.amount)
                                         : c.from.addDays(c.amount);
        EXPECT_EQ(got, c.expected) << c.from << " " << c.unit << c.amount;
    }
    // Absurd fields must not overflow; UBSan stops the run if they do.
    const Date max{INT_MAX, 12, 31};
    (void)max.addYears(INT_MAX), (void)max.addMonths(INT_MAX), (void)max.addDays(INT_MAX);
    (void)(Date{INT_MIN, 1, 1} - max);
}

TEST(Date, ComparisonsByDayNumberEqualityByField) {
    const Date zeroDay{2021, 3, 0}, lastOfFeb{2021, 2, 28};
    EXPECT_LT(zeroDay, (Date{2021, 3, 1}));
    EXPECT_NE(zeroDay, lastOfFeb);
    EXPECT_TRUE(zeroDay <= lastOfFeb && zeroDay >= lastOfFeb);
    EXPECT_EQ((Date{2020, 3, 1} - Date{2019, 3, 1}), 366);
    EXPECT_EQ((Date{2020, 3, 1} - Date{2021, 3, 1}), -365);
}

TEST(Date, CurrentDateCanBeFixed) {
    Date::overrideCurrentDate(Date{2030, 6, 15});
    EXPECT_EQ(Date::getCurrentDate(), (Date{2030, 6, 15}));
    EXPECT_EQ(Date::getCurrentYear(), 2030);
    Date::overrideCurrentDate(std::nullopt);
    EXPECT_TRUE(Date::getCurrentDate().isValid());
}

TEST(Date, TwoDigitYearWindow) {
    const int cases[][3] = {{71, 2021, 2071}, {72, 2021, 1972}, {0, 2050, 2100}, {1, 2050, 2001},
                            {50, 2000, 2050}, {51, 2000, 1951}, {49, 2099, 2149}};
    for (const auto& c : cases) EXPECT_EQ(yearFromTwoDigits(c[0], c[1]), c[2]) << c[0];
}

TEST(Date, SmallReaders) {
    // Leading zeros never count towards the range; a blank or a 0x1D is no digit.
    const std::pair<const char*, std::optional<int>> cases[] = {
        {"007", 7},           {"0002147483647", INT_MAX}, {"2147483648", std::nullopt},
        {"", std::nullopt},   {" 12", std::nullopt},      {"+12", std::nullopt},
        {"-1", std::nullopt}, {"\xd9\xa3", std::nullopt},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(readDigits(text), expected) << text;
    for (const char* bad : {"12 ", "1\x1d", "99999999999999999999"}) {
        EXPECT_EQ(readDigits(bad), std::nullopt) << bad;
    }
    EXPECT_EQ(readDigits("000000000000000000000000002147483647"), INT_MAX);
    EXPECT_EQ(readDigits("00000000000000000000"), 0);
    EXPECT_FALSE(isIntInRange(std::nullopt, INT_MIN, INT_MAX));
    EXPECT_EQ(monthFromName("DEC"), 12);
    for (const char* bad : {"jan", "JANUARY", ""}) EXPECT_EQ(monthFromName(bad), -1);
    EXPECT_EQ(dateToJson({2021, 2, 0}).dump(), R"({"month":2,"year":2021})");
    EXPECT_EQ(dateToJson({2021, 2, 28}).dump(), R"({"day":28,"month":2,"year":2021})");
}

TEST(Date, LayoutReaders) {
    const std::tuple<std::string, const char*, std::optional<Date>> cases[] = {
        {"YYYYMMDD", "20210229", Date{2021, 2, 29}}, {"YYYYMMDD", "2021013199", Date{2021, 1, 31}},
        {"YYYYMMDD", "20210100", Date{2021, 1, 0}},  {"YYYYMMDD", "20210132", std::nullopt},
        {"YYYYMMDD", "2021-1-1", std::nullopt},      {"YYMMDD", "710101", Date{2071, 1, 1}},
        {"YYMMDD", "720115", Date{1972, 1, 15}},     {"YYMMDD", "000000", std::nullopt},
        {"YYMM", "2102", Date{2021, 2, 0}},          {"YYMM", "2113", std::nullopt},
    };
    for (const auto& [layout, text, expected] : cases) {
        const auto got = layout == "YYYYMMDD" ? dateFromYYYYMMDD(text)
                         : layout == "YYMMDD" ? dateFromYYMMDD(text, 2021)
                                              : dateFromYYMM(text, 2021);
        ASSERT_EQ(got.ok(), expected.has_value()) << text;
        EXPECT_EQ(got.ok() ? got.value() : Date{}, expected.value_or(Date{})) << text;
        if (!got.ok()) {
            EXPECT_EQ(got.error(), "Invalid date: string \"" + std::string(text) +
                                       "\" can not be converted to " + layout + " format");
        }
    }
    const std::string accented = std::string("20\xc3\xa9\xff") + "0101";
    EXPECT_EQ(dateFromYYYYMMDD(accented).error(),
              "Invalid date: string \"20***0101\" can not be converted to YYYYMMDD format");
}

TEST(Date, MrzReaderToleratesFiller) {
    const std::pair<const char*, Date> cases[] = {
        {"99<<<<", {99, 0, 0}}, {"<<<<<<", {-1, 0, 0}}, {"9912<<", {99, 12, 0}},
        {"<9<1<5", {9, 1, 5}},  {"9<1<5<", {9, 1, 5}},  {"99 1-1", {99, 1, -1}},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(dateFromMrzYYMMDD(text, '<').value(), expected) << text;
    EXPECT_EQ(dateFromMrzYYMMDD("99<<<", '<').error(),
              "Invalid date: string \"99<<<\" can not be converted to YYMMDD format");
    // Each part is read like a stream extracts an int: C white space and one
    // sign may stand in front, nothing may follow.
    const std::pair<const char*, Date> signs[] = {
        {"+9\t1\n1", {9, 1, 1}},
        {"\v9\f1\r1", {9, 1, 1}},
        {"-0-9+0", {0, -9, 0}},
        {"<1 1+1", {1, 1, 1}},
    };
    for (const auto& [text, expected] : signs) {
        const auto got = dateFromMrzYYMMDD(text, '<');
        ASSERT_TRUE(got.ok()) << text;
        EXPECT_EQ(got.value(), expected) << text;
    }
    for (const char* bad :
         {"9913AB", "991 01", "99<<\xe9<", "+-0101", "- 0101", " -0101", "  0101", "1 0101",
          "\24010101", "0x0101", "1.0101", "+<0101", "-<0101", " <0101", "9\0350101"}) {
        EXPECT_EQ(
            dateFromMrzYYMMDD(bad, '<').error(),
            "Invalid date: \"" + std::string(bad) + "\" could not be converted to YYMMDD date");
    }
}

TEST(DateDeathTest, ShortViewIsAContractFailure) {
    EXPECT_DEATH(dateFromYYMMDD("21010", 2021), "");
}

}  // namespace
}  // namespace parser
