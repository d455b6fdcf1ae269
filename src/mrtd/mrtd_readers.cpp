#include "mrtd/mrtd_readers.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <optional>
#include <string>

#include "common/date.h"
#include "common/text.h"
#include "mrtd/mrtd_gbk.h"

namespace parser {

namespace {

// Codes of ISO 3166-1 and those that ICAO Doc 9303 reserves for zones, with a
// few historical and special ones that issuers still print. Codes shorter than
// three letters keep their fillers, as printed.
// clang-format off
constexpr std::array<std::string_view, 278> kCountries = {
    "ABW", "AFG", "AGO", "AIA", "ALA", "ALB", "AND", "ANT", "ARE", "ARG", "ARM", "ASM",
    "ATA", "ATF", "ATG", "AUS", "AUT", "AZE", "BDI", "BEL", "BEN", "BES", "BFA", "BGD",
    "BGR", "BHR", "BHS", "BIH", "BLM", "BLR", "BLZ", "BMU", "BOL", "BRA", "BRB", "BRN",
    "BTN", "BVT", "BWA", "CAF", "CAN", "CCK", "CHE", "CHL", "CHN", "CIV", "CMR", "COD",
    "COG", "COK", "COL", "COM", "CPV", "CRI", "CUB", "CUW", "CXR", "CYM", "CYP", "CZE",
    "DEU", "DJI", "DMA", "DNK", "DOM", "DZA", "ECU", "EGY", "ERI", "ESH", "ESP", "EST",
    "ETH", "FIN", "FJI", "FLK", "FRA", "FRO", "FSM", "GAB", "GBR", "GEO", "GGY", "GHA",
    "GIB", "GIN", "GLP", "GMB", "GNB", "GNQ", "GRC", "GRD", "GRL", "GTM", "GUF", "GUM",
    "GUY", "HKG", "HMD", "HND", "HRV", "HTI", "HUN", "IDN", "IMN", "IND", "IOT", "IRL",
    "IRN", "IRQ", "ISL", "ISR", "ITA", "JAM", "JEY", "JOR", "JPN", "KAZ", "KEN", "KGZ",
    "KHM", "KIR", "KNA", "KOR", "KWT", "LAO", "LBN", "LBR", "LBY", "LCA", "LIE", "LKA",
    "LSO", "LTU", "LUX", "LVA", "MAC", "MAF", "MAR", "MCO", "MDA", "MDG", "MDV", "MEX",
    "MHL", "MKD", "MLI", "MLT", "MMR", "MNE", "MNG", "MNP", "MOZ", "MRT", "MSR", "MTQ",
    "MUS", "MWI", "MYS", "MYT", "NAM", "NCL", "NER", "NFK", "NGA", "NIC", "NIU", "NLD",
    "NOR", "NPL", "NRU", "NTZ", "NZL", "OMN", "PAK", "PAN", "PCN", "PER", "PHL", "PLW",
    "PNG", "POL", "PRI", "PRK", "PRT", "PRY", "PSE", "PYF", "QAT", "REU", "ROU", "RUS",
    "RWA", "SAU", "SDN", "SEN", "SGP", "SGS", "SHN", "SI<", "SJM", "SLB", "SLE", "SLV",
    "SMR", "SOM", "SPM", "SRB", "SSD", "STP", "SUR", "SVK", "SVN", "SWE", "SWZ", "SXM",
    "SYC", "SYR", "TCA", "TCD", "TGO", "THA", "TJK", "TKL", "TKM", "TLS", "TON", "TTO",
    "TUN", "TUR", "TUV", "TWN", "TZA", "UGA", "UKR", "UMI", "URY", "USA", "UZB", "VAT",
    "VCT", "VEN", "VGB", "VIR", "VNM", "VUT", "WLF", "WSM", "YEM", "ZAF", "ZMB", "ZWE",
    "D<<", "EUE", "GBD", "GBN", "GBO", "GBP", "GBS", "UNA", "UNK", "UNO", "XBA", "XCE",
    "XDC", "XIM", "XCC", "XCO", "XEC", "XPO", "XOM", "XXA", "XXB", "XXC", "XXX", "RKS",
    "WSA", "UTO",
};
// clang-format on

// A code as a number in base 27: the filler is 0, A to Z are 1 to 26.
constexpr std::size_t kCodeSpace = std::size_t{27} * 27 * 27;
int codeDigit(unsigned char c) {
    if (c == '<') return 0;
    if (isAsciiUpper(c)) return c - 'A' + 1;
    return -1;
}
int codeIndex(ParserStringRef code) {
    if (code.size() != 3) return -1;
    int index = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const int digit = codeDigit(code[i]);
        if (digit < 0) return -1;
        index = index * 27 + digit;
    }
    return index;
}

const std::bitset<kCodeSpace>& countryBits() {
    static const std::bitset<kCodeSpace> bits = [] {
        std::bitset<kCodeSpace> set;
        for (std::string_view code : kCountries) {
            set.set(static_cast<std::size_t>(codeIndex(ParserStringRef(code))));
        }
        return set;
    }();
    return bits;
}

std::string trimFillers(ParserStringRef text) {
    std::size_t end = text.size();
    while (end > 0 && text[end - 1] == '<') --end;
    return std::string(text.begin(), text.begin() + end);
}

bool allDigits(ParserStringRef text) {
    for (const char c : text.view()) {
        if (!isAsciiDigit(static_cast<unsigned char>(c))) return false;
    }
    return true;
}

bool allLetters(ParserStringRef text) {
    for (const char c : text.view()) {
        if (!isAsciiUpper(static_cast<unsigned char>(c))) return false;
    }
    return true;
}

// The pieces between fillers, without empty ones.
nlohmann::json piecesBetweenFillers(ParserStringRef text) {
    nlohmann::json pieces = nlohmann::json::array();
    std::size_t start = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i == text.size() || text[i] == '<') {
            if (i > start) pieces.emplace_back(std::string(text.begin() + start, text.begin() + i));
            start = i + 1;
        }
    }
    return pieces;
}

// A name fills its field to the end when the last column is not a filler: it
// may then have been cut to fit.
bool isTruncated(ParserStringRef text) {
    return !text.empty() && text.back() != '<';
}

}  // namespace

bool isKnownCountry(ParserStringRef code) {
    const int index = codeIndex(code);
    return index >= 0 && countryBits().test(static_cast<std::size_t>(index));
}

const std::string_view* knownCountriesBegin() {
    return kCountries.data();
}

std::size_t knownCountryCount() {
    return kCountries.size();
}

void MrtdFieldReader::fixed(const char* name, const char* value) {
    result_->addField(name, value, value);
}

void MrtdFieldReader::documentCode(ParserStringRef& view) {
    const ParserStringRef raw = view.take_front(2);
    const std::string value = raw[1] == '<' ? raw.first(1).str() : raw.str();
    result_->addField("documentCode", raw.str(), value);
}

void MrtdFieldReader::country(ParserStringRef& view, const char* name) {
    const ParserStringRef raw = view.take_front(3);
    if (!isKnownCountry(raw)) fail(raw.str() + " is not a valid ISO country code");
    result_->addField(name, raw.str(), trimFillers(raw));
}

void MrtdFieldReader::text(ParserStringRef& view, const char* name, std::size_t width) {
    const ParserStringRef raw = view.take_front(width);
    result_->addField(name, raw.str(), trimFillers(raw));
}

void MrtdFieldReader::sex(ParserStringRef& view) {
    const ParserStringRef raw = view.take_front(1);
    const char* value = raw[0] == 'M' ? "male" : raw[0] == 'F' ? "female" : "nonspecified";
    result_->addField("sex", raw.str(), value);
}

void MrtdFieldReader::digits(ParserStringRef& view, const char* name, std::size_t width) {
    const ParserStringRef raw = view.take_front(width);
    const auto value = allDigits(raw) ? readDigits(raw) : std::nullopt;
    result_->addField(name, raw.str(), value ? nlohmann::json(*value) : nlohmann::json());
}

void MrtdFieldReader::integer(ParserStringRef& view, const char* name, std::size_t width) {
    const ParserStringRef raw = view.take_front(width);
    int value = 0;
    const bool read = readInt(raw.view(), value);
    result_->addField(name, raw.str(), read ? nlohmann::json(value) : nlohmann::json());
}

void MrtdFieldReader::number(ParserStringRef& view, const char* name, std::size_t width) {
    const ParserStringRef raw = view.take_front(width);
    if (!allDigits(raw)) {
        fail(std::string(name) + " should be a number");
        return;
    }
    result_->addField(name, raw.str(), raw.str());
}

void MrtdFieldReader::choice(ParserStringRef& view, const char* name, std::size_t width,
                             std::initializer_list<const char*> allowed) {
    const ParserStringRef raw = view.take_front(width);
    std::string list;
    for (const char* value : allowed) {
        if (raw == value) {
            result_->addField(name, raw.str(), raw.str());
            return;
        }
        if (!list.empty()) list += ", ";
        list += value;
    }
    fail(std::string(name) + " should be one of those values: " + list);
}

void MrtdFieldReader::omittedCount(ParserStringRef& view, const char* name) {
    const ParserStringRef raw = view.take_front(1);
    result_->addField(name, raw.str(), static_cast<int>(raw[0]) - 'A');
}

void MrtdFieldReader::shortDate(ParserStringRef& view, const char* name) {
    const ParserStringRef raw = view.take_front(6);
    auto date = dateFromMrzYYMMDD(raw, '<');
    if (!date) {
        fail(date.error());
        result_->addField(name, raw.str(), nullptr);
        return;
    }
    result_->addField(name, raw.str(), dateToJson(date.value()));
}

void MrtdFieldReader::shortDateOfDigits(ParserStringRef& view, const char* name) {
    if (!allDigits(view.first(6))) {
        fail(std::string(name) + " should contain only numbers");
        return;
    }
    shortDate(view, name);
}

void MrtdFieldReader::longDate(ParserStringRef& view, const char* name) {
    const ParserStringRef raw = view.take_front(8);
    auto date = dateFromYYYYMMDD(raw);
    if (!date) {
        fail(date.error());
        result_->addField(name, raw.str(), nullptr);
        return;
    }
    result_->addField(name, raw.str(), dateToJson(date.value()));
}

void MrtdFieldReader::centuryDate(ParserStringRef sixDigits, unsigned char centuryLetter) {
    // "B" is 19 and "C" is 20: the letter's code less 47, in front of the digits.
    const std::string text = std::to_string(static_cast<int>(centuryLetter) - 47) + sixDigits.str();
    // A digit where the letter belongs gives seven characters: too short for a date.
    if (text.size() == 8) {
        auto date = dateFromYYYYMMDD(ParserStringRef(text));
        if (date) {
            result_->addField("birthDate", text, dateToJson(date.value()));
            return;
        }
    }
    fail("Invalid date: \"" + std::string(1, static_cast<char>(centuryLetter)) + sixDigits.str() +
         "\" could not be converted to YYYYMMDD date");
}

void MrtdFieldReader::name(ParserStringRef& view, std::size_t width) {
    const ParserStringRef raw = view.take_front(width);
    nlohmann::json primary = nlohmann::json::array();
    nlohmann::json secondary = nlohmann::json::array();
    bool inSecondary = false;
    std::size_t i = 0;
    bool first = true;
    while (i < raw.size()) {
        const std::size_t start = i;
        while (i < raw.size() && raw[i] != '<') ++i;
        const ParserStringRef word = raw.slice(start, i);
        // A field that begins with a filler begins with an empty word.
        if (!word.empty() || first) {
            if (!allLetters(word)) {
                fail(inSecondary ? "secondary name field contains numeric characters"
                                 : "primary name field contains numeric characters");
            }
            (inSecondary ? secondary : primary).emplace_back(word.str());
        }
        first = false;
        const std::size_t fillersStart = i;
        while (i < raw.size() && raw[i] == '<') ++i;
        if (i - fillersStart >= 2) inSecondary = true;
    }
    nlohmann::json value = nlohmann::json::object();
    addMember(value, "primary", std::move(primary));
    addMember(value, "secondary", std::move(secondary));
    addMember(value, "truncated", isTruncated(raw));
    result_->addField("name", raw.str(), std::move(value));
}

void MrtdFieldReader::frenchLastName(ParserStringRef& view, std::size_t width) {
    const ParserStringRef raw = view.take_front(width);
    const nlohmann::json pieces = piecesBetweenFillers(raw);
    if (pieces.empty()) {
        fail("lastName field not found");
        return;
    }
    std::string joined;
    for (const auto& piece : pieces) {
        if (!joined.empty()) joined += ' ';
        joined += piece.get_ref<const std::string&>();
    }
    nlohmann::json value = nlohmann::json::object();
    addMember(value, "lastName", std::move(joined));
    addMember(value, "truncated", isTruncated(raw));
    result_->addField("lastName", raw.str(), std::move(value));
}

void MrtdFieldReader::frenchFirstNames(ParserStringRef& view, std::size_t width) {
    const ParserStringRef raw = view.take_front(width);
    nlohmann::json value = nlohmann::json::object();
    addMember(value, "firstNames", piecesBetweenFillers(raw));
    addMember(value, "truncated", isTruncated(raw));
    result_->addField("firstNames", raw.str(), std::move(value));
}

void MrtdFieldReader::yearMonth(ParserStringRef& view, const char* name) {
    const ParserStringRef raw = view.take_front(4);
    int year = 0;
    int month = 0;
    const bool hasYear = readInt(raw.first(2).view(), year);
    const bool hasMonth = readInt(raw.last(2).view(), month);
    nlohmann::json value;
    if (hasYear || hasMonth) {
        value = nlohmann::json::object();
        if (hasMonth) addMember(value, "month", month);
        if (hasYear) addMember(value, "year", year);
    }
    result_->addField(name, raw.str(), std::move(value));
}

void MrtdFieldReader::gbkName(ParserStringRef& view, std::size_t width) {
    const ParserStringRef raw = view.take_front(width);
    std::string letters = trimFillers(raw);
    std::string chinese = decodeGbkLetters(ParserStringRef(letters));
    result_->addField("gbkName", raw.str(), std::move(letters));
    result_->addField("fullNameSimplifiedChinese", chinese, chinese);
}

void MrtdFieldReader::swissDocumentNumber(ParserStringRef& view) {
    const ParserStringRef head = view.take_front(3);
    const ParserStringRef tail = view.take_front(3);
    const std::string number = head.str() + tail.str();
    result_->addField("documentNumber", number, number);
    if (!allDigits(tail)) {
        fail("Document number can not contain alphabetical characters in last 3 digits");
    }
}

void MrtdDocumentNumberReader::read(ParserStringRef& view) {
    const ParserStringRef nine = view.take_front(9);
    if (!view.empty() && view[0] == '<') {
        pending_ = nine.str();
        return;
    }
    result_->addField(fieldName_, nine.str(), trimFillers(nine));
}

void MrtdDocumentNumberReader::truncationTest() {
    if (!pending_.empty()) fail("Unexpected truncation of the documentNumber field");
}

void MrtdDocumentNumberReader::overflow(ParserStringRef& view, std::size_t width) {
    if (pending_.empty()) {
        widthLeft_ = width;
        return;
    }
    const ParserStringRef window = view.first(width);
    const char* filler = window.find_char('<');
    const std::size_t p = filler != nullptr ? window.offsetOf(filler) : width;
    if (p == 0) {
        fail("Checksum width cannot be zero");
        return;
    }
    const std::string number = pending_ + window.first(p - 1).str();
    result_->addField(fieldName_, number, number);
    const std::size_t step = std::min(p + 1, width);
    widthLeft_ = width - step;
    view.take_front(step);
}

}  // namespace parser
