#include "swissqr/swissqr_parser.h"

namespace parser {

std::unique_ptr<ParserResult> SwissQRParser::parse(ParserStringRef) {
    auto result = std::make_unique<ParserResult>();
    result->setError("not built yet");
    return result;
}

std::unique_ptr<ParserOptionsOutcome> SwissQRParser::readOptionsFromJSON(nlohmann::json) {
    return ParserOptionsOutcome::success();
}

nlohmann::json SwissQRParser::optionsToJSON() const {
    return nlohmann::json::object();
}

}  // namespace parser
