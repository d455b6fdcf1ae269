// The PDF417 barcode of a US uniformed-services ID card: a fixed layout
// without separators, a header, a sponsor flag and then the sponsor's or the
// dependent's field list.
#pragma once

#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "bcbp/bcbp_section.h"
#include "qvx/bc_parser.h"
#include "usid/usid_tables.h"

namespace parser {

// One entry of a field list: a reader and the number of bytes it takes.
using UsidFieldReader = BcbpFieldSpec;

// Runs `list` over `view` with full widths required; the first failure becomes
// the fatal issue of `result`.
void readUsidFields(const std::vector<UsidFieldReader>& list, ParserStringRef& view,
                    ParserResult& result);

// Reads `length` bytes as a code of `table`, compared after trailing blanks
// are cut. The value is the row's text.
BcbpFieldOutcome readCodedField(ParserStringRef& view, std::size_t length, const char* name,
                                const usid::CodedTable& table);

class UsUsidParser : public BcParser {
  public:
    std::unique_ptr<ParserResult> parse(ParserStringRef input) override;
    std::unique_ptr<ParserOptionsOutcome> readOptionsFromJSON(nlohmann::json options) override;
    nlohmann::json optionsToJSON() const override;
};

}  // namespace parser
