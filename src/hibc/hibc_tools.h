// Building blocks of the Health Industry Bar Code: the date layouts of the
// secondary and additional segments, and the modulo-43 check character.
#pragma once

#include <nlohmann/json.hpp>

#include "qvx/string_ref.h"

namespace parser {

// Flags follow the expiration date formats of the HIBC Supplier Labeling
// Standard. In a secondary segment the flag is one digit; the additional
// segments use YYYYMMDD, which has no digit of its own.
enum class HIBCDateType : int {
    MonthYearLow = 0,   // MYY, months 1-9 (the flag is the month's tens digit)
    MonthYearHigh = 1,  // MYY, months 10-12
    MMDDYY = 2,
    YYMMDD = 3,
    YYMMDDHH = 4,
    YYJJJ = 5,    // J: day of the year
    YYJJJHH = 6,  // J: day of the year
    NoDate = 7,
    YYYYMMDD = 100,
};

// True for the values the enumeration names; only those may be decoded.
bool isKnownHIBCDateType(int type) noexcept;

// Bytes a date of this type takes; 3 for an unknown type, so that a short
// view is reported as such before the type is looked at.
int hibcDateLength(int type) noexcept;

// Decodes `text` as a date of `type` into an object with "year", "month",
// "day" and, where the layout has one, "hour" (a two-digit year stays two
// digits). Only length and digits are tested, and the day of the year against
// the year's length; false when the text does not fit. An unknown type is a
// contract failure.
bool decodeHIBCDate(ParserStringRef text, HIBCDateType type, nlohmann::json& date);

// The value of a byte for the modulo-43 check character; 0 for bytes outside
// the code's character set.
int hibcCharValue(unsigned char byte) noexcept;

// The sum of the values of `text`, modulo 43.
int hibcCheckValue(ParserStringRef text) noexcept;

}  // namespace parser
