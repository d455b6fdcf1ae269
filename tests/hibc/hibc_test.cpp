// The HIBC date layouts, the check-character values, and a smoke run over
// codes gathered from other projects' test suites.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "hibc/hibc_parser.h"
#include "hibc/hibc_tools.h"

namespace parser {
namespace {

using nlohmann::json;

json decode(const char* text, HIBCDateType type) {
    json date;
    if (!decodeHIBCDate(text, type, date)) return "fail";
    return date;
}

json ymd(int year, int month, int day) {
    return {{"year", year}, {"month", month}, {"day", day}};
}
json ymdh(int year, int month, int day, int hour) {
    json date = ymd(year, month, day);
    date["hour"] = hour;
    return date;
}

TEST(HibcDate, EachLayout) {
    using T = HIBCDateType;
    EXPECT_EQ(decode("425", T::MonthYearLow), ymd(25, 4, 1));
    EXPECT_EQ(decode("225", T::MonthYearHigh), ymd(25, 12, 1));
    EXPECT_EQ(decode("013125", T::MMDDYY), ymd(25, 1, 31));
    EXPECT_EQ(decode("250131", T::YYMMDD), ymd(25, 1, 31));
    EXPECT_EQ(decode("25013107", T::YYMMDDHH), ymdh(25, 1, 31, 7));
    EXPECT_EQ(decode("25032", T::YYJJJ), ymd(25, 2, 1));
    EXPECT_EQ(decode("2503299", T::YYJJJHH), ymdh(25, 2, 1, 99));
    EXPECT_EQ(decode("20240229", T::YYYYMMDD), ymd(2024, 2, 29));
    EXPECT_EQ(decode("", T::NoDate), json(nullptr));
    // Plain layouts take month and day as they come.
    EXPECT_EQ(decode("991399", T::YYMMDD), ymd(99, 13, 99));
    EXPECT_EQ(decode("000", T::MonthYearLow), ymd(0, 0, 1));
}

TEST(HibcDate, LengthAndDigitsAreChecked) {
    using T = HIBCDateType;
    for (const auto& [text, type] : {std::pair{"42", T::MonthYearLow},
                                     {"4255", T::MonthYearLow},
                                     {"25013", T::YYMMDD},
                                     {"2501311", T::YYMMDD},
                                     {"2501310", T::YYMMDDHH},
                                     {"2503", T::YYJJJ},
                                     {"250321", T::YYJJJ},
                                     {"202402", T::YYYYMMDD},
                                     {"2A0131", T::YYMMDD},
                                     {"25 32", T::YYJJJ},
                                     {"-25013", T::YYMMDD},
                                     {"x", T::NoDate}}) {
        EXPECT_EQ(decode(text, type), "fail") << text;
    }
}

TEST(HibcDate, EveryDayOfYear) {
    // Walks the calendar day by day and checks each day number maps to it.
    for (const int year : {25, 24}) {
        int monthDays[] = {31, year == 24 ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
        int month = 1;
        int day = 1;
        for (int dayOfYear = 1; dayOfYear <= (year == 24 ? 366 : 365); ++dayOfYear) {
            std::string text = std::to_string(year) + std::to_string(1000 + dayOfYear).substr(1);
            ASSERT_EQ(decode(text.c_str(), HIBCDateType::YYJJJ), ymd(year, month, day)) << text;
            if (++day > monthDays[month - 1]) {
                day = 1;
                ++month;
            }
        }
    }
}

TEST(HibcDate, LeapRuleTreatsYearZeroAsCommon) {
    EXPECT_EQ(decode("24366", HIBCDateType::YYJJJ), ymd(24, 12, 31));
    EXPECT_EQ(decode("25366", HIBCDateType::YYJJJ), "fail");
    EXPECT_EQ(decode("00366", HIBCDateType::YYJJJ), "fail");
    EXPECT_EQ(decode("00060", HIBCDateType::YYJJJ), ymd(0, 3, 1));
    EXPECT_EQ(decode("96060", HIBCDateType::YYJJJ), ymd(96, 2, 29));
    EXPECT_EQ(decode("24367", HIBCDateType::YYJJJ), "fail");
    EXPECT_EQ(decode("24000", HIBCDateType::YYJJJ), "fail");
    EXPECT_EQ(decode("2436612", HIBCDateType::YYJJJHH), ymdh(24, 12, 31, 12));
    EXPECT_EQ(decode("0036612", HIBCDateType::YYJJJHH), "fail");
}

TEST(HibcDateDeathTest, UnknownTypeIsAContractFailure) {
    EXPECT_DEATH(decode("123", static_cast<HIBCDateType>(8)),
                 "^parser: src/hibc/hibc_tools\\.cpp:[0-9]+: illegal HIBCDateType: 8\n");
}

TEST(HibcCheck, CharacterValues) {
    const std::string alphabet = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ-. $/+%";
    for (int byte = 0; byte < 256; ++byte) {
        const auto at = alphabet.find(static_cast<char>(byte));
        const int expected = at == std::string::npos ? 0 : static_cast<int>(at);
        EXPECT_EQ(hibcCharValue(static_cast<unsigned char>(byte)), expected) << byte;
    }
}

TEST(HibcCheck, SumModulo43) {
    EXPECT_EQ(hibcCheckValue(""), 0);
    EXPECT_EQ(hibcCheckValue("+A12312345"), 29);  // 41+10+1+2+3+1+2+3+4+5 = 72
    EXPECT_EQ(hibcCheckValue("%%%"), 126 % 43);
    EXPECT_EQ(hibcCheckValue("+H123GLOVE2"), 0);
    EXPECT_EQ(hibcCheckValue("+a\x80z"), 41);  // bytes outside the set count 0
}

// ---- corpus ----------------------------------------------------------------

const std::filesystem::path kCorpusDir = QVX_CORPUS_DIR "/hibc";

const std::set<std::string> kKnownErrors = {
    "data string is empty",
    "data string does not start with '+'",
    "data string too short",
    "invalid checksum",
    "size of primary data string is illegal",
    "lic must be alphanumeric",
    "pcn must be alphanumeric",
    "unit of measure must be a number 0-9",
    "size of secondary data string is illegal",
    "illegal secondary data string identifier",
    "illegal lot size",
    "illegal serial size",
    "illegal date size",
    "secondary data too short",
    "illegal date type",
    "could not parse date",
    "invalid date specifier",
    "quantity too large",
    "quantity is not a numeric value",
    "size of additional data string is illegal",
};

json readCorpus(const char* name) {
    std::ifstream in(kCorpusDir / name);
    if (!in) return json();
    return json::parse(in, nullptr, false);
}

const ParsedField* field(const ParserResult& result, const char* name) {
    return result.getFieldByName(name);
}

// Compares what both sides know; the sources' own keys name the same things.
void expectAgreement(const ParserResult& result, const json& expected, const json& keys) {
    for (const auto& [ours, theirs] : keys.items()) {
        const ParsedField* mine = field(result, ours.c_str());
        const std::string key = theirs.get<std::string>();
        if (mine == nullptr || !expected.contains(key)) continue;
        EXPECT_EQ(mine->parsed, expected[key]) << ours;
    }
    // Expiry dates: two-digit years on our side, full dates on theirs.
    const ParsedField* expiry = field(result, "expiryDate");
    if (expiry != nullptr && expected.contains("ExpirationDate")) {
        int year = 0;
        int month = 0;
        int day = 0;
        const std::string args = expected["ExpirationDate"]["datetime_args"];
        ASSERT_EQ(std::sscanf(args.c_str(), "%d, %d, %d", &year, &month, &day), 3);
        EXPECT_EQ(expiry->parsed["year"].get<int>() % 100, year % 100);
        EXPECT_EQ(expiry->parsed["month"], month);
        EXPECT_EQ(expiry->parsed["day"], day);
    }
}

TEST(HibcCorpus, BuilderSuiteCodes) {
    const json corpus = readCorpus("hibc-barcodeparserbuilder.json");
    if (corpus.is_null()) GTEST_SKIP() << "no corpus at " << kCorpusDir;
    ASSERT_FALSE(corpus.is_discarded());
    const json keys = {{"lic", "LabelerIdentificationCode"},
                       {"pcn", "ProductCode"},
                       {"uom", "UnitOfMeasure"},
                       {"lot", "BatchNumber"},
                       {"serial", "SerialNumber"},
                       {"quantity", "Quantity"}};
    HIBCParser parser;
    std::size_t parsed = 0;
    for (const auto& row : corpus["cases"]) {
        const std::string input = row["input"];
        SCOPED_TRACE(input);
        auto result = parser.parse(input);
        if (result->error) {
            EXPECT_EQ(kKnownErrors.count(result->error->message), 1u) << result->error->message;
            continue;
        }
        EXPECT_TRUE(row["valid"].get<bool>());
        ++parsed;
        expectAgreement(*result, row["expected_fields"], keys);
    }
    // Most valid codes of the suite are one-label codes with a "/" between segments.
    EXPECT_GE(parsed, 15u);
}

TEST(HibcCorpus, SpecificationExampleCodes) {
    const json corpus = readCorpus("hibc-chriswjones-js.json");
    if (corpus.is_null()) GTEST_SKIP() << "no corpus at " << kCorpusDir;
    ASSERT_FALSE(corpus.is_discarded());
    const json keys = {{"lic", "labelerId"}, {"pcn", "product"},   {"uom", "uom"},
                       {"lot", "lot"},       {"serial", "serial"}, {"quantity", "quantity"}};
    HIBCParser parser;
    for (const auto& row : corpus["cases"]) {
        const std::string input = row["input"];
        SCOPED_TRACE(input);
        auto result = parser.parse(input);
        // Most codes there carry placeholder check characters.
        EXPECT_EQ(!result->error, row["mod43_valid_computed_here"].get<bool>());
        if (result->error) {
            EXPECT_EQ(kKnownErrors.count(result->error->message), 1u) << result->error->message;
            continue;
        }
        expectAgreement(*result, row["expects"], keys);
        EXPECT_EQ(result->fields.back().parsed["checksum"], row["expects"]["check"]);
    }
}

}  // namespace
}  // namespace parser
