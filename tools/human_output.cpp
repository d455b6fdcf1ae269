#include "human_output.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "text_io.h"

namespace qvx_cli {

void printParsedData(std::ostream& out, const parser::ParsedData& data) {
    if (data.fields().empty()) out << "(no fields)\n";
    for (const auto& field : data.fields()) {
        out << escapeForDisplay(field->name, false) << '\n';
        out << "    raw:    \"" << escapeForDisplay(field->rawString, true) << "\"\n";
        out << "    parsed: " << parser::toCompactJsonText(field->parsed) << '\n';
        for (const auto& issue : field->issues) {
            out << "    issue:  " << escapeForDisplay(issue->message, false) << '\n';
        }
    }
    for (const auto& warning : data.warnings()) {
        out << "warning: " << escapeForDisplay(warning, false) << '\n';
    }
}

void printIssue(std::ostream& out, const parser::ParserIssue& issue) {
    out << "error: " << escapeForDisplay(issue.message, false) << '\n';
    if (issue.code != ParserIssueCode::Generic) {
        out << "    code: " << static_cast<std::int32_t>(issue.code) << '\n';
    }
    std::vector<std::pair<int, std::string>> details;
    for (const auto& [key, value] : issue.additionalInfo) {
        details.emplace_back(static_cast<int>(key), value);
    }
    std::sort(details.begin(), details.end());
    for (const auto& [key, value] : details) {
        out << "    " << parser::issueInfoKeyName(static_cast<ParserIssueInfoKey>(key)) << ": "
            << escapeForDisplay(value, false) << '\n';
    }
}

}  // namespace qvx_cli
