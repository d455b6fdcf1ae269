// GS1 element strings: Application Identifiers and their data, in the
// machine form (bare AIs, FNC1 as 0x1D) and the human form ("(01)...").
#pragma once

#include <memory>
#include <nlohmann/json.hpp>

#include "qvx/bc_parser.h"

namespace parser {

class ResultBuilder;

enum class Gs1AiStandardExtension { nhs = 0, none = 1 };

class Gs1AiParser : public BcParser {
  public:
    std::unique_ptr<ParserResult> parse(ParserStringRef input) override;
    std::unique_ptr<ParserOptionsOutcome> readOptionsFromJSON(nlohmann::json options) override;
    nlohmann::json optionsToJSON() const override;

    // Reads one AI and its data and advances `view` past them; false stops the walk.
    bool parseNextAi(ResultBuilder& builder, ParserStringRef& view);

    // The decoders read these; the Digital Link parser sets them directly.
    bool strictMode = true;
    bool allowMachineReadableCodes = true;
    bool allowHumanReadableCodes = false;
    bool outputHumanReadableString = false;
    bool digitalLinkMode = false;
    Gs1AiStandardExtension standardExtension = Gs1AiStandardExtension::none;

    // Only the walk and the decoders look at the mode flags as a pair.
    bool humanOnly() const noexcept {
        return allowHumanReadableCodes && !allowMachineReadableCodes;
    }
};

}  // namespace parser
