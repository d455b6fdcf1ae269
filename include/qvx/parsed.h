// The result model: fields as a parser builds them, and the frozen data a caller reads.
#pragma once

#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "qvx/issue.h"
#include "qvx/string_ref.h"

namespace parser {

// One named piece of the input: the bytes it came from, the decoded value and
// whatever was found wrong with it.
struct ParsedField {
    ParsedField(std::string name, std::string rawString, nlohmann::json parsed);
    // Adds one Generic issue with `issueText` unless it is empty.
    ParsedField(std::string name, std::string rawString, nlohmann::json parsed,
                const std::string& issueText);
    // Adds `issue` unless it is null.
    ParsedField(std::string name, std::string rawString, nlohmann::json parsed,
                std::shared_ptr<ParserIssue> issue);

    std::string name;
    std::string rawString;
    nlohmann::json parsed;
    std::vector<std::shared_ptr<ParserIssue>> issues;
};

// The JSON form of a list of fields: an array (never null) of objects with
// "name", "parsed", "rawString" and, only when there are issues, "issues".
nlohmann::json fieldsToJson(const std::vector<ParsedField>& fields);
nlohmann::json fieldsToJson(const std::vector<std::shared_ptr<ParsedField>>& fields);
// The JSON form of the fields as `toJsonText` prints it.
std::string fieldsToJsonText(const std::vector<ParsedField>& fields);
std::string fieldsToJsonText(const std::vector<std::shared_ptr<ParsedField>>& fields);

// `json` printed with an indent of 4, non-ASCII kept as is, invalid UTF-8 dropped.
std::string toJsonText(const nlohmann::json& json);
// The same on one line, without indent.
std::string toCompactJsonText(const nlohmann::json& json);

// What a format parser fills while it runs. A set `error` is the one and only
// sign of a failed parse.
class ParserResult {
  public:
    // The text a parser worked on after its own normalisation, where it keeps one.
    std::string normalizedText;
    std::vector<ParsedField> fields;
    std::shared_ptr<ParserIssue> error;
    std::vector<std::shared_ptr<ParserIssue>> warnings;

    void addField(std::string name, std::string rawString, nlohmann::json parsed,
                  const std::string& issueText = std::string());
    void addField(std::string name, std::string rawString, nlohmann::json parsed,
                  std::shared_ptr<ParserIssue> issue);
    void addField(ParsedField&& field);
    // rawString is the view's bytes untouched; parsed is them trimmed of white space.
    void addStringField(std::string name, ParserStringRef value);
    // Overwrites the field at `index` (which must exist); its old issues go.
    void replaceField(std::size_t index, std::string name, std::string rawString,
                      nlohmann::json parsed, const std::string& issueText = std::string());

    const ParsedField* getFieldByName(const std::string& name) const;
    bool fieldExists(const std::string& name) const { return getFieldByName(name) != nullptr; }

    // Stores a Generic issue with `text` as the fatal error; the last call wins.
    void setError(const std::string& text);
    void addWarning(std::shared_ptr<ParserIssue> issue);

    nlohmann::json asJson() const { return fieldsToJson(fields); }
    std::string jsonString() const { return fieldsToJsonText(fields); }
};

// The frozen result of a successful parse. Immutable and safe to share.
class ParsedData {
  public:
    explicit ParsedData(const ParserResult& result);
    // Moves the fields and texts out of `result` instead of copying them.
    explicit ParsedData(ParserResult&& result);

    const std::string& normalizedText() const noexcept { return normalizedText_; }
    const std::vector<std::shared_ptr<ParsedField>>& fields() const noexcept { return fields_; }
    const std::vector<std::string>& warnings() const noexcept { return warnings_; }
    // The JSON form of the fields as text. Printed once, on first request, so
    // that callers who only read fields never pay for it.
    const std::string& jsonString() const;

    nlohmann::json asJson() const { return fieldsToJson(fields_); }
    // The first field with this exact name, or null.
    std::shared_ptr<ParsedField> getFieldByName(const std::string& name) const;

  private:
    std::string normalizedText_;
    std::vector<std::shared_ptr<ParsedField>> fields_;
    std::vector<std::string> warnings_;
    mutable std::once_flag jsonOnce_;
    mutable std::string jsonString_;
};

}  // namespace parser
