// The capture library's JSON value as the deserializer uses it: member reads
// with their failure texts, paths, and the warnings about unread keys.
#include "qvx/core/json_value.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using qvx::core::JsonValue;
using Strings = std::vector<std::string>;

std::string thrownBy(const std::function<void()>& call) {
    try {
        call();
    } catch (const std::invalid_argument& e) {
        return e.what();
    }
    return "<nothing thrown>";
}

TEST(JsonValue, FromStringTakesStrictJsonOnly) {
    EXPECT_EQ(JsonValue::fromString(R"( {"b": [1, 2], "a": null} )")->toString(),
              R"({"a":null,"b":[1,2]})");
    for (const char* text : {"", "{", "{} x", "{\"a\": 1 /* c */}", "{'a': 1}"}) {
        EXPECT_EQ(
            thrownBy([&] { JsonValue::fromString(text); }).rfind("Invalid JSON: parse error", 0),
            0u)
            << text;
    }
}

struct ReadCase {
    const char* name;
    const char* json;
    std::function<std::string(const JsonValue&)> read;
    std::string want;  // the value read, or the text thrown
};

class JsonValueRead : public ::testing::TestWithParam<ReadCase> {};

TEST_P(JsonValueRead, GivesValueOrFailureText) {
    const auto& c = GetParam();
    auto value = JsonValue::fromString(c.json);
    std::string got;
    std::string thrown = thrownBy([&] { got = c.read(*value); });
    EXPECT_EQ(thrown == "<nothing thrown>" ? got : thrown, c.want);
}

const auto kStringOr = [](const char* key) {
    return [key](const JsonValue& v) { return v.getStringForKeyOrDefault(key, "dflt"); };
};
const auto kObjectOr = [](const char* key) {
    return [key](const JsonValue& v) {
        auto member = v.getObjectForKeyOrDefault(key, {{"d", 1}});
        return member->getAbsolutePath() + " " + member->toString();
    };
};
const auto kPathOf = [](const char* key, const char* inner) {
    return [key, inner](const JsonValue& v) {
        return v.getForKey(key)->getForKey(inner)->getAbsolutePath();
    };
};

INSTANTIATE_TEST_SUITE_P(
    Cases, JsonValueRead,
    ::testing::Values(ReadCase{"StringOrDefaultMissing", R"({})", kStringOr("t"), "dflt"},
                      ReadCase{"StringOrDefaultWrongType", R"({"t": []})", kStringOr("t"),
                               "/t is required to be a string."},
                      ReadCase{"ObjectOrDefaultMissing", R"({})", kObjectOr("o"), "/o {\"d\":1}"},
                      ReadCase{"ObjectOrDefaultWrongType", R"({"o": []})", kObjectOr("o"),
                               "/o is required to be an object."},
                      ReadCase{"NestedPath", R"({"o": {"a": 1}})", kPathOf("o", "a"), "/o/a"},
                      ReadCase{"NestedNotObject", R"({"o": 1})", kPathOf("o", "a"),
                               "/o is required to be an object."},
                      ReadCase{"NestedMissing", R"({"o": {}})", kPathOf("o", "a"),
                               "/o/a is required but missing."},
                      ReadCase{"PathEscapes", R"({"a/b": {"~": 1}})", kPathOf("a/b", "~"),
                               "/a~1b/~0"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(JsonValue, RootPathAndCompactText) {
    auto value = JsonValue::fromNlohmannJson({{"k", "\xff"}});
    EXPECT_EQ(value->getAbsolutePath(), "/");
    EXPECT_EQ(value->toString(), R"({"k":""})");
}

TEST(JsonValue, WarnsAboutEveryKeyNoCallRead) {
    auto value = JsonValue::fromString(
        R"({"a": 1, "b": {"c": 1, "d": {"e": 1}}, "f": [{"g": 1}], "h": {"i": 1}})");
    EXPECT_EQ(value->getWarnings(), (Strings{"/a was not used.", "/b was not used.",
                                             "/f was not used.", "/h was not used."}));

    value->getForKey("b")->getForKey("d");
    value->getForKey("f");
    value->getStringForKeyOrDefault("missing", "");
    auto h = value->getObjectForKeyOrDefault("h", nlohmann::json::object());
    // Arrays are consumed whole; the members of read objects are followed.
    EXPECT_EQ(value->getWarnings(), (Strings{"/a was not used.", "/b/c was not used.",
                                             "/b/d/e was not used.", "/h/i was not used."}));

    h->setRecursivelyUsed(true);
    value->getForKey("b")->setRecursivelyUsed(true);
    EXPECT_EQ(value->getWarnings(), Strings{"/a was not used."});

    value->getForKey("b")->setRecursivelyUsed(false);
    EXPECT_EQ(value->getWarnings(), (Strings{"/a was not used.", "/b was not used."}));

    value->setRecursivelyUsed(true);
    EXPECT_EQ(value->getWarnings(), Strings{});
}

}  // namespace
