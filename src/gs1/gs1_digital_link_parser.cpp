#include "gs1/gs1_digital_link_parser.h"

#include <array>
#include <regex>
#include <string_view>
#include <utility>
#include <vector>

#include "common/option_extractors.h"
#include "common/parser_regex.h"
#include "common/text.h"
#include "gs1/gs1_field_parser.h"
#include "gs1/uri_descriptor.h"

namespace parser {

namespace {

// Only the verdict of the two patterns is read, so they are compiled without
// capture bookkeeping, which the matcher would otherwise update at every step.
ParserRegex compileVerdictPattern(const char* pattern) {
    return ParserRegex(std::basic_regex<char>(
        pattern, std::regex_constants::ECMAScript | std::regex_constants::nosubs));
}

// A scheme and at least four URI bytes behind its slashes. In the first
// class "%.-_" is a range from "." to "_", so a "-" as the second, third or
// fourth byte of the host fails the test.
const ParserRegex& uriPattern() {
    static const ParserRegex pattern = compileVerdictPattern(
        "^http(s)?:\\/\\/.[a-zA-Z0-9@:%.-_\\+~#=]{3,256}\\b([a-zA-Z0-9@:%-_\\+.~#?&/=]*)");
    return pattern;
}

// An uncompressed Digital Link: a primary key with at least four digits and a
// byte behind them. "415" and "payTo" are not among the primary keys here.
const ParserRegex& uncompressedPattern() {
    static const ParserRegex pattern = compileVerdictPattern(
        "^https?:(\\/\\/((([^\\/?#]*)@)?([^\\/?#:]*)(:([^\\/?#]*))?))?([^?#]*)(((\\/"
        "(01|gtin|8006|itip|8013|gmn|8010|cpid|414|gln|417|party|8017|gsrnp|8018|gsrn|255|gcn|00|"
        "sscc|253|gdti|401|ginc|402|gsin|8003|grai|8004|giai)\\/)(\\d{4}[^\\/]+)(\\/[^/]+\\/[^/"
        "]+)?[/]?(\\?([^?\\n]*))?(#([^\\n]*))?))");
    return pattern;
}

// "(see <standard> section <n>)", the reference every canonical-form message ends with.
std::string see(const char* section) {
    return std::string("(see ") + kDigitalLinkUriSyntaxAddress + " section " + section + ")";
}

bool isUrlSafeBase64(ParserStringRef text) {
    static const std::array<bool, 256> alphabet = [] {
        std::array<bool, 256> set{};
        for (unsigned char c = 'A'; c <= 'Z'; ++c) set[c] = true;
        for (unsigned char c = 'a'; c <= 'z'; ++c) set[c] = true;
        for (unsigned char c = '0'; c <= '9'; ++c) set[c] = true;
        set['-'] = true;
        set['_'] = true;
        return set;
    }();
    for (const char c : text.view()) {
        if (!alphabet[static_cast<unsigned char>(c)]) return false;
    }
    return true;
}

// Pieces alternate key and value. An empty piece is an empty value for a
// pending key and is otherwise skipped. An odd last piece of base64 bytes is
// the tail of a compressed URI.
void pairComponents(const std::vector<ParserStringRef>& pieces,
                    std::vector<DigitalLinkPair>& pairs) {
    std::string key;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const ParserStringRef piece = pieces[i];
        if (piece.empty()) {
            if (!key.empty()) pairs.push_back({key, std::string()});
        } else if (i % 2 == 1) {
            pairs.push_back({std::move(key), piece.str()});
            key.clear();
        } else {
            key = piece.str();
        }
    }
    if (pieces.size() % 2 == 1 && !pieces.back().empty() && isUrlSafeBase64(pieces.back())) {
        pairs.push_back({"compressedComponent", pieces.back().str()});
    }
}

bool isNumericKey(const std::string& key) {
    return key.empty() || isInCharset(ParserStringRef(key), Charset::Numeric);
}

// The vocabulary is the same for every parser: built once, and copied into
// each engine, which is much cheaper than inserting every word again.
const DigitalLinkKeys& sharedKeys() {
    static const DigitalLinkKeys keys;
    return keys;
}

std::unique_ptr<ParserResult> failure(const std::string& text) {
    auto result = std::make_unique<ParserResult>();
    result->setError(text);
    return result;
}

}  // namespace

Gs1DigitalLinkEngine::Gs1DigitalLinkEngine() : keys(sharedKeys()) {
    Gs1AiParser::strictMode = true;
    allowMachineReadableCodes = false;
    allowHumanReadableCodes = true;
    Gs1AiParser::outputHumanReadableString = false;
    digitalLinkMode = true;
    standardExtension = Gs1AiStandardExtension::none;
}

void Gs1DigitalLinkEngine::set_strict_mode(bool strict) {
    strictMode = strict;
    Gs1AiParser::strictMode = strict;
}

void Gs1DigitalLinkEngine::set_output_human_readable_string(bool output) {
    outputHumanReadableString = output;
    Gs1AiParser::outputHumanReadableString = output;
}

std::unique_ptr<ParserResult> Gs1DigitalLinkParser::parse(ParserStringRef input) {
    const bool strict = engine_.strictMode;
    if (input.size() > kDigitalLinkLongestUri) {
        return failure("URI is too long: " + std::to_string(input.size()) + " bytes, but at most " +
                       std::to_string(kDigitalLinkLongestUri) + " are accepted.");
    }
    if (!uriPattern().isPartialMatch(input)) return failure("URI is invalid.");

    auto split = splitUri(input);
    if (!split.ok()) return failure(split.error());
    const UriDescriptor& uri = split.value();
    if (strict && uri.scheme != "https://") {
        return failure("In strict mode, URI scheme must be 'https://', but is: " + uri.scheme);
    }
    if (strict && uri.authority != kDigitalLinkResolverDomain) {
        return failure(std::string("In strict mode, URI domain/authority must be '") +
                       kDigitalLinkResolverDomain + "', but is: " + uri.authority);
    }
    if (!uncompressedPattern().isPartialMatch(input)) {
        return failure(
            "The provided URI does not match the format required for an uncompressed GS1 "
            "Digital Link " +
            see("6.1.1"));
    }
    if (strict && !uri.path.empty() && uri.path.back() == '/') {
        return failure(
            "The provided URI has a trailing '/' which is not allowed in canonical URIs " +
            see("4.12"));
    }

    std::vector<DigitalLinkPair> pairs;
    if (!uri.path.empty()) {
        pairComponents(splitBySubstring(ParserStringRef(uri.path).drop_front(1), "/"), pairs);
    }
    const std::size_t pathPairs = pairs.size();
    if (!uri.query.empty()) {
        // "=" and "&" separate like "/", so a value holding "=" falls apart
        // into further pieces.
        std::string query = uri.query;
        for (char& c : query) {
            if (c == '?' || c == '=' || c == '&') c = '/';
        }
        pairComponents(splitBySubstring(ParserStringRef(query).drop_front(1), "/"), pairs);
    }
    if (strict) {
        for (std::size_t i = pathPairs + 1; i < pairs.size(); ++i) {
            if (pairs[i].key < pairs[i - 1].key) {
                return failure(
                    "Parser is in strict mode, but query parameter keys are not in lexical "
                    "order: '" +
                    uri.query + "' " + see("4.12"));
            }
        }
    }

    std::string elementString;
    std::vector<DigitalLinkPair> extras;
    std::string rejected;
    for (DigitalLinkPair& pair : pairs) {
        // Which bytes may arrive escaped depends on the key as written.
        const std::string_view allowed =
            isEncodedKey(pair.key) ? encodedKeyCharacters : std::string_view();
        rejected.clear();
        std::string value = decodeUriComponent(ParserStringRef(pair.value), allowed, rejected);
        if (strict && !rejected.empty()) {
            return failure(
                "Parser is in strict mode, but URI encoded data value contains illegal "
                "characters '" +
                rejected + "' " + see("4.2"));
        }
        const std::string* ai = &pair.key;
        if (isNumericKey(pair.key)) {
            if (strict && engine_.keys.aiToName.count(pair.key) == 0) {
                return failure("Parser is in strict mode, but key " + pair.key +
                               " is not among those listed in the GS1 Digital Link standard " +
                               "(see " + kDigitalLinkUriSyntaxAddress +
                               " sections 4.3, 4.4, 4.10).");
            }
        } else if (strict) {
            return failure("Parser is in strict (canonical) mode, but key " + pair.key +
                           " is not numeric.");
        } else {
            const auto found = engine_.keys.nameToAi.find(pair.key);
            if (found != engine_.keys.nameToAi.end()) ai = &found->second;
            if (!isNumericKey(*ai)) {
                extras.push_back({pair.key, std::move(value)});
                continue;
            }
        }
        elementString += '(';
        elementString += *ai;
        elementString += ')';
        elementString += value;
    }

    if (strict) {
        std::string order;
        for (std::size_t i = 0; i < pathPairs; ++i) {
            order += '/';
            order += pairs[i].key;
        }
        if (engine_.keys.validPaths.count(order) == 0) {
            return failure("Parser is in strict mode, but element order in '" + elementString +
                           "' does not follow a legal ordering " + see("4.12"));
        }
    }

    std::unique_ptr<ParserResult> result =
        engine_.Gs1AiParser::parse(ParserStringRef(elementString));
    if (result->error) return result;
    // Attributes without an AI are reported even when no element string came
    // of the URI: they are all that the caller would otherwise lose.
    for (DigitalLinkPair& extra : extras) {
        const bool compressed = extra.key == "compressedComponent";
        nlohmann::json value(extra.value);
        result->addField(std::move(extra.key), std::move(extra.value), std::move(value));
        if (compressed) {
            result->addWarning(std::make_shared<ParserIssue>(
                "Final URI component is compressed data which is currently not supported by "
                "this parser."));
        }
    }
    return result;
}

std::unique_ptr<ParserOptionsOutcome> Gs1DigitalLinkParser::readOptionsFromJSON(
    nlohmann::json options) {
    OptionExtractor extractor(options);
    OptionOutcome outcome = extract_to<bool>(extractor, "strictMode", engine_.strictMode);
    if (outcome.ok()) {
        outcome = extract_to<bool>(extractor, "outputHumanReadableString",
                                   engine_.outputHumanReadableString);
    }
    if (outcome.ok()) outcome = extractor.refuseLeftovers();
    if (!outcome.ok()) {
        // What was read before the failure stays set, in the walk as well.
        engine_.set_strict_mode(engine_.strictMode);
        engine_.set_output_human_readable_string(engine_.outputHumanReadableString);
        return ParserOptionsOutcome::failure(outcome.error());
    }
    return engine_.Gs1AiParser::readOptionsFromJSON(
        {{"outputHumanReadableString", engine_.outputHumanReadableString},
         {"strictMode", engine_.strictMode}});
}

nlohmann::json Gs1DigitalLinkParser::optionsToJSON() const {
    return {{"output_human_readable_string", engine_.outputHumanReadableString},
            {"strict_mode", engine_.strictMode}};
}

}  // namespace parser
