// Fixed-width records read as a list of (field parser, width) pairs. Boarding
// passes and uniformed-services ID cards share this runner.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "qvx/parsed.h"
#include "qvx/result.h"
#include "qvx/string_ref.h"

namespace parser {

// A field parser takes its bytes from the front of the running text, which it
// advances, and yields one field or an error text.
using BcbpFieldOutcome = result<ParsedField, std::string>;
using BcbpFieldParser = std::function<BcbpFieldOutcome(ParserStringRef&, std::size_t)>;

struct BcbpFieldSpec {
    BcbpFieldParser parser;
    std::size_t width = 0;
};

// Runs `entries` in order over `text`. A text shorter than a width is fatal
// ("code string is too small") with `requireFullWidth`, otherwise the field
// gets what is left. The first error text goes to `setError` and stops the
// run. Nameless fields are dropped. Returns false when an error was set.
bool runBcbpSection(const std::vector<BcbpFieldSpec>& entries, ParserStringRef& text,
                    bool requireFullWidth, ParserResult& result);

}  // namespace parser
