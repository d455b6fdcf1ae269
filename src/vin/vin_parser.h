// Vehicle identification numbers (ISO 3779 and the North American variant).
#pragma once

#include <memory>
#include <nlohmann/json.hpp>

#include "qvx/bc_parser.h"

namespace parser {

class VinParser : public BcParser {
  public:
    std::unique_ptr<ParserResult> parse(ParserStringRef input) override;
    std::unique_ptr<ParserOptionsOutcome> readOptionsFromJSON(nlohmann::json options) override;
    nlohmann::json optionsToJSON() const override;

  private:
    bool strictMode_ = false;
    bool falsePositiveCompensation_ = false;
};

}  // namespace parser
