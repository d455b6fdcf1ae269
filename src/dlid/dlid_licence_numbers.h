// Licence numbers that nine US issuers derive from the holder's name and
// birth date, recomputed so that a number which does not fit its holder shows.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "common/date.h"

namespace parser::dlid {

// Soundex of a name: first letter kept, three digits, filled with 0; H and W
// do not separate equal digits, vowels do. "" for an empty name.
std::string soundex(std::string_view name);
// The digit coding a given name's first letter; -1 for anything but a letter.
int firstNameCode(unsigned char letter);
// The character coding a day of the month (1 to 31); 0 outside.
char dayLetter(int day);
// The month (1 to 12) whose band holds a three-digit day code; 0 for none.
int monthOfBandValue(int value);

// True when `number` fits the encoding of the issuer with the two-letter
// `code`; always false for an issuer that does not derive its numbers. A
// missing birth date counts as 2000-01-01.
bool matchesStateEncoding(std::string_view code, std::string_view number,
                          std::optional<Date> birthDate, std::string_view documentType,
                          std::string_view familyName, std::string_view givenName);

}  // namespace parser::dlid
