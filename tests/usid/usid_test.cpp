// Code tables and the readers that are easier to reach alone; whole payloads
// are in tests/data/us_usid.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "usid/usid_parser.h"
#include "usid/usid_tables.h"

namespace {

using namespace parser::usid;
using nlohmann::json;

TEST(UsidTables, SizesAndEnds) {
    struct Row {
        const char* name;
        const CodedTable& table;
        std::size_t size;
        const char* firstCode;
        const char* lastCode;
    };
    const Row rows[] = {
        {"sponsorFlag", kSponsorFlag, 2, "0", "1"},
        {"eyeColor", kEyeColor, 8, "BR", "VI"},
        {"hairColor", kHairColor, 9, "BR", "BD"},
        {"directCareFlag", kDirectCareFlag, 4, "S", "R"},
        {"civilianHealthCare", kCivilianHealthCare, 4, "M", "F"},
        {"commissary", kCommissary, 3, "Y", "X"},
        {"exchange", kExchange, 4, "U", "X"},
        {"bloodType", kBloodType, 12, "A+", "UNK"},
        {"relationship", kRelationship, 16, "CH", "UMFS"},
        {"status", kStatus, 32, "ACADMY", "VSI"},
        {"serviceNames", kServiceNames, 13, "A", "X"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_EQ(row.table.size(), row.size);
        EXPECT_EQ(row.table.front().first, row.firstCode);
        EXPECT_EQ(row.table.back().first, row.lastCode);
        std::set<std::string> codes;
        for (const auto& entry : row.table) {
            EXPECT_TRUE(codes.insert(entry.first).second) << "code twice: " << entry.first;
        }
    }
    EXPECT_EQ(kMwr, kCommissary);
    EXPECT_EQ(kDeersDependentSuffix.size(), 9u);
    EXPECT_EQ(kServiceCode.size(), 35u);
    EXPECT_EQ(kBranchOfService.size(), 8u);
    EXPECT_EQ(kGenevaConventionCategory.size(), 6u);
    ASSERT_EQ(kPayGrade.size(), 46u);
    EXPECT_EQ(kPayGrade[14], "STDT");
    EXPECT_EQ(kPayGrade.back(), "N/A");
}

TEST(UsidTables, LookupsAreExactAndFirstRowWins) {
    EXPECT_EQ(*findText(kBloodType, "O+"), "0+");
    EXPECT_EQ(*findText(kBloodType, "0-"), "0-");
    EXPECT_EQ(findText(kBloodType, "unk"), nullptr);
    EXPECT_EQ(findText(kStatus, "AD "), nullptr);
    EXPECT_EQ(*findText(kServiceNames, "X"), "other of not applicable");
    EXPECT_TRUE(isListed(kServiceCode, "0"));
    EXPECT_FALSE(isListed(kServiceCode, "8"));
    EXPECT_FALSE(isListed(kPayGrade, "o3"));
    const std::string& retdec = *findText(kStatus, "RETDEC");
    EXPECT_EQ(retdec.substr(retdec.find('\n')),
              "\nbeginning on their 60th birthday, the TDRL, and the PDRL.");
}

// Every two-digit code against the bands, written out independently.
TEST(UsidTables, DeersDependentSuffixBands) {
    for (int value = 0; value < 100; ++value) {
        const std::string code{static_cast<char>('0' + value / 10),
                               static_cast<char>('0' + value % 10)};
        const char* expected = nullptr;
        if (value >= 1 && value <= 19) expected = "dependent child";
        if (value == 0 || value == 20) expected = "sponsor";
        if (value >= 30 && value <= 39) expected = "spouse of sponsor";
        if (value >= 40 && value <= 44) expected = "mother of sponsor";
        if (value >= 45 && value <= 49) expected = "father of sponsor";
        if (value >= 50 && value <= 54) expected = "mother-in-law of sponsor";
        if (value >= 55 && value <= 59) expected = "father-in-law of sponsor";
        if (value >= 60 && value <= 69) expected = "other dependent";
        if (value == 98) expected = "service secretary designee";
        const std::string* text = findText(kDeersDependentSuffix, code);
        if (expected == nullptr) {
            EXPECT_EQ(text, nullptr) << code;
        } else {
            ASSERT_NE(text, nullptr) << code;
            EXPECT_EQ(*text, expected) << code;
        }
    }
    for (const char* odd : {"", "1", "1A", "A1", "010", " 1", "-1"}) {
        EXPECT_EQ(findText(kDeersDependentSuffix, odd), nullptr) << '"' << odd << '"';
    }
}

// The runner stops a short payload before a reader sees it, so the reader's
// own length message only shows when the reader is called alone.
TEST(UsidReaders, CodedFieldLengthMessage) {
    const std::string text = "O+";
    ParserStringRef view(text);
    auto outcome = parser::readCodedField(view, 3, "bloodType", kBloodType);
    ASSERT_FALSE(outcome.ok());
    EXPECT_EQ(outcome.error(), "bloodType should contain 3 character(s) but contain 2");
    EXPECT_EQ(view.size(), 2u);

    outcome = parser::readCodedField(view, 2, "bloodType", kBloodType);
    ASSERT_TRUE(outcome.ok());
    EXPECT_EQ(outcome.value().parsed, "0+");
    EXPECT_TRUE(view.empty());
}

// A real image starts with bytes that are no UTF-8, which the data files
// cannot hold as raw text.
TEST(UsidParser, BinaryImageBytes) {
    std::ifstream sampleFile(QVX_SAMPLES_DIR "/us_usid.txt", std::ios::binary);
    std::string dependent((std::istreambuf_iterator<char>(sampleFile)), {});
    ASSERT_FALSE(dependent.empty());
    // The sample is a dependent; make it a sponsor by its flag and tail.
    std::string sponsor = dependent.substr(0, dependent.size() - 42);
    sponsor[9] = '1';
    sponsor += "II O+ ";
    sponsor += std::string("\xFF\xD8\xFF\xE0", 4);
    parser::UsUsidParser usid;
    auto result = usid.parse(ParserStringRef(sponsor));
    ASSERT_FALSE(result->error) << result->error->message;
    const parser::ParsedField* jpeg = result->getFieldByName("jpegData");
    ASSERT_NE(jpeg, nullptr);
    EXPECT_EQ(jpeg->rawString, std::string("\xFF\xD8\xFF\xE0", 4));
    EXPECT_EQ(jpeg->parsed, "/9j/4A==");
    EXPECT_EQ(result->fields.back().name, "jpegData");
}

// The corpus holds no card of this format, only a Common Access Card that
// must be refused cleanly.
TEST(UsidCorpus, OtherCardsAreRefusedCleanly) {
    std::ifstream in(QVX_CORPUS_DIR "/aamva/usid_dod.json");
    if (!in) GTEST_SKIP() << "no corpus";
    const json corpus = json::parse(in, nullptr, false);
    ASSERT_TRUE(corpus.is_object());
    parser::UsUsidParser usid;
    for (const auto& vector : corpus.value("vectors", json::array())) {
        const std::string input = vector.value("input_text", std::string());
        SCOPED_TRACE(vector.value("id", std::string()));
        auto result = usid.parse(ParserStringRef(input));
        ASSERT_TRUE(result->error);
        if (!input.empty() && input[0] == 'N') {
            EXPECT_EQ(result->error->message,
                      "Common Access Card (CAC) PDF417 VN is not supported by the parser.");
        }
    }
}

}  // namespace
