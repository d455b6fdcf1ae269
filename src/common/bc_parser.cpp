#include "qvx/bc_parser.h"

#include "common/text.h"

namespace parser {

std::unique_ptr<ParserOptionsOutcome> ParserOptionsOutcome::success() {
    return std::make_unique<ParserOptionsOutcome>();
}

std::unique_ptr<ParserOptionsOutcome> ParserOptionsOutcome::failure(std::string error) {
    auto outcome = std::make_unique<ParserOptionsOutcome>();
    outcome->ok = false;
    outcome->error = std::move(error);
    return outcome;
}

std::unique_ptr<ParserOptionsOutcome> BcParser::readOptionsFromJSONString(const std::string& text) {
    nlohmann::json options = parseJsonString(text);
    if (options.is_discarded()) {
        return ParserOptionsOutcome::failure("Could not parse json string: \"" + text + "\"");
    }
    // A bare null, number or array never reaches a format parser.
    if (!options.is_object()) {
        return ParserOptionsOutcome::failure("internal error: JSON options are malformed");
    }
    return readOptionsFromJSON(std::move(options));
}

}  // namespace parser
