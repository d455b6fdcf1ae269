#include "hibc/hibc_tools.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "common/text.h"
#include "qvx/contract.h"

namespace parser {

namespace {

// The characters in the order of their check values, 0 to 42. The order
// follows the Code 39 modulo-43 check character table.
constexpr std::string_view kCheckAlphabet = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ-. $/+%";
static_assert(kCheckAlphabet.size() == 43);

constexpr std::array<std::uint8_t, 256> buildCheckValues() {
    std::array<std::uint8_t, 256> values{};  // bytes outside the set count 0
    for (std::size_t i = 0; i < kCheckAlphabet.size(); ++i) {
        values[static_cast<unsigned char>(kCheckAlphabet[i])] = static_cast<std::uint8_t>(i);
    }
    return values;
}

constexpr std::array<std::uint8_t, 256> kCheckValues = buildCheckValues();

// Days in each month, common and leap years.
constexpr std::array<int, 12> kCommonMonths = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
constexpr std::array<int, 12> kLeapMonths = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// The value of a run of digits already known to be digits.
int digitsValue(ParserStringRef text, std::size_t from, std::size_t count) {
    int value = 0;
    for (std::size_t i = from; i < from + count; ++i) value = value * 10 + (text[i] - '0');
    return value;
}

// Day `dayOfYear` of a two-digit year as month and day. The year 00 is taken
// as a common year: without a century it cannot be told from 2000 or 1900,
// and labels of that age are not expected.
bool setDayOfYear(int year, int dayOfYear, nlohmann::json& date) {
    const bool leap = year != 0 && year % 4 == 0;
    const std::array<int, 12>& months = leap ? kLeapMonths : kCommonMonths;
    if (dayOfYear < 1 || dayOfYear > (leap ? 366 : 365)) return false;
    int month = 0;
    while (dayOfYear > months[static_cast<std::size_t>(month)]) {
        dayOfYear -= months[static_cast<std::size_t>(month)];
        ++month;
    }
    addMember(date, "day", dayOfYear);
    addMember(date, "month", month + 1);
    return true;
}

}  // namespace

bool isKnownHIBCDateType(int type) noexcept {
    return (type >= 0 && type <= 7) || type == static_cast<int>(HIBCDateType::YYYYMMDD);
}

int hibcDateLength(int type) noexcept {
    switch (type) {
        case 0:
        case 1:
            return 3;
        case 2:
        case 3:
            return 6;
        case 4:
            return 8;
        case 5:
            return 5;
        case 6:
            return 7;
        case 7:
            return 0;
        case 100:
            return 8;
        default:
            return 3;
    }
}

bool decodeHIBCDate(ParserStringRef text, HIBCDateType type, nlohmann::json& date) {
    const int flag = static_cast<int>(type);
    QVX_GUARD(isKnownHIBCDateType(flag), "illegal HIBCDateType: " + std::to_string(flag));
    if (text.size() != static_cast<std::size_t>(hibcDateLength(flag))) return false;
    if (type == HIBCDateType::NoDate) {
        date = nullptr;
        return true;
    }
    if (!isInCharset(text, Charset::Numeric)) return false;

    // Members go in in key order: day, hour, month, year.
    date = nlohmann::json::object();
    switch (type) {
        case HIBCDateType::MonthYearLow:
        case HIBCDateType::MonthYearHigh:
            addMember(date, "day", 1);
            addMember(date, "month", flag * 10 + digitsValue(text, 0, 1));
            addMember(date, "year", digitsValue(text, 1, 2));
            return true;
        case HIBCDateType::MMDDYY:
            addMember(date, "day", digitsValue(text, 2, 2));
            addMember(date, "month", digitsValue(text, 0, 2));
            addMember(date, "year", digitsValue(text, 4, 2));
            return true;
        case HIBCDateType::YYMMDD:
        case HIBCDateType::YYMMDDHH:
            addMember(date, "day", digitsValue(text, 4, 2));
            if (type == HIBCDateType::YYMMDDHH) addMember(date, "hour", digitsValue(text, 6, 2));
            addMember(date, "month", digitsValue(text, 2, 2));
            addMember(date, "year", digitsValue(text, 0, 2));
            return true;
        case HIBCDateType::YYJJJ:
        case HIBCDateType::YYJJJHH: {
            const int year = digitsValue(text, 0, 2);
            if (!setDayOfYear(year, digitsValue(text, 2, 3), date)) return false;
            if (type == HIBCDateType::YYJJJHH) addMember(date, "hour", digitsValue(text, 5, 2));
            addMember(date, "year", year);
            return true;
        }
        case HIBCDateType::YYYYMMDD:
            addMember(date, "day", digitsValue(text, 6, 2));
            addMember(date, "month", digitsValue(text, 4, 2));
            addMember(date, "year", digitsValue(text, 0, 4));
            return true;
        case HIBCDateType::NoDate:
            break;
    }
    return true;
}

int hibcCharValue(unsigned char byte) noexcept {
    return kCheckValues[byte];
}

int hibcCheckValue(ParserStringRef text) noexcept {
    // At most 42 a byte: a size_t sum cannot wrap before the modulo.
    std::size_t sum = 0;
    for (const char c : text.view()) sum += kCheckValues[static_cast<unsigned char>(c)];
    return static_cast<int>(sum % 43);
}

}  // namespace parser
