// Field parsers of the boarding-pass record: factories of closures, each of
// which reads one fixed-width item from the front of the running text.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "bcbp/bcbp_section.h"
#include "common/date.h"
#include "common/parser_regex.h"
#include "qvx/string_ref.h"

namespace parser {

// Turns the slice that `extractField` took into a field or an error text.
using BcbpSliceParser = std::function<BcbpFieldOutcome(ParserStringRef slice, std::size_t width)>;

// "BCBP parsing error; '<field>'. <message>": the one wording of a field error.
std::string bcbpFieldError(const std::string& field, const std::string& message);

// Strict character pattern of a field, if it has one.
const ParserRegex* bcbpStrictPattern(const std::string& field);

// Takes `width` bytes, tests them against the field's pattern when `strict`,
// and hands them to `fn`. Width 0 gives a null field and takes nothing.
BcbpFieldParser extractField(std::string name, bool strict, BcbpSliceParser fn);

// Text trimmed of blanks; null when nothing is left.
BcbpFieldParser textFieldParser(std::string name, bool strict);
// True for exactly "Y".
BcbpFieldParser booleanFieldParser(std::string name);
// "LAST/FIRST" as the array [FIRST, LAST]; both parts are required.
BcbpFieldParser lastNameFirstNameParser(std::string name, bool strict, char separator);
// A decimal number; blanks alone give null unless `strict`.
BcbpFieldParser intFieldParser(std::string name, bool strict);
// A hexadecimal number; an empty slice gives null.
BcbpFieldParser hexIntFieldParser(std::string name);
// A day of the year (width 3) or a year digit and a day of the year (width
// 4), placed in a year near `referenceDate`. A date that is not `required`
// may be zeros or blanks and is then left out.
BcbpFieldParser dateFieldParser(std::string name, Date referenceDate, bool required);
// Up to three groups of consecutive baggage tag numbers (one below version 4).
BcbpFieldParser baggageTagFieldParser(std::string name, int version);

// Reads a hexadecimal number over the whole of `text`; empty when the text is
// empty, not hexadecimal throughout, or too large.
std::optional<long> readHexNumber(ParserStringRef text);

}  // namespace parser
