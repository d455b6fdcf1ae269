#include "vin/vin_parser.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "common/options.h"
#include "common/text.h"

namespace parser {

namespace {

constexpr std::size_t kVinLength = 17;
constexpr std::size_t kCheckDigitPosition = 8;

// Weights and letter values follow the check digit tables of 49 CFR 565, the
// North American VIN rule. Position 8 carries no weight: it is the check digit itself.
constexpr std::array<int, kVinLength> kCheckDigitWeights = {8, 7, 6, 5, 4, 3, 2, 10, 0,
                                                            9, 8, 7, 6, 5, 4, 3, 2};

// A character's check-digit value is its index here modulo 10. The dots keep
// the letters on the positions the standard assigns them.
constexpr std::string_view kTransliteration = "0123456789.ABCDEFGH..JKLMN.P.R..STUVWXYZ";
static_assert(kTransliteration.size() == 40);

// Codes follow the model year table of ISO 3779 and 49 CFR 565.
// The model-year code cycles every 30 years: index i stands for 1980 + i and 2010 + i.
constexpr std::string_view kModelYearCodes = "ABCDEFGHJKLMNPRSTVWXY123456789";
static_assert(kModelYearCodes.size() == 30);
constexpr int kModelYearBase = 1980;
constexpr int kModelYearCycle = 30;

constexpr const char* kUnassigned = "unassigned";

struct RegionBound {
    char bound = '\0';  // the highest second character of the range
    const char* region = nullptr;
};

// Rows follow the SAE world manufacturer identifier region and country code
// allocation under ISO 3780.
// The first character picks a row; the second picks the first range whose
// bound is not below it. Digits sort below letters, so a row reads 0-9 then A-Z.
struct RegionRow {
    char first;
    std::array<RegionBound, 9> ranges;  // unused entries have a null region
};

// clang-format off
constexpr RegionRow kRegionTable[] = {
    {'A', {{{'9', kUnassigned}, {'H', "South Africa"}, {'N', "Ivory Coast"}, {'Z', kUnassigned}}}},
    {'B', {{{'9', kUnassigned}, {'E', "Angola"}, {'K', "Kenya"}, {'R', "Tanzania"}, {'Z', kUnassigned}}}},
    {'C', {{{'9', kUnassigned}, {'E', "Benin"}, {'K', "Madagascar"}, {'R', "Tunisia"}, {'Z', kUnassigned}}}},
    {'D', {{{'9', kUnassigned}, {'E', "Egypt"}, {'K', "Morocco"}, {'R', "Zambia"}, {'Z', kUnassigned}}}},
    {'E', {{{'9', kUnassigned}, {'E', "Ethiopia"}, {'K', "Mozambique"}, {'Z', kUnassigned}}}},
    {'F', {{{'9', kUnassigned}, {'E', "Ghana"}, {'K', "Nigeria"}, {'Z', kUnassigned}}}},
    {'J', {{{'Z', "Japan"}}}},
    {'K', {{{'9', "Kazakhstan"}, {'E', "Sri Lanka"}, {'K', "Israel"}, {'R', "Korea(South)"}, {'Z', "Kazakhstan"}}}},
    {'L', {{{'Z', "China"}}}},
    {'M', {{{'9', "Myanmar"}, {'E', "India"}, {'K', "Indonesia"}, {'R', "Thailand"}, {'Z', "Myanmar"}}}},
    {'N', {{{'9', kUnassigned}, {'E', "Iran"}, {'K', "Pakistan"}, {'R', "Turkey"}, {'Z', kUnassigned}}}},
    {'P', {{{'9', kUnassigned}, {'E', "Philippines"}, {'K', "Singapore"}, {'R', "Malaysia"}, {'Z', kUnassigned}}}},
    {'R', {{{'9', "Saudi Arabia"}, {'E', "United Arab Emirates"}, {'K', "Taiwan"}, {'R', "Vietnam"}, {'Z', "Saudi Arabia"}}}},
    {'S', {{{'0', kUnassigned}, {'4', "Latvia"}, {'9', kUnassigned}, {'M', "United Kingdom"}, {'T', "Germany (formerly East Germany)"}, {'Z', "Poland"}}}},
    {'T', {{{'0', kUnassigned}, {'1', "Portugal"}, {'9', kUnassigned}, {'H', "Switzerland"}, {'P', "Czech Republic"}, {'V', "Hungary"}, {'Z', "Portugal"}}}},
    {'U', {{{'4', kUnassigned}, {'7', "Slovakia"}, {'G', kUnassigned}, {'M', "Denmark"}, {'T', "Ireland"}, {'Z', "Romania"}}}},
    {'V', {{{'0', "Estonia"}, {'2', "Serbia"}, {'5', "Croatia"}, {'9', "Estonia"}, {'E', "Austria"}, {'R', "France"}, {'W', "Spain"}, {'Z', "Serbia"}}}},
    {'W', {{{'Z', "Germany"}}}},
    {'X', {{{'0', "Russia"}, {'2', "Luxembourg"}, {'9', "Russia"}, {'E', "Bulgaria"}, {'K', "Greece"}, {'R', "Netherlands"}, {'W', "Russia"}, {'Z', "Luxembourg"}}}},
    {'Y', {{{'0', "Ukraine"}, {'2', "Norway"}, {'5', "Belarus"}, {'9', "Ukraine"}, {'E', "Belgium"}, {'K', "Finland"}, {'R', "Malta"}, {'W', "Sweden"}, {'Z', "Norway"}}}},
    {'Z', {{{'0', kUnassigned}, {'2', "Slovenia"}, {'5', "Lithuania"}, {'9', kUnassigned}, {'R', "Italy"}, {'W', kUnassigned}, {'Z', "Slovenia"}}}},
    {'1', {{{'Z', "USA"}}}},
    {'2', {{{'Z', "Canada"}}}},
    // "Costa rica" in the last range is not a typo to fix: callers compare region
    // texts, and this one has always been spelled so.
    {'3', {{{'0', kUnassigned}, {'7', "Costa Rica"}, {'9', "Cayman Islands"}, {'W', "Mexico"}, {'Z', "Costa rica"}}}},
    {'4', {{{'Z', "USA"}}}},
    {'5', {{{'Z', "USA"}}}},
    {'6', {{{'Z', "Australia"}}}},
    {'7', {{{'Z', "New Zealand"}}}},
    {'8', {{{'0', kUnassigned}, {'2', "Venezuela"}, {'9', kUnassigned}, {'E', "Argentina"}, {'K', "Chile"}, {'R', "Ecuador"}, {'W', "Peru"}, {'Z', "Venezuela"}}}},
    {'9', {{{'0', kUnassigned}, {'2', "Trinidad & Tobago"}, {'E', "Brazil"}, {'K', "Colombia"}, {'R', "Paraguay"}, {'W', "Uruguay"}, {'Z', "Trinidad & Tobago"}}}},
};
// clang-format on

// Every row must list its ranges in ascending order, without gaps in the
// list, and end at Z, so that a lookup never runs off a row by accident.
constexpr bool regionRowsWellFormed() {
    for (const RegionRow& row : kRegionTable) {
        std::size_t count = 0;
        while (count < row.ranges.size() && row.ranges[count].region != nullptr) ++count;
        if (count == 0 || row.ranges[count - 1].bound != 'Z') return false;
        for (std::size_t i = count; i < row.ranges.size(); ++i) {
            if (row.ranges[i].region != nullptr) return false;
        }
        for (std::size_t i = 1; i < count; ++i) {
            if (static_cast<unsigned char>(row.ranges[i - 1].bound) >=
                static_cast<unsigned char>(row.ranges[i].bound)) {
                return false;
            }
        }
    }
    return true;
}
static_assert(std::size(kRegionTable) == 30);
static_assert(regionRowsWellFormed());

const char* regionOf(unsigned char first, unsigned char second) {
    for (const RegionRow& row : kRegionTable) {
        if (static_cast<unsigned char>(row.first) != first) continue;
        for (const RegionBound& range : row.ranges) {
            if (range.region == nullptr) break;
            if (static_cast<unsigned char>(range.bound) >= second) return range.region;
        }
        return kUnassigned;
    }
    return kUnassigned;
}

constexpr std::array<std::uint8_t, 256> buildTransliterationValues() {
    // Bytes outside the table count 0; a VIN that passed the charset test has none.
    std::array<std::uint8_t, 256> values{};
    for (std::size_t i = 0; i < kTransliteration.size(); ++i) {
        if (kTransliteration[i] == '.') continue;
        values[static_cast<unsigned char>(kTransliteration[i])] = static_cast<std::uint8_t>(i % 10);
    }
    return values;
}

constexpr std::array<std::uint8_t, 256> kTransliterationValues = buildTransliterationValues();

int transliterate(char c) {
    return kTransliterationValues[static_cast<unsigned char>(c)];
}

enum class Standard { NorthAmerica, Eu, Iso };

Standard standardOf(char first) {
    switch (first) {
        case '1':
        case '2':
        case '4':
        case '5':
            return Standard::NorthAmerica;
        default:
            break;
    }
    if (first >= 'S' && first <= 'Z') return Standard::Eu;
    return Standard::Iso;
}

const char* standardName(Standard standard) {
    switch (standard) {
        case Standard::NorthAmerica:
            return "northAmerica";
        case Standard::Eu:
            return "EU";
        case Standard::Iso:
            return "ISO";
    }
    return "ISO";
}

// Small makers (a 9 in third place) share a WMI and are told apart by
// positions 11 to 13; the bands are yearly production.
nlohmann::json numberOfVehicles(Standard standard, bool smallMaker) {
    switch (standard) {
        case Standard::NorthAmerica:
            return smallMaker ? "<2000" : ">2000";
        case Standard::Eu:
            return smallMaker ? "<500" : ">500";
        case Standard::Iso:
            break;
    }
    return nullptr;
}

nlohmann::json modelYear(char code) {
    const std::size_t index = kModelYearCodes.find(code);
    if (index == std::string_view::npos) return nullptr;
    const int offset = static_cast<int>(index);
    nlohmann::json years(nlohmann::json::value_t::array);
    auto& both = years.get_ref<nlohmann::json::array_t&>();
    both.reserve(2);
    both.emplace_back(kModelYearBase + offset);
    both.emplace_back(kModelYearBase + kModelYearCycle + offset);
    return years;
}

std::string mustBeABoolean(const std::string& key) {
    return "option '" + key + "' must be a boolean";
}

}  // namespace

namespace vin {

char readLookAlike(char c) noexcept {
    switch (c) {
        case 'I':
            return '1';
        case 'O':
            return '0';
        case 'Q':
            return '9';
        default:
            return c;
    }
}

bool checkDigitMatches(std::string_view vin) {
    QVX_REQUIRE(vin.size() == kVinLength, "precondition failed: vin.size() == 17");
    const char stored = vin[kCheckDigitPosition];
    int expected = 0;
    if (stored >= '0' && stored <= '9') {
        expected = stored - '0';
    } else if (stored == 'X') {
        expected = 10;
    } else {
        return false;
    }
    int sum = 0;
    for (std::size_t i = 0; i < kVinLength; ++i) {
        sum += kCheckDigitWeights[i] * transliterate(vin[i]);
    }
    return sum % 11 == expected;
}

ParserStringRef stripLabelNoise(ParserStringRef input) {
    if (input.size() <= kVinLength) return input;
    ParserStringRef text = trimWhitespace(input);

    // One blank separates the number from a caption or a trailer; the longer
    // side is taken to be the number. Only the first blank counts.
    if (const char* blank = text.find_char(' ')) {
        const std::size_t at = text.offsetOf(blank);
        text = at <= text.size() / 2 ? text.drop_front(at + 1) : text.first(at);
    }

    switch (text.size()) {
        case 20:
            return text.drop_front(2).drop_back(1);
        case 19:
            return text.drop_front(1).drop_back(1);
        case 18:
            return isCharInCharset(text.front(), Charset::Vin) ? text.drop_back(1)
                                                               : text.drop_front(1);
        default:
            return text;
    }
}

}  // namespace vin

std::unique_ptr<ParserResult> VinParser::parse(ParserStringRef input) {
    const ParserStringRef text = vin::stripLabelNoise(input);
    auto result = std::make_unique<ParserResult>();

    if (text.size() != kVinLength) {
        result->setError("valid VIN consists of 17 characters");
        return result;
    }

    std::array<char, kVinLength> copy{};
    std::copy(text.begin(), text.end(), copy.begin());
    if (falsePositiveCompensation_) {
        for (char& c : copy) c = vin::readLookAlike(c);
    }
    const std::string_view vin(copy.data(), copy.size());

    for (char c : vin) {
        if (!isCharInCharset(static_cast<unsigned char>(c), Charset::Vin)) {
            result->setError(
                "valid VIN contains only digits and uppercase letters (except 'Q', 'O', 'I')");
            return result;
        }
    }

    const bool passedChecksum = vin::checkDigitMatches(vin);
    if (!passedChecksum && strictMode_) {
        result->setError("checksum verification failed");
        return result;
    }

    const Standard standard = standardOf(vin[0]);
    const bool smallMaker = vin[2] == '9';
    const std::string_view wmi = vin.substr(0, 3);
    const std::string_view makerSuffix = vin.substr(11, 3);
    result->fields.reserve(4);

    // Members go in in key order.
    nlohmann::json wmiValue = nlohmann::json::object();
    std::string fullCode(wmi);
    if (smallMaker) fullCode.append(makerSuffix);
    addMember(wmiValue, "fullCode", std::move(fullCode));
    addMember(wmiValue, "numberOfVehicles", numberOfVehicles(standard, smallMaker));
    addMember(wmiValue, "region",
              regionOf(static_cast<unsigned char>(vin[0]), static_cast<unsigned char>(vin[1])));
    result->addField("WMI", std::string(wmi), std::move(wmiValue));

    const std::string_view vds = vin.substr(3, 5);
    result->addField("VDS", std::string(vds), std::string(vds));

    nlohmann::json visValue = nlohmann::json::object();
    addMember(visValue, "modelYear", modelYear(vin[9]));
    addMember(visValue, "plant", std::string(1, vin[10]));
    addMember(visValue, "serialNumber", std::string(vin.substr(11, 6)));
    addMember(visValue, "wmiSuffix",
              smallMaker ? nlohmann::json(std::string(makerSuffix)) : nlohmann::json(nullptr));
    result->addField("VIS", std::string(vin.substr(9, 8)), std::move(visValue));

    nlohmann::json metadata = nlohmann::json::object();
    addMember(metadata, "checksum", std::string(1, vin[kCheckDigitPosition]));
    addMember(metadata, "passedChecksum", passedChecksum);
    addMember(metadata, "standard", standardName(standard));
    result->addField("metadata", std::string(), std::move(metadata));

    return result;
}

std::unique_ptr<ParserOptionsOutcome> VinParser::readOptionsFromJSON(nlohmann::json options) {
    return options::walk(options, [this](const std::string& key, const nlohmann::json& value) {
        if (key == "falsePositiveCompensation") {
            return options::readBool(value, falsePositiveCompensation_, mustBeABoolean(key));
        }
        if (key == "strictMode") return options::readBool(value, strictMode_, mustBeABoolean(key));
        return options::invalidOption(key);
    });
}

nlohmann::json VinParser::optionsToJSON() const {
    return nlohmann::json{{"false_positive_compensation", falsePositiveCompensation_},
                          {"strict_mode", strictMode_}};
}

}  // namespace parser
