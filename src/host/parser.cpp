#include "qvx/parser.h"

#include "bcbp/bcbp_parser.h"
#include "dlid/dlid_parser.h"
#include "gs1/gs1_ai_parser.h"
#include "gs1/gs1_digital_link_parser.h"
#include "hibc/hibc_parser.h"
#include "mrtd/mrtd_parser.h"
#include "qvx/contract.h"
#include "swissqr/swissqr_parser.h"
#include "usid/usid_parser.h"
#include "vin/vin_parser.h"

namespace qvx {

namespace {

// The concrete parser of a format, or null while that format is not built yet.
std::unique_ptr<parser::BcParser> makeConcreteParser(ParserDataFormat format) {
    switch (format) {
        case ParserDataFormat::Vin:
            return std::make_unique<parser::VinParser>();
        case ParserDataFormat::Hibc:
            return std::make_unique<parser::HIBCParser>();
        case ParserDataFormat::IataBcbp:
            return std::make_unique<parser::IataBcbpParser>();
        case ParserDataFormat::UsUsid:
            return std::make_unique<parser::UsUsidParser>();
        case ParserDataFormat::SwissQr:
            return std::make_unique<parser::SwissQRParser>();
        case ParserDataFormat::Gs1Ai:
            return std::make_unique<parser::Gs1AiParser>();
        case ParserDataFormat::Dlid:
            return std::make_unique<parser::DLIDParser>();
        case ParserDataFormat::Mrtd:
            return std::make_unique<parser::MrtdParser>();
        case ParserDataFormat::Gs1DigitalLink:
            return std::make_unique<parser::Gs1DigitalLinkParser>();
    }
    return nullptr;
}

bool isInFormatTable(ParserDataFormat format) {
    for (const auto& entry : parser::dataFormatTable()) {
        if (entry.first == format) return true;
    }
    return false;
}

}  // namespace

Parser::Parser(std::unique_ptr<parser::BcParser> concrete, std::shared_ptr<ParserEventSink> sink,
               ParserDataFormat format)
    : core::TrovaneComponent(Kind::Parser),
      parser_(std::move(concrete)),
      eventSink_(std::move(sink)),
      format_(format) {}

bool Parser::isFormatAvailable(ParserDataFormat format) {
    return makeConcreteParser(format) != nullptr;
}

bar::result<std::shared_ptr<Parser>, std::string> Parser::create(
    const std::shared_ptr<core::Context>& context, ParserDataFormat format) {
    using Result = bar::result<std::shared_ptr<Parser>, std::string>;
    if (!isInFormatTable(format)) {
        return Result::failure("unknown data format: " + std::to_string(static_cast<int>(format)));
    }
    auto concrete = makeConcreteParser(format);
    if (!concrete) {
        return Result::failure("the format '" + parser::dataFormatName(format) +
                               "' is not supported by this build yet");
    }
    auto sink = context ? context->eventSink() : nullptr;
    return Result::success(
        std::shared_ptr<Parser>(new Parser(std::move(concrete), std::move(sink), format)));
}

ParseOutcome Parser::parse(const std::string& bytes) {
    std::unique_ptr<parser::ParserResult> result = parser_->parse(ParserStringRef(bytes));
    ParseOutcome outcome =
        result->error
            ? ParseOutcome::failure(std::move(result->error))
            : ParseOutcome::success(std::make_shared<parser::ParsedData>(std::move(*result)));
    result.reset();
    reportParseEvent(outcome);
    return outcome;
}

bar::result<void, std::string> Parser::setOptions(const std::string& json) {
    auto outcome = parser_->readOptionsFromJSONString(json);
    if (outcome->ok) return bar::result<void, std::string>::success();
    return bar::result<void, std::string>::failure(std::move(outcome->error));
}

void Parser::reportParseEvent(const ParseOutcome& outcome) const {
    if (!eventSink_) return;
    nlohmann::json payload = {
        {"format", parser::dataFormatName(format_)},
        {"operation", "string"},
        {"success", outcome.ok()},
        {"error",
         outcome.ok() ? nlohmann::json(nullptr) : nlohmann::json(outcome.error()->message)},
        {"options", parser_->optionsToJSON()},
    };
    auto value = core::JsonValue::fromNlohmannJson(payload);
    QVX_REQUIRE(value != nullptr, "precondition failed: json != nullptr");
    eventSink_->send(kParseEventId, *value);
}

}  // namespace qvx
