#include "dlid/dlid_features.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "common/text.h"
#include "dlid/dlid_issuers.h"
#include "dlid/dlid_licence_numbers.h"
#include "qvx/contract.h"

namespace parser::dlid {

namespace {

using nlohmann::json;

constexpr const char* kExtractPrefix = "Failed to extract features, ";

// The feature reader names some issuers its own way and knows two more.
constexpr std::array<IssuerRow, 3> kFeatureIssuerOverrides = {{
    {"636016", "NF"},
    {"604428", "GC"},
    {"636027", "ST"},
}};
constexpr std::array<IssuerRow, 2> kFeatureIssuerAdditions = {{
    {"604434", "NT"},
    {"360040", "NV"},
}};

constexpr std::array<std::string_view, 13> kCanadianCodes = {
    "AB", "BC", "MB", "NB", "NF", "NS", "NT", "NU", "ON", "PE", "QC", "SK", "YT"};

// Every id a data element may bear.
constexpr std::array<std::string_view, 77> kKnownElements = {
    "DAC", "DAD", "DAK", "DAI", "DAJ", "DAU", "DAQ", "DAZ", "DBA", "DBB", "DBC", "DBD", "DCA",
    "DCB", "DCD", "DCF", "DCG", "DCH", "DCK", "DCS", "DCT", "DAY", "DAG", "DAH", "DBG", "DBH",
    "DBJ", "DBK", "DBN", "DBS", "DCE", "DCI", "DCJ", "DCL", "DCP", "DCQ", "DCR", "DDB", "DDC",
    "DDA", "DDD", "DDE", "DDF", "DDG", "DDH", "DDI", "DDJ", "DDK", "DDL", "PAC", "DCM", "DCN",
    "DCO", "DCU", "DAE", "DAF", "DAN", "DAP", "DBI", "DBE", "DBF", "DAA", "DAB", "DAL", "DAM",
    "DAO", "DAR", "DAS", "DAT", "DAV", "DAW", "DAX", "PAA", "PAB", "PAD", "PAE", "PAF"};

// Expected in every version; then in versions 2 and 3; then from version 4.
constexpr std::array<std::string_view, 17> kExpectedAlways = {
    "DCA", "DCB", "DCD", "DBA", "DCS", "DBD", "DBB", "DBC", "DAY",
    "DAU", "DAG", "DAI", "DAJ", "DAK", "DAQ", "DCF", "DCG"};
constexpr std::array<std::string_view, 2> kExpectedVersions2And3 = {"DCT", "DCH"};
constexpr std::array<std::string_view, 5> kExpectedFromVersion4 = {"DAC", "DAD", "DDE", "DDF",
                                                                   "DDG"};

// How an element's value is anonymised, by element id. Ids beginning with Z
// are collapsed like identifiers; ids in no row become empty.
enum class Rewrite : std::uint8_t {
    Keep,
    CollapsedLettersDigits,
    PerCharLettersDigits,
    CollapsedRuns,
    PerCharAlphanumeric,
    Date,
    Measure,
    Suffix,
    Drop,
};

struct RewriteRow {
    Rewrite rewrite;
    std::vector<std::string_view> ids;
};

const std::vector<RewriteRow>& rewriteRows() {
    static const std::vector<RewriteRow> rows = {
        {Rewrite::Keep,
         {"DAJ", "DAY", "DBC", "DAZ", "DCA", "DCB", "DCD", "DCG", "DCH", "DDK", "DCE",
          "DCL", "DCM", "DCN", "DCO", "DCP", "DCQ", "DCR", "DDA", "DDD", "DDL", "DDE",
          "DDF", "DDG", "DAR", "DAS", "DAT", "DBH", "PAA", "PAE", "PAF"}},
        {Rewrite::CollapsedLettersDigits,
         {"DAQ", "DBG", "DBK", "DBN", "DBS", "DCI", "DCJ", "DAE", "DAF", "DAN", "DAO"}},
        {Rewrite::PerCharLettersDigits, {"DAK", "DBJ", "PAC", "DAP", "DBI", "DBE", "DBF"}},
        {Rewrite::CollapsedRuns,
         {"DAC", "DAD", "DCS", "DCT", "DAI", "DAG", "DAH", "DAA", "DAB", "DAL", "DAM"}},
        {Rewrite::PerCharAlphanumeric, {"DCF", "DCK"}},
        {Rewrite::Date, {"DBB", "DBA", "DBD", "DDB", "DDH", "DDI", "DDJ", "DDC", "PAB", "PAD"}},
        {Rewrite::Measure, {"DAU", "DAV", "DAW", "DAX"}},
        {Rewrite::Suffix, {"DCU"}},
    };
    return rows;
}

// The rows must not share an id, nor name one that begins with Z: checked
// once, on first use.
const std::unordered_map<std::string_view, Rewrite>& rewriteById() {
    static const std::unordered_map<std::string_view, Rewrite> byId = [] {
        std::unordered_map<std::string_view, Rewrite> map;
        for (const RewriteRow& row : rewriteRows()) {
            for (std::string_view id : row.ids) {
                QVX_GUARD(id.empty() || id.front() != 'Z', "anonymisation row names a Z element");
                QVX_GUARD(map.emplace(id, row.rewrite).second,
                          "anonymisation rows overlap on " + std::string(id));
            }
        }
        return map;
    }();
    return byId;
}

Rewrite rewriteFor(std::string_view id) {
    if (!id.empty() && id.front() == 'Z') return Rewrite::CollapsedLettersDigits;
    const auto& byId = rewriteById();
    const auto found = byId.find(id);
    return found == byId.end() ? Rewrite::Drop : found->second;
}

bool isBlank(char c) {
    return c == ' ';
}
bool isDigit(char c) {
    return isAsciiDigit(static_cast<unsigned char>(c));
}
bool isLetterOrStar(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return isAsciiUpper(byte) || isAsciiLower(byte) || c == '*';
}
bool isMarker(char c) {
    return c == '@' || c == '#' || c == '%' || c == '>';
}

std::string upperTrimmed(std::string_view value) {
    std::string text(value);
    trimWhitespace(text);
    for (char& c : text) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return text;
}

// Same length as the value: blanks ">", letters "@", digits "#" (or "@" when
// `digitsAsLetters`), markers kept, all else "%".
std::string perCharacter(std::string_view value, bool digitsAsLetters) {
    if (upperTrimmed(value) == "NONE") return std::string(value);
    std::string out(value);
    for (char& c : out) {
        if (isBlank(c)) {
            c = '>';
        } else if (isLetterOrStar(c)) {
            c = '@';
        } else if (isDigit(c)) {
            c = digitsAsLetters ? '@' : '#';
        } else if (!isMarker(c)) {
            c = '%';
        }
    }
    return out;
}

// A jurisdiction value where more than one byte in five is neither a letter,
// a digit nor an apostrophe, or with five kinds of such bytes, or long, is
// taken for bytes that were never text.
bool looksLikeBinary(std::string_view value) {
    std::size_t count = 0;
    std::unordered_set<char> kinds;
    for (char c : value) {
        const auto byte = static_cast<unsigned char>(c);
        if (isAsciiUpper(byte) || isAsciiLower(byte) || isDigit(c) || c == '\'') continue;
        ++count;
        kinds.insert(c);
    }
    return !(5 * count <= value.size() && value.size() < 51 && kinds.size() < 5);
}

// One marker per run: letters (and '*') "@", digits "#", anything else "%";
// a blank stays with the run it is in (and starts a letter run after other
// characters). With `everyRunOther`, each word between blanks is one "%" and
// the blanks are ">".
std::string collapsed(std::string_view id, std::string_view value, bool everyRunOther) {
    if (upperTrimmed(value) == "NONE") return std::string(value);
    if (!id.empty() && id.front() == 'Z' && value.size() >= 5 && looksLikeBinary(value)) {
        return "NON-UTF8";
    }
    const bool leadingBlank = !value.empty() && isBlank(value.front());
    const bool trailingBlank = value.size() > 1 && isBlank(value.back());
    const std::string trimmed = [&] {
        std::string text(value);
        trimWhitespace(text);
        return text;
    }();
    std::string out;
    if (leadingBlank) out.push_back('>');
    char run = 0;  // the marker of the run in progress
    for (char c : trimmed) {
        char marker = 0;
        if (everyRunOther) {
            marker = isBlank(c) ? '>' : '%';
            if (marker == '>' || run != '%') out.push_back(marker);
            run = marker;
            continue;
        }
        if (isBlank(c)) {
            marker = (run == '@' || run == '#') ? run : '@';
        } else if (isLetterOrStar(c)) {
            marker = '@';
        } else if (isDigit(c)) {
            marker = '#';
        } else {
            marker = '%';
        }
        if (marker != run) out.push_back(marker);
        run = marker;
    }
    if (trailingBlank) out.push_back('>');
    return out;
}

constexpr std::array<std::string_view, 11> kNameSuffixes = {
    "JR", "SR", "1ST", "2ND", "3RD", "4TH", "5TH", "6TH", "7TH", "8TH", "9TH"};

std::string suffix(std::string_view id, std::string_view value) {
    const std::string upper = upperTrimmed(value);
    if (std::find(kNameSuffixes.begin(), kNameSuffixes.end(), upper) == kNameSuffixes.end()) {
        return collapsed(id, value, false);
    }
    std::string out(value);
    std::replace(out.begin(), out.end(), ' ', '>');
    return out;
}

std::string measure(std::string_view value) {
    std::string out(value);
    for (char& c : out) {
        if (isDigit(c)) {
            c = '#';
        } else if (isBlank(c)) {
            c = '>';
        }
    }
    return out;
}

bool isAllDigits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

int number(std::string_view digits) {
    int value = 0;
    for (char c : digits) value = value * 10 + (c - '0');
    return value;
}

struct DateReading {
    Date date;
    bool monthFirst = true;
};

// Eight digits, month first or year first, whichever gives a date first.
std::optional<DateReading> readDateLayout(std::string_view value, bool yearFirst) {
    if (value.size() != 8 || !isAllDigits(value)) return std::nullopt;
    const DateReading monthFirst{
        Date{number(value.substr(4, 4)), number(value.substr(0, 2)), number(value.substr(2, 2))},
        true};
    const DateReading yearFirstReading{
        Date{number(value.substr(0, 4)), number(value.substr(4, 2)), number(value.substr(6, 2))},
        false};
    for (const DateReading* reading : {yearFirst ? &yearFirstReading : &monthFirst,
                                       yearFirst ? &monthFirst : &yearFirstReading}) {
        if (reading->date.year > 0 && reading->date.isValid()) return *reading;
    }
    return std::nullopt;
}

// The layout kept, month and day masked, the year to its decade:
// 03141985 gives ####198#, 19850314 gives 198#####.
std::string coarseDate(std::string_view value, bool yearFirst) {
    const auto reading = readDateLayout(value, yearFirst);
    if (!reading) return "INV_DATE";
    char year[16];
    std::snprintf(year, sizeof year, "%03d#", reading->date.year / 10);
    return reading->monthFirst ? "####" + std::string(year) : std::string(year) + "####";
}

std::string decimal(long long value) {
    return std::to_string(value);
}

const char* boolText(bool value) {
    return value ? "true" : "false";
}

std::string joined(const std::vector<std::string>& parts) {
    std::string out;
    for (const std::string& part : parts) {
        if (!out.empty()) out.push_back(',');
        out += part;
    }
    return out;
}

// Plain substring search, then again without '-' and '/' in the text searched.
bool contains(std::string_view text, std::string_view part) {
    if (text.empty() || part.empty()) return false;
    if (text.find(part) != std::string_view::npos) return true;
    std::string bare;
    for (char c : text) {
        if (c != '-' && c != '/') bare.push_back(c);
    }
    return bare.find(part) != std::string::npos;
}

std::string formatDate(const Date& date, const char* layout) {
    // Layout letters: y two-digit year, Y four-digit year, m month, d day.
    std::string out;
    char part[16];
    for (const char* p = layout; *p != '\0'; ++p) {
        switch (*p) {
            case 'y':
                std::snprintf(part, sizeof part, "%02d", ((date.year % 100) + 100) % 100);
                break;
            case 'Y':
                std::snprintf(part, sizeof part, "%04d", date.year);
                break;
            case 'm':
                std::snprintf(part, sizeof part, "%02d", date.month);
                break;
            default:
                std::snprintf(part, sizeof part, "%02d", date.day);
                break;
        }
        out += part;
    }
    return out;
}

// The date in twelve orders, two-digit years first.
constexpr std::array<const char*, 12> kDateForms = {"ymd", "ydm", "myd", "mdy", "dym", "dmy",
                                                    "Ymd", "Ydm", "mYd", "mdY", "dYm", "dmY"};

bool containsDate(std::string_view text, const std::optional<Date>& date) {
    if (!date) return false;
    const Date& day = *date;
    return std::any_of(kDateForms.begin(), kDateForms.end(),
                       [&](const char* form) { return contains(text, formatDate(day, form)); });
}

int wholeYears(const Date& from, const Date& to) {
    int years = to.year - from.year;
    if (to.month < from.month || (to.month == from.month && to.day < from.day)) --years;
    return years;
}

int wholeMonths(const Date& from, const Date& to) {
    if (to < from) return -wholeMonths(to, from);
    int months = (to.year - from.year) * 12 + to.month - from.month;
    if (to.day < from.day) --months;
    return months;
}

long long binned(int value, double bin) {
    return static_cast<long long>(std::lround(value / bin)) * static_cast<long long>(bin);
}

// --- The reader ---------------------------------------------------------

std::size_t skipDigits(std::string_view text, std::size_t at, std::size_t most) {
    std::size_t end = at;
    while (end < text.size() && end - at < most && isDigit(text[end])) ++end;
    return end - at;
}

// ^(([A-Z]{2})(\d{4})(\d{4,5}))([\s\S]*) at `at`: the designator's length.
std::size_t matchDesignator(std::string_view code, std::size_t at) {
    if (at + 10 > code.size()) return 0;
    if (!isAsciiUpper(static_cast<unsigned char>(code[at])) ||
        !isAsciiUpper(static_cast<unsigned char>(code[at + 1]))) {
        return 0;
    }
    if (skipDigits(code, at + 2, 4) != 4) return 0;
    const std::size_t lengthDigits = skipDigits(code, at + 6, 5);
    return lengthDigits >= 4 ? 6 + lengthDigits : 0;
}

// Characters with a meaning in a pattern: a header holding one cannot be
// matched as the text it is.
bool hasPatternCharacters(std::string_view text) {
    return text.find_first_of("\\^$.|?*+()[]{}") != std::string_view::npos;
}

bool isRegexSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

struct Reader {
    std::string_view code;
    AamvaBarcodeHeader header;
    AamvaBarcodeSubfileDesignator designator;
    AamvaBarcodeSubfileIndicator mainIndicator;
    AamvaBarcodeSubfileIndicator jurisdictionIndicator;
    std::vector<FeatureElement> elements;
    std::string terminator;
    std::string issuer;
    std::size_t designatorsEnd = 0;
    std::size_t jurisdictionStart = 0;
    std::size_t mainEnd = 0;
    std::size_t jurisdictionEnd = 0;
    std::string error;

    bool fail(std::string message) {
        error = std::move(message);
        return false;
    }

    bool readHeader() {
        const auto match = matchFeatureHeader(code);
        if (!match || match->whole.empty()) {
            return fail("Header format does not match AAMVA specification!");
        }
        if (match->iin.empty()) return fail("Issuer IIN could not be extracted from header!");
        issuer = std::string(featureIssuerCode(match->iin));
        if (issuer.empty()) return fail(kExtractPrefix + std::string("Unknown IIN ") + match->iin);
        header.value = match->whole;
        header.iin = match->iin;
        if (!match->version.empty()) header.aamvaVersion = match->version;
        if (!match->jurisdictionVersion.empty()) {
            header.jurisdictionVersion = match->jurisdictionVersion;
        }
        if (!match->subfiles.empty()) {
            header.numberOfSubfiles = number(match->subfiles);
        } else if (header.jurisdictionVersion == "01") {
            header.numberOfSubfiles = 1;
        } else if (header.jurisdictionVersion == "02") {
            header.numberOfSubfiles = 2;
        } else {
            header.numberOfSubfiles = header.value.find("AAMVA") != std::string::npos ? 1 : 2;
        }
        return true;
    }

    // Up to two designators from `at`; false when none matched.
    bool readDesignatorsAt(std::size_t at) {
        std::size_t position = at;
        for (int repeat = 0; repeat < 2; ++repeat) {
            const std::size_t length = matchDesignator(code, position);
            if (length == 0) break;
            const std::string type(code.substr(position, 2));
            const std::size_t offset =
                static_cast<std::size_t>(number(code.substr(position + 2, 4)));
            const std::size_t size =
                static_cast<std::size_t>(number(code.substr(position + 6, length - 6)));
            if (type == "DL" || type == "ID" || type == "EN") {
                designator.mainType = type;
                designator.mainOffset = offset;
                designator.mainLength = size;
            } else if (type.front() == 'Z') {
                designator.jurisdictionType = type;
                designator.jurisdictionOffset = offset;
                designator.jurisdictionLength = size;
            } else {
                return fail(kExtractPrefix + std::string("Unknown subfile type ") + type + "!");
            }
            designator.text += code.substr(position, length);
            position += length;
        }
        designatorsEnd = position;
        return !designator.text.empty();
    }

    bool readDesignators() {
        const std::size_t start = header.value.size();
        if (!readDesignatorsAt(start)) {
            if (!error.empty()) return false;
            const std::size_t dl = code.find("DL", start);
            if (dl == std::string_view::npos || !readDesignatorsAt(dl)) {
                if (!error.empty()) return false;
                return fail(kExtractPrefix + std::string("Failed to extract subfile designator!"));
            }
        }
        if (designator.text.size() <= 8 || designator.text.size() >= 23) {
            return fail(kExtractPrefix + std::string("subfile designator has invalid length!"));
        }
        return true;
    }

    // Main: the code begins with header and designators, then blanks and the
    // type. Jurisdiction: the type followed by line ends, anywhere behind the
    // designators.
    bool readIndicators() {
        const std::string prefix = header.value + designator.text;
        if (hasPatternCharacters(prefix)) return fail("Unexpected characters in header");
        const std::string& mainType = designator.mainType;
        if (code.substr(0, prefix.size()) == prefix) {
            std::size_t at = prefix.size();
            while (at < code.size() && isRegexSpace(code[at])) ++at;
            if (code.substr(at, mainType.size()) == mainType) {
                mainIndicator.offset = prefix.size();
                mainIndicator.text =
                    std::string(code.substr(prefix.size(), at + mainType.size() - prefix.size()));
            }
        }
        const std::string& type = designator.jurisdictionType;
        if (type.empty()) return true;
        if (type.front() != 'Z') return fail("Unexpected subfile name " + type);
        for (std::size_t at = code.find(type, designatorsEnd); at != std::string_view::npos;
             at = code.find(type, at + 1)) {
            std::size_t end = at + type.size();
            while (end < code.size() && (code[end] == '\r' || code[end] == '\n')) ++end;
            if (end > at + type.size()) {
                jurisdictionIndicator.offset = at;
                jurisdictionIndicator.text = std::string(code.substr(at, end - at));
                break;
            }
        }
        return true;
    }

    // The main subfile runs from its indicator to the start of the
    // jurisdiction subfile: its indicator, or else the first line behind the
    // main indicator that begins with its type. Declared lengths are not
    // trusted here; a wrong one shows in the subfile errors.
    void placeSubfiles() {
        jurisdictionStart = code.size();
        const std::string& type = designator.jurisdictionType;
        if (!jurisdictionIndicator.text.empty()) {
            jurisdictionStart = jurisdictionIndicator.offset;
        } else if (!type.empty()) {
            for (std::size_t at = code.find(type, mainIndicator.offset);
                 at != std::string_view::npos; at = code.find(type, at + 1)) {
                if (at > 0 && (code[at - 1] == '\n' || code[at - 1] == '\r')) {
                    jurisdictionStart = at;
                    break;
                }
            }
        }
        mainEnd = jurisdictionStart > mainIndicator.offset ? jurisdictionStart : code.size();
        jurisdictionEnd = code.size();
        if (mainIndicator.offset > jurisdictionIndicator.offset) {
            jurisdictionEnd = mainIndicator.offset;
        }
    }

    // Lines begin at each LF (a CR before it goes with it); every line that
    // is an element adds one, and the first that is not ends the subfile.
    bool readElements(const AamvaBarcodeSubfileIndicator& indicator, std::size_t end, bool isMain) {
        std::string cleaned;
        for (char c : indicator.text) {
            if (c != '\r' && c != '\n' && c != ' ') cleaned.push_back(c);
        }
        const bool jurisdiction = !cleaned.empty() && cleaned.front() == 'Z';
        if (indicator.text.empty()) {
            return fail(kExtractPrefix + std::string(isMain ? "main" : "jur") +
                        " subfile is not starting with the expected subfile indicator");
        }
        const std::size_t begin = std::min(indicator.offset + indicator.text.size(), end);
        const std::string_view text = code.substr(begin, end - begin);
        if (isMain && !text.empty() && text.find('\n') == std::string_view::npos) {
            return fail("Delimiter not found in string split.");
        }
        std::size_t start = 0;
        while (start < text.size()) {
            std::size_t next = text.find('\n', start + 1);
            if (next != std::string_view::npos && text[next - 1] == '\r' && next - 1 > start) {
                --next;
            }
            if (next == std::string_view::npos) next = text.size();
            const std::string_view line = text.substr(start, next - start);
            start = next;
            // (^\s*)([DIZ][A-Z]{2})([^\r\n]*)([\S\s]*)
            std::size_t at = 0;
            while (at < line.size() && isRegexSpace(line[at])) ++at;
            if (at + 3 > line.size() || (line[at] != 'D' && line[at] != 'I' && line[at] != 'Z') ||
                !isAsciiUpper(static_cast<unsigned char>(line[at + 1])) ||
                !isAsciiUpper(static_cast<unsigned char>(line[at + 2]))) {
                break;
            }
            std::size_t valueEnd = at + 3;
            while (valueEnd < line.size() && line[valueEnd] != '\r' && line[valueEnd] != '\n') {
                ++valueEnd;
            }
            FeatureElement element;
            element.separator = std::string(line.substr(0, at));
            element.id = std::string(line.substr(at, 3));
            element.value = std::string(line.substr(at + 3, valueEnd - at - 3));
            element.rest = std::string(line.substr(valueEnd));
            element.isJurisdiction = jurisdiction;
            if (element.id.empty()) {
                return fail("subfile of type " + cleaned +
                            " did not encode data fields according to AAMVA specification!");
            }
            const bool known = jurisdiction || isKnownElement(element.id);
            elements.push_back(std::move(element));
            if (!known) return fail("DL has unknown field identifier: " + elements.back().id);
        }
        return true;
    }

    bool read() {
        if (!readHeader() || !readDesignators() || !readIndicators()) return false;
        placeSubfiles();
        if (!readElements(mainIndicator, mainEnd, true)) return false;
        if (elements.empty()) {
            return fail(
                "main fields have wrong format, subfile might not have the correct indicator!");
        }
        if (!jurisdictionIndicator.text.empty() &&
            !readElements(jurisdictionIndicator, jurisdictionEnd, false)) {
            return false;
        }
        std::size_t trailing = code.size();
        while (trailing > 0 && (code[trailing - 1] == '\r' || code[trailing - 1] == '\n')) {
            --trailing;
        }
        terminator = std::string(code.substr(trailing));
        return true;
    }

    std::string valueOf(std::string_view id) const {
        for (const FeatureElement& element : elements) {
            if (element.id == id) return element.value;
        }
        return std::string();
    }

    bool has(std::string_view id) const {
        return std::any_of(elements.begin(), elements.end(),
                           [&](const FeatureElement& element) { return element.id == id; });
    }

    // "offset" when the indicator is not where the designator says, "length"
    // when the subfile's text, from the indicator to its end, is not as long
    // as declared.
    std::string subfileErrors(const AamvaBarcodeSubfileIndicator& indicator,
                              std::size_t declaredOffset, std::size_t declaredLength,
                              std::size_t end) const {
        if (indicator.text.empty()) return std::string();
        std::vector<std::string> errors;
        if (indicator.offset != declaredOffset) errors.emplace_back("offset");
        if (end - indicator.offset != declaredLength) errors.emplace_back("length");
        return joined(errors);
    }
};

}  // namespace

std::string_view featureIssuerCode(std::string_view iin) {
    static const std::unordered_map<std::string_view, std::string_view> table = [] {
        std::unordered_map<std::string_view, std::string_view> map;
        for (const IssuerRow& row : kIssuerTable) map[row.iin] = row.abbreviation;
        for (const IssuerRow& row : kFeatureIssuerOverrides) map[row.iin] = row.abbreviation;
        for (const IssuerRow& row : kFeatureIssuerAdditions) map[row.iin] = row.abbreviation;
        return map;
    }();
    const auto found = table.find(iin);
    return found == table.end() ? std::string_view() : found->second;
}

std::size_t featureIssuerCount() {
    return kIssuerTable.size() + kFeatureIssuerAdditions.size();
}

bool isCanadianCode(std::string_view code) {
    return std::find(kCanadianCodes.begin(), kCanadianCodes.end(), code) != kCanadianCodes.end();
}

bool isKnownElement(std::string_view id) {
    return std::find(kKnownElements.begin(), kKnownElements.end(), id) != kKnownElements.end();
}

std::vector<std::string_view> expectedElements(std::string_view aamvaVersion) {
    std::vector<std::string_view> ids;
    if (!isAllDigits(aamvaVersion)) return ids;
    const int version = number(aamvaVersion);
    if (version == 0) return ids;
    ids.assign(kExpectedAlways.begin(), kExpectedAlways.end());
    if (version == 2 || version == 3) {
        ids.insert(ids.end(), kExpectedVersions2And3.begin(), kExpectedVersions2And3.end());
    } else if (version >= 4) {
        ids.insert(ids.end(), kExpectedFromVersion4.begin(), kExpectedFromVersion4.end());
    }
    return ids;
}

std::optional<HeaderMatch> matchFeatureHeader(std::string_view code) {
    // The greedy lead makes the last file type that fits win.
    for (std::size_t p = code.size(); p-- > 1;) {
        std::size_t at = 0;
        if (code.compare(p, 4, "ANSI") == 0) {
            at = p + 4;
        } else if (code.compare(p, 5, "AAMVA") == 0) {
            at = p + 5;
        } else {
            continue;
        }
        std::size_t blanks = 0;
        while (blanks < 2 && at + blanks < code.size() &&
               (code[at + blanks] == ' ' || code[at + blanks] == '\n')) {
            ++blanks;
        }
        at += blanks;
        if (skipDigits(code, at, 8) != 8) continue;
        HeaderMatch match;
        match.iin = std::string(code.substr(at, 6));
        match.version = std::string(code.substr(at + 6, 2));
        at += 8;
        if (skipDigits(code, at, 2) == 2) {
            match.jurisdictionVersion = std::string(code.substr(at, 2));
            at += 2;
            if (skipDigits(code, at, 2) == 2) {
                match.subfiles = std::string(code.substr(at, 2));
                at += 2;
            }
        }
        match.whole = std::string(code.substr(0, at));
        return match;
    }
    return std::nullopt;
}

std::optional<Date> readFeatureDate(std::string_view value, bool yearFirst) {
    const auto reading = readDateLayout(value, yearFirst);
    if (!reading) return std::nullopt;
    return reading->date;
}

std::string anonymizeValue(std::string_view id, std::string_view value, bool yearFirst) {
    std::string out;
    switch (rewriteFor(id)) {
        case Rewrite::Keep:
            out = std::string(value);
            break;
        case Rewrite::CollapsedLettersDigits:
            out = collapsed(id, value, false);
            break;
        case Rewrite::PerCharLettersDigits:
            out = perCharacter(value, false);
            break;
        case Rewrite::CollapsedRuns:
            out = collapsed(id, value, true);
            break;
        case Rewrite::PerCharAlphanumeric:
            out = perCharacter(value, true);
            break;
        case Rewrite::Date:
            out = coarseDate(value, yearFirst);
            break;
        case Rewrite::Measure:
            out = measure(value);
            break;
        case Rewrite::Suffix:
            out = suffix(id, value);
            break;
        case Rewrite::Drop:
            break;
    }
    if (out.size() > 40) out.resize(40);
    return out;
}

result<Features, std::string> extractFeatures(ParserStringRef code, const Date& today) {
    Reader reader;
    reader.code = code.view();
    if (!reader.read()) return result<Features, std::string>::failure(reader.error);

    const bool yearFirst = isCanadianCode(reader.issuer);
    json features = json::object();
    std::string previous = "START";
    for (const FeatureElement& element : reader.elements) {
        features[element.id + "_LEN"] = decimal(static_cast<long long>(element.value.size()));
        features[element.id + "_POS"] = previous;
        features[element.id + "_SEP"] = element.separator;
        features[element.id + "_VAL"] = element.value;
        previous = element.id;
    }

    const auto date = [&](std::string_view id) {
        return readFeatureDate(reader.valueOf(id), yearFirst);
    };
    const auto birth = date("DBB");
    const auto expiry = date("DBA");
    const auto issued = date("DBD");
    const std::string dcf = reader.valueOf("DCF");
    const std::string daq = reader.valueOf("DAQ");

    int age = 0;
    if (birth) age = today < *birth ? -1 : wholeYears(*birth, today);
    int validMonths = 0;
    if (issued && expiry) validMonths = wholeMonths(*issued, *expiry);

    bool jurHasExpiry = false;
    bool jurHasIssued = false;
    for (const FeatureElement& element : reader.elements) {
        if (!element.isJurisdiction) continue;
        jurHasExpiry = jurHasExpiry || contains(element.value, reader.valueOf("DBA"));
        jurHasIssued = jurHasIssued || contains(element.value, reader.valueOf("DBD"));
    }
    std::vector<std::string> missing;
    for (std::string_view id : expectedElements(reader.header.aamvaVersion)) {
        if (!reader.has(id)) missing.emplace_back(id);
    }
    std::sort(missing.begin(), missing.end());

    const auto& designator = reader.designator;
    features["*AGE"] = decimal(age);
    features["*AGE_BINNED"] = decimal(binned(age, 5.0));
    features["*DAQ_MATCHES_STATE_ENCODING"] =
        boolText(matchesStateEncoding(reader.issuer, daq, birth, designator.mainType,
                                      reader.valueOf("DCS"), reader.valueOf("DAC")));
    features["*DCF_HAS_AUDIT"] = boolText(contains(dcf, reader.valueOf("DCJ")));
    features["*DCF_HAS_EXPIRY"] = boolText(containsDate(dcf, expiry));
    features["*DCF_HAS_ID_NUMBER"] = boolText(contains(dcf, daq));
    features["*DCF_HAS_ISSUED"] = boolText(containsDate(dcf, issued));
    features["*DCK_HAS_ID_NUMBER"] = boolText(contains(reader.valueOf("DCK"), daq));
    features["*DMV_VERSION"] = reader.issuer + reader.header.aamvaVersion +
                               reader.header.jurisdictionVersion + designator.mainType;
    features["*EXPIRED"] = boolText(expiry && today > *expiry);
    features["*EXPIRY_YEAR"] = decimal(expiry ? expiry->year : 0);
    features["*ISSUE_YEAR"] = decimal(issued ? issued->year : 0);
    features["*JUR_SUBFILE_ERRORS"] =
        reader.subfileErrors(reader.jurisdictionIndicator, designator.jurisdictionOffset,
                             designator.jurisdictionLength, reader.jurisdictionEnd);
    features["*JUR_SUBFILE_HAS_EXPIRY"] = boolText(jurHasExpiry);
    features["*JUR_SUBFILE_HAS_ISSUED"] = boolText(jurHasIssued);
    features["*JUR_SUBFILE_INDICATOR"] = reader.jurisdictionIndicator.text;
    features["*MAIN_SUBFILE_ERRORS"] = reader.subfileErrors(
        reader.mainIndicator, designator.mainOffset, designator.mainLength, reader.mainEnd);
    features["*MAIN_SUBFILE_INDICATOR"] = reader.mainIndicator.text;
    features["*MAIN_SUBFILE_OFFSET"] = decimal(static_cast<long long>(designator.mainOffset));
    features["*MISSING_FIELDS"] = joined(missing);
    features["*NUM_SUBFILES"] = decimal(reader.header.numberOfSubfiles);
    features["*TERMINATOR"] = reader.terminator;
    features["*VALID_MONTHS"] = decimal(validMonths);
    features["*VALID_MONTHS_BINNED"] = decimal(binned(validMonths, 3.0));

    json anonymized = json::object();
    constexpr std::string_view kValueSuffix = "_VAL";
    for (const auto& [key, value] : features.items()) {
        if (key.size() > kValueSuffix.size() &&
            key.compare(key.size() - kValueSuffix.size(), kValueSuffix.size(), kValueSuffix) == 0) {
            const std::string id = key.substr(0, key.size() - kValueSuffix.size());
            anonymized[key] = anonymizeValue(id, value.get_ref<const std::string&>(), yearFirst);
        } else {
            anonymized[key] = value;
        }
    }
    return result<Features, std::string>::success(
        Features{std::move(features), std::move(anonymized)});
}

}  // namespace parser::dlid
