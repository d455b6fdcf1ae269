#include "common/personal_codes.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "common/text.h"

namespace parser {

namespace {

using CodeWord = std::pair<std::string_view, std::string_view>;

// Codes follow the eye colour table of the AAMVA DL/ID card design standard,
// with the variants BRN, BR, HZL and HA that some issuers print.
constexpr CodeWord kEyeColours[] = {
    {"BLK", "black"}, {"BLU", "blue"},        {"BRO", "brown"}, {"BRN", "brown"},
    {"BR", "brown"},  {"DIC", "dichromatic"}, {"GRY", "gray"},  {"GRN", "green"},
    {"HAZ", "hazel"}, {"HZL", "hazel"},       {"HA", "hazel"},  {"MAR", "maroon"},
    {"PNK", "pink"},  {"UNK", "unknown"},
};

// Some issuers already write the word instead of the code; such a text stands.
constexpr std::string_view kEyeColourWords[] = {
    "black", "blue", "brown", "dichromatic", "gray", "green", "hazel", "maroon", "pink", "unknown",
};

// Codes follow the hair colour table of the AAMVA DL/ID card design standard.
// "grey" here but "gray" for eyes: both spellings are what consumers expect.
constexpr CodeWord kHairColours[] = {
    {"BAL", "bald"}, {"BLK", "black"}, {"BLN", "blond"},   {"BRO", "brown"}, {"GRY", "grey"},
    {"RED", "red"},  {"SDY", "sandy"}, {"UNK", "unknown"}, {"WHI", "white"},
};

template <std::size_t N>
nlohmann::json lookUp(const CodeWord (&table)[N], std::string_view code) {
    for (const CodeWord& row : table) {
        if (row.first == code) return std::string(row.second);
    }
    return nullptr;
}

// Whole centimetres or inches, in single precision as the cards' consumers round.
std::int64_t roundToInt(float value) {
    return static_cast<std::int64_t>(std::roundf(value));
}

nlohmann::json heightJson(std::int64_t cm, std::int64_t inch) {
    nlohmann::json height = nlohmann::json::object();
    addMember(height, "cm", cm);
    addMember(height, "inch", inch);
    return height;
}

}  // namespace

nlohmann::json sexFromCode(ParserStringRef code) {
    if (code.empty()) return nullptr;
    switch (code[0]) {
        case '1':
        case 'M':
        case 'm':
            return "male";
        case '2':
        case 'F':
        case 'f':
            return "female";
        case '9':
            return "unspecified";
        default:
            return nullptr;
    }
}

nlohmann::json heightFromCode(ParserStringRef code) {
    int v = 0;
    if (!readInt(code.view(), v)) return nullptr;
    // Small values are inches, mid-range values centimetres, and larger ones
    // feet and inches run together ("510" is 5'10"). Negative values are no
    // height at all but are passed through as inches rather than refused.
    if (v < 100) return heightJson(roundToInt(static_cast<float>(v) * 2.54f), v);
    if (v <= 300) return heightJson(v, roundToInt(static_cast<float>(v) * 0.393701f));
    const int inches = v % 100 + v / 100 * 12;  // at most INT_MAX / 100 * 12 + 99: no overflow
    return heightJson(roundToInt(static_cast<float>(inches) * 2.54f), inches);
}

nlohmann::json eyeColourFromCode(ParserStringRef code) {
    const std::string_view text = trimWhitespace(code).view();
    nlohmann::json colour = lookUp(kEyeColours, text);
    if (!colour.is_null()) return colour;
    for (std::string_view word : kEyeColourWords) {
        if (word == text) return std::string(word);
    }
    return nullptr;
}

nlohmann::json hairColourFromCode(ParserStringRef code) {
    return lookUp(kHairColours, trimWhitespace(code).view());
}

}  // namespace parser
