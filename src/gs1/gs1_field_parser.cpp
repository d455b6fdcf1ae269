#include "gs1/gs1_field_parser.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/date.h"
#include "common/parser_regex.h"
#include "common/text.h"
#include "gs1/gs1_ai_parser.h"
#include "gs1/result_builder.h"
#include "qvx/contract.h"

namespace parser {

namespace {

constexpr char kGroupSeparator = '\x1D';
constexpr char kOpenParenthesis = '(';

constexpr std::size_t kGtinLength = 14;
constexpr std::size_t kSsccLength = 18;
constexpr std::size_t kGsrnLength = 18;
constexpr std::size_t kDateLength = 6;
constexpr std::size_t kDateTimeLength = 10;
constexpr std::size_t kCurrencyLength = 3;
constexpr std::size_t kCountryLength = 3;
constexpr std::size_t kMaximumCountryPostalLength = 15;
constexpr std::size_t kTemperatureLength = 6;

std::string lengthIssue(std::size_t length, const std::string& key) {
    return "invalid field length " + std::to_string(length) + " in AI " + key;
}

std::string overflowIssue(std::uint64_t excess, const std::string& key) {
    return "field overflowed by " + std::to_string(excess) + " in AI " + key;
}

constexpr bool isInGs1Charset(unsigned char byte, Gs1Charset charset) {
    const bool letter = isAsciiUpper(byte) || isAsciiLower(byte);
    switch (charset) {
        case Gs1Charset::numeric:
            return isAsciiDigit(byte);
        case Gs1Charset::alphanumeric:
            return isAsciiDigit(byte) || letter;
        case Gs1Charset::cset82:
            return byte == '!' || byte == '"' || (byte >= '%' && byte <= '?') || byte == '_' ||
                   letter;
        case Gs1Charset::cset39:
            return byte == '#' || byte == '-' || byte == '/' || isAsciiDigit(byte) ||
                   isAsciiUpper(byte);
    }
    return false;
}

// One row of 256 flags per set, so that a value is checked a byte at a time
// without branching on the set.
using ByteFlags = std::array<bool, 256>;
constexpr std::array<ByteFlags, 4> allowedBytes() {
    std::array<ByteFlags, 4> rows{};
    for (std::size_t set = 0; set < rows.size(); ++set) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            rows[set][byte] =
                isInGs1Charset(static_cast<unsigned char>(byte), static_cast<Gs1Charset>(set));
        }
    }
    return rows;
}
constexpr std::array<ByteFlags, 4> kAllowedBytes = allowedBytes();

// An empty text counts as all digits here.
bool allDigits(ParserStringRef text) {
    return text.empty() || isInCharset(text, Charset::Numeric);
}

std::size_t distanceTo(ParserStringRef view, char byte) {
    const char* at = view.find_char(byte);
    return at == nullptr ? view.size() : view.offsetOf(at);
}

ParserStringRef withoutTrailingWhitespace(ParserStringRef view) {
    while (!view.empty() && isCSpace(view.back())) view = view.drop_back(1);
    return view;
}

// The terminator a variable field ended at, when it is a group separator: it
// belongs to no field and is stepped over.
void dropGroupSeparator(ParserStringRef& view) {
    if (view.starts_with(kGroupSeparator)) view = view.drop_front(1);
}

// In the human form a complete fixed-length value is followed at once by the
// next "("; whatever stands in between is surplus, skipped and reported.
void checkFieldOverflow(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                        const Gs1AiParser& parser) {
    if (!parser.humanOnly() || view.empty() || view.front() == kOpenParenthesis) return;
    const std::size_t surplus = distanceTo(view, kOpenParenthesis);
    view = view.drop_front(surplus);
    builder.addIssue(overflowIssue(surplus, key));
}

// Leading zeros carry no meaning in a measure; one stays before the point.
// A text of zeros alone becomes empty.
void stripLeadingZeros(std::string& text) {
    std::size_t first = text.find_first_not_of('0');
    if (first == std::string::npos) {
        text.clear();
        return;
    }
    if (text[first] == '.' && first > 0) --first;
    text.erase(0, first);
}

// Values were once read by stream extraction, and the readings are kept:
// leading white space is skipped, and nothing may follow the value.
std::optional<std::string_view> extractWord(std::string_view raw) {
    std::size_t start = 0;
    while (start < raw.size() && isCSpace(static_cast<unsigned char>(raw[start]))) ++start;
    if (start == raw.size()) return std::nullopt;
    for (std::size_t i = start; i < raw.size(); ++i) {
        if (isCSpace(static_cast<unsigned char>(raw[i]))) return std::nullopt;
    }
    return raw.substr(start);
}

enum class ValueKind { text, integer, encoded };

// How a frame tests its bytes: a character set, or a pattern that must occur
// somewhere in them.
struct ByteRule {
    Gs1Charset charset = Gs1Charset::cset82;
    const ParserRegex* pattern = nullptr;
};

std::optional<std::string_view> ruleProblem(ParserStringRef raw, const ByteRule& rule) {
    if (rule.pattern == nullptr) return charsetProblem(raw, rule.charset);
    if (rule.pattern->isPartialMatch(raw)) return std::nullopt;
    return "Does not meet character format requirements for field";
}

std::optional<nlohmann::json> convertValue(ParserStringRef raw, ValueKind kind) {
    if (kind == ValueKind::integer) {
        int number = 0;
        if (!readInt(raw.view(), number)) return std::nullopt;
        return nlohmann::json(number);
    }
    const std::optional<std::string_view> word = extractWord(raw.view());
    if (!word) return std::nullopt;
    if (kind == ValueKind::encoded) {
        std::string rejected;
        return nlohmann::json(decodeUriComponent(raw, std::string_view(), rejected));
    }
    return nlohmann::json(*word);
}

bool parseFixedFrame(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                     const Gs1AiParser& parser, std::size_t length, const ByteRule& rule,
                     ValueKind kind, const std::string& fieldName) {
    if (view.size() < length) {
        builder.addIssue(lengthIssue(view.size(), key));
        return false;
    }
    const std::string& name = fieldName.empty() ? key : fieldName;
    const ParserStringRef raw = view.take_front(length);
    if (const auto problem = ruleProblem(raw, rule)) {
        builder.message = *problem;
        builder.addFailedField(name, raw.str(), builder.message, true);
        return !builder.failed;
    }
    std::optional<nlohmann::json> value = convertValue(raw, kind);
    if (!value) {
        builder.addIssue("Unrecognized conversion of " + raw.str() + " from string.");
        return false;
    }
    if (parser.humanOnly() && !view.empty() && view.front() != kOpenParenthesis) {
        view = view.drop_front(distanceTo(view, kOpenParenthesis));
        builder.addIssue("field overflow. Fixed length field exceeds length.");
    }
    builder.addParsedField(name, raw.str(), std::move(*value));
    return !builder.failed;
}

bool parseVariableFrame(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                        const Gs1AiParser& parser, std::size_t minimum, std::size_t maximum,
                        bool trim, const ByteRule& rule, ValueKind kind,
                        const std::string& fieldName) {
    if (trim) view = withoutTrailingWhitespace(view);
    const std::size_t length = separatorDistance(view, parser);
    const bool endsAtGroupSeparator = length < view.size() && view[length] == kGroupSeparator;
    if (length < minimum || length > maximum) {
        // A lax parse still reads the value at its actual length.
        builder.addIssue(lengthIssue(length, key));
        if (builder.failed) return false;
    }
    const bool goOn = parseFixedFrame(key, builder, view, parser, length, rule, kind, fieldName);
    if (endsAtGroupSeparator) dropGroupSeparator(view);
    return goOn;
}

// Encoded values arrive already decoded from a Digital Link URI, where they
// may hold any byte.
const ParserRegex& anyText() {
    static const ParserRegex pattern = *ParserRegex::compile(".*", ParserRegexDialect::ECMAScript);
    return pattern;
}

// The frame of GTIN and SSCC: all digits, a check digit at the end, and in
// the human form no more than the key's length before the next "(".
struct KeyLayout {
    std::size_t length;
    std::size_t overflowFrom;
    bool nameIdentifier;  // the charset complaint names the AI it is about
};

bool parseKey(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
              const Gs1AiParser& parser, const KeyLayout& layout,
              nlohmann::json (*makeValue)(ParserStringRef digits)) {
    if (view.size() < layout.length) {
        builder.addIssue(lengthIssue(view.size(), key));
        return false;
    }
    const ParserStringRef digits = view.first(layout.length);
    if (const auto problem = charsetProblem(digits, Gs1Charset::numeric)) {
        builder.message = *problem;
        const std::string text = layout.nameIdentifier
                                     ? builder.message + " (for identifier \"" + key + "\")"
                                     : builder.message;
        builder.addFailedField(key, digits.str(), text, true);
        view = view.drop_front(layout.length);
        return !builder.failed;
    }
    if (parser.humanOnly()) {
        const std::size_t length = separatorDistance(view, parser);
        if (length >= layout.overflowFrom) {
            // The excess has always been counted from the SSCC's 18 digits, and
            // unsigned: a GTIN of 15 to 17 digits reports a huge number.
            const std::uint64_t excess = std::uint64_t{length} - kSsccLength;
            builder.addFailedField(key, view.first(length).str(), overflowIssue(excess, key), true);
            return !builder.failed;
        }
    }
    view = view.drop_front(layout.length);
    const std::size_t last = layout.length - 1;
    if (auto mismatch = checkDigitMismatch(static_cast<char>(digits[last]),
                                           gs1CheckDigit(digits.first(last)))) {
        builder.message = std::move(*mismatch);
        builder.addFailedField(key, digits.str(), builder.message, true);
        return !builder.failed;
    }
    builder.addParsedField(key, digits.str(), makeValue(digits));
    return true;
}

nlohmann::json gtinValue(ParserStringRef digits) {
    nlohmann::json value = nlohmann::json::object();
    addMember(value, "GTIN", digits.view());
    if (digits.front() != '0') addMember(value, "indicator", digits.front() - '0');
    return value;
}

nlohmann::json ssccValue(ParserStringRef digits) {
    nlohmann::json value = nlohmann::json::object();
    addMember(value, "SSCC", digits.view());
    addMember(value, "extensionDigit", digits.first(1).view());
    return value;
}

// separatorDistance for decoders that look past their own value: the next
// terminator is remembered, so a long run of such AIs is not searched again
// for each of them.
std::size_t rememberedSeparatorDistance(ParserStringRef view, ResultBuilder& builder,
                                        const Gs1AiParser& parser) {
    return view.offsetOf(builder.nextTerminator(view, parser.allowMachineReadableCodes,
                                                parser.allowHumanReadableCodes));
}

// The length of a measure with implied point: its run of digits, or in the
// human form everything up to the next "(".
std::size_t measureDecimal(ParserStringRef view, const Gs1AiParser& parser) {
    if (parser.humanOnly()) return distanceTo(view, kOpenParenthesis);
    const std::string_view bytes = view.view();
    std::size_t length = 0;
    while (length < bytes.size() && isAsciiDigit(static_cast<unsigned char>(bytes[length]))) {
        ++length;
    }
    return length;
}

enum class NhsRecord { organisation, baby, patient };

// Where an NHS record ends. Its fields are comma-terminated, and the last one
// may be missing altogether; it is taken only when it looks like what it
// should be (a number, or a time of birth "HH:MM").
std::size_t nhsRecordLength(ParserStringRef view, NhsRecord record) {
    const std::size_t commas = record == NhsRecord::patient ? 3 : 2;
    const char* p = view.find_nth_of(",", commas);
    if (p == nullptr) return view.size();
    const std::size_t afterP = view.offsetOf(p) + 1;
    const char* q = view.find_char(',', afterP);
    if (q == nullptr) return afterP;
    const std::size_t atQ = view.offsetOf(q);
    const ParserStringRef between = view.slice(afterP, atQ);
    switch (record) {
        case NhsRecord::organisation:
            return allDigits(between) ? atQ + 1 : afterP;
        case NhsRecord::baby:
            return atQ + 1;
        case NhsRecord::patient:
            return between.size() > 2 && between[2] == ':' ? atQ + 1 : afterP;
    }
    return afterP;
}

bool parseNhsRecord(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                    NhsRecord record) {
    static const std::array<std::vector<const char*>, 3> kNames = {{
        {"organisationCode", "patientHospitalNumber", "organisationPrefix"},
        {"numberOfBabiesIndicator", "babyOfLastName", "babyOfFirstName"},
        {"lastName", "firstName", "dateOfBirth", "timeOfBirth"},
    }};
    const std::vector<const char*>& names = kNames[static_cast<std::size_t>(record)];
    const std::string raw = view.take_front(nhsRecordLength(view, record)).str();
    std::vector<std::string> pieces;
    splitByChar(raw, ',', pieces);
    nlohmann::json value;
    for (std::size_t i = 0; i < pieces.size() && i < names.size(); ++i) {
        value[names[i]] = std::move(pieces[i]);
    }
    builder.addParsedField(key, raw, std::move(value));
    return true;
}

}  // namespace

std::optional<std::string_view> charsetProblem(ParserStringRef view, Gs1Charset charset) {
    const ByteFlags& allowed = kAllowedBytes[static_cast<std::size_t>(charset)];
    for (const char c : view.view()) {
        const auto byte = static_cast<unsigned char>(c);
        // A zero byte has always meant "nothing found", so it passes unnoticed.
        if (byte != 0 && !allowed[byte]) {
            if (charset == Gs1Charset::numeric) return "field data must be numeric";
            return "unexpected character found";
        }
    }
    return std::nullopt;
}

std::size_t separatorDistance(ParserStringRef view, const Gs1AiParser& parser) {
    const std::string_view bytes = view.view();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if ((parser.allowMachineReadableCodes && byte == kGroupSeparator) ||
            (parser.allowHumanReadableCodes && byte == kOpenParenthesis)) {
            return i;
        }
    }
    return view.size();
}

std::string decodeUriComponent(ParserStringRef text, std::string_view allowed,
                               std::string& rejected) {
    const auto hexValue = [](unsigned char byte) -> int {
        if (isAsciiDigit(byte)) return byte - '0';
        if (byte >= 'a' && byte <= 'f') return byte - 'a' + 10;
        if (byte >= 'A' && byte <= 'F') return byte - 'A' + 10;
        return -1;
    };
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = static_cast<char>(text[i]);
        if (c == '+') {
            decoded.push_back(' ');
            continue;
        }
        if (c != '%') {
            decoded.push_back(c);
            continue;
        }
        // A stray "%" at the very end, or with one byte behind it, is dropped.
        if (text.size() - i < 3) break;
        const int high = hexValue(text[i + 1]);
        const int low = hexValue(text[i + 2]);
        const char byte = high < 0 || low < 0 ? '\0' : static_cast<char>(high * 16 + low);
        if (allowed.empty() || allowed.find(byte) != std::string_view::npos) {
            decoded.push_back(byte);
        } else {
            rejected.push_back(byte);
        }
        i += 2;
    }
    return decoded;
}

char gs1CheckDigit(ParserStringRef digits) {
    // Weights alternate 3 and 1 so that the digit next to the check digit weighs 3.
    int weight = digits.size() % 2 == 1 ? 3 : 1;
    int sum = 0;
    for (const char c : digits.view()) {
        sum += weight * (static_cast<unsigned char>(c) - '0');
        weight = 4 - weight;
    }
    return static_cast<char>('0' + (10 - sum % 10) % 10);
}

std::optional<std::string> checkDigitMismatch(char stated, char computed) {
    if (stated == computed) return std::nullopt;
    // The digit found in the data is the one called "expected".
    return std::string("check digit mismatch: expected ") + stated + " but got " + computed;
}

bool parseVariableText(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                       const Gs1AiParser& parser, std::size_t minimum, std::size_t maximum,
                       Gs1Charset charset, bool trim) {
    return parseVariableFrame(key, builder, view, parser, minimum, maximum, trim,
                              ByteRule{charset, nullptr}, ValueKind::text, std::string());
}

bool parseFixedText(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                    const Gs1AiParser& parser, std::size_t length, Gs1Charset charset) {
    return parseFixedFrame(key, builder, view, parser, length, ByteRule{charset, nullptr},
                           ValueKind::text, std::string());
}

bool parseVariableInteger(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                          const Gs1AiParser& parser, std::size_t minimum, std::size_t maximum,
                          Gs1Charset charset, bool trim, const std::string& fieldName) {
    return parseVariableFrame(key, builder, view, parser, minimum, maximum, trim,
                              ByteRule{charset, nullptr}, ValueKind::integer, fieldName);
}

bool parseFixedInteger(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                       const Gs1AiParser& parser, std::size_t length, Gs1Charset charset,
                       const std::string& fieldName) {
    return parseFixedFrame(key, builder, view, parser, length, ByteRule{charset, nullptr},
                           ValueKind::integer, fieldName);
}

bool parsePatternText(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                      const Gs1AiParser& parser, std::size_t minimum, std::size_t maximum,
                      const ParserRegex& pattern) {
    return parseVariableFrame(key, builder, view, parser, minimum, maximum, false,
                              ByteRule{Gs1Charset::cset82, &pattern}, ValueKind::text,
                              std::string());
}

bool parseEncodedText(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                      const Gs1AiParser& parser, std::size_t maximum) {
    if (parser.digitalLinkMode) {
        return parsePatternText(key, builder, view, parser, 1, maximum, anyText());
    }
    return parseVariableFrame(key, builder, view, parser, 1, maximum, false,
                              ByteRule{Gs1Charset::cset82, nullptr}, ValueKind::encoded,
                              std::string());
}

bool parseGtin(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
               const Gs1AiParser& parser) {
    return parseKey(key, builder, view, parser, KeyLayout{kGtinLength, 15, true}, gtinValue);
}

bool parseSscc(const std::string&, ResultBuilder& builder, ParserStringRef& view,
               const Gs1AiParser& parser) {
    static const std::string kSsccKey = "00";
    return parseKey(kSsccKey, builder, view, parser, KeyLayout{kSsccLength, 19, false}, ssccValue);
}

bool parseGsrn(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
               const Gs1AiParser&) {
    if (view.size() < kGsrnLength) {
        builder.addIssue(lengthIssue(view.size(), key));
        return false;
    }
    const ParserStringRef digits = view.take_front(kGsrnLength);
    if (const auto problem = charsetProblem(digits, Gs1Charset::numeric)) {
        builder.message = *problem;
        builder.addFailedField(key, digits.str(), builder.message, true);
        return !builder.failed;
    }
    const std::size_t last = kGsrnLength - 1;
    if (auto mismatch = checkDigitMismatch(static_cast<char>(digits[last]),
                                           gs1CheckDigit(digits.first(last)))) {
        builder.message = std::move(*mismatch);
        builder.addFailedField(key, digits.str(), builder.message, true);
        return !builder.failed;
    }
    nlohmann::json value = nlohmann::json::object();
    addMember(value, "GSRN", digits.view());
    builder.addParsedField(key, digits.str(), std::move(value));
    return true;
}

bool parseCheckedIdentifier(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                            const Gs1AiParser& parser, std::size_t length, Gs1Charset charset) {
    // The terminator may stand far behind the value; the builder remembers it.
    const std::size_t distance = rememberedSeparatorDistance(view, builder, parser);
    const bool terminated = distance < view.size();
    const bool endsAtGroupSeparator = terminated && view[distance] == kGroupSeparator;
    // In the machine form a complete value may run straight into the next AI.
    std::size_t found = length;
    if (terminated) {
        found = distance;
    } else if (parser.humanOnly()) {
        found = view.size();
    }
    if (found != length || view.size() < length) {
        found = std::min(found, view.size());
        builder.addFailedField(key, view.first(found).str(), lengthIssue(found, key), true);
        view = view.drop_front(found);
        return parser.humanOnly() && !builder.failed;
    }
    const ParserStringRef digits = view.first(length);
    std::optional<std::string> mismatch;
    if (length > 0) {
        mismatch = checkDigitMismatch(static_cast<char>(digits[length - 1]),
                                      gs1CheckDigit(digits.first(length - 1)));
    }
    if (mismatch) {
        builder.message = std::move(*mismatch);
        builder.addFailedField(key, digits.str(), builder.message, true);
        view = view.drop_front(length);
        return !builder.failed;
    }
    const bool goOn = parseFixedText(key, builder, view, parser, length, charset);
    if (endsAtGroupSeparator) dropGroupSeparator(view);
    return goOn;
}

bool parseDate(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
               const Gs1AiParser& parser) {
    if (view.size() < kDateLength) {
        builder.addIssue(lengthIssue(view.size(), key));
        return false;
    }
    const ParserStringRef rawView = view.first(kDateLength);
    std::string raw = rawView.str();
    // The century is not in the data: it comes from the window around today.
    const auto date = dateFromYYMMDD(rawView, builder.currentYear());
    if (const auto problem = charsetProblem(rawView, Gs1Charset::numeric)) {
        builder.message = *problem;
        builder.addFailedField(key, std::move(raw), builder.message, true);
        view = view.drop_front(kDateLength);
        return !builder.failed;
    }
    view = view.drop_front(kDateLength);
    if (!date.ok()) {
        builder.addFailedField(key, std::move(raw), date.error(), true);
        return !builder.failed;
    }
    Date value = date.value();
    // Day 00 stands for the last day of the month, as on best-before dates.
    if (value.day == 0) value.day = Date::getLastDayOfMonth(value.month, value.year);
    checkFieldOverflow(key, builder, view, parser);
    if (builder.failed) return false;
    builder.addParsedField(key, std::move(raw), dateToJson(value));
    return true;
}

bool parseDateTime(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                   const Gs1AiParser& parser) {
    if (view.size() < kDateTimeLength) {
        builder.addIssue(lengthIssue(view.size(), key));
        return false;
    }
    const ParserStringRef rawView = view.take_front(kDateTimeLength);
    const auto date = dateFromYYMMDD(rawView.first(kDateLength), builder.currentYear());
    const ParserStringRef time = rawView.drop_front(kDateLength);
    std::string failure;
    int hour = 0;
    int minute = 0;
    if (!date.ok()) {
        failure = date.error();
    } else if (!allDigits(time)) {
        failure = "time is not numeric";
    } else {
        hour = (time[0] - '0') * 10 + (time[1] - '0');
        minute = (time[2] - '0') * 10 + (time[3] - '0');
        if (hour > 23 || minute > 59) failure = "invalid time";
    }
    if (!failure.empty()) {
        builder.addFailedField(key, rawView.str(), failure, true);
        return !builder.failed;
    }
    checkFieldOverflow(key, builder, view, parser);
    if (builder.failed) return false;
    const Date& day = date.value();
    nlohmann::json value = nlohmann::json::object();
    addMember(value, "day", day.day);
    addMember(value, "hour", hour);
    addMember(value, "minute", minute);
    addMember(value, "month", day.month);
    addMember(value, "year", day.year);
    builder.addParsedField(key, rawView.str(), std::move(value));
    return true;
}

bool parseDecimal(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                  const Gs1AiParser& parser, std::size_t length) {
    if (view.size() < length) {
        builder.addIssue(lengthIssue(view.size(), key));
        return false;
    }
    const ParserStringRef raw = view.first(length);
    if (const auto problem = charsetProblem(raw, Gs1Charset::numeric)) {
        builder.message = *problem;
        builder.addFailedField(key, raw.str(), builder.message, true);
        view = view.drop_front(length);
        return !builder.failed;
    }
    // The last digit of the AI tells how many decimal places the value has.
    const char places = key.empty() ? '0' : key.back();
    const std::size_t decimals = isAsciiDigit(places) ? static_cast<std::size_t>(places - '0') : 0;
    std::string text;
    if (decimals == 0) {
        text = raw.view();
    } else if (decimals >= length) {
        text.reserve(decimals + 2);
        text += "0.";
        text.append(decimals - length, '0');
        text += raw.view();
    } else {
        text.reserve(length + 1);
        text += raw.first(length - decimals).view();
        text += '.';
        text += raw.drop_front(length - decimals).view();
    }
    stripLeadingZeros(text);
    view = view.drop_front(length);
    checkFieldOverflow(key, builder, view, parser);
    if (builder.failed) return false;
    builder.addParsedField(key, raw.str(), nlohmann::json(text));
    // The measure again under the family's name ("3103" gives "310x").
    std::string family = key.empty() ? std::string() : key.substr(0, key.size() - 1);
    family += 'x';
    nlohmann::json value(text);
    builder.addParsedField(std::move(family), std::move(text), std::move(value));
    return true;
}

bool parseVariableDecimal(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                          const Gs1AiParser& parser, std::size_t minimum, std::size_t maximum) {
    const std::size_t length = measureDecimal(view, parser);
    if (length < minimum) {
        builder.addIssue(lengthIssue(length, key));
        return !builder.failed;
    }
    if (length > maximum) builder.addIssue(overflowIssue(length - maximum, key));
    return parseDecimal(key, builder, view, parser, length);
}

bool parseCurrencyAmount(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                         const Gs1AiParser& parser, std::size_t minimum, std::size_t maximum) {
    std::size_t length = measureDecimal(view, parser);
    if (length < minimum) {
        // Left as a warning only: the walk goes on at the same place.
        builder.message = lengthIssue(length, key);
        return !builder.failed;
    }
    if (length > maximum) {
        builder.addIssue(overflowIssue(length - maximum, key));
        length = maximum;
    }
    if (length < kCurrencyLength) return !builder.failed;  // a minimum below 3 is no table's
    const std::string currency = view.take_front(kCurrencyLength).str();

    // The amount is read as a measure of its own and then re-labelled, each
    // field prefixed with the currency.
    ResultBuilder amount(parser.strictMode);
    amount.result.fields.reserve(2);
    if (!parseDecimal(key, amount, view, parser, length - kCurrencyLength)) {
        // A strict amount can only fail on its own fatal issue, which leaves no
        // message behind; pass that issue's text on rather than an empty one.
        const bool fromError = amount.message.empty() && amount.result.error;
        builder.addIssue(fromError ? amount.result.error->message : amount.message);
        return false;
    }
    for (ParsedField& field : amount.result.fields) {
        if (!field.issues.empty()) {
            builder.addIssue(field.issues.front()->message);
            if (builder.failed) return false;
        }
        std::string raw = currency + field.rawString;
        nlohmann::json value;
        if (!field.name.empty() && field.name.back() == 'x') {
            value = nlohmann::json::object();
            addMember(value, "amount", std::move(field.parsed));
            addMember(value, "currencyCode", currency);
        } else {
            value = raw;
        }
        builder.addParsedField(std::move(field.name), std::move(raw), std::move(value));
    }
    return !builder.failed;
}

bool parseCountryPostalCode(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                            const Gs1AiParser& parser) {
    const std::size_t length = separatorDistance(view, parser);
    const bool wholeView = length == view.size();
    const ParserStringRef rawView = view.take_front(length);
    const std::string raw = rawView.str();
    if (length > kMaximumCountryPostalLength) {
        builder.addFailedField(key, raw, lengthIssue(length, key), true);
        return false;
    }
    if (length < kCountryLength) {
        builder.addIssue("string too short to hold country code");
        return false;
    }
    const ParserStringRef country = rawView.first(kCountryLength);
    const ParserStringRef postalCode = rawView.drop_front(kCountryLength);
    // The country has its own words and leaves no validator message behind.
    if (charsetProblem(country, Gs1Charset::numeric)) {
        builder.addFailedField(key, raw, "country code data must be numeric", true);
        return !builder.failed;
    }
    if (const auto problem = charsetProblem(postalCode, Gs1Charset::cset82)) {
        // Lax: the field is listed twice, once with each text. Strict: the
        // second text replaces the first as the fatal one.
        builder.message = *problem;
        builder.addFailedField(key, raw, "unexpected character found in postal code", true);
        builder.addFailedField(key, raw, builder.message, true);
        return !builder.failed;
    }
    nlohmann::json value = nlohmann::json::object();
    addMember(value, "countryCode", country.view());
    addMember(value, "postalCode", postalCode.view());
    builder.addParsedField(key, raw, std::move(value));
    if (!wholeView) dropGroupSeparator(view);
    return true;
}

bool parseCountryList(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                      const Gs1AiParser& parser, std::size_t maximum) {
    const std::size_t length = separatorDistance(view, parser);
    const bool wholeView = length == view.size();
    const std::string raw = view.take_front(length).str();
    if (length > maximum) {
        builder.addFailedField(key, raw, lengthIssue(length, key), true);
        return false;
    }
    if (length % kCountryLength != 0) {
        builder.addFailedField(
            key, raw, lengthIssue(length, key) + ": the field must contain 3-digit country codes",
            true);
        return false;
    }
    if (const auto problem = charsetProblem(raw, Gs1Charset::numeric)) {
        builder.message = *problem;
        builder.addFailedField(key, raw, builder.message, true);
        return !builder.failed;
    }
    nlohmann::json countries = nlohmann::json::array();
    countries.get_ref<nlohmann::json::array_t&>().reserve(length / kCountryLength);
    for (std::size_t at = 0; at < length; at += kCountryLength) {
        countries.emplace_back(std::string_view(raw).substr(at, kCountryLength));
    }
    builder.addParsedField(key, raw, std::move(countries));
    if (!wholeView) dropGroupSeparator(view);
    return true;
}

bool parseBoolean(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                  const Gs1AiParser& parser) {
    std::size_t length = rememberedSeparatorDistance(view, builder, parser);
    // Without a terminator the machine form can only mean the single flag byte.
    if (length == view.size() && !parser.humanOnly() && !view.empty()) length = 1;
    if (length == 0) {
        builder.addFailedField(key, "", "no value provided by empty string", true);
        return !builder.failed;
    }
    const std::string flag = view.take_front(1).str();
    if (length != 1) {
        builder.addIssue(lengthIssue(length, key));
        view = view.drop_front(length - 1);
    }
    if (flag != "0" && flag != "1") {
        builder.addFailedField(key, flag, "'0' or '1' required", true);
    } else {
        builder.addParsedField(key, flag, flag == "1");
    }
    return !builder.failed;
}

bool parseTemperature(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                      const Gs1AiParser&) {
    if (view.size() < kTemperatureLength) {
        builder.addIssue("string too short");
        return false;
    }
    // A minus sign may follow the six digits; a plus sign is never written.
    const bool negative = view.size() > kTemperatureLength && view[kTemperatureLength] == '-';
    std::string text(view.take_front(4).view());
    text += '.';
    text += view.take_front(2).view();
    stripLeadingZeros(text);
    if (negative) {
        text.insert(0, 1, '-');
        view = view.drop_front(1);
    }
    builder.addParsedField(key, text, text);
    return true;
}

bool parseInternal(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                   const Gs1AiParser& parser) {
    switch (parser.standardExtension) {
        case Gs1AiStandardExtension::none:
            break;
        case Gs1AiStandardExtension::nhs:
            if (key == "91") return parseNhsRecord(key, builder, view, NhsRecord::organisation);
            if (key == "92") return parseNhsRecord(key, builder, view, NhsRecord::baby);
            if (key == "93") return parseNhsRecord(key, builder, view, NhsRecord::patient);
            break;
        default:
            QVX_GUARD(false, "unknown Gs1Ai standard extension");
    }
    return parseVariableText(key, builder, view, parser, 1, 90, Gs1Charset::cset82, false);
}

}  // namespace parser
