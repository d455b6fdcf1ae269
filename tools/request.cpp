#include "request.h"

#include <memory>
#include <stdexcept>
#include <utility>

#include "base64.h"
#include "detected_request.h"
#include "qvx/json_text.h"

namespace qvx_cli {

namespace {

using json = nlohmann::json;

// Keeps every usage event that one parser sends.
class RecordingSink : public qvx::core::EventSink {
  public:
    void send(int eventId, const qvx::core::JsonValue& payload) override {
        events.push_back({{"id", eventId}, {"payload", payload.nlohmannJson()}});
    }

    json events = json::array();
};

using RequestResult = parser::result<Request, std::string>;

// An optional boolean member of a batch line; false when absent.
bool readFlag(const json& line, const char* key, std::string& error) {
    auto it = line.find(key);
    if (it == line.end()) return false;
    if (!it->is_boolean()) {
        if (error.empty()) error = std::string("\"") + key + "\" must be a boolean";
        return false;
    }
    return it->get<bool>();
}

// A pair of members where a JSON value (printed compactly) or a text may be
// given, at most one of them; `out` stays empty when neither is.
void readValueOrText(const json& line, const char* valueKey, const char* textKey,
                     std::optional<std::string>& out, std::string& error) {
    if (!error.empty()) return;
    auto value = line.find(valueKey);
    auto text = line.find(textKey);
    if (value != line.end() && text != line.end()) {
        error = std::string("give only one of \"") + valueKey + "\" and \"" + textKey + "\"";
    } else if (value != line.end()) {
        out = value->dump();
    } else if (text != line.end()) {
        if (!text->is_string()) {
            error = std::string("\"") + textKey + "\" must be a string";
        } else {
            out = text->get<std::string>();
        }
    }
}

// The name of whichever member of a pair the line has.
const char* givenKey(const json& line, const char* valueKey, const char* textKey) {
    return line.contains(valueKey) ? valueKey : textKey;
}

RequestResult requestFromLine(json& line) {
    Request request;

    // A line names its parser by "format" (with options), or describes it.
    std::string error;
    readValueOrText(line, "parser", "parserText", request.parserText, error);
    readValueOrText(line, "update", "updateText", request.updateText, error);
    if (!error.empty()) return RequestResult::failure(error);
    if (request.parserText && line.contains("format")) {
        return RequestResult::failure(std::string("give only one of \"format\" and \"") +
                                      givenKey(line, "parser", "parserText") + "\"");
    }
    if (!request.parserText && request.updateText) {
        return RequestResult::failure(std::string("\"") + givenKey(line, "update", "updateText") +
                                      "\" applies only with \"parser\" or \"parserText\"");
    }

    auto format = line.find("format");
    if (!request.parserText) {
        if (format == line.end()) return RequestResult::failure("missing \"format\"");
        if (!format->is_string()) return RequestResult::failure("\"format\" must be a string");
        const auto& name = format->get_ref<const std::string&>();
        auto value = parser::dataFormatFromName(name);
        request.autoFormat = name == kAutoFormat;
        if (!value && !request.autoFormat) {
            return RequestResult::failure("unknown format \"" + name + "\"");
        }
        if (value) request.format = *value;
    }

    auto data = line.find("data");
    auto data64 = line.find("dataBase64");
    if (data != line.end() && data64 != line.end()) {
        return RequestResult::failure("give only one of \"data\" and \"dataBase64\"");
    }
    if (data != line.end()) {
        if (!data->is_string()) return RequestResult::failure("\"data\" must be a string");
        request.data = std::move(data->get_ref<std::string&>());
    } else if (data64 != line.end()) {
        if (!data64->is_string()) {
            return RequestResult::failure("\"dataBase64\" must be a string");
        }
        auto bytes = decodeBase64(data64->get_ref<const std::string&>());
        if (!bytes) return RequestResult::failure("\"dataBase64\" is not valid standard base64");
        request.data = std::move(*bytes);
    } else {
        return RequestResult::failure("missing \"data\" or \"dataBase64\"");
    }

    readValueOrText(line, "options", "optionsText", request.optionsText, error);
    if (!error.empty()) return RequestResult::failure(error);
    if (request.parserText && request.optionsText) {
        return RequestResult::failure(std::string("\"") + givenKey(line, "options", "optionsText") +
                                      "\" applies only with \"format\"");
    }

    request.showOptions = readFlag(line, "showOptions", error);
    request.showEvents = readFlag(line, "showEvents", error);
    request.showJsonString = readFlag(line, "showJsonString", error);
    request.showComponentId = readFlag(line, "showComponentId", error);
    request.showDeserializerWarnings = readFlag(line, "showDeserializerWarnings", error);
    request.showCandidates = readFlag(line, "showCandidates", error);
    if (!error.empty()) return RequestResult::failure(error);
    return RequestResult::success(std::move(request));
}

void appendInputError(std::string& out, const json* id, std::string_view text) {
    out += '{';
    if (id != nullptr) {
        out += "\"id\":";
        parser::appendJsonText(out, *id, -1);
        out += ',';
    }
    out += "\"inputError\":";
    parser::appendJsonString(out, text);
    out += ",\"ok\":false}";
}

// Lines seldom differ in their options; a run of ever new option texts must
// still not grow the set of kept parsers without bound.
constexpr std::size_t kMaxKeptParsers = 64;

using PrepareResult = bar::result<PreparedParser, std::string>;

PreparedParser deserialize(const Request& request,
                           const std::shared_ptr<qvx::core::Context>& context) {
    PreparedParser prepared;
    auto deserializer = qvx::ParserDeserializer::create();
    try {
        prepared.parser = deserializer->parserFromJsonString(context, *request.parserText);
        if (request.updateText) {
            deserializer->updateParserFromJsonString(prepared.parser, *request.updateText);
        }
    } catch (const std::invalid_argument& e) {
        prepared.deserializerError = e.what();
    }
    prepared.deserializerWarnings = deserializer->getWarnings();
    return prepared;
}

}  // namespace

PrepareResult prepareParser(const Request& request,
                            const std::shared_ptr<qvx::core::Context>& context) {
    if (request.parserText) return PrepareResult::success(deserialize(request, context));
    auto created = qvx::Parser::create(context, request.format);
    if (!created) return PrepareResult::failure(created.error());
    PreparedParser prepared;
    prepared.parser = created.value();
    if (request.optionsText) {
        auto set = prepared.parser->setOptions(*request.optionsText);
        if (!set) prepared.optionsError = set.error();
    }
    return PrepareResult::success(std::move(prepared));
}

Response respond(const Request& request, const PreparedParser& prepared) {
    Response response;
    response.optionsError = prepared.optionsError;
    response.deserializerError = prepared.deserializerError;
    if (request.showDeserializerWarnings) {
        response.deserializerWarnings = prepared.deserializerWarnings;
    }
    if (prepared.parser) {
        if (request.showComponentId) response.componentId = prepared.parser->getComponentId();
        if (request.showOptions) response.options = prepared.parser->optionsToJSON();
    }
    if (!response.optionsError && !response.deserializerError) {
        response.parse = prepared.parser->parse(request.data);
    }
    if (request.showCandidates) response.candidates = qvx::detectFormats(request.data);
    return response;
}

bar::result<Response, std::string> runRequest(const Request& request) {
    using Result = bar::result<Response, std::string>;
    auto sink = std::make_shared<RecordingSink>();
    if (request.autoFormat) {
        // One parser per candidate, all reporting to the one sink.
        auto context = std::make_shared<qvx::core::Context>(sink);
        std::map<ParserDataFormat, PreparedParser> made;
        Response response = respondDetected(request, [&](ParserDataFormat format) {
            auto found = made.find(format);
            if (found == made.end()) {
                Request single = request;
                single.format = format;
                auto prepared = prepareParser(single, context);
                if (!prepared) return static_cast<const PreparedParser*>(nullptr);
                found = made.emplace(format, std::move(prepared).value()).first;
            }
            return static_cast<const PreparedParser*>(&found->second);
        });
        response.events = std::move(sink->events);
        return Result::success(std::move(response));
    }
    auto prepared = prepareParser(request, std::make_shared<qvx::core::Context>(sink));
    if (!prepared) return Result::failure(prepared.error());
    Response response = respond(request, prepared.value());
    response.events = std::move(sink->events);
    return Result::success(std::move(response));
}

json issueToJson(const parser::ParserIssue& issue) {
    json info = json::object();
    for (const auto& [key, value] : issue.additionalInfo) {
        info[parser::issueInfoKeyName(key)] = value;
    }
    return {{"message", issue.message},
            {"code", static_cast<std::int32_t>(issue.code)},
            {"additionalInfo", std::move(info)}};
}

namespace {

void appendStrings(std::string& out, const std::vector<std::string>& texts) {
    out += '[';
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (i > 0) out += ',';
        parser::appendJsonString(out, texts[i]);
    }
    out += ']';
}

}  // namespace

void appendResponseText(std::string& out, const Request& request, const Response& response,
                        const json* id) {
    const bool parsed = !response.optionsError && response.parse;
    const bool ok = parsed && response.parse->ok();
    const parser::ParsedData* data = ok ? response.parse->value().get() : nullptr;
    bool first = true;
    auto key = [&](std::string_view name) {
        out += first ? "{\"" : ",\"";
        first = false;
        out += name;
        out += "\":";
    };
    if (request.showCandidates) {
        key("candidates");
        appendCandidatesText(out, response.candidates);
    }
    if (response.componentId) {
        key("componentId");
        parser::appendJsonString(out, *response.componentId);
    }
    if (response.deserializerError) {
        key("deserializerError");
        parser::appendJsonString(out, *response.deserializerError);
    }
    if (request.showDeserializerWarnings) {
        key("deserializerWarnings");
        appendStrings(out, response.deserializerWarnings);
    }
    if (parsed && !ok) {
        key("error");
        parser::appendJsonText(out, issueToJson(*response.parse->error()), -1);
    }
    if (request.showEvents) {
        key("events");
        parser::appendJsonText(out, response.events, -1);
    }
    if (data != nullptr) {
        key("fields");
        parser::appendFieldsJsonText(out, data->fields(), -1);
    }
    if (request.autoFormat) {
        key("format");
        appendChosenFormatText(out, response.chosenFormat);
    }
    if (id != nullptr) {
        key("id");
        parser::appendJsonText(out, *id, -1);
    }
    if (data != nullptr && request.showJsonString) {
        key("jsonString");
        parser::appendJsonString(out, data->jsonString());
    }
    key("ok");
    out += ok ? "true" : "false";
    if (!response.options.is_null()) {
        key("options");
        parser::appendJsonText(out, response.options, -1);
    }
    if (response.optionsError) {
        key("optionsError");
        parser::appendJsonString(out, *response.optionsError);
    }
    if (data != nullptr) {
        key("warnings");
        appendStrings(out, data->warnings());
    }
    out += '}';
}

bar::result<Response, std::string> BatchRunner::run(const Request& request) {
    using Result = bar::result<Response, std::string>;
    if (request.showEvents) return runRequest(request);
    if (request.autoFormat) {
        return Result::success(respondDetected(request, [&](ParserDataFormat format) {
            Request single = request;
            single.format = format;
            auto kept = keptParser(single);
            return kept ? kept.value() : nullptr;
        }));
    }

    auto kept = keptParser(request);
    if (!kept) return Result::failure(kept.error());
    return Result::success(respond(request, *kept.value()));
}

bar::result<const PreparedParser*, std::string> BatchRunner::keptParser(const Request& request) {
    using Result = bar::result<const PreparedParser*, std::string>;
    Key key(request.format, request.optionsText, request.parserText, request.updateText);
    auto kept = parsers_.find(key);
    if (kept == parsers_.end()) {
        auto prepared = prepareParser(request, nullptr);
        if (!prepared) return Result::failure(prepared.error());
        if (parsers_.size() >= kMaxKeptParsers) parsers_.clear();
        kept = parsers_.emplace(std::move(key), std::move(prepared).value()).first;
    }
    return Result::success(&kept->second);
}

void BatchRunner::handleLine(std::string_view line, std::string& out) {
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.empty()) return appendInputError(out, nullptr, "empty line");

    json input;
    try {
        input = json::parse(line.begin(), line.end());
    } catch (const json::parse_error& e) {
        // Drop the library's "[json.exception.parse_error.N] " prefix.
        std::string_view what = e.what();
        if (auto end = what.find("] "); !what.empty() && what[0] == '[' && end != what.npos) {
            what.remove_prefix(end + 2);
        }
        return appendInputError(out, nullptr, "line is not valid JSON: " + std::string(what));
    }
    if (!input.is_object()) return appendInputError(out, nullptr, "line is not a JSON object");
    const json* id = nullptr;
    if (auto found = input.find("id"); found != input.end()) id = &*found;

    auto request = requestFromLine(input);
    if (!request) return appendInputError(out, id, request.error());
    auto response = run(request.value());
    if (!response) return appendInputError(out, id, response.error());
    appendResponseText(out, request.value(), response.value(), id);
}

}  // namespace qvx_cli
