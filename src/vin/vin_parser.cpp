#include "vin/vin_parser.h"

namespace parser {
std::unique_ptr<ParserResult> VinParser::parse(ParserStringRef) { return std::make_unique<ParserResult>(); }
std::unique_ptr<ParserOptionsOutcome> VinParser::readOptionsFromJSON(nlohmann::json) { return ParserOptionsOutcome::success(); }
nlohmann::json VinParser::optionsToJSON() const { return nlohmann::json::object(); }
}  // namespace parser
