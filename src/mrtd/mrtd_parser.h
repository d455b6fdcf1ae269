// Machine-readable zones of travel documents: ICAO cards, passports and visas,
// and the national variants read by the same machines.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "qvx/bc_parser.h"

namespace parser {

class MrtdParser : public BcParser {
  public:
    std::unique_ptr<ParserResult> parse(ParserStringRef input) override;
    std::unique_ptr<ParserOptionsOutcome> readOptionsFromJSON(nlohmann::json options) override;
    nlohmann::json optionsToJSON() const override;

    // Patterns for callers that look for zones in a stream of text. The parser
    // itself recognises a zone by its line lengths and prefixes.
    static const std::string td1RegexPattern;
    static const std::string td2RegexPattern;
    static const std::string td3RegexPattern;
    static const std::string mrvRegexPattern;
    static const std::string chineseExitEntryMrzRegexPattern;
    static const std::string chinaOneWayPermitMrzRegexPattern;
    static const std::string swissDrivingLicenseRegexPattern;
    static const std::string universalMrzRegexPattern;
    static const std::string vietnamesePassportRegexPattern;
    static const std::string borderCrossingCardRegexPattern;
    static const std::string strictMrzRegexPattern;

  private:
    bool relaxedChecksumValidation_ = false;
    bool allowFalsePositiveCompensation_ = false;
};

}  // namespace parser
