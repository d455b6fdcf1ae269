// The direct JSON writer must print exactly what nlohmann's dump prints, so it
// is checked against dump on many random values: deep nesting, every value
// type, and strings of random bytes (control characters, quotes, broken and
// overlong UTF-8 sequences, surrogates, code points beyond U+10FFFF).
#include "qvx/json_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>

#include "qvx/parsed.h"

namespace {

using json = nlohmann::json;

std::string nlohmannText(const json& value, int indent) {
    return value.dump(indent, ' ', false, json::error_handler_t::ignore);
}

std::string writerText(const json& value, int indent) {
    std::string out;
    parser::appendJsonText(out, value, indent);
    return out;
}

class RandomJson {
  public:
    explicit RandomJson(std::uint32_t seed) : engine_(seed) {}

    std::string bytes() {
        static const std::string kInteresting[] = {
            "\xC3\xA9",
            "\xE2\x82\xAC",
            "\xF0\x9F\x98\x80",
            "\xC0\xAF",
            "\xE0\x80\xAF",
            "\xED\xA0\x80",
            "\xF4\x90\x80\x80",
            "\xE2\x82",
            "\x80",
            "\xFF",
            "\"",
            "\\",
            "\x7F",
            "\x1F",
            "\x00",
        };
        std::string text;
        const int length = pick(0, 12);
        for (int i = 0; i < length; ++i) {
            switch (pick(0, 2)) {
                case 0:
                    text.push_back(static_cast<char>(pick(0, 255)));
                    break;
                case 1:
                    text += kInteresting[pick(0, 14)];
                    break;
                default:
                    text.push_back(static_cast<char>(pick(' ', '~')));
            }
        }
        return text;
    }

    json value(int depth) {
        switch (pick(0, depth > 3 ? 6 : 8)) {
            case 0:
                return nullptr;
            case 1:
                return pick(0, 1) == 1;
            case 2:
                return static_cast<std::int64_t>(engine_()) - (1LL << 31);
            case 3:
                return static_cast<std::uint64_t>(engine_()) << 31;
            case 4:
                return std::ldexp(static_cast<double>(engine_()), pick(-40, 40)) *
                       (pick(0, 1) ? 1 : -1);
            case 5:
            case 6:
                return bytes();
            case 7: {
                json array = json::array();
                for (int i = pick(0, 4); i > 0; --i) array.push_back(value(depth + 1));
                return array;
            }
            default: {
                json object = json::object();
                for (int i = pick(0, 4); i > 0; --i) object[bytes()] = value(depth + 1);
                return object;
            }
        }
    }

    int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(engine_); }

  private:
    std::mt19937 engine_;
};

TEST(JsonText, PrintsEveryValueAsTheLibraryDoes) {
    RandomJson random(20261124);
    for (int round = 0; round < 3000; ++round) {
        const json value = random.value(0);
        for (int indent : {-1, 0, 4}) {
            ASSERT_EQ(writerText(value, indent), nlohmannText(value, indent))
                << "indent " << indent << ", round " << round;
        }
    }
}

TEST(JsonText, PrintsFieldsAsTheirJsonForm) {
    RandomJson random(7);
    for (int round = 0; round < 500; ++round) {
        parser::ParserResult result;
        for (int i = random.pick(0, 5); i > 0; --i) {
            result.addField(random.bytes(), random.bytes(), random.value(1));
            for (int k = random.pick(0, 2); k > 0; --k) {
                result.fields.back().issues.push_back(parser::ParserIssue::generic(random.bytes()));
            }
        }
        const auto expected = result.asJson();
        EXPECT_EQ(result.jsonString(), nlohmannText(expected, 4));
        std::string compact;
        parser::appendFieldsJsonText(compact, result.fields, -1);
        EXPECT_EQ(compact, nlohmannText(expected, -1));
        const parser::ParsedData data(result);
        EXPECT_EQ(data.jsonString(), nlohmannText(expected, 4));
    }
}

TEST(JsonText, DropsBrokenSequencesAndRereadsTheByteThatBrokeThem) {
    struct Case {
        std::string bytes;
        std::string printed;
    } cases[] = {
        {"a\xFF"
         "b",
         "\"ab\""},
        {"\xE2\x82"
         "A",
         "\"A\""},
        {"\xE2\xE2\x82\xAC", "\"\xE2\x82\xAC\""},
        {"\xC3", "\"\""},
        {"\xED\xA0\x80x", "\"x\""},
        {std::string("\x00\x01\x1F", 3), "\"\\u0000\\u0001\\u001f\""},
    };
    for (const auto& c : cases) {
        std::string out;
        parser::appendJsonString(out, c.bytes);
        EXPECT_EQ(out, c.printed);
    }
}

}  // namespace
