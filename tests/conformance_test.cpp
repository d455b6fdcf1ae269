// Data-driven cases: tests/data/<format>/*.json, each a JSON array of cases.
//
// A case names its input ("data" text or "dataBase64"), optionally options
// ("options" as JSON or "optionsText" verbatim), and one expectation:
// "fields" (the exact JSON form), "fieldsInclude" (fields that must appear),
// "error" ({"message", "code"}) or "optionsError" (text; no parse is run).
// Optional "warnings" (exact messages), "normalizedText" (the text the parser
// worked on) and "optionsAfter" (options JSON after the option call) refine it. "today"
// ("YYYY-MM-DD") pins the date that two-digit years are read against, for that case only. Every
// case goes through qvx::Parser, as a host application would.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "base64.h"
#include "common/date.h"
#include "qvx/qvx.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

struct Case {
    std::string format;
    std::string file;
    json testCase;
    std::string label;
    std::string loadError;
};

std::string sanitize(std::string text) {
    for (char& c : text) {
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    }
    return text;
}

std::vector<Case> loadCases() {
    std::vector<Case> cases;
    const fs::path root = QVX_TEST_DATA_DIR;
    if (!fs::exists(root)) return cases;
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        if (entry.is_regular_file() && entry.path().extension() == ".json") {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    for (const auto& path : files) {
        std::ifstream in(path, std::ios::binary);
        json array = json::parse(in, nullptr, false);
        const std::string format = path.parent_path().filename().string();
        const std::string file = path.filename().string();
        if (!array.is_array()) {
            cases.push_back({format, file, json::object(), sanitize(format + "_" + file),
                             "the file is not a JSON array of cases"});
            continue;
        }
        for (const auto& testCase : array) {
            Case c{format, file, testCase, "", ""};
            c.label = sanitize(format + "_" + path.stem().string() + "_" +
                               testCase.value("name", std::string("unnamed")));
            cases.push_back(std::move(c));
        }
    }
    return cases;
}

class Conformance : public ::testing::TestWithParam<Case> {};

TEST_P(Conformance, Case) {
    const Case& c = GetParam();
    ASSERT_EQ(c.loadError, "") << c.file;
    const json& testCase = c.testCase;
    SCOPED_TRACE(c.file + ": " + testCase.dump());
    ASSERT_TRUE(testCase.contains("name")) << "every case needs a name";

    auto format = parser::dataFormatFromName(c.format);
    ASSERT_TRUE(format.has_value()) << "directory is not a format name: " << c.format;
    auto created = qvx::Parser::create(nullptr, *format);
    ASSERT_TRUE(created.ok()) << created.error();
    auto parser = created.value();

    ASSERT_LE(testCase.count("options") + testCase.count("optionsText"), 1u);
    std::optional<std::string> optionsText;
    if (testCase.contains("options")) optionsText = testCase["options"].dump();
    if (testCase.contains("optionsText")) optionsText = testCase["optionsText"].get<std::string>();
    std::string optionsError;
    if (optionsText) {
        auto set = parser->setOptions(*optionsText);
        if (!set.ok()) optionsError = set.error();
    }
    if (testCase.contains("optionsAfter")) {
        EXPECT_EQ(parser->optionsToJSON(), testCase["optionsAfter"]);
    }
    if (testCase.contains("optionsError")) {
        EXPECT_EQ(optionsError, testCase["optionsError"].get<std::string>());
        return;
    }
    ASSERT_EQ(optionsError, "") << "unexpected options failure";

    ASSERT_EQ(testCase.count("data") + testCase.count("dataBase64"), 1u)
        << "give data or dataBase64";
    std::string input;
    if (testCase.contains("data")) {
        input = testCase["data"].get<std::string>();
    } else {
        auto decoded = qvx_cli::decodeBase64(testCase["dataBase64"].get<std::string>());
        ASSERT_TRUE(decoded.has_value()) << "dataBase64 is not valid base64";
        input = std::move(*decoded);
    }
    struct TodayPin {
        ~TodayPin() { parser::Date::overrideCurrentDate(std::nullopt); }
    } pin;
    if (testCase.contains("today")) {
        const std::string today = testCase["today"].get<std::string>();
        ASSERT_EQ(today.size(), 10u) << "today is YYYY-MM-DD";
        parser::Date::overrideCurrentDate(parser::Date{std::stoi(today.substr(0, 4)),
                                                       std::stoi(today.substr(5, 2)),
                                                       std::stoi(today.substr(8, 2))});
    }
    auto outcome = parser->parse(input);

    if (testCase.contains("error")) {
        ASSERT_FALSE(outcome.ok()) << "expected a failure, got " << outcome.value()->jsonString();
        const auto& issue = *outcome.error();
        EXPECT_EQ(issue.message, testCase["error"]["message"].get<std::string>());
        EXPECT_EQ(static_cast<int>(issue.code), testCase["error"].value("code", 2));
        return;
    }
    ASSERT_TRUE(outcome.ok()) << "unexpected failure: " << outcome.error()->message;
    const auto& data = *outcome.value();
    const json fields = data.asJson();
    if (testCase.contains("fields")) {
        EXPECT_EQ(fields, testCase["fields"]) << fields.dump();
    }
    if (testCase.contains("fieldsInclude")) {
        for (const auto& wanted : testCase["fieldsInclude"]) {
            bool found = std::find(fields.begin(), fields.end(), wanted) != fields.end();
            EXPECT_TRUE(found) << "missing field " << wanted.dump() << " in " << fields.dump();
        }
    }
    if (testCase.contains("warnings")) {
        EXPECT_EQ(json(data.warnings()), testCase["warnings"]);
    }
    if (testCase.contains("normalizedText")) {
        EXPECT_EQ(data.normalizedText(), testCase["normalizedText"].get<std::string>());
    }
}

INSTANTIATE_TEST_SUITE_P(Data, Conformance, ::testing::ValuesIn(loadCases()),
                         [](const ::testing::TestParamInfo<Case>& info) {
                             return info.param.label + "_" + std::to_string(info.index);
                         });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Conformance);

}  // namespace
