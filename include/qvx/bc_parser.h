// The contract every format parser implements.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "qvx/parsed.h"
#include "qvx/string_ref.h"

namespace parser {

// What an option reader returns: `ok`, or the reason it is not.
struct ParserOptionsOutcome {
    bool ok = true;
    std::string error;

    static std::unique_ptr<ParserOptionsOutcome> success();
    static std::unique_ptr<ParserOptionsOutcome> failure(std::string error);
};

class BcParser {
  public:
    BcParser() = default;
    BcParser(const BcParser&) = delete;
    BcParser& operator=(const BcParser&) = delete;
    virtual ~BcParser() = default;

    // Never null. Bad input is reported inside the result, never thrown.
    virtual std::unique_ptr<ParserResult> parse(ParserStringRef input) = 0;
    // Takes an object of camelCase keys, walked in sorted order; the first bad
    // key stops the walk and what was set before it stays set.
    virtual std::unique_ptr<ParserOptionsOutcome> readOptionsFromJSON(nlohmann::json options) = 0;
    // The current options, with snake_case keys.
    virtual nlohmann::json optionsToJSON() const = 0;

    // Parses `text` as a JSON object and hands it to readOptionsFromJSON.
    std::unique_ptr<ParserOptionsOutcome> readOptionsFromJSONString(const std::string& text);
};

}  // namespace parser

using ParserOptionsOutcome = parser::ParserOptionsOutcome;
