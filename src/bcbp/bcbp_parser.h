// IATA bar-coded boarding passes: a head, one block per flight leg with an
// optional conditional part, and optional security data.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "qvx/bc_parser.h"

namespace parser {

class IataBcbpParser : public BcParser {
  public:
    IataBcbpParser();

    std::unique_ptr<ParserResult> parse(ParserStringRef input) override;
    std::unique_ptr<ParserOptionsOutcome> readOptionsFromJSON(nlohmann::json options) override;
    nlohmann::json optionsToJSON() const override;

  private:
    int referenceYear() const;

    // A parse only reads these, so one parser may serve several threads.
    bool strictMode_ = false;
    std::optional<int> referenceYear_;
};

// Reads a block whose length stands in front of it as two hexadecimal
// characters. With `soft`, a block that is cut short is a warning and the
// block is what is left; otherwise it is an error and there is no block.
std::optional<ParserStringRef> readSectionSize(const std::string& name, ParserStringRef& text,
                                               ParserResult& result, bool soft);

}  // namespace parser
