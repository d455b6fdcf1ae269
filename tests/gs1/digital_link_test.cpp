#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "gs1/digital_link_keys.h"
#include "gs1/gs1_digital_link_parser.h"
#include "gs1/uri_descriptor.h"

namespace {

using nlohmann::json;

struct SplitCase {
    std::string input;
    std::vector<std::string> parts;  // scheme, authority, path, query, fragment; or the error
};

TEST(UriSplitter, PartsAndFailures) {
    const std::vector<SplitCase> cases = {
        {"https://h/p?q#f", {"https://", "h", "/p", "?q", "#f"}},
        {"https://h", {"https://", "h", "", "", ""}},
        {"http://h/", {"http://", "h", "/", "", ""}},
        // A "?" anywhere ends the path, even behind a "#".
        {"https://h/p#f?q", {"https://", "h", "/p#f", "?q", ""}},
        {"https://h/p#f", {"https://", "h", "/p", "", "#f"}},
        {"https://h/p?q1?q2#f1#f2", {"https://", "h", "/p", "?q1?q2", "#f1#f2"}},
        // Only "/" ends the authority; user information and port stay in it.
        {"https://h?q/p", {"https://", "h?q", "/p", "", ""}},
        {"https://u@h:8080/p", {"https://", "u@h:8080", "/p", "", ""}},
        {"ftp://h/p", {"Scheme not supported: 'ftp://'"}},
        {"https:///p", {"Scheme not supported: 'https:///'"}},
        {"https:/h/p", {"Scheme not supported: 'https:/'"}},
        {"HTTPS://h/p", {"Scheme not supported: 'HTTPS://'"}},
        {"h/p", {"No scheme found"}},
        {"", {"No scheme found"}},
        {"https://", {"No authority found"}},
    };
    for (const SplitCase& c : cases) {
        SCOPED_TRACE(c.input);
        auto split = parser::splitUri(ParserStringRef(c.input));
        if (c.parts.size() == 1) {
            ASSERT_FALSE(split.ok());
            EXPECT_EQ(split.error(), c.parts[0]);
            continue;
        }
        ASSERT_TRUE(split.ok()) << split.error();
        const parser::UriDescriptor& uri = split.value();
        EXPECT_EQ((std::vector<std::string>{uri.scheme, uri.authority, uri.path, uri.query,
                                            uri.fragment}),
                  c.parts);
        EXPECT_EQ(uri.uri, c.input);
    }
}

TEST(DigitalLinkKeys, LegalPathsOfTheGtin) {
    const parser::DigitalLinkKeys keys;
    std::set<std::string> gtinPaths;
    for (const std::string& path : keys.validPaths) {
        if (path.rfind("/01", 0) == 0) gtinPaths.insert(path);
    }
    EXPECT_EQ(gtinPaths,
              (std::set<std::string>{"/01", "/01/21", "/01/10", "/01/10/21", "/01/22", "/01/22/10",
                                     "/01/22/10/21", "/01/22/21", "/01/235"}));
}

TEST(DigitalLinkKeys, LegalAndIllegalOrders) {
    const parser::DigitalLinkKeys keys;
    for (const char* legal :
         {"/414/254", "/414/7040", "/417", "/417/7040", "/8004/7040", "/8018/8019", "/8017/8019",
          "/8010/8011", "/8006/22/10/21", "/415", "/00", "/8013", "/255"}) {
        EXPECT_EQ(keys.validPaths.count(legal), 1u) << legal;
    }
    for (const char* illegal : {"/01/21/10", "/414/254/7040", "/01/8020", "/8006/235", "/00/21",
                                "/10", "/01/10/22", "/8013/21"}) {
        EXPECT_EQ(keys.validPaths.count(illegal), 0u) << illegal;
    }
}

TEST(DigitalLinkKeys, WordsAndAis) {
    const parser::DigitalLinkKeys keys;
    const std::vector<std::pair<std::string, std::string>> nameToAi = {
        {"gtin", "01"},
        {"gtinParameter", "01"},
        {"refno", "8020"},
        {"refNoParameter", "8020"},
        {"amountCode", "3905"},
        {"netWeightVMTICode", "3575"},
        {"internalCode", "99"},
        {"ui-ext", "7040"},
        {"nhrnUS-FDAParameter", "715"},
        {"logisticVolumeCode", "3695"},
        {"expiryDateCode", "17"},
        {"contentParameter", "02"},
    };
    for (const auto& [word, ai] : nameToAi) {
        auto found = keys.getAiForName(word);
        ASSERT_TRUE(found.ok()) << word;
        EXPECT_EQ(found.value(), ai) << word;
    }
    EXPECT_EQ(keys.getAiForName("linkType").error(), "Data attribute key name not found: linkType");

    // The attribute word wins over the primary key and qualifier words.
    EXPECT_EQ(keys.aiToName.at("01"), "gtinParameter");
    EXPECT_EQ(keys.aiToName.at("8020"), "refNoParameter");
    EXPECT_EQ(keys.aiToName.at("22"), "cpv");
    EXPECT_EQ(keys.aiToName.at("3101"), "netWeightVMTICode");
    EXPECT_EQ(keys.aiToName.at("3944"), "percentOffCode");
    for (const char* unlisted :
         {"390", "391", "394", "3106", "3906", "4330", "7240", "8200", "92a"}) {
        EXPECT_EQ(keys.aiToName.count(unlisted), 0u) << unlisted;
    }
}

// A failed option call keeps what it read before the failure, and the walk
// follows it too: the check digit is then a field issue, not a failure.
TEST(Gs1DigitalLinkParser, WalkFollowsOptionsReadBeforeAFailure) {
    parser::Gs1DigitalLinkParser formatParser;
    auto outcome = formatParser.readOptionsFromJSONString(R"({"strictMode": false, "zzz": 1})");
    ASSERT_FALSE(outcome->ok);
    EXPECT_EQ(outcome->error, R"(invalid option(s): ["zzz"])");
    const std::string uri = "https://example.com/01/09506000134353";
    auto result = formatParser.parse(ParserStringRef(uri));
    ASSERT_EQ(result->error, nullptr);
    ASSERT_EQ(result->fields.size(), 1u);
    EXPECT_EQ(result->fields[0].issues.size(), 1u);
}

// The two patterns recurse about once per byte on a backtracking matcher, so
// inputs are bounded. At the bound, the shapes that recurse deepest or
// backtrack most must still come back with an answer; one byte more is refused.
TEST(Gs1DigitalLinkParser, LongInputsAreBounded) {
    const std::size_t bound = parser::kDigitalLinkLongestUri;
    const auto fill = [bound](std::string text, const std::string& unit) {
        while (text.size() < bound) text += unit;
        text.resize(bound);
        return text;
    };
    const std::vector<std::string> inputs = {
        fill("https://id.gs1.org/01/09506000134352?99=", "A"),
        fill("https://id.gs1.org/01/09506000134352/", "a"),
        fill("https://example.com/", "a/"),
        fill("https://example.com/01/095", "/01/095"),
        fill("https://", "a@"),
        fill("https://", "a:"),
        fill("http://", "a"),
    };
    for (const bool strict : {true, false}) {
        parser::Gs1DigitalLinkParser formatParser;
        formatParser.engine().set_strict_mode(strict);
        for (const std::string& input : inputs) {
            SCOPED_TRACE(input.substr(0, 40));
            auto result = formatParser.parse(ParserStringRef(input));
            EXPECT_TRUE(result->error == nullptr || !result->error->message.empty());
            const std::string longer = input + "A";
            auto refused = formatParser.parse(ParserStringRef(longer));
            ASSERT_NE(refused->error, nullptr);
            EXPECT_EQ(refused->error->message, "URI is too long: " + std::to_string(bound + 1) +
                                                   " bytes, but at most " + std::to_string(bound) +
                                                   " are accepted.");
        }
    }
}

// The Digital Link URIs of two independent projects' test suites: every one
// parses or fails with a message, and a strict parse accepts only canonical
// resolver URIs. How the verdicts compare with the sources' is printed.
TEST(Gs1DigitalLinkCorpus, EveryUriParsesOrFailsCleanly) {
    const std::filesystem::path root = QVX_CORPUS_DIR "/gs1";
    std::ifstream engineFile(root / "gs1-syntax-engine-dl.json");
    std::ifstream biipFile(root / "biip-gs1.json");
    if (!engineFile || !biipFile) GTEST_SKIP() << "no corpus at " << root;
    struct Sample {
        std::string uri;
        bool valid;
    };
    std::vector<Sample> samples;
    const json engine = json::parse(engineFile, nullptr, false);
    for (const json& row : engine.value("parse_dl_uri", json::array())) {
        samples.push_back({row.value("input_uri", std::string()), row.value("valid", false)});
    }
    const json biip = json::parse(biipFile, nullptr, false);
    for (const char* file : {"tests/test_gs1_digital_link_uris.py", "tests/test_parse.py"}) {
        for (const json& row : biip["cases_by_file"].value(file, json::array())) {
            const std::string uri = row.value("input", std::string());
            if (uri.rfind("http", 0) != 0) continue;
            const json& outcome = row["biip_result_here"];
            samples.push_back({uri, outcome.value("ok", false) && !outcome.contains("errors")});
        }
    }
    ASSERT_GT(samples.size(), 100u);

    for (const bool strict : {true, false}) {
        parser::Gs1DigitalLinkParser formatParser;
        formatParser.engine().set_strict_mode(strict);
        std::size_t agree = 0;
        for (const Sample& sample : samples) {
            SCOPED_TRACE(sample.uri);
            auto result = formatParser.parse(ParserStringRef(sample.uri));
            bool clean = result->error == nullptr;
            if (!clean) {
                EXPECT_FALSE(result->error->message.empty());
                EXPECT_TRUE(result->fields.empty());
            }
            for (const auto& field : result->fields) clean = clean && field.issues.empty();
            if (strict && clean) {
                EXPECT_EQ(sample.uri.rfind("https://id.gs1.org/", 0), 0u);
            }
            agree += clean == sample.valid;
        }
        std::cout << (strict ? "strict" : "lax") << ": " << agree << " of " << samples.size()
                  << " verdicts agree with the sources\n";
    }
}

}  // namespace
