// "auto" as a format: requests whose format the tool detects, and the
// "format" and "candidates" members of their answers.
#pragma once

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "qvx/qvx.h"
#include "request.h"

namespace qvx_cli {

// The format name that asks for detection.
constexpr std::string_view kAutoFormat = "auto";

// The parser of one candidate format with the request's options set, or null
// when the format is not built.
using PreparedFor = std::function<const PreparedParser*(ParserDataFormat)>;

// Parses with the detected candidates in rank order. Candidates that refuse
// the request's options are passed over; when every candidate that could be
// parsed refused them, the top one's refusal is the answer.
Response respondDetected(const Request& request, const PreparedFor& preparedFor);

// The JSON texts of "candidates" (an array of {"format", "reason"}) and of
// "format" (the chosen name, or null when no format was recognised).
void appendCandidatesText(std::string& out, const qvx::FormatCandidates& candidates);
void appendChosenFormatText(std::string& out, const std::optional<ParserDataFormat>& format);

// The readable lines: "format: NAME", then, when asked, "candidate: NAME: reason".
void printDetection(std::ostream& out, const Response& response, bool showCandidates);

}  // namespace qvx_cli
