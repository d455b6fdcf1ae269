// The WebAssembly side of the JavaScript package. One call parses and answers
// with the text of a `qvx-parse --batch` output line, which the JavaScript
// side reads with JSON.parse: no binding library is linked, and the library's
// own printer writes every value, so the two cannot drift apart.
#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "qvx/json_text.h"
#include "qvx/qvx.h"

namespace {

// The last answer; the JavaScript side copies it out before the next call.
const char* answerText(std::string text) {
    static std::string answer;
    answer = std::move(text);
    return answer.c_str();
}

std::string refusal(const char* key, const std::string& text) {
    std::string out = std::string("{\"") + key + "\":";
    parser::appendJsonString(out, text);
    return out + '}';
}

// Parsers are kept per format and options text: a parse changes nothing in a
// parser, so one made earlier answers as a new one would.
struct KeptParser {
    std::string format;
    std::string options;
    bool hasOptions = false;
    std::shared_ptr<qvx::Parser> parser;
};

}  // namespace

extern "C" {

// Parses `size` bytes at `data` with a parser of `format` whose options are
// set from `options` (`optionsSize` bytes), or left at their defaults when
// `options` is null. The answer is one of
//   {"fields": [...], "ok": true, "warnings": [...]}
//   {"error": {"additionalInfo": {...}, "code": n, "message": "..."}, "ok": false}
//   {"optionsError": "..."}   the options were refused; nothing was parsed
//   {"formatError": "..."}    no parser of that format in this build
const char* qvx_js_parse(const char* format, const char* data, std::size_t size,
                         const char* options, std::size_t optionsSize) {
    static KeptParser kept;
    const bool hasOptions = options != nullptr;
    const std::string optionsText = hasOptions ? std::string(options, optionsSize) : std::string();
    if (!kept.parser || kept.format != format || kept.hasOptions != hasOptions ||
        kept.options != optionsText) {
        kept = KeptParser();
        const auto value = parser::dataFormatFromName(format);
        if (!value)
            return answerText(
                refusal("formatError", "unknown format '" + std::string(format) + "'"));
        auto created = qvx::Parser::create(nullptr, *value);
        if (!created) return answerText(refusal("formatError", created.error()));
        auto parser = std::move(created).value();
        if (hasOptions) {
            auto set = parser->setOptions(optionsText);
            if (!set) return answerText(refusal("optionsError", set.error()));
        }
        kept = KeptParser{format, optionsText, hasOptions, std::move(parser)};
    }

    const auto outcome = kept.parser->parse(std::string(data, size));
    std::string out;
    if (outcome.ok()) {
        const auto& result = *outcome.value();
        out += "{\"fields\":";
        parser::appendFieldsJsonText(out, result.fields(), -1);
        out += ",\"ok\":true,\"warnings\":";
        parser::appendJsonText(out, nlohmann::json(result.warnings()), -1);
        out += '}';
        return answerText(std::move(out));
    }
    const auto& issue = *outcome.error();
    nlohmann::json info = nlohmann::json::object();
    for (const auto& [key, value] : issue.additionalInfo) {
        info[parser::issueInfoKeyName(key)] = value;
    }
    out += "{\"error\":";
    parser::appendJsonText(out,
                           {{"additionalInfo", std::move(info)},
                            {"code", static_cast<int>(issue.code)},
                            {"message", issue.message}},
                           -1);
    out += ",\"ok\":false}";
    return answerText(std::move(out));
}

// The names of the formats this build parses, as a JSON array.
const char* qvx_js_formats() {
    nlohmann::json names = nlohmann::json::array();
    for (const auto& [format, name] : parser::dataFormatTable()) {
        if (qvx::Parser::isFormatAvailable(format)) names.push_back(name);
    }
    return answerText(names.dump());
}

}  // extern "C"
