// The data elements of an AAMVA subfile: the element tables by version and
// the readers that turn an element's value into a field.
#pragma once

#include <string_view>

#include "dlid/dlid_state.h"
#include "qvx/parsed.h"

namespace parser::dlid {

// The table for a document, rows in ascending id order. Built once per
// variant and shared.
const DLIDElementTable& elementTableFor(int version, std::string_view iin);

// The row of `id`, found by binary search, or null.
const DLIDElement* findElement(const DLIDElementTable& table, std::string_view id);

// The row unknown and jurisdiction-defined (Z) elements are read with.
const DLIDElement& fallbackElement();

// True when every byte of `value` belongs to one of the classes.
bool fitsClasses(ParserStringRef value, DLIDClasses classes);

// Adds the field of one element. A height too short to read sets the issue of
// the result and adds nothing; the walk goes on regardless.
void readElement(const DLIDElement& row, ParserStringRef id, ParserStringRef value,
                 ParserResult& result, DLIDParserState& state);

// Year first (YYYYMMDD) or month first (MMDDYYYY), by version and issuer.
bool datesAreYearFirst(int version, std::string_view iin);

// A height object from inches or from centimetres.
nlohmann::json heightFromInches(long inches);
nlohmann::json heightFromCentimetres(long centimetres);

}  // namespace parser::dlid
