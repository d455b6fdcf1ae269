#include "dlid/dlid_elements.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>

#include "common/date.h"
#include "common/personal_codes.h"
#include "common/text.h"
#include "dlid/dlid_issuers.h"

namespace parser::dlid {

namespace {

using nlohmann::json;
using R = DLIDReader;

constexpr DLIDClasses classBits(std::initializer_list<Charset> sets) {
    DLIDClasses bits = 0;
    for (const Charset set : sets)
        bits |= static_cast<DLIDClasses>(1U << static_cast<unsigned>(set));
    return bits;
}

constexpr DLIDClasses kNumeric = classBits({Charset::Numeric});
constexpr DLIDClasses kAlpha = classBits({Charset::Alphabetic});
constexpr DLIDClasses kNumericOrPunct = classBits({Charset::DlidSpecial, Charset::Numeric});
constexpr DLIDClasses kAlphaOrPunct = classBits({Charset::DlidSpecial, Charset::Alphabetic});
constexpr DLIDClasses kAlphanumeric = classBits({Charset::Numeric, Charset::Alphabetic});
constexpr DLIDClasses kText = classBits(
    {Charset::DlidSpecial, Charset::Numeric, Charset::Alphabetic, Charset::LimitedExtendedAscii});
constexpr DLIDClasses kUnknownElement =
    classBits({Charset::Alphabetic, Charset::Numeric, Charset::DlidSpecial});

// Which of the four classes each byte belongs to, worked out once.
const std::array<DLIDClasses, 256>& byteClasses() {
    static const std::array<DLIDClasses, 256> table = [] {
        std::array<DLIDClasses, 256> bits{};
        for (unsigned byte = 0; byte < 256; ++byte) {
            for (const Charset set : {Charset::Numeric, Charset::Alphabetic, Charset::DlidSpecial,
                                      Charset::LimitedExtendedAscii}) {
                if (isCharInCharset(static_cast<unsigned char>(byte), set)) {
                    bits[byte] |= classBits({set});
                }
            }
        }
        return bits;
    }();
    return table;
}

struct Row {
    std::string_view id;
    DLIDClasses classes;
    DLIDReader reader;
    int fromVersion;  // the row exists from this AAMVA version on
};

// Elements of AAMVA versions 2 and up, after the standard's data element table.
constexpr Row kCurrentRows[] = {
    {"DAA", kText, R::String, 2},         // full name
    {"DAC", kText, R::Latin1, 4},         // first name
    {"DAD", kText, R::Latin1, 4},         // middle names
    {"DAG", kText, R::TrimmedLatin1, 2},  // street address 1
    {"DAH", kText, R::Latin1, 2},         // street address 2
    {"DAI", kText, R::TrimmedLatin1, 2},  // city
    {"DAJ", kText, R::String, 2},         // jurisdiction code
    {"DAK", kText, R::PostalCode, 2},     // postal code
    {"DAQ", kText, R::String, 2},         // customer id number
    {"DAR", kText, R::String, 2},         // vehicle class
    {"DAS", kText, R::String, 2},         // restriction codes
    {"DAT", kText, R::String, 2},         // endorsement codes
    {"DAU", kText, R::Height, 2},         // height
    {"DAW", kNumeric, R::Integer, 2},     // weight in pounds
    {"DAX", kNumeric, R::Integer, 2},     // weight in kilograms
    {"DAY", kAlphaOrPunct, R::EyeColour, 2},
    {"DAZ", kAlphaOrPunct, R::HairColour, 2},
    {"DBA", kNumericOrPunct, R::Date, 2},     // expiry date
    {"DBB", kNumericOrPunct, R::Date, 2},     // date of birth
    {"DBC", kAlphanumeric, R::Gender, 2},     // sex
    {"DBD", kNumericOrPunct, R::Date, 2},     // issue date
    {"DBG", kText, R::Verbatim, 2},           // alias first name
    {"DBN", kText, R::Verbatim, 2},           // alias family name
    {"DBS", kText, R::Verbatim, 2},           // alias suffix
    {"DCA", kText, R::String, 2},             // jurisdiction vehicle class
    {"DCB", kText, R::String, 2},             // jurisdiction restrictions
    {"DCD", kText, R::String, 2},             // jurisdiction endorsements
    {"DCE", kNumeric, R::Integer, 2},         // weight range
    {"DCF", kText, R::String, 2},             // document discriminator
    {"DCG", kAlpha, R::Verbatim, 2},          // country
    {"DCH", kAlphanumeric, R::Verbatim, 2},   // federal commercial vehicle codes
    {"DCI", kAlpha, R::Latin1, 2},            // place of birth
    {"DCJ", kText, R::Verbatim, 2},           // audit information
    {"DCK", kText, R::String, 2},             // inventory control number
    {"DCL", kAlphaOrPunct, R::Verbatim, 2},   // race or ethnicity
    {"DCM", kAlphanumeric, R::Verbatim, 2},   // standard vehicle class
    {"DCN", kAlphanumeric, R::Verbatim, 2},   // standard endorsement codes
    {"DCO", kAlphanumeric, R::Verbatim, 2},   // standard restriction codes
    {"DCP", kText, R::Verbatim, 2},           // vehicle class description
    {"DCQ", kText, R::Verbatim, 2},           // endorsement description
    {"DCR", kText, R::Verbatim, 2},           // restriction description
    {"DCS", kText, R::TrimmedLatin1, 2},      // family name
    {"DCT", kText, R::TrimmedLatin1, 2},      // given names
    {"DCU", kText, R::Verbatim, 2},           // name suffix
    {"DDA", kAlpha, R::Verbatim, 2},          // compliance type
    {"DDB", kNumeric, R::CompactDate, 2},     // card revision date
    {"DDC", kNumeric, R::CompactDate, 2},     // hazmat endorsement expiry
    {"DDD", kAlphanumeric, R::Indicator, 2},  // limited duration document
    {"DDE", kAlpha, R::Verbatim, 4},          // family name truncation
    {"DDF", kAlpha, R::Verbatim, 4},          // first name truncation
    {"DDG", kAlpha, R::Verbatim, 4},          // middle name truncation
    {"DDH", kNumeric, R::CompactDate, 2},     // under 18 until
    {"DDI", kNumeric, R::CompactDate, 2},     // under 19 until
    {"DDJ", kNumeric, R::CompactDate, 2},     // under 21 until
    {"DDK", kNumeric, R::Integer, 2},         // organ donor
    {"DDL", kNumeric, R::Integer, 2},         // veteran
};

// Elements of the pre-standard layout and AAMVA version 1.
constexpr Row kVersion1Rows[] = {
    {"DAA", kText, R::String, 0},                       // full name
    {"DAB", kText, R::String, 0},                       // last name
    {"DAC", kText, R::String, 0},                       // first name
    {"DAD", kText, R::String, 0},                       // middle name
    {"DAE", kText, R::String, 0},                       // suffix
    {"DAF", kText, R::String, 0},                       // prefix
    {"DAG", kText, R::String, 0},                       // mailing street address 1
    {"DAH", kText, R::String, 0},                       // mailing street address 2
    {"DAI", kText, R::String, 0},                       // mailing city
    {"DAJ", kText, R::String, 0},                       // mailing jurisdiction
    {"DAK", kText, R::PostalCode, 0},                   // mailing postal code
    {"DAL", kText, R::String, 0},                       // residence street address 1
    {"DAM", kText, R::String, 0},                       // residence street address 2
    {"DAN", kText, R::String, 0},                       // residence city
    {"DAO", kText, R::String, 0},                       // residence jurisdiction
    {"DAP", kText, R::PostalCode, 0},                   // residence postal code
    {"DAQ", kText, R::String, 0},                       // licence number
    {"DAR", kText, R::String, 0},                       // class
    {"DAS", kText, R::String, 0},                       // restrictions
    {"DAT", kText, R::String, 0},                       // endorsements
    {"DAU", kNumericOrPunct, R::HeightDigits, 0},       // height in feet and inches
    {"DAV", kNumericOrPunct, R::HeightCentimetres, 0},  // height in centimetres
    {"DAW", kNumeric, R::Integer, 0},                   // weight in pounds
    {"DAX", kNumericOrPunct, R::Integer, 0},            // weight in kilograms
    {"DAY", kText, R::EyeColour, 0},
    {"DAZ", kText, R::HairColour, 0},
    {"DBA", kNumericOrPunct, R::Date, 0},  // expiry
    {"DBB", kNumericOrPunct, R::Date, 0},  // birth
    {"DBC", kText, R::Gender, 0},          // sex
    {"DBD", kNumericOrPunct, R::Date, 0},  // issue
    {"DBE", kText, R::String, 0},          // issue time stamp
    {"DBF", kNumeric, R::Integer, 0},      // number of duplicates
    {"DBG", kText, R::String, 0},          // medical codes
    {"DBH", kText, R::String, 0},          // organ donor
    {"DBI", kText, R::String, 0},          // non-resident indicator
    {"DBJ", kText, R::String, 0},          // customer identifier
    {"DBK", kText, R::String, 0},          // social security number
    {"DBL", kNumericOrPunct, R::Date, 0},  // alternate birth date
    {"DBM", kText, R::String, 0},          // alternate social security number
    {"DBN", kText, R::String, 0},          // alternate full name
    {"DBO", kText, R::String, 0},          // alternate last name
    {"DBP", kText, R::String, 0},          // alternate first name
    {"DBQ", kText, R::String, 0},          // alternate middle name
    {"DBR", kText, R::String, 0},          // alternate suffix
    {"DBS", kText, R::String, 0},          // alternate prefix
    {"PAA", kText, R::String, 0},          // permit class
    {"PAB", kNumericOrPunct, R::Date, 0},  // permit expiry
    {"PAC", kText, R::String, 0},          // permit identifier
    {"PAD", kNumericOrPunct, R::Date, 0},  // permit issue date
    {"PAE", kText, R::String, 0},          // permit restrictions
    {"PAF", kText, R::String, 0},          // permit endorsements
};

template <std::size_t N>
constexpr bool inAscendingOrder(const Row (&rows)[N]) {
    for (std::size_t i = 1; i < N; ++i) {
        if (!(rows[i - 1].id < rows[i].id)) return false;
    }
    return true;
}
static_assert(std::size(kCurrentRows) == 56 && inAscendingOrder(kCurrentRows),
              "lookups search the rows by id");
static_assert(std::size(kVersion1Rows) == 51 && inAscendingOrder(kVersion1Rows),
              "lookups search the rows by id");

template <std::size_t N>
DLIDElementTable tableOf(const Row (&rows)[N], int version, bool albertaVersion3) {
    DLIDElementTable table;
    table.reserve(N);
    for (const Row& row : rows) {
        if (row.fromVersion > version) continue;
        if (albertaVersion3 && row.id == "DAX") continue;
        if (albertaVersion3 && row.id == "DAW") {
            // Alberta's old cards print "weight unit" in DAW, and no DAX.
            table.push_back({row.id, kText, R::AlbertaWeight, elementKey(row.id)});
            continue;
        }
        table.push_back({row.id, row.classes, row.reader, elementKey(row.id)});
    }
    return table;
}

json dateObject(int year, int month, int day) {
    json object = json::object();
    addMember(object, "day", day);
    addMember(object, "month", month);
    addMember(object, "year", year);
    return object;
}

ParserStringRef trimEnd(ParserStringRef text) {
    std::size_t size = text.size();
    while (size > 0 && isCSpace(text[size - 1])) --size;
    return text.first(size);
}

bool allDigits(ParserStringRef text) {
    return !text.empty() && isInCharset(text, Charset::Numeric);
}

int twoDigits(ParserStringRef text, std::size_t at) {
    return (text[at] - '0') * 10 + (text[at + 1] - '0');
}

int fourDigits(ParserStringRef text, std::size_t at) {
    return twoDigits(text, at) * 100 + twoDigits(text, at + 2);
}

// Bytes 0xC0 to 0xFF are Latin-1 letters; they become their UTF-8 form.
std::string latin1ToUtf8(ParserStringRef value) {
    std::string text;
    text.reserve(value.size() + 4);
    for (std::size_t i = 0; i < value.size(); ++i) {
        const unsigned char byte = value[i];
        if (byte >= 0xC0) {
            text.push_back(static_cast<char>(0xC3));
            text.push_back(static_cast<char>(byte - 0x40));
        } else {
            text.push_back(static_cast<char>(byte));
        }
    }
    return text;
}

void readCompactDate(ParserStringRef id, ParserStringRef value, ParserResult& result,
                     DLIDParserState& state) {
    const ParserStringRef digits = trimEnd(value);
    json parsed = nullptr;
    if (digits.size() == 8 && allDigits(digits)) {
        // Illinois prints eight nines on ID cards that never expire.
        if (digits == "99999999" && id == "DBA" && isIllinois(state.iin)) {
            state.neverExpiresCandidate = true;
            result.addField(id.str(), value.str(), nullptr);
            return;
        }
        const Date yearFirst{fourDigits(digits, 0), twoDigits(digits, 4), twoDigits(digits, 6)};
        const Date monthFirst{fourDigits(digits, 4), twoDigits(digits, 0), twoDigits(digits, 2)};
        const bool preferYearFirst = state.datesYearFirst;
        Date date = preferYearFirst ? yearFirst : monthFirst;
        // Issuers do not all keep to the order of their version.
        if (!date.isValid()) date = preferYearFirst ? monthFirst : yearFirst;
        if (date.isValid() || (date.year == 0 && date.month == 0 && date.day == 0)) {
            parsed = dateObject(date.year, date.month, date.day);
        }
    }
    result.addField(id.str(), value.str(), std::move(parsed));
}

void readDate(ParserStringRef id, ParserStringRef value, ParserResult& result,
              DLIDParserState& state) {
    const ParserStringRef text = trimEnd(value);
    if (text.size() == 8) {
        readCompactDate(id, value, result, state);
        return;
    }
    json parsed = nullptr;
    // Some issuers print MM-DD-CCYY or MM/DD/CCYY.
    if (text.size() == 10 && (text[2] == '-' || text[2] == '/') && text[5] == text[2] &&
        allDigits(text.slice(0, 2)) && allDigits(text.slice(3, 5)) &&
        allDigits(text.slice(6, 10))) {
        parsed = dateObject(fourDigits(text, 6), twoDigits(text, 0), twoDigits(text, 3));
    }
    result.addField(id.str(), value.str(), std::move(parsed));
}

json postalCode(ParserStringRef value) {
    const ParserStringRef code = trimWhitespace(value);
    json fiveDigit = nullptr;
    json nineDigit = nullptr;
    if (code.size() >= 5 && allDigits(code.first(5))) fiveDigit = code.first(5).str();
    if (code.size() == 9 && allDigits(code)) {
        nineDigit = code.str();
    } else if (code.size() == 10 && allDigits(code.first(5)) && !isAsciiDigit(code[5]) &&
               allDigits(code.slice(6, 10))) {
        nineDigit = code.first(5).str() + code.slice(6, 10).str();
    }
    json object = json::object();
    addMember(object, "5digit", std::move(fiveDigit));
    addMember(object, "9digit", std::move(nineDigit));
    return object;
}

// Digits alone: inches up to 99, centimetres up to 300, feet and two digits
// of inches above.
json heightFromDigits(ParserStringRef text) {
    return heightFromCode(text);
}

json heightWithoutDashes(ParserStringRef value) {
    const ParserStringRef trimmed = trimWhitespace(value);
    std::string digits;
    digits.reserve(trimmed.size());
    for (const char c : trimmed.view()) {
        if (c != '-') digits.push_back(c);
    }
    return heightFromDigits(ParserStringRef(digits));
}

// "070 in", "178 cm", "5-10" or bare digits.
void readHeight(ParserStringRef id, ParserStringRef value, ParserResult& result) {
    const ParserStringRef trimmed = trimWhitespace(value);
    json parsed = nullptr;
    if (allDigits(trimmed)) {
        parsed = heightWithoutDashes(value);
    } else if (value.size() > 3) {
        if (trimmed.size() <= 2) {
            result.setError("trimmed data too short to parse height");
            return;
        }
        std::string unit = trimmed.last(2).str();
        for (char& c : unit) {
            if (isAsciiUpper(static_cast<unsigned char>(c))) c = static_cast<char>(c - 'A' + 'a');
        }
        const ParserStringRef number =
            trimWhitespace(trimmed.first(isAsciiDigit(trimmed[2]) ? 3 : 2));
        if (allDigits(number) && (unit == "in" || unit == "cm")) {
            const long n = *readDigits(number);
            parsed = unit == "in" ? heightFromInches(n) : heightFromCentimetres(n);
        }
    }
    result.addField(id.str(), value.str(), std::move(parsed));
}

// Alberta writes "<weight> <unit>" in DAW; only the number is kept, as DAX.
void readAlbertaWeight(ParserStringRef value, ParserResult& result) {
    const char* blank = value.find_char(' ');
    if (blank == nullptr) return;
    result.addField("DAX", value.str(), intFieldValue(value.first(value.offsetOf(blank))));
}

json gender(ParserStringRef value) {
    return sexFromCode(trimWhitespace(value));
}

}  // namespace

const DLIDElementTable& elementTableFor(int version, std::string_view iin) {
    static const DLIDElementTable kVersion1 = tableOf(kVersion1Rows, 1, false);
    static const DLIDElementTable kVersion2 = tableOf(kCurrentRows, 2, false);
    static const DLIDElementTable kVersion4 = tableOf(kCurrentRows, 4, false);
    static const DLIDElementTable kAlbertaVersion3 = tableOf(kCurrentRows, 3, true);
    if (version < 2) return kVersion1;
    if (isAlbertaVersion3(iin, version)) return kAlbertaVersion3;
    return version < 4 ? kVersion2 : kVersion4;
}

const DLIDElement* findElement(const DLIDElementTable& table, std::string_view id) {
    if (id.size() != 3) return nullptr;
    const std::uint32_t key = elementKey(id);
    const auto it = std::lower_bound(
        table.begin(), table.end(), key,
        [](const DLIDElement& row, std::uint32_t wanted) { return row.key < wanted; });
    return it != table.end() && it->key == key ? &*it : nullptr;
}

const DLIDElement& fallbackElement() {
    static const DLIDElement kFallback{"", kUnknownElement, R::Verbatim, 0};
    return kFallback;
}

bool fitsClasses(ParserStringRef value, DLIDClasses classes) {
    const auto& table = byteClasses();
    for (std::size_t i = 0; i < value.size(); ++i) {
        if ((table[value[i]] & classes) == 0) return false;
    }
    return true;
}

bool datesAreYearFirst(int version, std::string_view iin) {
    if (version <= 1) return true;
    if (version == 2) return isIllinois(iin);
    if (version == 3 && isQuebec(iin)) return false;
    if (version == 4 && (isWestVirginia(iin) || isWyoming(iin))) return true;
    return isCanadian(iin);
}

json heightFromInches(long inches) {
    json height = json::object();
    addMember(height, "cm", static_cast<long>(std::roundf(static_cast<float>(inches) * 2.54F)));
    addMember(height, "inch", inches);
    return height;
}

json heightFromCentimetres(long centimetres) {
    json height = json::object();
    addMember(height, "cm", centimetres);
    addMember(height, "inch",
              static_cast<long>(std::roundf(static_cast<float>(centimetres) * 0.393701F)));
    return height;
}

void readElement(const DLIDElement& row, ParserStringRef id, ParserStringRef value,
                 ParserResult& result, DLIDParserState& state) {
    if (!value.empty() && !fitsClasses(value, row.allowedClasses)) {
        result.addField(id.str(), value.str(), nullptr);
        return;
    }
    switch (row.reader) {
        case R::String:
            result.addStringField(id.str(), value);
            return;
        case R::Verbatim:
            result.addField(id.str(), value.str(), value.str());
            return;
        case R::Latin1: {
            std::string text = latin1ToUtf8(value);
            json parsed = text;
            result.addField(id.str(), std::move(text), std::move(parsed));
            return;
        }
        case R::TrimmedLatin1: {
            std::string text = latin1ToUtf8(value);
            json parsed = trimWhitespace(ParserStringRef(text)).str();
            result.addField(id.str(), std::move(text), std::move(parsed));
            return;
        }
        case R::Integer:
            result.addField(id.str(), value.str(), intFieldValue(value));
            return;
        case R::Indicator:
            result.addField(id.str(), value.str(), booleanFieldValue(value));
            return;
        case R::Gender:
            result.addField(id.str(), value.str(), gender(value));
            return;
        case R::EyeColour:
            result.addField(id.str(), value.str(), eyeColourFromCode(value));
            return;
        case R::HairColour:
            result.addField(id.str(), value.str(), hairColourFromCode(value));
            return;
        case R::PostalCode:
            result.addField(id.str(), value.str(), postalCode(value));
            return;
        case R::HeightDigits:
            result.addField(id.str(), value.str(), heightWithoutDashes(value));
            return;
        case R::HeightCentimetres: {
            const ParserStringRef trimmed = trimWhitespace(value);
            json parsed = trimmed.find_char('-') != nullptr ? heightWithoutDashes(value)
                                                            : heightFromDigits(trimmed);
            result.addField(id.str(), value.str(), std::move(parsed));
            return;
        }
        case R::Height:
            readHeight(id, value, result);
            return;
        case R::Date:
            readDate(id, value, result, state);
            return;
        case R::CompactDate:
            readCompactDate(id, value, result, state);
            return;
        case R::AlbertaWeight:
            readAlbertaWeight(value, result);
            return;
    }
}

}  // namespace parser::dlid
