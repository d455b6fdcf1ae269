// The capture library's JSON value as the deserializer uses it: paths,
// defaults and the warnings about unread keys.
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

// The failure texts of plain reads show in the deserializer's cases.
TEST(JsonValue, PathsAndDefaults) {
    auto value = JsonValue::fromString(R"({"a/b": {"~": 1}, "s": []})");
    EXPECT_EQ(value->getAbsolutePath(), "/");
    EXPECT_EQ(value->getForKey("a/b")->getForKey("~")->getAbsolutePath(), "/a~1b/~0");
    EXPECT_EQ(thrownBy([&] { value->getForKey("a/b")->getForKey("x"); }),
              "/a~1b/x is required but missing.");
    auto absent = value->getObjectForKeyOrDefault("o", {{"d", 1}});
    EXPECT_EQ(absent->getAbsolutePath() + " " + absent->toString(), "/o {\"d\":1}");
    EXPECT_EQ(value->getStringForKeyOrDefault("t", "dflt"), "dflt");
    EXPECT_EQ(thrownBy([&] { value->getStringForKeyOrDefault("s", ""); }),
              "/s is required to be a string.");
    // nlohmann's own words follow the prefix.
    EXPECT_EQ(thrownBy([] {
                  JsonValue::fromString("{} /* no comments */");
              }).rfind("Invalid JSON: parse error at line 1, column 4: ", 0),
              0u);
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
