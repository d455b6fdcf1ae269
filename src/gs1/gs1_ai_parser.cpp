#include "gs1/gs1_ai_parser.h"

#include "gs1/result_builder.h"

namespace parser {

std::unique_ptr<ParserResult> Gs1AiParser::parse(ParserStringRef) {
    auto result = std::make_unique<ParserResult>();
    result->setError("not built yet");
    return result;
}

bool Gs1AiParser::parseNextAi(ResultBuilder&, ParserStringRef&) {
    return false;
}

std::unique_ptr<ParserOptionsOutcome> Gs1AiParser::readOptionsFromJSON(nlohmann::json) {
    return ParserOptionsOutcome::success();
}

nlohmann::json Gs1AiParser::optionsToJSON() const {
    return nlohmann::json::object();
}

}  // namespace parser
