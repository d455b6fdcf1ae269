#include "vin/vin_parser.h"

#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace {

using nlohmann::json;

constexpr const char* kLengthError = "valid VIN consists of 17 characters";
constexpr const char* kCharsetError =
    "valid VIN contains only digits and uppercase letters (except 'Q', 'O', 'I')";
constexpr const char* kChecksumError = "checksum verification failed";

// A North American VIN whose check digit (3) is right.
constexpr const char* kHonda = "1HGCM82633A004352";

std::unique_ptr<parser::ParserResult> parse(const std::string& input,
                                            const std::string& options = "{}") {
    parser::VinParser vin;
    auto outcome = vin.readOptionsFromJSONString(options);
    EXPECT_TRUE(outcome->ok) << outcome->error;
    return vin.parse(ParserStringRef(input));
}

std::string errorOf(const parser::ParserResult& result) {
    return result.error ? result.error->message : std::string();
}

// The 17 characters the parser settled on, put back together from the field raw strings.
std::string recoveredVin(const parser::ParserResult& result) {
    if (result.fields.size() != 4)
        return std::string();
    const std::string vis = result.fields[2].rawString;
    const std::string check = result.fields[3].parsed.value("checksum", std::string());
    return result.fields[0].rawString + result.fields[1].rawString + check + vis;
}

json fieldValue(const parser::ParserResult& result, const std::string& name) {
    const parser::ParsedField* field = result.getFieldByName(name);
    return field ? field->parsed : json();
}

TEST(VinParser, FieldsOfACleanVin) {
    auto result = parse(kHonda);
    ASSERT_EQ(errorOf(*result), "");
    const json expected = json::parse(R"([
        {"name": "WMI", "rawString": "1HG",
         "parsed": {"fullCode": "1HG", "numberOfVehicles": ">2000", "region": "USA"}},
        {"name": "VDS", "rawString": "CM826", "parsed": "CM826"},
        {"name": "VIS", "rawString": "3A004352",
         "parsed": {"modelYear": [2003, 2033], "plant": "A", "serialNumber": "004352",
                    "wmiSuffix": null}},
        {"name": "metadata", "rawString": "",
         "parsed": {"checksum": "3", "passedChecksum": true, "standard": "northAmerica"}}
    ])");
    EXPECT_EQ(result->asJson(), expected);
    EXPECT_TRUE(result->warnings.empty());
}

struct NoiseCase {
    const char* label;
    std::string input;
    std::string vin;    // what the parser should settle on, when it succeeds
    std::string error;  // the fatal message otherwise
};

TEST(VinParser, NoiseAroundTheNumber) {
    const std::vector<NoiseCase> cases = {
        {"caption before", "VIN 1HGCM82633A004352", kHonda, ""},
        {"counter after", "1HGCM82633A004352 12345", kHonda, ""},
        {"trimmed first", "\t 1HGCM82633A004352 \r\n", kHonda, ""},
        {"18, quote in front", "\"1HGCM82633A004352", kHonda, ""},
        {"18, legal front drops back", "1HGCM82633A0043527", kHonda, ""},
        {"19 drops both ends", "\"1HGCM82633A004352\"", kHonda, ""},
        {"20 drops two and one", "[[1HGCM82633A004352]", kHonda, ""},
        {"blank at half keeps back", "1HGCM82633A004352 JH4DB1554LS000001", "JH4DB1554LS000001",
         ""},
        {"blank past half keeps front", "1HGCM82633A004352 JH4DB1554LS0000", kHonda, ""},
        {"blank at half of 34", "1HGCM82633A004352 JH4DB1554LS00000", "", kLengthError},
        {"only the first blank counts", "VIN 1HGCM82633A 004352", "", kCharsetError},
        {"21 after trimming stays", "X1HGCM82633A004352XYZ", "", kLengthError},
        {"17 with trailing blank", "1HGCM82633A00435 ", "", kCharsetError},
        {"17 with leading blank", " 1HGCM82633A00435", "", kCharsetError},
        {"blank-padded 16", " 1HGCM82633A00435 ", "", kLengthError},
        {"only blanks", std::string(30, ' '), "", kLengthError},
        {"empty", "", "", kLengthError},
        {"16", "1HGCM82633A00435", "", kLengthError},
        {"NUL inside", std::string("1HGCM826\0003A004352", 17), "", kCharsetError},
        {"high byte", "1HGCM82633A00435\xFF", "", kCharsetError},
        {"lower case", "1hgcm82633a004352", "", kCharsetError},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        auto result = parse(c.input);
        EXPECT_EQ(errorOf(*result), c.error);
        if (c.error.empty()) {
            EXPECT_EQ(recoveredVin(*result), c.vin);
        }
    }
}

TEST(VinParser, RegionByFirstTwoCharacters) {
    // Boundaries on both sides of a range; G, H and 0 have no row at all.
    // clang-format off
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"1A", "USA"}, {"2A", "Canada"}, {"30", "unassigned"}, {"31", "Costa Rica"},
        {"37", "Costa Rica"}, {"38", "Cayman Islands"}, {"3A", "Mexico"}, {"3W", "Mexico"},
        {"3X", "Costa rica"}, {"3Z", "Costa rica"}, {"A9", "unassigned"}, {"AA", "South Africa"},
        {"AH", "South Africa"}, {"AJ", "Ivory Coast"}, {"AP", "unassigned"}, {"EL", "unassigned"},
        {"G1", "unassigned"}, {"HA", "unassigned"}, {"0A", "unassigned"}, {"JA", "Japan"},
        {"K9", "Kazakhstan"}, {"KL", "Korea(South)"}, {"KS", "Kazakhstan"}, {"RF", "Taiwan"},
        {"S0", "unassigned"}, {"S1", "Latvia"}, {"S4", "Latvia"}, {"S5", "unassigned"},
        {"SA", "United Kingdom"}, {"SN", "Germany (formerly East Germany)"}, {"SU", "Poland"},
        {"T1", "Portugal"}, {"TJ", "Czech Republic"}, {"UG", "unassigned"}, {"UH", "Denmark"},
        {"V3", "Croatia"}, {"V6", "Estonia"}, {"VF", "France"}, {"WV", "Germany"},
        {"XW", "Russia"}, {"XX", "Luxembourg"}, {"Y3", "Belarus"}, {"YS", "Sweden"},
        {"ZA", "Italy"}, {"ZW", "unassigned"}, {"ZX", "Slovenia"}, {"8A", "Argentina"},
        {"93", "Brazil"}, {"9X", "Trinidad & Tobago"},
    };
    // clang-format on
    for (const auto& [prefix, region] : cases) {
        SCOPED_TRACE(prefix);
        auto result = parse(prefix + "GCM82633A004352");
        ASSERT_EQ(errorOf(*result), "");
        EXPECT_EQ(fieldValue(*result, "WMI")["region"], region);
    }
}

struct MakerCase {
    const char* vin;
    const char* fullCode;
    json numberOfVehicles;
    json wmiSuffix;
    const char* standard;
};

TEST(VinParser, StandardAndMakerSize) {
    const std::vector<MakerCase> cases = {
        {"1G9AB0002P1234567", "1G9234", "<2000", "234", "northAmerica"},
        {"5G9AB0002P1234567", "5G9234", "<2000", "234", "northAmerica"},
        {"3GBAB0002P1234567", "3GB", nullptr, nullptr, "ISO"},
        {"VF9AB0001Z1234567", "VF9234", "<500", "234", "EU"},
        {"WVWZZZ1J0XW000001", "WVW", ">500", nullptr, "EU"},
        {"SB1AAA004A1234567", "SB1", ">500", nullptr, "EU"},
        {"JA9AB0000Z1234567", "JA9234", nullptr, "234", "ISO"},
        {"KMHCG45C5YU123456", "KMH", nullptr, nullptr, "ISO"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.vin);
        auto result = parse(c.vin);
        ASSERT_EQ(errorOf(*result), "");
        const json wmi = fieldValue(*result, "WMI");
        EXPECT_EQ(wmi["fullCode"], c.fullCode);
        EXPECT_EQ(wmi["numberOfVehicles"], c.numberOfVehicles);
        const json vis = fieldValue(*result, "VIS");
        EXPECT_EQ(vis["wmiSuffix"], c.wmiSuffix);
        // The suffix characters stay in the serial number.
        EXPECT_EQ(vis["serialNumber"], std::string(c.vin).substr(11));
        EXPECT_EQ(fieldValue(*result, "metadata")["standard"], c.standard);
    }
}

TEST(VinParser, ModelYearCycle) {
    const std::vector<std::pair<char, json>> cases = {
        {'A', {1980, 2010}}, {'H', {1987, 2017}}, {'J', {1988, 2018}},
        {'Y', {2000, 2030}}, {'1', {2001, 2031}}, {'9', {2009, 2039}},
        {'0', nullptr},      {'U', nullptr},      {'Z', nullptr},
    };
    for (const auto& [code, years] : cases) {
        SCOPED_TRACE(code);
        std::string vin = kHonda;
        vin[9] = code;
        auto result = parse(vin);
        ASSERT_EQ(errorOf(*result), "");
        EXPECT_EQ(fieldValue(*result, "VIS")["modelYear"], years);
    }
}

struct CheckCase {
    const char* label;
    std::string input;
    std::string options;
    std::string error;
    bool passed;
};

TEST(VinParser, CheckDigitAndStrictMode) {
    const std::string strict = R"({"strictMode": true})";
    const std::vector<CheckCase> cases = {
        {"digit passes", kHonda, "{}", "", true},
        {"wrong digit", "1HGCM82643A004352", "{}", "", false},
        {"X stands for ten", "1M8GDM9AXKP042788", "{}", "", true},
        {"X where ten is wrong", "1HGCM826X3A004352", "{}", "", false},
        {"lower-case x is refused", "1M8GDM9AxKP042788", "{}", kCharsetError, false},
        {"letter as check digit", "1HGCM826A3A004352", "{}", "", false},
        {"strict passes good digit", kHonda, strict, "", true},
        {"strict passes X", "1M8GDM9AXKP042788", strict, "", true},
        {"strict refuses wrong digit", "1HGCM82643A004352", strict, kChecksumError, false},
        {"strict refuses letter", "1HGCM826A3A004352", strict, kChecksumError, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        auto result = parse(c.input, c.options);
        EXPECT_EQ(errorOf(*result), c.error);
        if (!c.error.empty()) {
            EXPECT_TRUE(result->fields.empty());
            continue;
        }
        const json metadata = fieldValue(*result, "metadata");
        EXPECT_EQ(metadata["passedChecksum"], c.passed);
        EXPECT_EQ(metadata["checksum"], std::string(1, c.input[8]));
    }
}

TEST(VinParser, LookAlikeCompensation) {
    const std::string on = R"({"falsePositiveCompensation": true})";
    const std::string strictOn = R"({"falsePositiveCompensation": true, "strictMode": true})";
    const std::vector<CheckCase> cases = {
        {"I refused without compensation", "IHGCM82633A004352", "{}", kCharsetError, false},
        {"O refused without compensation", "1HGCM82633AO04352", "{}", kCharsetError, false},
        {"Q refused without compensation", "1GQAB0002P1234567", "{}", kCharsetError, false},
        {"I reads as 1", "IHGCM82633A004352", on, "", true},
        {"O reads as 0", "1HGCM82633AO04352", on, "", true},
        {"Q reads as 9", "1GQAB0002P1234567", on, "", true},
        {"check digit I reads as 1", "ZFA99999I0Z123456", strictOn, "", true},
        {"corrected check digit can fail", "1HGCM826I3A004352", strictOn, kChecksumError, false},
        {"lower case untouched", "ihGCM82633A004352", on, kCharsetError, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        auto result = parse(c.input, c.options);
        EXPECT_EQ(errorOf(*result), c.error);
        if (c.error.empty()) {
            EXPECT_EQ(fieldValue(*result, "metadata")["passedChecksum"], c.passed);
        }
    }

    // Raw strings show the corrected characters, and a corrected 9 in third
    // place makes a small maker.
    auto result = parse("1GQAB0002P1234567", on);
    ASSERT_EQ(errorOf(*result), "");
    EXPECT_EQ(result->fields[0].rawString, "1G9");
    EXPECT_EQ(fieldValue(*result, "WMI")["fullCode"], "1G9234");
    EXPECT_EQ(recoveredVin(*parse("IHGCM82633AO04352", on)), kHonda);
}

struct OptionsCase {
    const char* text;
    std::string error;  // "" when the call succeeds
    bool compensation;  // the options afterwards
    bool strict;
};

TEST(VinParser, Options) {
    const std::vector<OptionsCase> cases = {
        {"{}", "", false, false},
        {R"({"strictMode": true})", "", false, true},
        {R"({"falsePositiveCompensation": true, "strictMode": false})", "", true, false},
        {"", "Could not parse json string: \"\"", false, false},
        {"[]", "internal error: JSON options are malformed", false, false},
        {"null", "internal error: JSON options are malformed", false, false},
        {R"({"strictMode": 1})", "option 'strictMode' must be a boolean", false, false},
        {R"({"falsePositiveCompensation": "true"})",
         "option 'falsePositiveCompensation' must be a boolean", false, false},
        {R"({"strict_mode": true})", "invalid option: strict_mode", false, false},
        // Keys are taken in sorted order, and what was set before a bad key stays set.
        {R"({"strictMode": null, "falsePositiveCompensation": true})",
         "option 'strictMode' must be a boolean", true, false},
        {R"({"zzz": 1, "strictMode": true})", "invalid option: zzz", false, true},
        {R"({"aaa": 1, "strictMode": true})", "invalid option: aaa", false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        parser::VinParser vin;
        auto outcome = vin.readOptionsFromJSONString(c.text);
        EXPECT_EQ(outcome->ok, c.error.empty());
        EXPECT_EQ(outcome->error, c.error);
        EXPECT_EQ(vin.optionsToJSON(), json({{"false_positive_compensation", c.compensation},
                                             {"strict_mode", c.strict}}));
    }
}

TEST(VinParser, OptionsStayBetweenParses) {
    parser::VinParser vin;
    ASSERT_TRUE(vin.readOptionsFromJSONString(R"({"strictMode": true})")->ok);
    ASSERT_TRUE(vin.readOptionsFromJSONString(R"({"falsePositiveCompensation": true})")->ok);
    EXPECT_EQ(vin.optionsToJSON(),
              json({{"false_positive_compensation", true}, {"strict_mode", true}}));
    EXPECT_EQ(errorOf(*vin.parse("1HGCM82643A004352")), kChecksumError);
    EXPECT_EQ(errorOf(*vin.parse("IHGCM82633A004352")), "");
}

}  // namespace
