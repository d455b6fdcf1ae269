#include "bcbp/bcbp_field_parsers.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "common/date.h"
#include "common/text.h"

namespace parser {

namespace {

using nlohmann::json;

constexpr const char* kNotNumeric = "Should contain only numerical characters.";
constexpr const char* kOnlyDigits = "Only numerical characters are permitted in this field.";

template <class Test>
bool allOf(std::string_view text, Test test) {
    return std::all_of(text.begin(), text.end(),
                       [&test](char c) { return test(static_cast<unsigned char>(c)); });
}

bool isBlank(unsigned char c) {
    return c == ' ';
}

// Every byte passes and there is at least one.
template <class Test>
bool nonEmptyAllOf(std::string_view text, Test test) {
    return !text.empty() && allOf(text, test);
}

ParserStringRef trimBlanks(ParserStringRef text) {
    std::string_view kept = text.view();
    const std::size_t first = kept.find_first_not_of(' ');
    if (first == std::string_view::npos) return ParserStringRef(text.end(), text.end());
    kept = kept.substr(first, kept.find_last_not_of(' ') - first + 1);
    return ParserStringRef(kept);
}

int threeDigits(std::string_view text) {
    return (text[0] - '0') * 100 + (text[1] - '0') * 10 + (text[2] - '0');
}

// The strict test of an item, where the options and the pass ask for one.
bool passesStrictTest(const PassItem& item, const PassContext& context, ParserStringRef slice) {
    const bool strict = context.strict && !(item.argument.laxOnItinerary && context.itinerary);
    return !strict || hasPassCharacters(slice, item.argument.characters);
}

// One group of tags: a base, a first number and a count of further tags.
// Returns the message when the group cannot be read, else null.
const char* readBaggageGroup(std::string_view group, int version, json::array_t& tags) {
    const ParserStringRef base = trimWhitespace(ParserStringRef(group.substr(0, 6)));
    if (base.empty()) return "tag base is empty";
    const std::string_view first = group.substr(6, 4);
    const std::string_view count = group.substr(10, 3);
    if (!allOf(first, isAsciiDigit) || !allOf(count, isAsciiDigit)) return "tag is not numeric";
    const int start = (first[0] - '0') * 1000 + threeDigits(first.substr(1));
    // Up to version 6 the count tells the bags that follow the first one.
    const int tagCount = threeDigits(count) + (version < 7 ? 1 : 0);
    for (int offset = 0; offset < tagCount; ++offset) {
        // The number is printed with at least four digits.
        const int number = start + offset;
        std::string tag(base.view());
        std::array<char, 12> digits{};
        std::size_t length = 0;
        for (int rest = number; rest > 0 || length < 4; rest /= 10) {
            digits[length++] = static_cast<char>('0' + rest % 10);
        }
        tag.append(std::make_reverse_iterator(digits.begin() + static_cast<std::ptrdiff_t>(length)),
                   digits.rend());
        tags.emplace_back(std::move(tag));
    }
    return nullptr;
}

}  // namespace

std::string bcbpFieldError(const std::string& field, const std::string& message) {
    return "BCBP parsing error; '" + field + "'. " + message;
}

bool hasPassCharacters(ParserStringRef slice, PassCharacters characters) {
    const std::string_view text = slice.view();
    switch (characters) {
        case PassCharacters::Any:
            return true;
        case PassCharacters::Printable:
            return nonEmptyAllOf(text, [](unsigned char c) { return c >= ' ' && c <= '~'; });
        case PassCharacters::Digits:
            return nonEmptyAllOf(text, isAsciiDigit);
        case PassCharacters::DigitsUpperBlank:
            return nonEmptyAllOf(text, [](unsigned char c) {
                return isAsciiDigit(c) || isAsciiUpper(c) || c == ' ';
            });
        case PassCharacters::UpperOrBlanks:
            return nonEmptyAllOf(text, isAsciiUpper) || nonEmptyAllOf(text, isBlank);
        case PassCharacters::Seat:
            if (text.size() == 4 && allOf(text.substr(0, 3), isAsciiDigit) &&
                (isAsciiUpper(static_cast<unsigned char>(text[3])) ||
                 isAsciiLower(static_cast<unsigned char>(text[3])))) {
                return true;
            }
            if (text.size() == 4 &&
                allOf(text, [](unsigned char c) { return isAsciiUpper(c) || c == ' '; })) {
                return true;
            }
            return nonEmptyAllOf(text, isBlank);
    }
    return false;
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

// An item that the section leaves no room for is listed with no value.
bool addAbsent(const PassItem& item, FieldTarget& target) {
    target.add(item.name, ParserStringRef(), nullptr);
    return true;
}

bool readPassText(const PassItem& item, ParserStringRef& text, std::size_t width,
                  const PassContext& context, FieldTarget& target) {
    if (width == 0) return addAbsent(item, target);
    const ParserStringRef slice = text.take_front(width);
    if (!passesStrictTest(item, context, slice)) {
        return target.fail(bcbpFieldError(item.name, "content failed strict check"));
    }
    const ParserStringRef kept = trimBlanks(slice);
    target.add(item.name, slice, kept.empty() ? json(nullptr) : json(kept.str()));
    return true;
}

bool readPassFlag(const PassItem& item, ParserStringRef& text, std::size_t width,
                  const PassContext& /*context*/, FieldTarget& target) {
    if (width == 0) return addAbsent(item, target);
    const ParserStringRef slice = text.take_front(width);
    target.add(item.name, slice, slice.size() == 1 && slice.front() == 'Y');
    return true;
}

bool readPassengerName(const PassItem& item, ParserStringRef& text, std::size_t width,
                       const PassContext& context, FieldTarget& target) {
    if (width == 0) return addAbsent(item, target);
    const ParserStringRef slice = text.take_front(width);
    if (!passesStrictTest(item, context, slice)) {
        return target.fail(bcbpFieldError(item.name, "content failed strict check"));
    }
    json names = splitToJsonArray(trimWhitespace(slice), '/', true);
    if (!names.is_array() || names.size() < 2) {
        return target.fail(
            bcbpFieldError(item.name, "Only one name was recognized; two required."));
    }
    target.add(item.name, slice, std::move(names));
    return true;
}

bool readPassCount(const PassItem& item, ParserStringRef& text, std::size_t width,
                   const PassContext& /*context*/, FieldTarget& target) {
    if (width == 0) return addAbsent(item, target);
    const ParserStringRef slice = text.take_front(width);
    std::string_view digits = slice.view();
    while (!digits.empty() && digits.back() == ' ') digits.remove_suffix(1);
    const std::optional<int> value = readDecimalInt(ParserStringRef(digits));
    if (!value) return target.fail(bcbpFieldError(item.name, kNotNumeric));
    target.add(item.name, slice, *value);
    return true;
}

bool readPassDate(const PassItem& item, ParserStringRef& text, std::size_t width,
                  const PassContext& context, FieldTarget& target) {
    const bool required = !(item.argument.laxOnItinerary && context.itinerary);
    width = std::min(width, text.size());
    const ParserStringRef whole = text.first(width);
    const std::string_view bytes = whole.view();
    if (!required &&
        (allOf(bytes, [](unsigned char c) { return c == '0'; }) || allOf(bytes, isBlank))) {
        text = text.drop_front(width);
        return true;
    }
    std::string warning;
    std::size_t digitsWidth = width;
    if (!allOf(bytes, isAsciiDigit) || bytes.empty()) {
        if (trimWhitespace(whole).empty()) {
            text = text.drop_front(width);
            target.add(item.name, whole, nullptr, "Date field is blank.");
            return true;
        }
        if (width == 4 && bytes[3] == ' ') {
            // The blank stays part of the item, so later items keep their places.
            digitsWidth = 3;
            warning =
                "Date field does not include year digit as required by BCBP "
                "specifications. Ignoring year field.";
        }
        if (!nonEmptyAllOf(bytes.substr(0, digitsWidth), isAsciiDigit)) {
            return target.fail(bcbpFieldError(item.name, kOnlyDigits));
        }
    }
    if (digitsWidth != 3 && digitsWidth != 4) {
        return target.fail(bcbpFieldError(item.name, kOnlyDigits));
    }
    std::string_view digits = bytes.substr(0, digitsWidth);
    int year = context.referenceYear;
    if (digitsWidth == 4) {
        const int digit = digits[0] - '0';
        int candidate = year - year % 10 + digit;
        // A pass is printed shortly before the flight: the year lies
        // from four years back to five years ahead.
        if (year - candidate >= 5) candidate += 10;
        year = candidate;
        digits.remove_prefix(1);
    }
    const int dayCount = threeDigits(digits);
    if (warning.empty() && (dayCount == 0 || dayCount >= 367)) {
        warning = "Illegal day count in date '" + std::to_string(dayCount) +
                  "'. Must be greater than 0 and less than or equal to 366.";
    }
    const Date date = Date{year, 1, 0}.addDays(dayCount);
    text = text.drop_front(width);
    target.add(item.name, whole, dateToJson(date), warning);
    return true;
}

bool readBaggageTags(const PassItem& item, ParserStringRef& text, std::size_t width,
                     const PassContext& context, FieldTarget& target) {
    constexpr std::size_t kGroupWidth = 13;
    if (width == 0) return addAbsent(item, target);
    if (text.size() < kGroupWidth) {
        return target.fail(bcbpFieldError(item.name, "Underflow parsing baggage tags"));
    }
    const std::size_t maxGroups = context.version < 4 ? 1 : 3;
    const char* begin = text.begin();
    json tags = json::array();
    std::array<const char*, 3> problems{};
    std::size_t problemCount = 0;
    for (std::size_t group = 0; group < maxGroups && text.size() >= kGroupWidth; ++group) {
        const char* problem = readBaggageGroup(text.take_front(kGroupWidth).view(), context.version,
                                               tags.get_ref<json::array_t&>());
        if (problem != nullptr) problems[problemCount++] = problem;
    }
    ParsedField* field =
        target.add(item.name, ParserStringRef(begin, text.begin()), std::move(tags));
    if (field != nullptr) {
        for (std::size_t i = 0; i < problemCount; ++i) {
            field->issues.push_back(ParserIssue::generic(problems[i]));
        }
    }
    return true;
}

}  // namespace parser
