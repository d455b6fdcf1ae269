// Table texts and a reader message that whole payloads (tests/data/us_usid)
// do not show.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "common/text.h"
#include "usid/usid_parser.h"
#include "usid/usid_tables.h"

namespace {

using namespace parser::usid;
using nlohmann::json;

// A card payload built item by item, so that one item can be replaced.
struct Item {
    std::string name;  // empty for the bytes passed over
    std::size_t width;
    std::string value;
};

class Payload {
  public:
    explicit Payload(bool sponsor) : sponsor_(sponsor) {
        // clang-format off
        items_ = {
            {"name", 27, "DOE,JANE M"}, {"personDesignatorIdentifier", 9, "123456789"},
            {"familySequenceNumber", 1, "0"}, {"", 9, "000000000"},
            {"deersDependentSuffix", 2, "30"}, {"height", 2, "64"}, {"weight", 3, "130"},
            {"hairColor", 2, "BN"}, {"eyeColor", 2, "GR"}, {"birthDate", 9, "1987SEP02"},
            {"directCareFlag", 1, "S"}, {"civilianHealthCare", 1, "M"}, {"commissary", 1, "Y"},
            {"mwr", 1, "Y"}, {"exchange", 1, "U"}, {"champusEffectiveDate", 9, "2019JUN01"},
            {"champusExpirationDate", 9, "2025JUN01"}, {"formNumber", 4, "2"},
            {"cardIssueDate", 9, "2021JUN01"}, {"cardExpirationDate", 9, "2025JUN01"},
            {"securityCode", 4, "A1B2"}, {"serviceCode", 1, "A"}, {"status", 6, "AD"},
            {"branchOfService", 5, "USA"}, {"rank", 6, "CPT"}, {"payGrade", 4, "O3"},
        };
        // clang-format on
        if (sponsor) {
            items_.insert(items_.end(),
                          {{"genevaConventionCategory", 3, "II"}, {"bloodType", 3, "O+"}});
        } else {
            items_.insert(items_.end(), {{"sponsorName", 27, "DOE,JOHN A"},
                                         {"sponsorPersonDesignatorIdentifier", 9, "123456789"},
                                         {"relationship", 6, "SP"}});
        }
    }

    std::size_t width(const std::string& name) const {
        for (const Item& item : items_) {
            if (item.name == name) return item.width;
        }
        return 0;
    }

    // Version 2, the payload with `name` holding `value`, padded with blanks.
    std::string with(const std::string& name, const std::string& value) const {
        std::string text = std::string("IDUS28C7Q") + (sponsor_ ? "1" : "0");
        for (const Item& item : items_) {
            std::string field = item.name == name ? value : item.value;
            field.resize(std::max(field.size(), item.width), ' ');
            text += field;
        }
        return text;
    }

  private:
    bool sponsor_;
    std::vector<Item> items_;
};

json parsedValue(const std::string& payload, const std::string& field) {
    parser::UsUsidParser usid;
    const auto result = usid.parse(ParserStringRef(payload));
    if (result->error) return result->error->message;
    const auto* found = result->getFieldByName(field);
    return found == nullptr ? json("no field") : found->parsed;
}

// Every row of every table read back through the card's layout: the field
// takes the table's widest code, reads the right table, and a code that
// stands twice gives its first row's text.
TEST(UsidTables, EveryCodeReadsBackThroughItsField) {
    struct Coded {
        const char* field;
        const CodedTable* table;
        bool described;
        bool sponsor;
    };
    const Coded coded[] = {
        {"hairColor", &kHairColor, false, false},
        {"eyeColor", &kEyeColor, false, false},
        {"bloodType", &kBloodType, false, true},
        {"directCareFlag", &kDirectCareFlag, true, false},
        {"civilianHealthCare", &kCivilianHealthCare, true, false},
        {"commissary", &kCommissary, true, false},
        {"mwr", &kMwr, true, false},
        {"exchange", &kExchange, true, false},
        {"status", &kStatus, true, false},
        {"relationship", &kRelationship, true, false},
    };
    for (const Coded& row : coded) {
        const Payload payload(row.sponsor);
        for (const auto& [code, text] : *row.table) {
            SCOPED_TRACE(std::string(row.field) + " " + code);
            const json expected =
                row.described ? json{{"code", code}, {"description", *findText(*row.table, code)}}
                              : json(*findText(*row.table, code));
            EXPECT_EQ(parsedValue(payload.with(row.field, code), row.field), expected);
        }
    }
    const Payload dependent(false);
    struct Listed {
        const char* field;
        const ListedTable* table;
        bool sponsor;
    };
    const Listed listed[] = {
        {"serviceCode", &kServiceCode, false},
        {"branchOfService", &kBranchOfService, false},
        {"payGrade", &kPayGrade, false},
        {"genevaConventionCategory", &kGenevaConventionCategory, true},
    };
    std::vector<std::string> tooWide;
    for (const Listed& row : listed) {
        const Payload payload(row.sponsor);
        for (const std::string& code : *row.table) {
            SCOPED_TRACE(std::string(row.field) + " " + code);
            if (code.size() > payload.width(row.field)) {
                tooWide.push_back(std::string(row.field) + " " + code);
                continue;
            }
            EXPECT_EQ(parsedValue(payload.with(row.field, code), row.field), code);
        }
    }
    // The one listed code that its field cannot hold: four bytes read "OTHE".
    EXPECT_EQ(tooWide, std::vector<std::string>{"payGrade OTHER"});
    EXPECT_EQ(parsedValue(dependent.with("payGrade", "OTHE"), "payGrade"),
              "'OTHE' is invalid payGrade value");
    // Codes are compared whole after trailing blanks are cut.
    EXPECT_EQ(parsedValue(dependent.with("status", " AD"), "status"),
              "' AD' is invalid status value");
    EXPECT_EQ(parsedValue(Payload(true).with("bloodType", "unk"), "bloodType"),
              "'unk' is invalid bloodType value");
}

// The suffix bands do not overlap, and a suffix outside them is refused.
TEST(UsidTables, DependentSuffixBands) {
    const Payload dependent(false);
    for (int number = 0; number < 100; ++number) {
        const std::string code{static_cast<char>('0' + number / 10),
                               static_cast<char>('0' + number % 10)};
        SCOPED_TRACE(code);
        const auto bands = std::count_if(
            kDeersDependentSuffix.begin(), kDeersDependentSuffix.end(),
            [&code](const CodeRange& range) { return range.low <= code && code <= range.high; });
        EXPECT_LE(bands, 1);
        const json value =
            parsedValue(dependent.with("deersDependentSuffix", code), "deersDependentSuffix");
        EXPECT_EQ(value.is_object() ? value.at("code") : value,
                  bands == 1 ? json(number)
                             : json("'" + code + "' is invalid deersDependentSuffix value"));
    }
    EXPECT_EQ(findText(kDeersDependentSuffix, "21"), nullptr);
    EXPECT_EQ(findText(kDeersDependentSuffix, "1A"), nullptr);
}

// Service names stand beside the service codes: each is a listed service
// code, and a name that is a branch abbreviation is a listed branch.
TEST(UsidTables, ServiceNamesAgreeWithServiceCodesAndBranches) {
    for (const auto& [code, name] : kServiceNames) {
        SCOPED_TRACE(code);
        EXPECT_TRUE(isListed(kServiceCode, code));
        const bool abbreviation =
            name.size() >= 3 &&
            name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") == std::string::npos;
        if (abbreviation) {
            EXPECT_TRUE(isListed(kBranchOfService, name)) << name;
        }
    }
    // Commissary and MWR privileges share their codes.
    EXPECT_EQ(kCommissary, kMwr);
}

// The runner stops a short payload before a reader sees it, so the reader's
// own length message only shows when the reader is called alone.
TEST(UsidReaders, CodedFieldLengthMessage) {
    const std::string text = "O+";
    ParserStringRef view(text);
    parser::ParserResult result;
    parser::FieldTarget target(result);
    parser::CardItem item{parser::readCodedField, "bloodType", 3, {&kBloodType}};
    EXPECT_FALSE(parser::readCodedField(item, view, 3, {}, target));
    ASSERT_TRUE(result.error);
    EXPECT_EQ(result.error->message, "bloodType should contain 3 character(s) but contain 2");
    EXPECT_EQ(view.size(), 2u);

    parser::ParserResult read;
    parser::FieldTarget readTarget(read);
    EXPECT_TRUE(parser::readCodedField(item, view, 2, {}, readTarget));
    ASSERT_EQ(read.fields.size(), 1u);
    EXPECT_EQ(read.fields[0].parsed, "0+");
    EXPECT_TRUE(view.empty());
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
