// Field readers of the boarding-pass record. Each reads one fixed-width item
// from the front of the running text; the field lists in bcbp_parser.cpp are
// tables of these.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "common/fixed_width_section.h"
#include "qvx/string_ref.h"

namespace parser {

// What the readers learn of one parse: the options and what the look-ahead
// found.
struct PassContext {
    bool strict = false;
    // An itinerary receipt may leave seats, sequence numbers and the issue date blank.
    bool itinerary = false;
    // The version decides how baggage tags and the fast-track flag are laid out.
    int version = 0;
    // Dates carry no full year: they are placed near this one.
    int referenceYear = 0;
};

// The characters an item must consist of in strict mode.
enum class PassCharacters : std::uint8_t {
    Any,               // no test
    Printable,         // [ -~]+
    Digits,            // [0-9]+
    DigitsUpperBlank,  // [0-9A-Z ]+
    UpperOrBlanks,     // [A-Z]+ or blanks only
    Seat,              // three digits and a letter, [A-Z ]{4}, or blanks only
};

struct PassItemArgument {
    PassCharacters characters = PassCharacters::Any;
    // The item may be blank on an itinerary receipt: no strict test, and a
    // date of zeros or blanks is left out.
    bool laxOnItinerary = false;
};

using PassItem = FixedWidthItem<PassContext, PassItemArgument>;

// "BCBP parsing error; '<field>'. <message>": the one wording of a field error.
std::string bcbpFieldError(const std::string& field, const std::string& message);

// True when `text` consists of the characters the class allows.
bool hasPassCharacters(ParserStringRef text, PassCharacters characters);

// Text trimmed of blanks; null when nothing is left. Width 0 gives a null
// field and takes nothing.
bool readPassText(const PassItem& item, ParserStringRef& text, std::size_t width,
                  const PassContext& context, FieldTarget& target);
// True for exactly "Y".
bool readPassFlag(const PassItem& item, ParserStringRef& text, std::size_t width,
                  const PassContext& context, FieldTarget& target);
// "LAST/FIRST" as the array [FIRST, LAST]; both parts are required.
bool readPassengerName(const PassItem& item, ParserStringRef& text, std::size_t width,
                       const PassContext& context, FieldTarget& target);
// A decimal number; trailing blanks are cut, blanks alone are an error.
bool readPassCount(const PassItem& item, ParserStringRef& text, std::size_t width,
                   const PassContext& context, FieldTarget& target);
// A day of the year (width 3) or a year digit and a day of the year (width
// 4), placed in a year near the reference year. A date that is not required
// may be zeros or blanks and is then left out.
bool readPassDate(const PassItem& item, ParserStringRef& text, std::size_t width,
                  const PassContext& context, FieldTarget& target);
// Up to three groups of consecutive baggage tag numbers (one below version 4).
bool readBaggageTags(const PassItem& item, ParserStringRef& text, std::size_t width,
                     const PassContext& context, FieldTarget& target);

// Reads a hexadecimal number over the whole of `text`; empty when the text is
// empty, not hexadecimal throughout, or too large.
std::optional<long> readHexNumber(ParserStringRef text);

}  // namespace parser
