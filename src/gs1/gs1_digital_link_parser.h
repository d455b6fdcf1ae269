// GS1 Digital Link URIs: the path and query of an uncompressed URI become an
// element string in the human form, which the GS1 walk reads; attributes that
// name no AI become fields of their own.
#pragma once

#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "gs1/digital_link_keys.h"
#include "gs1/gs1_ai_parser.h"
#include "qvx/bc_parser.h"

namespace parser {

// The host of the resolver that canonical URIs name.
inline constexpr const char* kDigitalLinkResolverDomain = "id.gs1.org";
// The standard that the messages point to.
inline constexpr const char* kDigitalLinkUriSyntaxAddress =
    "https://ref.gs1.org/standards/digital-link/uri-syntax/";
// The longest URI read. The URI patterns run on a backtracking matcher that
// recurses about once per byte (some 330 bytes of stack each in a release
// build) and backtracks polynomially over a long authority, so longer inputs
// are refused before matching.
inline constexpr std::size_t kDigitalLinkLongestUri = 512;

struct DigitalLinkPair {
    std::string key;
    std::string value;
};

// The element-string walk as the Digital Link parser needs it: human form
// only, values already percent-decoded. Its own two flags shadow the walk's
// and are kept equal to them.
class Gs1DigitalLinkEngine : public Gs1AiParser {
  public:
    Gs1DigitalLinkEngine();

    void set_strict_mode(bool strict);
    void set_output_human_readable_string(bool output);

    DigitalLinkKeys keys;
    bool strictMode = true;
    bool outputHumanReadableString = false;
};

class Gs1DigitalLinkParser : public BcParser {
  public:
    std::unique_ptr<ParserResult> parse(ParserStringRef input) override;
    std::unique_ptr<ParserOptionsOutcome> readOptionsFromJSON(nlohmann::json options) override;
    nlohmann::json optionsToJSON() const override;

    Gs1DigitalLinkEngine& engine() noexcept { return engine_; }

  private:
    Gs1DigitalLinkEngine engine_;
};

}  // namespace parser
