// Vehicle identification numbers (ISO 3779 and the North American variant).
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string_view>

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

// The reader's text handling, shared with format detection so that both see
// the same 17 characters.
namespace vin {

// Label scans wrap the number in noise: a caption such as "VIN " before it, a
// counter after it, or stray bytes such as quotes at the ends. Returns the
// part the reader takes for the number; texts of 17 bytes or fewer as they are.
ParserStringRef stripLabelNoise(ParserStringRef input);

// Scanners misread I, O and Q, which a VIN never contains, for the digits 1,
// 0 and 9 they resemble; any other character comes back as it is.
char readLookAlike(char c) noexcept;

// Whether position 9 holds the check digit of the other 16 (49 CFR 565).
// `vin` must be 17 characters.
bool checkDigitMatches(std::string_view vin);

}  // namespace vin

}  // namespace parser
