// The PDF417 barcode of a US uniformed-services ID card: a fixed layout
// without separators, a header, a sponsor flag and then the sponsor's or the
// dependent's field list.
#pragma once

#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "common/fixed_width_section.h"
#include "qvx/bc_parser.h"
#include "usid/usid_tables.h"

namespace parser {

// The readers need nothing of the run beyond their row and their bytes.
struct CardContext {};

// The fixed argument of a row: the table its code is looked up in, or the
// message of a number that cannot be read.
struct CardItemArgument {
    const usid::CodedTable* codes = nullptr;
    const usid::RangeTable* ranges = nullptr;
    const usid::ListedTable* values = nullptr;
    const char* message = nullptr;
};

using CardItem = FixedWidthItem<CardContext, CardItemArgument>;

// Reads `width` bytes as a code of the row's table, compared after trailing
// blanks are cut. The value is the row's text. A text shorter than `width`
// is an error of its own wording.
bool readCodedField(const CardItem& item, ParserStringRef& view, std::size_t width,
                    const CardContext& context, FieldTarget& target);

class UsUsidParser : public BcParser {
  public:
    std::unique_ptr<ParserResult> parse(ParserStringRef input) override;
    std::unique_ptr<ParserOptionsOutcome> readOptionsFromJSON(nlohmann::json options) override;
    nlohmann::json optionsToJSON() const override;
};

}  // namespace parser
