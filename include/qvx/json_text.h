// JSON text written straight into a string, byte for byte as nlohmann's
// `dump(indent, ' ', false, error_handler_t::ignore)` prints it: object keys
// sorted, non-ASCII kept, control characters escaped, bytes that are not
// valid UTF-8 dropped. It skips the intermediate objects a dump would need,
// which is where the time goes when fields are turned into text.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace parser {

struct ParsedField;

// Pretty printing uses `indentStep` spaces per level, starting `currentIndent`
// spaces deep; a negative step prints compactly on one line.
void appendJsonText(std::string& out, const nlohmann::json& value, int indentStep,
                    int currentIndent = 0);
// A JSON string literal with its quotes.
void appendJsonString(std::string& out, std::string_view text);

// The JSON form of fields (objects with "issues" when there are any, "name",
// "parsed", "rawString") as `appendJsonText` would print it.
void appendFieldsJsonText(std::string& out, const std::vector<ParsedField>& fields, int indentStep,
                          int currentIndent = 0);
void appendFieldsJsonText(std::string& out, const std::vector<std::shared_ptr<ParsedField>>& fields,
                          int indentStep, int currentIndent = 0);

}  // namespace parser
