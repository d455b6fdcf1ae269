// One parse request as the command line runs it, and its JSON answer: the
// shared core of the --batch and --json modes, also used by the human mode.
#pragma once

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "qvx/qvx.h"

namespace qvx_cli {

struct Request {
    ParserDataFormat format = ParserDataFormat::Gs1Ai;
    // Handed to the parser's option setter once, when present.
    std::optional<std::string> optionsText;
    // When present, the parser comes from this JSON description instead of
    // `format` and `optionsText`, and is then updated with `updateText`.
    std::optional<std::string> parserText;
    std::optional<std::string> updateText;
    // The input bytes, unchanged.
    std::string data;
    bool showOptions = false;
    bool showEvents = false;
    bool showJsonString = false;
    bool showComponentId = false;
    bool showDeserializerWarnings = false;
    // "format": "auto": detect the format and parse with the candidates.
    bool autoFormat = false;
    bool showCandidates = false;
};

struct Response {
    // Set when the option call failed; then no parse was run.
    std::optional<std::string> optionsError;
    // Set when the deserializer threw; then no parse was run.
    std::optional<std::string> deserializerError;
    std::vector<std::string> deserializerWarnings;
    // The parser's component id, when there is a parser.
    std::optional<std::string> componentId;
    // The outcome of the parse, when one was run.
    std::optional<qvx::ParseOutcome> parse;
    // The parser's options after the option call (snake_case keys), read only
    // when the request shows them and there is a parser; null otherwise.
    nlohmann::json options;
    // Every usage event of this request, as {"id": ..., "payload": ...}.
    nlohmann::json events = nlohmann::json::array();
    // Detection: the ranked candidates (when shown or detected) and the
    // format whose answer this is.
    qvx::FormatCandidates candidates;
    std::optional<ParserDataFormat> chosenFormat;
};

// A parser of one format with one request's options set once, or made from
// the request's descriptions.
struct PreparedParser {
    std::shared_ptr<qvx::Parser> parser;
    // The option call's failure; such a parser is never asked to parse.
    std::optional<std::string> optionsError;
    // The deserializer's failure (then `parser` may be null) and warnings.
    std::optional<std::string> deserializerError;
    std::vector<std::string> deserializerWarnings;
};

// Makes the parser of `request` without parsing. Fails with the library's
// creation message when the format is not built.
bar::result<PreparedParser, std::string> prepareParser(
    const Request& request, const std::shared_ptr<qvx::core::Context>& context);

// Parses the request's data with a prepared parser, unless preparing failed.
Response respond(const Request& request, const PreparedParser& prepared);

// Runs `request` on a freshly created parser with its own event sink. Fails
// with the library's creation message when the format is not built.
bar::result<Response, std::string> runRequest(const Request& request);

// Appends the output object of a run request as one line of compact JSON
// (without the line end), with "id" when `id` is not null. Keys come in byte
// order, as in every JSON object the tool prints.
void appendResponseText(std::string& out, const Request& request, const Response& response,
                        const nlohmann::json* id);

// The JSON form of a fatal issue: "message", "code", "additionalInfo".
nlohmann::json issueToJson(const parser::ParserIssue& issue);

// Answers --batch lines. Every line behaves as a freshly created parser with
// the line's options set once. Parsers keep nothing of one parse for the
// next, so a parser made for one (format, options) pair serves every later
// line with the same pair and the same answers; only lines that show the
// usage events get a parser of their own, since the events are per parser.
class BatchRunner {
  public:
    // Appends the output line for one input line (a trailing "\r" is
    // ignored), without the line end.
    void handleLine(std::string_view line, std::string& out);

  private:
    // Format, options text, description text, update text.
    using Key = std::tuple<ParserDataFormat, std::optional<std::string>, std::optional<std::string>,
                           std::optional<std::string>>;

    bar::result<Response, std::string> run(const Request& request);
    // The kept parser for the request's format and options, made on first use.
    bar::result<const PreparedParser*, std::string> keptParser(const Request& request);

    std::map<Key, PreparedParser> parsers_;
};

}  // namespace qvx_cli
