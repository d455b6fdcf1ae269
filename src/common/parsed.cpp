#include "qvx/parsed.h"

#include "common/text.h"
#include "qvx/contract.h"

namespace parser {

ParsedField::ParsedField(std::string name, std::string rawString, nlohmann::json parsed)
    : name(std::move(name)), rawString(std::move(rawString)), parsed(std::move(parsed)) {}

ParsedField::ParsedField(std::string name, std::string rawString, nlohmann::json parsed,
                         const std::string& issueText)
    : ParsedField(std::move(name), std::move(rawString), std::move(parsed)) {
    if (!issueText.empty()) issues.push_back(ParserIssue::generic(issueText));
}

ParsedField::ParsedField(std::string name, std::string rawString, nlohmann::json parsed,
                         std::shared_ptr<ParserIssue> issue)
    : ParsedField(std::move(name), std::move(rawString), std::move(parsed)) {
    if (issue) issues.push_back(std::move(issue));
}

namespace {
nlohmann::json fieldToJson(const ParsedField& field) {
    nlohmann::json object = {
        {"name", field.name},
        {"parsed", field.parsed},
        {"rawString", field.rawString},
    };
    if (!field.issues.empty()) {
        nlohmann::json& messages = object["issues"] = nlohmann::json::array();
        for (const auto& issue : field.issues) messages.push_back(issue->message);
    }
    return object;
}
}  // namespace

nlohmann::json fieldsToJson(const std::vector<ParsedField>& fields) {
    nlohmann::json array = nlohmann::json::array();
    for (const auto& field : fields) array.push_back(fieldToJson(field));
    return array;
}

nlohmann::json fieldsToJson(const std::vector<std::shared_ptr<ParsedField>>& fields) {
    nlohmann::json array = nlohmann::json::array();
    for (const auto& field : fields) array.push_back(fieldToJson(*field));
    return array;
}

std::string fieldsToJsonText(const std::vector<ParsedField>& fields) {
    return toJsonText(fieldsToJson(fields));
}

std::string fieldsToJsonText(const std::vector<std::shared_ptr<ParsedField>>& fields) {
    return toJsonText(fieldsToJson(fields));
}

std::string toJsonText(const nlohmann::json& json) {
    return json.dump(4, ' ', false, nlohmann::json::error_handler_t::ignore);
}

std::string toCompactJsonText(const nlohmann::json& json) {
    return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::ignore);
}

void ParserResult::addField(std::string name, std::string rawString, nlohmann::json parsed,
                            const std::string& issueText) {
    fields.emplace_back(std::move(name), std::move(rawString), std::move(parsed), issueText);
}

void ParserResult::addField(std::string name, std::string rawString, nlohmann::json parsed,
                            std::shared_ptr<ParserIssue> issue) {
    fields.emplace_back(std::move(name), std::move(rawString), std::move(parsed), std::move(issue));
}

void ParserResult::addField(ParsedField&& field) {
    fields.push_back(std::move(field));
}

void ParserResult::addStringField(std::string name, ParserStringRef value) {
    fields.emplace_back(std::move(name), value.str(), trimWhitespace(value).str());
}

void ParserResult::replaceField(std::size_t index, std::string name, std::string rawString,
                                nlohmann::json parsed, const std::string& issueText) {
    QVX_REQUIRE(index < fields.size(), "precondition failed: index < fields.size()");
    fields[index] =
        ParsedField(std::move(name), std::move(rawString), std::move(parsed), issueText);
}

const ParsedField* ParserResult::getFieldByName(const std::string& name) const {
    for (const auto& field : fields) {
        if (field.name == name) return &field;
    }
    return nullptr;
}

void ParserResult::setError(const std::string& text) {
    error = ParserIssue::generic(text);
}

void ParserResult::addWarning(std::shared_ptr<ParserIssue> issue) {
    warnings.push_back(std::move(issue));
}

ParsedData::ParsedData(const ParserResult& result) : ParsedData(ParserResult(result)) {}

ParsedData::ParsedData(ParserResult&& result) : normalizedText_(std::move(result.normalizedText)) {
    fields_.reserve(result.fields.size());
    for (auto& field : result.fields) {
        fields_.push_back(std::make_shared<ParsedField>(std::move(field)));
    }
    warnings_.reserve(result.warnings.size());
    for (const auto& warning : result.warnings) warnings_.push_back(warning->message);
}

const std::string& ParsedData::jsonString() const {
    std::call_once(jsonOnce_, [this] { jsonString_ = fieldsToJsonText(fields_); });
    return jsonString_;
}

std::shared_ptr<ParsedField> ParsedData::getFieldByName(const std::string& name) const {
    for (const auto& field : fields_) {
        if (field->name == name) return field;
    }
    return nullptr;
}

}  // namespace parser
