// ParserRegex: the one way format parsers use regular expressions.
#pragma once

#include <cstdint>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "qvx/string_ref.h"

enum class ParserRegexDialect : int {
    ECMAScript = 0,
    PosixBasic = 1,
    PosixExtended = 2,
    ECMAScriptIgnoreCase = 3,
};

// A compiled pattern over std::basic_regex<char>. Patterns a parser needs on
// every call are compiled once, at load time or on first use, never per call.
class ParserRegex {
  public:
    struct MatchDescriptor {
        std::string text;
        std::int64_t position = 0;  // bytes from the start of the subject
        std::int64_t length = 0;    // 0 for a group that took no part
    };

    // "[\\s\\S]*": anything, line breaks included.
    static const std::string kWildcardRegexPattern;
    static const ParserRegex kWildcardRegex;

    explicit ParserRegex(std::basic_regex<char>&& regex) : regex_(std::move(regex)) {}

    // Empty when the standard library rejects the pattern; never throws. An
    // unknown dialect is a contract failure.
    static std::optional<ParserRegex> compile(ParserStringRef pattern, ParserRegexDialect dialect);

    bool isFullMatch(ParserStringRef subject) const;
    // On success appends the whole match and then every group (a group that
    // took no part gives ""); on failure leaves `groups` as it was.
    bool isFullMatch(const std::string& subject, std::vector<std::string>& groups) const;
    bool isPartialMatch(ParserStringRef subject) const;
    bool isPartialMatch(const std::string& subject, std::vector<std::string>& groups) const;
    bool isPartialMatch(const std::string& subject, std::vector<MatchDescriptor>& groups) const;
    // Searches from the view's start; on success appends the groups and moves
    // the view's start to the end of the match.
    bool foundPartialMatchWhileAdvancing(ParserStringRef& subject,
                                         std::vector<std::string>& groups) const;
    std::string replace(const std::string& subject, const std::string& replacement) const;
    std::string replace(ParserStringRef subject, ParserStringRef replacement) const;
    // Group 1 of the first match, or the whole match for a pattern without
    // groups; points into `subject`.
    std::optional<ParserStringRef> getBestMatchingSubstring(ParserStringRef subject) const;

  private:
    std::basic_regex<char> regex_;
};
