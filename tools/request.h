// One parse request as the command line runs it, and its JSON answer: the
// shared core of the --batch and --json modes, also used by the human mode.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qvx/qvx.h"

namespace qvx_cli {

struct Request {
    ParserDataFormat format = ParserDataFormat::Gs1Ai;
    // Handed to the parser's option setter once, when present.
    std::optional<std::string> optionsText;
    // The input bytes, unchanged.
    std::string data;
    bool showOptions = false;
    bool showEvents = false;
    bool showJsonString = false;
};

struct Response {
    // Set when the option call failed; then no parse was run.
    std::optional<std::string> optionsError;
    // The outcome of the parse, when one was run.
    std::optional<qvx::ParseOutcome> parse;
    // The parser's options after the option call (snake_case keys).
    nlohmann::json options;
    // Every usage event of this request, as {"id": ..., "payload": ...}.
    nlohmann::json events = nlohmann::json::array();
};

// Runs `request` on a freshly created parser with its own event sink. Fails
// with the library's creation message when the format is not built.
bar::result<Response, std::string> runRequest(const Request& request);

// The output object of a run request (without "id").
nlohmann::json responseToJson(const Request& request, const Response& response);

// The JSON form of a fatal issue: "message", "code", "additionalInfo".
nlohmann::json issueToJson(const parser::ParserIssue& issue);

// Handles one line of --batch input (a trailing "\r" is ignored) and returns
// the output object.
nlohmann::json handleBatchLine(std::string_view line);

}  // namespace qvx_cli
