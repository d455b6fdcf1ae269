// The regular-expression wrapper: compile without throwing, group lists that
// only ever grow by whole matches, and a search that walks a view forward.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/parser_regex.h"

namespace {

using Strings = std::vector<std::string>;
using Dialect = ParserRegexDialect;

ParserRegex compiled(const char* pattern, Dialect dialect = Dialect::ECMAScript) {
    auto regex = ParserRegex::compile(pattern, dialect);
    EXPECT_TRUE(regex.has_value()) << pattern;
    return regex ? std::move(*regex) : ParserRegex::kWildcardRegex;
}

TEST(ParserRegex, CompileAndDialects) {
    for (const char* bad : {"(", "a{2,1}", "[z-a]", "*"}) {
        EXPECT_FALSE(ParserRegex::compile(bad, Dialect::ECMAScript)) << bad;
    }
    EXPECT_FALSE(compiled("abc").isFullMatch("ABC"));
    EXPECT_TRUE(compiled("abc", Dialect::ECMAScriptIgnoreCase).isFullMatch("ABC"));
    EXPECT_TRUE(compiled("a{2}", Dialect::PosixBasic).isFullMatch("a{2}"));
    EXPECT_TRUE(compiled("a{2}", Dialect::PosixExtended).isFullMatch("aa"));
}

TEST(ParserRegexDeathTest, UnknownDialectIsReportedAndAborts) {
    EXPECT_DEATH(ParserRegex::compile("a", static_cast<Dialect>(4)),
                 "parser: src/common/parser_regex.cpp:[0-9]+: unknown regex dialect provided");
}

TEST(ParserRegex, GroupsAreAppendedOnSuccessOnly) {
    const auto regex = compiled("(a)(x)?(b)");
    Strings groups = {"earlier"};
    EXPECT_TRUE(regex.isFullMatch("ab", groups));
    EXPECT_FALSE(regex.isFullMatch("abc", groups));
    EXPECT_TRUE(regex.isPartialMatch("abc"));
    EXPECT_TRUE(regex.isPartialMatch("zzaxbzz", groups));
    EXPECT_FALSE(regex.isPartialMatch("zz", groups));
    EXPECT_EQ(groups, (Strings{"earlier", "ab", "a", "", "b", "axb", "a", "x", "b"}));

    std::vector<ParserRegex::MatchDescriptor> found(1);
    ASSERT_TRUE(regex.isPartialMatch(std::string("zzabz"), found));
    ASSERT_EQ(found.size(), 5u);
    EXPECT_EQ(found[1].text, "ab");
    EXPECT_EQ(found[1].position, 2);
    EXPECT_EQ(found[1].length, 2);
    EXPECT_EQ(found[3].text, "");
    EXPECT_EQ(found[3].length, 0);
    EXPECT_EQ(found[4].position, 3);
}

TEST(ParserRegex, AdvancingWalksThroughMatches) {
    const std::string text = "a12b345c";
    ParserStringRef view(text);
    Strings groups;
    const auto digits = compiled("[0-9]+");
    EXPECT_TRUE(digits.foundPartialMatchWhileAdvancing(view, groups));
    EXPECT_EQ(view.data(), text.data() + 3);
    EXPECT_TRUE(digits.foundPartialMatchWhileAdvancing(view, groups));
    EXPECT_FALSE(digits.foundPartialMatchWhileAdvancing(view, groups));
    EXPECT_EQ(view.data(), text.data() + 7);
    EXPECT_EQ(groups, (Strings{"12", "345"}));

    ParserStringRef still(text);  // an empty match does not move the view
    EXPECT_TRUE(compiled("z*").foundPartialMatchWhileAdvancing(still, groups));
    EXPECT_EQ(still.data(), text.data());
}

TEST(ParserRegex, ReplaceAndBestSubstring) {
    const auto digit = compiled("([0-9])");
    EXPECT_EQ(digit.replace(std::string("a1b22"), std::string("<$1>")), "a<1>b<2><2>");
    const std::string subject = "xabcx", hash = "#";
    EXPECT_EQ(compiled("b").replace(ParserStringRef(subject), ParserStringRef(hash)), "xa#cx");

    const std::pair<const char*, std::optional<std::string>> cases[] = {
        {"a(b)c", "b"}, {"abc", "abc"}, {"a(z)?bc", ""}, {"q(b)", std::nullopt}};
    for (const auto& [pattern, expected] : cases) {
        const auto best = compiled(pattern).getBestMatchingSubstring(subject);
        ASSERT_EQ(best.has_value(), expected.has_value()) << pattern;
        if (!best) continue;
        EXPECT_EQ(best->str(), *expected) << pattern;
        EXPECT_TRUE(best->data() >= subject.data() && best->end() <= subject.data() + 5);
    }
}

TEST(ParserRegex, WildcardAcceptsEverything) {
    EXPECT_EQ(ParserRegex::kWildcardRegexPattern, "[\\s\\S]*");
    for (const char* text : {"", "line\nbreak\r\n", "\t \x7f"}) {
        EXPECT_TRUE(ParserRegex::kWildcardRegex.isFullMatch(text)) << text;
    }
}

}  // namespace
