#include "detected_request.h"

#include <memory>
#include <utility>

#include "qvx/json_text.h"

namespace qvx_cli {

Response respondDetected(const Request& request, const PreparedFor& preparedFor) {
    std::optional<ParserDataFormat> refusedFormat;
    std::optional<std::string> refusal;
    auto detected = qvx::parseDetected(
        request.data, [&](ParserDataFormat format) -> std::shared_ptr<qvx::Parser> {
            const PreparedParser* prepared = preparedFor(format);
            if (prepared == nullptr) return nullptr;
            if (prepared->optionsError) {
                if (!refusal) {
                    refusedFormat = format;
                    refusal = prepared->optionsError;
                }
                return nullptr;
            }
            return prepared->parser;
        });

    Response response;
    response.candidates = detected.candidates;
    if (!detected.format && refusal) {
        response.chosenFormat = refusedFormat;
        response.optionsError = std::move(refusal);
    } else {
        response.chosenFormat = detected.format;
        response.parse = std::move(detected.outcome);
    }
    if (request.showOptions && response.chosenFormat) {
        response.options = preparedFor(*response.chosenFormat)->parser->optionsToJSON();
    }
    return response;
}

void appendCandidatesText(std::string& out, const qvx::FormatCandidates& candidates) {
    out += '[';
    for (const auto& candidate : candidates) {
        if (&candidate != candidates.begin()) out += ',';
        out += "{\"format\":";
        parser::appendJsonString(out, parser::dataFormatName(candidate.format));
        out += ",\"reason\":";
        parser::appendJsonString(out, candidate.reason);
        out += '}';
    }
    out += ']';
}

void appendChosenFormatText(std::string& out, const std::optional<ParserDataFormat>& format) {
    if (format) {
        parser::appendJsonString(out, parser::dataFormatName(*format));
    } else {
        out += "null";
    }
}

void printDetection(std::ostream& out, const Response& response, bool showCandidates) {
    if (response.chosenFormat)
        out << "format: " << parser::dataFormatName(*response.chosenFormat) << '\n';
    if (!showCandidates) return;
    for (const auto& candidate : response.candidates) {
        out << "candidate: " << parser::dataFormatName(candidate.format) << ": " << candidate.reason
            << '\n';
    }
}

}  // namespace qvx_cli
