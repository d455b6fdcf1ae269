// The HIBC date decoder where whole codes cannot reach it, the check value,
// and a smoke run over codes gathered from other projects' test suites.
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

// Codes slice dates to their layout's width, so wrong widths only show here.
TEST(HibcDate, WidthDigitsAndDayOfYear) {
    using T = HIBCDateType;
    for (const auto& [text, type] : {std::pair{"42", T::MonthYearLow},
                                     {"4255", T::MonthYearLow},
                                     {"2501311", T::YYMMDD},
                                     {"2501310", T::YYMMDDHH},
                                     {"250321", T::YYJJJ},
                                     {"202402", T::YYYYMMDD},
                                     {"-25013", T::YYMMDD},
                                     {"x", T::NoDate},
                                     {"0036612", T::YYJJJHH}}) {
        EXPECT_EQ(decode(text, type), "fail") << text;
    }
    EXPECT_EQ(decode("96060", T::YYJJJ), ymd(96, 2, 29));
    EXPECT_EQ(decode("000", T::MonthYearLow), ymd(0, 0, 1));  // month 0 is not refused
    EXPECT_EQ(decode("", T::NoDate), json(nullptr));
}

TEST(HibcDateDeathTest, UnknownTypeIsAContractFailure) {
    EXPECT_DEATH(decode("123", static_cast<HIBCDateType>(8)),
                 "^parser: src/hibc/hibc_tools\\.cpp:[0-9]+: illegal HIBCDateType: 8\n");
}

TEST(HibcCheck, SumModulo43) {
    EXPECT_EQ(hibcCheckValue(""), 0);
    EXPECT_EQ(hibcCheckValue("+A12312345"), 29);  // 41+10+1+2+3+1+2+3+4+5 = 72
    EXPECT_EQ(hibcCheckValue("%%%"), 126 % 43);
    EXPECT_EQ(hibcCheckValue("+a\x80z"), 41);  // bytes outside the set count 0
}

// ---- corpus ----------------------------------------------------------------

// Every refusal must be one that the data files under tests/data/hibc show.
std::set<std::string> knownErrors() {
    std::set<std::string> errors;
    for (const auto& entry : std::filesystem::directory_iterator(QVX_TEST_DATA_DIR "/hibc")) {
        for (const auto& row : json::parse(std::ifstream(entry.path())))
            if (row.contains("error")) errors.insert(row["error"]["message"].get<std::string>());
    }
    return errors;
}

// Parses every code of a corpus file; where ours succeeds, compares the fields
// both sides know (`keys` maps our names to theirs).
void runCorpus(const char* file, const char* expectedKey, const json& keys, std::size_t minParsed) {
    std::ifstream in(std::filesystem::path(QVX_CORPUS_DIR "/hibc") / file);
    if (!in) GTEST_SKIP() << "no corpus";
    const json corpus = json::parse(in);
    const std::set<std::string> known = knownErrors();
    HIBCParser parser;
    std::size_t parsed = 0;
    for (const auto& row : corpus["cases"]) {
        const std::string input = row["input"];
        SCOPED_TRACE(input);
        auto result = parser.parse(input);
        if (row.contains("mod43_valid_computed_here")) {
            // Most codes of that suite carry placeholder check characters.
            EXPECT_EQ(!result->error, row["mod43_valid_computed_here"].get<bool>());
        }
        if (result->error) {
            EXPECT_EQ(known.count(result->error->message), 1u) << result->error->message;
            continue;
        }
        ++parsed;
        EXPECT_TRUE(row.value("valid", true));
        const json& expected = row[expectedKey];
        if (expected.contains("check")) {
            EXPECT_EQ(result->fields.back().parsed["checksum"], expected["check"]);
        }
        for (const auto& [ours, theirs] : keys.items()) {
            const ParsedField* mine = result->getFieldByName(ours);
            if (mine != nullptr && expected.contains(theirs)) {
                EXPECT_EQ(mine->parsed, expected[theirs]) << ours;
            }
        }
        // Two-digit expiry years on our side, full dates on theirs.
        const ParsedField* expiry = result->getFieldByName("expiryDate");
        if (expiry != nullptr && expected.contains("ExpirationDate")) {
            int year = 0, month = 0, day = 0;
            const std::string args = expected["ExpirationDate"]["datetime_args"];
            ASSERT_EQ(std::sscanf(args.c_str(), "%d, %d, %d", &year, &month, &day), 3);
            EXPECT_EQ(expiry->parsed["year"].get<int>() % 100, year % 100);
            EXPECT_EQ(expiry->parsed["month"], month);
            EXPECT_EQ(expiry->parsed["day"], day);
        }
    }
    EXPECT_GE(parsed, minParsed);
}

TEST(HibcCorpus, BuilderSuiteCodes) {
    runCorpus("hibc-barcodeparserbuilder.json", "expected_fields",
              {{"lic", "LabelerIdentificationCode"},
               {"pcn", "ProductCode"},
               {"uom", "UnitOfMeasure"},
               {"lot", "BatchNumber"},
               {"serial", "SerialNumber"},
               {"quantity", "Quantity"}},
              15);  // mostly one-label codes with a "/" between segments
}

TEST(HibcCorpus, StandardExampleCodes) {
    runCorpus("hibc-chriswjones-js.json", "expects",
              {{"lic", "labelerId"},
               {"pcn", "product"},
               {"uom", "uom"},
               {"lot", "lot"},
               {"serial", "serial"},
               {"quantity", "quantity"}},
              1);
}

}  // namespace
}  // namespace parser
