// The feature reader's pieces: licence-number encodings, the anonymised
// classes, the header search, and features of whole documents.
#include "dlid/dlid_features.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "common/parser_regex.h"
#include "dlid/dlid_licence_numbers.h"
#include "dlid/dlid_parser.h"

namespace {

using nlohmann::json;
using parser::Date;

TEST(DlidLicenceNumbers, Soundex) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"SMITH", "S530"},    {"smith", "S530"},
        {"ASHCRAFT", "A261"}, {"TYMCZAK", "T522"},
        {"PFISTER", "P236"},  {"HONEYMAN", "H555"},
        {"LEE", "L000"},      {"ROBERT", "R163"},
        {"O'BRIEN", "O165"},  {"", ""},
    };
    for (const auto& [name, code] : cases) EXPECT_EQ(parser::dlid::soundex(name), code) << name;
}

TEST(DlidLicenceNumbers, CodeTables) {
    EXPECT_EQ(parser::dlid::firstNameCode('A'), 0);
    EXPECT_EQ(parser::dlid::firstNameCode('b'), 6);
    EXPECT_EQ(parser::dlid::firstNameCode('Z'), 9);
    EXPECT_EQ(parser::dlid::firstNameCode('-'), -1);
    EXPECT_EQ(parser::dlid::dayLetter(1), 'A');
    EXPECT_EQ(parser::dlid::dayLetter(9), 'Z');
    EXPECT_EQ(parser::dlid::dayLetter(26), '2');
    EXPECT_EQ(parser::dlid::dayLetter(31), 'U');
    EXPECT_EQ(parser::dlid::dayLetter(0), 0);
    EXPECT_EQ(parser::dlid::dayLetter(32), 0);
    EXPECT_EQ(parser::dlid::monthOfBandValue(0), 0);
    EXPECT_EQ(parser::dlid::monthOfBandValue(1), 1);
    EXPECT_EQ(parser::dlid::monthOfBandValue(84), 1);
    EXPECT_EQ(parser::dlid::monthOfBandValue(85), 2);  // an upper edge opens the next month
    EXPECT_EQ(parser::dlid::monthOfBandValue(915), 11);
    EXPECT_EQ(parser::dlid::monthOfBandValue(999), 12);
    EXPECT_EQ(parser::dlid::monthOfBandValue(1000), 0);
}

struct EncodingCase {
    const char* code;
    const char* number;
    std::optional<Date> birth;
    const char* documentType;
    const char* family;
    const char* given;
    bool matches;
};

TEST(DlidLicenceNumbers, MatchesStateEncoding) {
    const Date b{1985, 3, 14};
    const std::vector<EncodingCase> cases = {
        {"FL", "S530-412-85-094-0", b, "DL", "SMITH", "JOHN", true},
        {"FL", "S530412855940", b, "DL", "Smith", "john", true},   // the second day code
        {"FL", "S530412865940", b, "DL", "SMITH", "JOHN", false},  // another year
        {"FL", "S530412850950", b, "DL", "SMITH", "JOHN", false},  // another day
        {"FL", "S53041285094", b, "DL", "SMITH", "JOHN", false},   // 12 bytes
        {"FL", "S530412850940", b, "DL", "SMITH", "", false},
        {"WI", "S530-4128-5094-00", b, "DL", "SMITH", "JOHN", true},
        {"WI", "S530412850940", b, "DL", "SMITH", "JOHN", false},
        {"IL", "S53041285076", b, "DL", "SMITH", "JOHN", true},
        {"IL", "S53041285676", b, "DL", "SMITH", "JOHN", true},
        {"IL", "S530-4128-5076", b, "DL", "SMITH", "JOHN", false},
        {"IL", "53041285076S", b, "ID", "SMITH", "JOHN", true},
        {"IL", "53001285076S", b, "ID", "SMITH", "NONE", true},
        {"IL", "53041285076S", b, "DL", "SMITH", "JOHN", false},
        {"MD", "S-530-412-850-200", b, "DL", "SMITH", "JOHN", true},
        {"MI", "S 530 412 850 158", b, "DL", "SMITH", "JOHN", true},
        {"MI", "S 530 412 850 257", b, "DL", "SMITH", "JOHN", false},  // April's first code
        {"MD", "S530412850200", b, "DL", "JONES", "JOHN", false},
        {"ND", "SMI851234", b, "DL", "SMITH", "", true},
        {"ND", "LIX851234", b, "DL", "Li", "", true},
        {"ND", "SMI861234", b, "DL", "SMITH", "", false},
        {"NJ", "S12345678903851", b, "DL", "SMITH", "", true},
        {"NJ", "S12345678904851", b, "DL", "SMITH", "", false},
        {"WA", "SMITHJ*15ABM", b, "DL", "SMITH", "JOHN", true},
        {"WA", "LIXXXXX15ABM", b, "DL", "LI", "JOHN", true},  // all of a short name
        {"WA", "SMITHJ*16ABM", b, "DL", "SMITH", "JOHN", false},
        {"WA", "SMITHJ*15ABN", b, "DL", "SMITH", "JOHN", false},
        {"CT", "031234567", b, "DL", "", "", true},
        {"CT", "151234567", Date{1986, 3, 14}, "DL", "", "", true},
        {"CT", "031234567", Date{1986, 3, 14}, "DL", "", "", false},
        // Without a birth date only numbers made for 2000-01-01 pass.
        {"CT", "131234567", std::nullopt, "DL", "", "", true},
        {"ND", "SMI001234", std::nullopt, "DL", "SMITH", "", true},
        {"ND", "SMI851234", std::nullopt, "DL", "SMITH", "", false},
        {"TX", "12345678", b, "DL", "SMITH", "JOHN", false},
    };
    for (const EncodingCase& c : cases) {
        EXPECT_EQ(parser::dlid::matchesStateEncoding(c.code, c.number, c.birth, c.documentType,
                                                     c.family, c.given),
                  c.matches)
            << c.code << " " << c.number;
    }
}

TEST(DlidFeatures, Tables) {
    EXPECT_EQ(parser::dlid::featureIssuerCount(), 76u);
    EXPECT_EQ(parser::dlid::featureIssuerCode("636016"), "NF");
    EXPECT_EQ(parser::dlid::featureIssuerCode("604428"), "GC");
    EXPECT_EQ(parser::dlid::featureIssuerCode("636027"), "ST");
    EXPECT_EQ(parser::dlid::featureIssuerCode("604434"), "NT");
    EXPECT_EQ(parser::dlid::featureIssuerCode("360040"), "NV");
    EXPECT_EQ(parser::dlid::featureIssuerCode("636015"), "TX");
    EXPECT_EQ(parser::dlid::featureIssuerCode("36026"), "AZ");
    EXPECT_EQ(parser::dlid::featureIssuerCode("999999"), "");
    EXPECT_TRUE(parser::dlid::isCanadianCode("NF"));
    EXPECT_FALSE(parser::dlid::isCanadianCode("NL"));
    EXPECT_TRUE(parser::dlid::isKnownElement("PAF"));
    EXPECT_FALSE(parser::dlid::isKnownElement("ZTA"));
    EXPECT_EQ(parser::dlid::expectedElements("01").size(), 17u);
    EXPECT_EQ(parser::dlid::expectedElements("03").size(), 19u);
    EXPECT_EQ(parser::dlid::expectedElements("10").size(), 22u);
    EXPECT_TRUE(parser::dlid::expectedElements("00").empty());
    EXPECT_TRUE(parser::dlid::expectedElements("??").empty());
}

TEST(DlidFeatures, AnonymizedValues) {
    struct Case {
        const char* id;
        std::string value;
        const char* expected;
    };
    const std::vector<Case> cases = {
        {"DAJ", "TX", "TX"},
        {"DAJ", std::string(50, 'x'), "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"},
        {"DAQ", "D123-456-789", "@#%#%#"},
        {"DAQ", " 12 34 ", ">#>"},
        {"DAQ", "AB 12", "@#"},
        {"DAQ", "none ", "none "},
        {"DAK", "78701 0000", "#####>####"},
        {"DAK", "7870@-", "####@%"},
        {"DCS", "O'BRIEN SMITH", "%>%"},
        {"DAC", "JOHN", "%"},
        {"DCF", "A1B2-C3*", "@@@@%@@@"},
        {"DBB", "03141985", "####198#"},
        {"DBA", "20280314", "202#####"},
        {"DBD", "1985-03-14", "INV_DATE"},
        {"DBD", "02302020", "INV_DATE"},
        {"DAU", "070 in", "###>in"},
        {"DCU", "jr", "jr"},
        {"DCU", " 3RD", ">3RD"},
        {"DCU", "III", "@"},
        {"ZTA", "ABCDE", "@"},
        {"ZTA", "AB-12", "@%#"},
        {"ZTA", "A\x01\x02\x03\x04", "NON-UTF8"},
        {"ZTA", "A.B,C;D:E!FGHIJKLMNOPQRSTU", "NON-UTF8"},  // five kinds of punctuation
        {"ZTA", "A.B", "@%@"},                              // too short to be judged
        {"DXX", "ANYTHING", ""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(parser::dlid::anonymizeValue(c.id, c.value, false), c.expected)
            << c.id << " " << c.value;
    }
    // Canadian documents write dates year first.
    EXPECT_EQ(parser::dlid::anonymizeValue("DBB", "19850314", true), "198#####");
}

// The header search gives what the pattern gives, in linear time.
TEST(DlidFeatures, HeaderSearchAgreesWithThePattern) {
    const auto pattern = ParserRegex::compile(
        "[\\s\\S]+(?:ANSI|AAMVA)(?:[ \\n]{1,2})?(\\d{6})(\\d{2})(\\d{2})?(\\d{2})?",
        ParserRegexDialect::ECMAScript);
    ASSERT_TRUE(pattern.has_value());
    const std::vector<std::string> inputs = {
        "@\n\x1e\rANSI 636015080102DL00410288",
        "@\n\x1e\rAAMVA6360150101DL",
        "@\n\x1e\rANSI\n\n63601508",
        "@\n\x1e\rANSI   636015080102",
        "@ANSI 6360150",
        "ANSI 636015080102",
        "@ANSI 636015080102 ANSI 99999901",
        "@AAMVA 63601501 01 02",
        "@\n\rANSI 636015080102DLDAQANSI 12345678\n",
        "no header at all",
        "",
    };
    for (const std::string& input : inputs) {
        std::vector<std::string> groups;
        const bool found = pattern->isPartialMatch(input, groups);
        const auto match = parser::dlid::matchFeatureHeader(input);
        ASSERT_EQ(match.has_value(), found) << input;
        if (!found) continue;
        EXPECT_EQ(match->whole, groups[0]) << input;
        EXPECT_EQ(match->iin, groups[1]) << input;
        EXPECT_EQ(match->version, groups[2]) << input;
        EXPECT_EQ(match->jurisdictionVersion, groups[3]) << input;
        EXPECT_EQ(match->subfiles, groups[4]) << input;
    }
    // Long texts cost no more than a pass over them.
    const std::string longText = "@" + std::string(1000000, 'A') + "ANSI 636015080102";
    EXPECT_EQ(parser::dlid::matchFeatureHeader(longText)->iin, "636015");
}

}  // namespace

namespace {

json featuresOf(const std::string& code, const std::string& today) {
    parser::DLIDParser dlid;
    const std::string options =
        R"({"enhanceDataForFeatureExtraction": true, "currentDate": ")" + today + "\"}";
    EXPECT_TRUE(dlid.readOptionsFromJSONString(options)->ok);
    auto result = dlid.parse(ParserStringRef(code));
    if (result->error || result->fields.empty()) return json();
    return result->fields.front().parsed;
}

// Today is the parser's date, so the same code gives the same features on
// any day it is run.
TEST(DlidFeatures, AgesCountToTheParsersDate) {
    const std::string code =
        "@\n\x1e\rANSI 636015080102DL00310030DLDAQ1\nDBB06022001\nDBA06012024\r";
    struct Case {
        const char* today;
        const char* age;
        const char* binned;
        const char* expired;
    };
    const std::vector<Case> cases = {
        {"20240601", "22", "20", "false"},  // the day before the birthday
        {"20240602", "23", "25", "true"},
        {"20010601", "-1", "0", "false"},  // born after today
    };
    for (const Case& c : cases) {
        const json features = featuresOf(code, c.today);
        ASSERT_TRUE(features.is_object()) << c.today;
        EXPECT_EQ(features["*AGE"], c.age) << c.today;
        EXPECT_EQ(features["*AGE_BINNED"], c.binned) << c.today;
        EXPECT_EQ(features["*EXPIRED"], c.expired) << c.today;
    }
}

// Issue after expiry counts backwards; a missing date gives 0 months.
TEST(DlidFeatures, ValidMonths) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"DBD01152020\nDBA01142021", "11"},
        {"DBD01152020\nDBA01152021", "12"},
        {"DBD01152021\nDBA01152020", "-12"},
        {"DBD01152020\nDBAsoon", "0"},
    };
    for (const auto& [dates, months] : cases) {
        const std::string body = "DLDAQ1\n" + dates + "\r";
        const std::string code = "@\n\x1e\rANSI 636015080102DL0031" +
                                 std::string(4 - std::to_string(body.size()).size(), '0') +
                                 std::to_string(body.size()) + body;
        const json features = featuresOf(code, "20240601");
        ASSERT_TRUE(features.is_object()) << dates;
        EXPECT_EQ(features["*VALID_MONTHS"], months) << dates;
        EXPECT_EQ(features["*MAIN_SUBFILE_ERRORS"], "") << dates;
    }
}

}  // namespace
