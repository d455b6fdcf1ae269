// Health Industry Bar Codes: a primary segment (labeler, product, unit of
// measure), a secondary segment (lot, serial, expiry, quantity), optional
// additional segments and a modulo-43 check character.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>

#include "qvx/bc_parser.h"

namespace parser {

class HIBCParser : public BcParser {
  public:
    std::unique_ptr<ParserResult> parse(ParserStringRef input) override;
    // There are no options: any key is refused.
    std::unique_ptr<ParserOptionsOutcome> readOptionsFromJSON(nlohmann::json options) override;
    nlohmann::json optionsToJSON() const override;

  private:
    static std::unique_ptr<ParserResult> parseFields(ParserStringRef data);
    static void parsePrimary(ParserStringRef primary, ParserResult& result);
    static void parseSecondary(ParserStringRef secondary, ParserResult& result);
    // The "$$" forms: a quantity and/or date flag, then a lot or, with
    // `serial`, a serial number. True when the lot or serial was reached.
    static bool parseFlagged(ParserStringRef flagged, bool serial, ParserResult& result);
    static void parseAdditional(ParserStringRef additional, ParserResult& result);
    // Each returns the view after what it read.
    static ParserStringRef getDate(ParserStringRef data, int type, ParserResult& result);
    static ParserStringRef getQuantity(ParserStringRef data, int flag, ParserResult& result);
    static void getSerial(ParserStringRef data, ParserResult& result);
    static void getLot(ParserStringRef data, ParserResult& result);
};

}  // namespace parser
