// qvx::Parser: the object a host application holds for one format.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "qvx/bc_parser.h"
#include "qvx/core/context.h"
#include "qvx/core/trovane_component.h"
#include "qvx/data_format.h"
#include "qvx/issue.h"
#include "qvx/parsed.h"
#include "qvx/result.h"

namespace qvx {

using ParserEventSink = core::EventSink;

// Id of the usage event sent after every parse.
constexpr int kParseEventId = 15;

using ParseOutcome =
    parser::result<std::shared_ptr<parser::ParsedData>, std::shared_ptr<parser::ParserIssue>>;

class Parser : public core::TrovaneComponent, public std::enable_shared_from_this<Parser> {
  public:
    // Builds the parser of `format` with default options. `context` may be
    // null, which means no usage events. Fails for a format this build cannot
    // parse yet, and for a value outside the format table.
    static bar::result<std::shared_ptr<Parser>, std::string> create(
        const std::shared_ptr<core::Context>& context, ParserDataFormat format);

    // Whether `create` can make a parser of this format in this build.
    static bool isFormatAvailable(ParserDataFormat format);

    // Parses the bytes as they are. A fatal issue discards every field.
    ParseOutcome parse(const std::string& bytes);

    // Sets options from the text of a JSON object; see BcParser.
    bar::result<void, std::string> setOptions(const std::string& json);

    // The current options, snake_case keys.
    nlohmann::json optionsToJSON() const { return parser_->optionsToJSON(); }
    ParserDataFormat format() const noexcept { return format_; }

  private:
    Parser(std::unique_ptr<parser::BcParser> concrete, std::shared_ptr<ParserEventSink> sink,
           ParserDataFormat format);
    void reportParseEvent(const ParseOutcome& outcome) const;

    std::unique_ptr<parser::BcParser> parser_;
    std::shared_ptr<ParserEventSink> eventSink_;
    ParserDataFormat format_;
};

}  // namespace qvx
