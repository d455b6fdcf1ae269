// Swiss payment QR bills (QR-bill, versions 0100 to 0210).
#pragma once

#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>

#include "qvx/bc_parser.h"

namespace parser {

// A bill is one element per line in a fixed order. In strict mode every
// defect refuses the bill; otherwise many stay on their fields as issues.
class SwissQRParser : public BcParser {
  public:
    std::unique_ptr<ParserResult> parse(ParserStringRef input) override;
    std::unique_ptr<ParserOptionsOutcome> readOptionsFromJSON(nlohmann::json options) override;
    nlohmann::json optionsToJSON() const override;

  private:
    std::int32_t minimalVersion_ = 200;
    bool strictMode_ = true;
};

}  // namespace parser
