#include "bcbp/bcbp_field_parsers.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <utility>
#include <vector>

#include "common/text.h"

namespace parser {

namespace {

using nlohmann::json;

constexpr const char* kPrintable = "[ -~]+";
constexpr const char* kDigits = "[[:digit:]]+";
constexpr const char* kNotNumeric = "Should contain only numerical characters.";

// Built on first use and read-only afterwards. Some rows (the numeric and
// date items, the fast-track flag and the baggage tags) describe fields whose
// parsers never run the strict test; they are kept so that the table lists
// every item of the record.
const std::map<std::string, ParserRegex>& strictPatterns() {
    static const std::map<std::string, ParserRegex> patterns = [] {
        const std::vector<std::pair<const char*, const char*>> rows = {
            {"formatCode", kPrintable},
            {"passengerName", kPrintable},
            {"electronicTicketIndicator", kPrintable},
            {"sourceOfCheckIn", kPrintable},
            {"sourceofBoardingPassIssuance", kPrintable},
            {"versionNumber", kPrintable},
            {"documentType", kPrintable},
            {"airlineDesignatorOfIssuer", kPrintable},
            {"baggageTagLicensePlateNumbers", kPrintable},
            {"operatingCarrierPNR", kPrintable},
            {"operatingCarrierDesignator", kPrintable},
            {"flightNumber", kPrintable},
            {"checkInSequenceNumber", kPrintable},
            {"passengerStatus", kPrintable},
            {"serialNumber", kPrintable},
            {"selecteeIndicator", kPrintable},
            {"internationalDocumentationVerification", kPrintable},
            {"marketingCarrierDesignator", kPrintable},
            {"frequentFlyerAirlineDesignator", kPrintable},
            {"frequentFlyerNumber", kPrintable},
            {"idIndicator", kPrintable},
            {"freeBaggageAllowance", kPrintable},
            {"airlineInfo", kPrintable},
            {"securityDataType", kPrintable},
            {"securityData", kPrintable},
            {"numberOfLegsEncoded", kDigits},
            {"flightDate", kDigits},
            {"airlineNumericCode", kDigits},
            {"passengerDescription", "[0-9A-Z ]+"},
            {"dateOfIssuance", "([[:digit:]]+| +)"},
            {"fromAirport", "([A-Z]+| +)"},
            {"toAirport", "([A-Z]+| +)"},
            {"compartmentCode", "([A-Z]+| +)"},
            {"seatNumber", "([[:digit:]]{3}[a-zA-Z]{1}|[A-Z ]{4}| +)"},
            {"fastTrack", "[ YN]{1}"},
        };
        std::map<std::string, ParserRegex> compiled;
        for (const auto& [name, pattern] : rows) {
            auto regex = ParserRegex::compile(pattern, ParserRegexDialect::ECMAScript);
            QVX_REQUIRE(regex.has_value(), "precondition failed: strict pattern compiles");
            compiled.emplace(name, std::move(*regex));
        }
        return compiled;
    }();
    return patterns;
}

bool allOf(ParserStringRef text, bool (*test)(unsigned char)) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!test(text[i])) return false;
    }
    return true;
}

ParserStringRef trimBlanks(ParserStringRef text) {
    while (!text.empty() && text.front() == ' ') text = text.drop_front(1);
    while (!text.empty() && text.back() == ' ') text = text.drop_back(1);
    return text;
}

int threeDigits(ParserStringRef text) {
    return (text[0] - '0') * 100 + (text[1] - '0') * 10 + (text[2] - '0');
}

BcbpFieldOutcome failure(const std::string& name, const std::string& message) {
    return BcbpFieldOutcome::failure(bcbpFieldError(name, message));
}

// One group of tags: a base, a first number and a count of further tags.
// Returns the message when the group cannot be read.
std::string readBaggageGroup(ParserStringRef group, int version, json& tags) {
    const ParserStringRef base = trimWhitespace(group.first(6));
    if (base.empty()) return "tag base is empty";
    const ParserStringRef first = group.slice(6, 10);
    const ParserStringRef count = group.slice(10, 13);
    if (!isInCharset(first, Charset::Numeric) || !isInCharset(count, Charset::Numeric))
        return "tag is not numeric";
    const int start = (first[0] - '0') * 1000 + threeDigits(first.drop_front(1));
    // Up to version 6 the count tells the bags that follow the first one.
    const int tagCount = threeDigits(count) + (version < 7 ? 1 : 0);
    const std::string prefix = base.str();
    for (int offset = 0; offset < tagCount; ++offset) {
        std::array<char, 16> number{};
        std::snprintf(number.data(), number.size(), "%04d", start + offset);
        tags.push_back(prefix + number.data());
    }
    return std::string();
}

// The one closure of a field read from a slice: `fn(name, slice, width)`
// is called in place, so a field costs one std::function, not two.
template <typename SliceFn>
BcbpFieldParser sliceField(std::string name, bool strict, SliceFn fn) {
    // Looked up once here rather than at every call of the closure.
    const ParserRegex* pattern = strict ? bcbpStrictPattern(name) : nullptr;
    return [name = std::move(name), pattern, fn = std::move(fn)](
               ParserStringRef& text, std::size_t width) -> BcbpFieldOutcome {
        if (width == 0) return BcbpFieldOutcome::success(ParsedField(name, "", nullptr));
        const ParserStringRef slice = text.take_front(width);
        if (pattern != nullptr && !pattern->isFullMatch(slice)) {
            return failure(name, "content failed strict check");
        }
        return fn(name, slice, width);
    };
}

}  // namespace

std::string bcbpFieldError(const std::string& field, const std::string& message) {
    return "BCBP parsing error; '" + field + "'. " + message;
}

const ParserRegex* bcbpStrictPattern(const std::string& field) {
    const auto& patterns = strictPatterns();
    const auto it = patterns.find(field);
    return it == patterns.end() ? nullptr : &it->second;
}

std::optional<long> readHexNumber(ParserStringRef text) {
    // Two to a few characters in practice; anything longer cannot fit a long.
    std::array<char, 32> buffer{};
    if (text.empty() || text.size() >= buffer.size()) return std::nullopt;
    std::copy(text.begin(), text.end(), buffer.begin());
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(buffer.data(), &end, 16);
    if (errno == ERANGE || end != buffer.data() + text.size()) return std::nullopt;
    return value;
}

BcbpFieldParser extractField(std::string name, bool strict, BcbpSliceParser fn) {
    return sliceField(std::move(name), strict,
                      [fn = std::move(fn)](const std::string&, ParserStringRef slice,
                                           std::size_t width) { return fn(slice, width); });
}

BcbpFieldParser textFieldParser(std::string name, bool strict) {
    return sliceField(
        std::move(name), strict,
        [](const std::string& fieldName, ParserStringRef slice, std::size_t) {
            const ParserStringRef trimmed = trimBlanks(slice);
            json value = trimmed.empty() ? json(nullptr) : json(trimmed.str());
            return BcbpFieldOutcome::success(ParsedField(fieldName, slice.str(), std::move(value)));
        });
}

BcbpFieldParser booleanFieldParser(std::string name) {
    return sliceField(
        std::move(name), false,
        [](const std::string& fieldName, ParserStringRef slice, std::size_t) {
            const bool yes = slice.size() == 1 && slice[0] == 'Y';
            return BcbpFieldOutcome::success(ParsedField(fieldName, slice.str(), json(yes)));
        });
}

BcbpFieldParser lastNameFirstNameParser(std::string name, bool strict, char separator) {
    return sliceField(
        std::move(name), strict,
        [separator](const std::string& fieldName, ParserStringRef slice, std::size_t) {
            json names = splitToJsonArray(trimWhitespace(slice), separator, true);
            if (!names.is_array() || names.size() < 2) {
                return failure(fieldName, "Only one name was recognized; two required.");
            }
            return BcbpFieldOutcome::success(ParsedField(fieldName, slice.str(), std::move(names)));
        });
}

BcbpFieldParser intFieldParser(std::string name, bool strict) {
    // The strict flag only refuses blanks; there is no character pattern to test.
    return sliceField(
        std::move(name), false,
        [strict](const std::string& fieldName, ParserStringRef slice, std::size_t) {
            ParserStringRef digits = slice;
            while (!digits.empty() && digits.back() == ' ') digits = digits.drop_back(1);
            if (!strict && digits.empty()) {
                return BcbpFieldOutcome::success(ParsedField(fieldName, slice.str(), nullptr));
            }
            json value = intFieldValue(digits);
            if (value.is_null()) return failure(fieldName, kNotNumeric);
            return BcbpFieldOutcome::success(ParsedField(fieldName, slice.str(), std::move(value)));
        });
}

BcbpFieldParser hexIntFieldParser(std::string name) {
    return sliceField(
        std::move(name), false,
        [](const std::string& fieldName, ParserStringRef slice, std::size_t) {
            const std::optional<long> value = readHexNumber(slice);
            if (!value) {
                if (slice.empty()) {
                    return BcbpFieldOutcome::success(ParsedField(fieldName, "", nullptr));
                }
                return failure(fieldName, kNotNumeric);
            }
            return BcbpFieldOutcome::success(ParsedField(fieldName, slice.str(), json(*value)));
        });
}

BcbpFieldParser dateFieldParser(std::string name, Date referenceDate, bool required) {
    return [name = std::move(name), referenceDate, required](
               ParserStringRef& text, std::size_t width) -> BcbpFieldOutcome {
        width = std::min(width, text.size());
        const ParserStringRef whole = text.first(width);
        if (!required && (allOf(whole, [](unsigned char c) { return c == '0'; }) ||
                          allOf(whole, [](unsigned char c) { return c == ' '; }))) {
            text = text.drop_front(width);
            return BcbpFieldOutcome::success(ParsedField("", whole.str(), nullptr));
        }
        std::string warning;
        std::size_t digitsWidth = width;
        if (!isInCharset(whole, Charset::Numeric)) {
            if (trimWhitespace(whole).empty()) {
                text = text.drop_front(width);
                return BcbpFieldOutcome::success(
                    ParsedField(name, whole.str(), nullptr, "Date field is blank."));
            }
            if (width == 4 && whole[3] == ' ') {
                // The blank stays part of the item, so later items keep their places.
                digitsWidth = 3;
                warning =
                    "Date field does not include year digit as required by BCBP "
                    "specifications. Ignoring year field.";
            }
            if (!isInCharset(whole.first(digitsWidth), Charset::Numeric)) {
                return failure(name, "Only numerical characters are permitted in this field.");
            }
        }
        if (digitsWidth != 3 && digitsWidth != 4) {
            return failure(name, "Only numerical characters are permitted in this field.");
        }
        ParserStringRef digits = whole.first(digitsWidth);
        int year = referenceDate.year;
        if (digitsWidth == 4) {
            const int digit = digits[0] - '0';
            int candidate = year - year % 10 + digit;
            // A pass is printed shortly before the flight: the year lies
            // from four years back to five years ahead.
            if (year - candidate >= 5) candidate += 10;
            year = candidate;
            digits = digits.drop_front(1);
        }
        const int dayCount = threeDigits(digits);
        if (warning.empty() && (dayCount == 0 || dayCount >= 367)) {
            warning = "Illegal day count in date '" + std::to_string(dayCount) +
                      "'. Must be greater than 0 and less than or equal to 366.";
        }
        const Date date = Date{year, 1, 0}.addDays(dayCount);
        text = text.drop_front(width);
        return BcbpFieldOutcome::success(ParsedField(name, whole.str(), dateToJson(date), warning));
    };
}

BcbpFieldParser baggageTagFieldParser(std::string name, int version) {
    return [name = std::move(name), version](ParserStringRef& text,
                                             std::size_t width) -> BcbpFieldOutcome {
        constexpr std::size_t kGroupWidth = 13;
        if (width == 0) return BcbpFieldOutcome::success(ParsedField(name, "", nullptr));
        if (text.size() < kGroupWidth) return failure(name, "Underflow parsing baggage tags");
        const std::size_t maxGroups = version < 4 ? 1 : 3;
        const char* begin = text.begin();
        json tags = json::array();
        std::vector<std::string> problems;
        for (std::size_t group = 0; group < maxGroups && text.size() >= kGroupWidth; ++group) {
            std::string problem = readBaggageGroup(text.take_front(kGroupWidth), version, tags);
            if (!problem.empty()) problems.push_back(std::move(problem));
        }
        ParsedField field(name, std::string(begin, text.begin()), std::move(tags));
        for (auto& problem : problems) field.issues.push_back(ParserIssue::generic(problem));
        return BcbpFieldOutcome::success(std::move(field));
    };
}

}  // namespace parser
