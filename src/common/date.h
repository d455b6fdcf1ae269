// Calendar dates, the date layouts printed on codes, and the two-digit-year window.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "qvx/result.h"
#include "qvx/string_ref.h"

namespace parser {

// A plain (year, month, day) triple. A day of 0 means "undefined", for codes
// that tell only a year and a month. Nothing forces a value to be valid.
struct Date {
    std::int32_t year = 0;
    std::int32_t month = 0;
    std::int32_t day = 0;

    // Round trip through the Julian Day Number gives the same three fields.
    bool isValid() const;
    static bool isLeapYear(int year);
    // 28 to 31; 0 for a month outside 1 to 12.
    static int getLastDayOfMonth(int month, int year);
    static int getCurrentYear();
    static Date getCurrentDate();
    // Test seam: while set, getCurrentDate and getCurrentYear answer this date
    // instead of the wall clock. Not meant for production code.
    static void overrideCurrentDate(std::optional<Date> date);

    void setDayToLastDayOfMonthIfUndefined();
    Date addYears(int years) const;
    Date addMonths(int months) const;
    Date addDays(int days) const;

    // Fliegel and Van Flandern's integer formula.
    std::int64_t julianDayNumber() const;
    static Date fromJulianDayNumber(std::int64_t jdn);

    // Difference in days.
    int operator-(const Date& other) const;
};

// Field by field: an undefined day is a value of its own.
bool operator==(const Date& a, const Date& b);
bool operator!=(const Date& a, const Date& b);
// By day number: a day of 0 counts as the day before the first of the month.
bool operator<(const Date& a, const Date& b);
bool operator<=(const Date& a, const Date& b);
bool operator>(const Date& a, const Date& b);
bool operator>=(const Date& a, const Date& b);

// Readers of printed layouts. All but dateFromMrzYYMMDD need a view long enough
// for their slices: callers test the length first.
result<Date, std::string> dateFromYYYYMMDD(ParserStringRef text);
result<Date, std::string> dateFromYYMMDD(ParserStringRef text, int referenceYear);
result<Date, std::string> dateFromYYMM(ParserStringRef text, int referenceYear);
// Any part may be blanked with `filler`; the year stays two-digit (-1 when blank).
result<Date, std::string> dateFromMrzYYMMDD(ParserStringRef text, char filler);

// The full year within 50 years either side of `referenceYear`.
int yearFromTwoDigits(int twoDigitYear, int referenceYear);

// {"year", "month"} and "day" when it is defined.
nlohmann::json dateToJson(const Date& date);

// A number made only of ASCII digits that fits a signed 32-bit value.
std::optional<int> readDigits(ParserStringRef text);
bool isIntInRange(std::optional<int> value, int low, int high);
// 1 to 12 for "JAN" to "DEC" (upper case only), -1 otherwise.
int monthFromName(ParserStringRef text);

}  // namespace parser
