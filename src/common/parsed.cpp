#include "qvx/parsed.h"

#include "common/text.h"
#include "qvx/contract.h"
#include "qvx/json_text.h"

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
    std::string text;
    appendFieldsJsonText(text, fields, 4);
    return text;
}

std::string fieldsToJsonText(const std::vector<std::shared_ptr<ParsedField>>& fields) {
    std::string text;
    appendFieldsJsonText(text, fields, 4);
    return text;
}

std::string toJsonText(const nlohmann::json& json) {
    std::string text;
    appendJsonText(text, json, 4);
    return text;
}

std::string toCompactJsonText(const nlohmann::json& json) {
    std::string text;
    appendJsonText(text, json, -1);
    return text;
}

namespace {
// Most results have a handful of fields; starting with room for several
// spares the vector's first doublings.
constexpr std::size_t kInitialFieldCapacity = 8;

void makeRoom(std::vector<ParsedField>& fields) {
    if (fields.capacity() == 0) fields.reserve(kInitialFieldCapacity);
}
}  // namespace

void ParserResult::addField(std::string name, std::string rawString, nlohmann::json parsed,
                            const std::string& issueText) {
    makeRoom(fields);
    fields.emplace_back(std::move(name), std::move(rawString), std::move(parsed), issueText);
}

void ParserResult::addField(std::string name, std::string rawString, nlohmann::json parsed,
                            std::shared_ptr<ParserIssue> issue) {
    makeRoom(fields);
    fields.emplace_back(std::move(name), std::move(rawString), std::move(parsed), std::move(issue));
}

void ParserResult::addField(ParsedField&& field) {
    makeRoom(fields);
    fields.push_back(std::move(field));
}

void ParserResult::addStringField(std::string name, ParserStringRef value) {
    makeRoom(fields);
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
    if (!result.fields.empty()) {
        // The fields move into one shared block, and each pointer handed out
        // shares that block's ownership: a field costs no allocation of its own
        // and still lives as long as anyone holds it.
        auto block = std::make_shared<std::vector<ParsedField>>(std::move(result.fields));
        fields_.reserve(block->size());
        for (ParsedField& field : *block) fields_.emplace_back(block, &field);
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
