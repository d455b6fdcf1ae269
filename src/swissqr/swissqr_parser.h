// Swiss payment QR bills (QR-bill, versions 0100 to 0210).
#pragma once

#include <memory>
#include <nlohmann/json.hpp>

#include "qvx/bc_parser.h"

namespace parser {

class SwissQRParser : public BcParser {
  public:
    std::unique_ptr<ParserResult> parse(ParserStringRef input) override;
    std::unique_ptr<ParserOptionsOutcome> readOptionsFromJSON(nlohmann::json options) override;
    nlohmann::json optionsToJSON() const override;
};

}  // namespace parser
