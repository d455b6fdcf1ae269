#include "common/date.h"

#include <array>
#include <atomic>
#include <ctime>
#include <mutex>
#include <string_view>

#include "common/text.h"

namespace parser {

namespace {

// Sums are formed in 64 bits so that no field value, however absurd, can
// overflow; the narrowing back keeps the low 32 bits, which only matters for
// dates that are garbage anyway.
std::int32_t narrow(std::int64_t value) {
    return static_cast<std::int32_t>(value);
}

std::mutex gOverrideMutex;
std::optional<Date> gOverrideDate;
// Lets the clock path skip the mutex while no test has fixed the date.
std::atomic<bool> gOverrideSet{false};

// The input may hold any bytes; the message must stay plain ASCII.
std::string generalFailure(ParserStringRef input, const char* format) {
    std::string shown;
    shown.reserve(input.size());
    for (std::size_t i = 0; i < input.size(); ++i) {
        const unsigned char byte = input[i];
        shown.push_back(byte >= 0x80 ? '*' : static_cast<char>(byte));
    }
    return "Invalid date: string \"" + shown + "\" can not be converted to " + format + " format";
}

bool partsInRange(std::optional<int> year, std::optional<int> month, std::optional<int> day) {
    return isIntInRange(year, 0, 10000) && isIntInRange(month, 1, 12) && isIntInRange(day, 0, 31);
}

}  // namespace

bool Date::isValid() const {
    return fromJulianDayNumber(julianDayNumber()) == *this;
}

bool Date::isLeapYear(int year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int Date::getLastDayOfMonth(int month, int year) {
    static constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month < 1 || month > 12) return 0;
    if (month == 2 && isLeapYear(year)) return 29;
    return kDays[static_cast<std::size_t>(month - 1)];
}

int Date::getCurrentYear() {
    return getCurrentDate().year;
}

Date Date::getCurrentDate() {
    if (gOverrideSet.load(std::memory_order_acquire)) {
        const std::lock_guard<std::mutex> lock(gOverrideMutex);
        if (gOverrideDate) return *gOverrideDate;
    }
    // Whole seconds are all a date needs, and the coarse clock is the cheap one.
    const std::time_t now = std::time(nullptr);
    // Converting to local time is dear, and within one second the date stays.
    thread_local std::time_t convertedSecond = -1;
    thread_local Date converted;
    if (now != convertedSecond) {
        std::tm local{};
        QVX_REQUIRE(localtime_r(&now, &local) != nullptr,
                    "precondition failed: local time available");
        converted = Date{local.tm_year + 1900, local.tm_mon + 1, local.tm_mday};
        convertedSecond = now;
    }
    return converted;
}

void Date::overrideCurrentDate(std::optional<Date> date) {
    const std::lock_guard<std::mutex> lock(gOverrideMutex);
    gOverrideDate = date;
    gOverrideSet.store(date.has_value(), std::memory_order_release);
}

void Date::setDayToLastDayOfMonthIfUndefined() {
    if (day == 0) day = getLastDayOfMonth(month, year);
}

Date Date::addYears(int years) const {
    return Date{narrow(std::int64_t{year} + years), month, day};
}

// A sum that lands on a multiple of 12 gives month 0 of the next year rather
// than December of this one. It is left so on purpose: month 0 of a year has
// the same day number as December of the year before, so comparisons and
// addDays already read it as December, while isValid reports it.
Date Date::addMonths(int months) const {
    std::int64_t newYear = year;
    std::int64_t newMonth = month;
    if (months >= 0) {
        const std::int64_t sum = newMonth + months;
        newYear += sum / 12;
        newMonth = sum % 12;
    } else {
        const std::int64_t back = -std::int64_t{months};
        const std::int64_t wholeYears = back / 12;
        const std::int64_t rest = back % 12;
        if (newMonth > rest) {
            newYear -= wholeYears;
            newMonth -= rest;
        } else {
            newYear -= wholeYears + 1;
            newMonth = newMonth - rest + 12;
        }
    }
    return Date{narrow(newYear), narrow(newMonth), day};
}

Date Date::addDays(int days) const {
    return fromJulianDayNumber(julianDayNumber() + days);
}

std::int64_t Date::julianDayNumber() const {
    const std::int64_t y = year;
    const std::int64_t m = month;
    const std::int64_t d = day;
    const std::int64_t a = (m - 14) / 12;
    return (1461 * (y + 4800 + a)) / 4 + (367 * (m - 2 - 12 * a)) / 12 -
           (3 * ((y + 4900 + a) / 100)) / 4 + d - 32075;
}

Date Date::fromJulianDayNumber(std::int64_t jdn) {
    // Far beyond any day number of 32-bit fields, and small enough that the
    // products below stay within 64 bits.
    constexpr std::int64_t kLimit = std::int64_t{1} << 56;
    QVX_REQUIRE(jdn > -kLimit && jdn < kLimit, "precondition failed: day number in range");
    std::int64_t l = jdn + 68569;
    const std::int64_t n = 4 * l / 146097;
    l -= (146097 * n + 3) / 4;
    const std::int64_t i = 4000 * (l + 1) / 1461001;
    l = l - 1461 * i / 4 + 31;
    const std::int64_t j = 80 * l / 2447;
    const std::int64_t d = l - 2447 * j / 80;
    l = j / 11;
    const std::int64_t m = j + 2 - 12 * l;
    const std::int64_t y = 100 * (n - 49) + i + l;
    return Date{narrow(y), narrow(m), narrow(d)};
}

int Date::operator-(const Date& other) const {
    return static_cast<int>(julianDayNumber() - other.julianDayNumber());
}

bool operator==(const Date& a, const Date& b) {
    return a.year == b.year && a.month == b.month && a.day == b.day;
}
bool operator!=(const Date& a, const Date& b) {
    return !(a == b);
}
bool operator<(const Date& a, const Date& b) {
    return a.julianDayNumber() < b.julianDayNumber();
}
bool operator<=(const Date& a, const Date& b) {
    return a.julianDayNumber() <= b.julianDayNumber();
}
bool operator>(const Date& a, const Date& b) {
    return a.julianDayNumber() > b.julianDayNumber();
}
bool operator>=(const Date& a, const Date& b) {
    return a.julianDayNumber() >= b.julianDayNumber();
}

result<Date, std::string> dateFromYYYYMMDD(ParserStringRef text) {
    const auto year = readDigits(text.slice(0, 4));
    const auto month = readDigits(text.slice(4, 6));
    const auto day = readDigits(text.slice(6, 8));
    if (!partsInRange(year, month, day)) {
        return result<Date, std::string>::failure(generalFailure(text, "YYYYMMDD"));
    }
    return result<Date, std::string>::success(Date{*year, *month, *day});
}

result<Date, std::string> dateFromYYMMDD(ParserStringRef text, int referenceYear) {
    const auto year = readDigits(text.slice(0, 2));
    const auto month = readDigits(text.slice(2, 4));
    const auto day = readDigits(text.slice(4, 6));
    if (!partsInRange(year, month, day)) {
        return result<Date, std::string>::failure(generalFailure(text, "YYMMDD"));
    }
    return result<Date, std::string>::success(
        Date{yearFromTwoDigits(*year, referenceYear), *month, *day});
}

result<Date, std::string> dateFromYYMM(ParserStringRef text, int referenceYear) {
    const auto year = readDigits(text.slice(0, 2));
    const auto month = readDigits(text.slice(2, 4));
    if (!partsInRange(year, month, 0)) {
        return result<Date, std::string>::failure(generalFailure(text, "YYMM"));
    }
    return result<Date, std::string>::success(
        Date{yearFromTwoDigits(*year, referenceYear), *month, 0});
}

// A machine-readable zone blanks unknown parts with its filler, so each part
// may be missing or half missing. The year is left two-digit: each document
// layout has its own century rule.
result<Date, std::string> dateFromMrzYYMMDD(ParserStringRef text, char filler) {
    if (text.size() != 6) {
        return result<Date, std::string>::failure(generalFailure(text, "YYMMDD"));
    }
    std::array<int, 3> parts = {-1, 0, 0};
    for (std::size_t index = 0; index < parts.size(); ++index) {
        ParserStringRef part = text.slice(2 * index, 2 * index + 2);
        if (part.back() == static_cast<unsigned char>(filler)) part = part.drop_back(1);
        if (!part.empty() && part.front() == static_cast<unsigned char>(filler)) {
            part = part.drop_front(1);
        }
        if (part.empty()) continue;
        int value = 0;
        if (!readInt(part.view(), value)) {
            return result<Date, std::string>::failure("Invalid date: \"" + text.str() +
                                                      "\" could not be converted to YYMMDD date");
        }
        parts[index] = value;
    }
    return result<Date, std::string>::success(Date{parts[0], parts[1], parts[2]});
}

int yearFromTwoDigits(int twoDigitYear, int referenceYear) {
    const std::int64_t century = std::int64_t{referenceYear} / 100 * 100;
    const std::int64_t candidate = twoDigitYear + century;
    const std::int64_t distance = candidate - referenceYear;
    if (distance >= 51) return narrow(candidate - 100);
    if (distance <= -50) return narrow(candidate + 100);
    return narrow(candidate);
}

nlohmann::json dateToJson(const Date& date) {
    nlohmann::json json = nlohmann::json::object();
    if (date.day != 0) addMember(json, "day", date.day);
    addMember(json, "month", date.month);
    addMember(json, "year", date.year);
    return json;
}

std::optional<int> readDigits(ParserStringRef text) {
    const std::string_view bytes = text.view();
    if (bytes.empty()) return std::nullopt;
    constexpr std::int64_t kMax = 2147483647;
    std::int64_t value = 0;
    for (const char c : bytes) {
        if (!isAsciiDigit(static_cast<unsigned char>(c))) return std::nullopt;
        value = value * 10 + (c - '0');
        if (value > kMax) return std::nullopt;
    }
    return static_cast<int>(value);
}

bool isIntInRange(std::optional<int> value, int low, int high) {
    return value && low <= *value && *value <= high;
}

int monthFromName(ParserStringRef text) {
    static constexpr std::array<std::string_view, 12> kNames = {
        "JAN", "FEB", "MAR", "APR", "MAY", "JUN", "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        if (text.view() == kNames[i]) return static_cast<int>(i) + 1;
    }
    return -1;
}

}  // namespace parser
