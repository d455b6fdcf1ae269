#include "request.h"

#include <memory>
#include <utility>

#include "base64.h"

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

RequestResult requestFromLine(const json& line) {
    Request request;

    auto format = line.find("format");
    if (format == line.end()) return RequestResult::failure("missing \"format\"");
    if (!format->is_string()) return RequestResult::failure("\"format\" must be a string");
    const auto& name = format->get_ref<const std::string&>();
    auto value = parser::dataFormatFromName(name);
    if (!value) return RequestResult::failure("unknown format \"" + name + "\"");
    request.format = *value;

    auto data = line.find("data");
    auto data64 = line.find("dataBase64");
    if (data != line.end() && data64 != line.end()) {
        return RequestResult::failure("give only one of \"data\" and \"dataBase64\"");
    }
    if (data != line.end()) {
        if (!data->is_string()) return RequestResult::failure("\"data\" must be a string");
        request.data = data->get<std::string>();
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

    auto options = line.find("options");
    auto optionsText = line.find("optionsText");
    if (options != line.end() && optionsText != line.end()) {
        return RequestResult::failure("give only one of \"options\" and \"optionsText\"");
    }
    if (options != line.end()) {
        request.optionsText = options->dump();
    } else if (optionsText != line.end()) {
        if (!optionsText->is_string()) {
            return RequestResult::failure("\"optionsText\" must be a string");
        }
        request.optionsText = optionsText->get<std::string>();
    }

    std::string error;
    request.showOptions = readFlag(line, "showOptions", error);
    request.showEvents = readFlag(line, "showEvents", error);
    request.showJsonString = readFlag(line, "showJsonString", error);
    if (!error.empty()) return RequestResult::failure(error);
    return RequestResult::success(std::move(request));
}

json inputError(json out, std::string text) {
    out["ok"] = false;
    out["inputError"] = std::move(text);
    return out;
}

}  // namespace

bar::result<Response, std::string> runRequest(const Request& request) {
    using Result = bar::result<Response, std::string>;
    auto sink = std::make_shared<RecordingSink>();
    auto created = qvx::Parser::create(std::make_shared<qvx::core::Context>(sink), request.format);
    if (!created) return Result::failure(created.error());
    const auto& parser = created.value();

    Response response;
    if (request.optionsText) {
        auto set = parser->setOptions(*request.optionsText);
        if (!set) response.optionsError = set.error();
    }
    response.options = parser->optionsToJSON();
    if (!response.optionsError) response.parse = parser->parse(request.data);
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

json responseToJson(const Request& request, const Response& response) {
    json out = json::object();
    if (response.optionsError) {
        out["ok"] = false;
        out["optionsError"] = *response.optionsError;
    } else if (response.parse && response.parse->ok()) {
        const auto& data = *response.parse->value();
        out["ok"] = true;
        out["fields"] = data.asJson();
        out["warnings"] = data.warnings();
        if (request.showJsonString) out["jsonString"] = data.jsonString();
    } else if (response.parse) {
        out["ok"] = false;
        out["error"] = issueToJson(*response.parse->error());
    }
    if (request.showOptions) out["options"] = response.options;
    if (request.showEvents) out["events"] = response.events;
    return out;
}

json handleBatchLine(std::string_view line) {
    json out = json::object();
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.empty()) return inputError(std::move(out), "empty line");

    json input;
    try {
        input = json::parse(line.begin(), line.end());
    } catch (const json::parse_error& e) {
        // Drop the library's "[json.exception.parse_error.N] " prefix.
        std::string_view what = e.what();
        if (auto end = what.find("] "); !what.empty() && what[0] == '[' && end != what.npos) {
            what.remove_prefix(end + 2);
        }
        return inputError(std::move(out), "line is not valid JSON: " + std::string(what));
    }
    if (!input.is_object()) return inputError(std::move(out), "line is not a JSON object");
    if (auto id = input.find("id"); id != input.end()) out["id"] = *id;

    auto request = requestFromLine(input);
    if (!request) return inputError(std::move(out), request.error());
    auto response = runRequest(request.value());
    if (!response) return inputError(std::move(out), response.error());

    json answer = responseToJson(request.value(), response.value());
    answer.update(out);
    return answer;
}

}  // namespace qvx_cli
