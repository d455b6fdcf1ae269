#include "common/parser_regex.h"

#include <exception>
#include <iterator>

#include "qvx/contract.h"

// Matching never lets an exception out: the standard library may throw
// error_complexity or error_stack on a hostile subject, and a scan that the
// library cannot handle is simply one that does not match. Note that the
// library's backtracking executor recurses about once per subject byte for
// repeated groups, so a very long subject can exhaust the stack instead of
// throwing; every pattern here runs on the short texts printed on codes.

namespace {

using Flags = std::regex_constants::syntax_option_type;

Flags grammarFor(ParserRegexDialect dialect) {
    const int value = static_cast<int>(dialect);
    QVX_GUARD(value >= 0 && value <= 3, "unknown regex dialect provided");
    static constexpr Flags kGrammars[] = {
        std::regex_constants::ECMAScript,
        std::regex_constants::basic,
        std::regex_constants::extended,
        std::regex_constants::ECMAScript | std::regex_constants::icase,
    };
    return kGrammars[value];
}

// Builds the whole list first so that the caller's vector only ever grows by a
// complete match.
template <class Match>
void appendGroups(const Match& match, std::vector<std::string>& groups) {
    std::vector<std::string> found;
    found.reserve(match.size());
    for (const auto& group : match) {
        found.push_back(group.matched ? group.str() : std::string());
    }
    groups.insert(groups.end(), std::make_move_iterator(found.begin()),
                  std::make_move_iterator(found.end()));
}

}  // namespace

const std::string ParserRegex::kWildcardRegexPattern = "[\\s\\S]*";
const ParserRegex ParserRegex::kWildcardRegex{
    std::basic_regex<char>(kWildcardRegexPattern, std::regex_constants::ECMAScript)};

std::optional<ParserRegex> ParserRegex::compile(ParserStringRef pattern,
                                                ParserRegexDialect dialect) {
    const Flags flags = grammarFor(dialect);
    try {
        return ParserRegex(std::basic_regex<char>(pattern.begin(), pattern.end(), flags));
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

bool ParserRegex::isFullMatch(ParserStringRef subject) const {
    try {
        return std::regex_match(subject.begin(), subject.end(), regex_);
    } catch (const std::exception&) {
        return false;
    }
}

bool ParserRegex::isFullMatch(const std::string& subject, std::vector<std::string>& groups) const {
    try {
        std::smatch match;
        if (!std::regex_match(subject, match, regex_)) return false;
        appendGroups(match, groups);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool ParserRegex::isPartialMatch(ParserStringRef subject) const {
    try {
        return std::regex_search(subject.begin(), subject.end(), regex_);
    } catch (const std::exception&) {
        return false;
    }
}

bool ParserRegex::isPartialMatch(const std::string& subject,
                                 std::vector<std::string>& groups) const {
    try {
        std::smatch match;
        if (!std::regex_search(subject, match, regex_)) return false;
        appendGroups(match, groups);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool ParserRegex::isPartialMatch(const std::string& subject,
                                 std::vector<MatchDescriptor>& groups) const {
    try {
        std::smatch match;
        if (!std::regex_search(subject, match, regex_)) return false;
        std::vector<MatchDescriptor> found;
        found.reserve(match.size());
        for (std::size_t i = 0; i < match.size(); ++i) {
            MatchDescriptor descriptor;
            descriptor.text = match[i].matched ? match[i].str() : std::string();
            descriptor.position = static_cast<std::int64_t>(match.position(i));
            descriptor.length = match[i].matched ? static_cast<std::int64_t>(match.length(i)) : 0;
            found.push_back(std::move(descriptor));
        }
        groups.insert(groups.end(), std::make_move_iterator(found.begin()),
                      std::make_move_iterator(found.end()));
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool ParserRegex::foundPartialMatchWhileAdvancing(ParserStringRef& subject,
                                                  std::vector<std::string>& groups) const {
    try {
        std::cmatch match;
        if (!std::regex_search(subject.begin(), subject.end(), match, regex_)) return false;
        appendGroups(match, groups);
        subject = ParserStringRef(match[0].second, subject.end());
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

std::string ParserRegex::replace(const std::string& subject, const std::string& replacement) const {
    try {
        return std::regex_replace(subject, regex_, replacement);
    } catch (const std::exception&) {
        return subject;
    }
}

std::string ParserRegex::replace(ParserStringRef subject, ParserStringRef replacement) const {
    const std::string format = replacement.str();
    try {
        std::string out;
        std::regex_replace(std::back_inserter(out), subject.begin(), subject.end(), regex_, format);
        return out;
    } catch (const std::exception&) {
        return subject.str();
    }
}

std::optional<ParserStringRef> ParserRegex::getBestMatchingSubstring(
    ParserStringRef subject) const {
    try {
        std::cmatch match;
        if (!std::regex_search(subject.begin(), subject.end(), match, regex_)) {
            return std::nullopt;
        }
        const auto& best = regex_.mark_count() >= 1 ? match[1] : match[0];
        if (!best.matched) return ParserStringRef(subject.end(), subject.end());
        return ParserStringRef(best.first, best.second);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}
