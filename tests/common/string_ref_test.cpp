// The byte view: every walk in every format stands on it.
#include "qvx/string_ref.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

TEST(ParserStringRef, SlicesAndTakes) {
    const std::string text = "0123456789";
    ParserStringRef v(text);
    EXPECT_EQ(v.first(3).str(), "012");
    EXPECT_EQ(v.last(2).str(), "89");
    EXPECT_EQ(v.drop_front(8).str(), "89");
    EXPECT_EQ(v.drop_back(8).str(), "01");
    EXPECT_EQ(v.slice(2, 5).str(), "234");
    EXPECT_TRUE(v.slice(10, 10).empty());
    EXPECT_EQ(v.first(0).size(), 0u);
    ParserStringRef w = v;
    EXPECT_EQ(w.take_front(4).str(), "0123");
    EXPECT_EQ(w.str(), "456789");
    EXPECT_EQ(v.size(), 10u) << "copies are independent";
}

TEST(ParserStringRef, PrefixesAndConsumption) {
    const std::string text = "]d201";
    ParserStringRef v(text);
    EXPECT_TRUE(v.starts_with("]d2", 3));
    EXPECT_FALSE(v.starts_with("]d201x", 6));
    EXPECT_TRUE(v.starts_with(']'));
    EXPECT_FALSE(ParserStringRef().starts_with('\0'));
    EXPECT_FALSE(v.consume_any_prefix({"]C1", "]e0"}));
    EXPECT_EQ(v.size(), 5u);
    EXPECT_TRUE(v.consume_any_prefix({"]C1", "]d", "]d2"}));
    EXPECT_EQ(v.str(), "201") << "the first listed prefix wins, not the longest";
    EXPECT_FALSE(v.consume_prefix('x'));
    EXPECT_TRUE(v.consume_prefix('2'));
    EXPECT_EQ(v.str(), "01");
}

TEST(ParserStringRef, Searches) {
    const std::string text =
        "ab\x1d"
        "cd\x1d"
        "ef";
    ParserStringRef v(text);
    EXPECT_EQ(v.find_char('\x1d'), v.begin() + 2);
    EXPECT_EQ(v.find_char('z'), nullptr);
    EXPECT_EQ(v.find_char('\x1d', 3), v.begin() + 5);
    EXPECT_EQ(v.find_char('a', 8), nullptr) << "start outside the view";
    EXPECT_EQ(v.find_substring("cd"), v.begin() + 3);
    EXPECT_EQ(v.find_substring("ab", 1), v.end());
    EXPECT_EQ(v.find_substring("ab", 99), v.end());
    EXPECT_EQ(v.find_first_of("fd"), v.begin() + 4);
    EXPECT_EQ(v.find_first_of("xyz"), nullptr);
    EXPECT_EQ(v.find_nth_of("\x1d", 2), v.begin() + 5);
    EXPECT_EQ(v.find_nth_of("\x1d", 0), v.begin() + 2) << "n below 2 acts as 1";
    EXPECT_EQ(v.find_nth_of("\x1d", 3), nullptr);
}

TEST(ParserStringRef, BytesAreUnsignedAndNulIsData) {
    const std::string text("\xFF\0a", 3);
    ParserStringRef v(text);
    EXPECT_EQ(v.size(), 3u);
    EXPECT_EQ(v[0], 0xFF);
    EXPECT_EQ(v.find_char('a'), v.begin() + 2);
    std::ostringstream out;
    out << v;
    EXPECT_EQ(out.str(), text);
}

TEST(ParserStringRefDeathTest, OutOfRangeAborts) {
    const std::string text = "abc";
    ParserStringRef v(text);
    EXPECT_DEATH((void)v.first(4), "");
    EXPECT_DEATH((void)v.last(4), "");
    EXPECT_DEATH((void)v.drop_front(4), "");
    EXPECT_DEATH((void)v.drop_back(4), "");
    EXPECT_DEATH((void)v.slice(2, 1), "");
    EXPECT_DEATH((void)v.slice(0, 4), "");
    EXPECT_DEATH((void)v[3], "");
    EXPECT_DEATH((void)ParserStringRef().back(), "");
}

}  // namespace
