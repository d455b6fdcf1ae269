// Smoke test over licences and stripes gathered from other projects' test
// suites. The folder lives outside the repository and may be missing; then
// the test is skipped.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "base64.h"
#include "dlid/dlid_parser.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

const fs::path kCorpusDir = QVX_CORPUS_DIR "/aamva";

// Every way a document may be refused; anything else would be a new failure
// nobody has worded.
constexpr std::string_view kKnownFailures[] = {
    "code is empty",
    "separator too small to parse",
    "header too short",
    "compliance indicator missing",
    "data element separator in header is not 0x0A (\\n)",
    "invalid file type, it should contain 'ANSI ' or 'AAMVA' string but contains ",
    "could not parse IIN",
    "could not parse AAMVA version number ",
    "could not parse jurisdiction version number: ",
    "cannot parse pre-AAMVA-spec barcode.",
    "subfile too short",
    "number of entries must be greater than zero",
    "could not parse subfile designators: string too short",
    "could not parse subfile designator offset and/or length must be numeric: ",
    "size is zero for subfile type:",
    "DL/ID subfile not found",
    "subfile.size too large",
    "code is shorter than the provided offset",
    "subfile too small",
    "element_data id is cut off",
    "trimmed data too short to parse height",
    "Field \"",
    "Key \"",
    "First track",
    "Second track",
    "Third track",
    "3rd track",
    "missing end sentinel",
    "could not parse an expiry date year",
    "Invalid date: string \"",
};

bool isKnownFailure(const std::string& message) {
    return std::any_of(std::begin(kKnownFailures), std::end(kKnownFailures),
                       [&](std::string_view known) { return message.rfind(known, 0) == 0; });
}

// Every way the feature reader may refuse a document.
constexpr std::string_view kKnownFeatureFailures[] = {
    "code is empty",
    "Magstripe unsupported",
    "Failed to extract DL features from non-AAMVA barcode value",
    "Header format does not match AAMVA specification!",
    "Issuer IIN could not be extracted from header!",
    "Failed to extract features, ",
    "main fields have wrong format, subfile might not have the correct indicator!",
    "DL has unknown field identifier: ",
    "subfile of type ",
    "Unexpected characters in header",
    "Unexpected subfile name ",
    "Delimiter not found in string split.",
};

bool isKnownFeatureFailure(const std::string& message) {
    return std::any_of(std::begin(kKnownFeatureFailures), std::end(kKnownFeatureFailures),
                       [&](std::string_view known) { return message.rfind(known, 0) == 0; });
}

// Calls `visit` with the bytes of every AAMVA sample of the corpus.
template <class Visit>
void forEachSample(Visit visit) {
    for (const auto& entry : fs::directory_iterator(kCorpusDir)) {
        if (entry.path().extension() != ".json") continue;
        std::ifstream in(entry.path());
        const json file = json::parse(in, nullptr, false);
        if (!file.is_object() || !file.contains("vectors")) continue;
        for (const json& vector : file["vectors"]) {
            // The military card in the folder is no AAMVA document.
            if (vector.value("kind", std::string()).rfind("cac", 0) == 0) continue;
            auto bytes = qvx_cli::decodeBase64(vector.value("input_b64", std::string()));
            ASSERT_TRUE(bytes.has_value());
            // A byte order mark is an artefact of the files the samples were
            // kept in, not of any scan.
            if (bytes->rfind("\xEF\xBB\xBF", 0) == 0) bytes->erase(0, 3);
            SCOPED_TRACE(entry.path().filename().string() + ": " + vector.value("id", ""));
            visit(*bytes);
        }
    }
}

TEST(DlidCorpus, EverySampleParsesOrFailsCleanly) {
    if (!fs::exists(kCorpusDir)) GTEST_SKIP() << "no corpus at " << kCorpusDir;
    parser::DLIDParser dlid;
    ASSERT_TRUE(dlid.readOptionsFromJSONString(R"({"currentDate": "20240601"})")->ok);
    std::size_t samples = 0;
    std::size_t parsed = 0;
    forEachSample([&](const std::string& bytes) {
        ++samples;
        auto result = dlid.parse(ParserStringRef(bytes));
        if (!result->error) {
            ++parsed;
            ASSERT_FALSE(result->fields.empty());
            EXPECT_EQ(result->fields.back().name, "unified");
        } else {
            EXPECT_TRUE(isKnownFailure(result->error->message)) << result->error->message;
        }
    });
    EXPECT_GT(samples, 100u);
    // Most samples are read; the rest are damaged beyond what is tolerated.
    EXPECT_GT(parsed * 10, samples * 7) << parsed << " of " << samples;
}

TEST(DlidCorpus, EverySampleGivesFeaturesOrFailsCleanly) {
    if (!fs::exists(kCorpusDir)) GTEST_SKIP() << "no corpus at " << kCorpusDir;
    parser::DLIDParser dlid;
    ASSERT_TRUE(dlid.readOptionsFromJSONString(
                        R"({"currentDate": "20240601", "enhanceDataForFeatureExtraction": true})")
                    ->ok);
    std::size_t samples = 0;
    std::size_t extracted = 0;
    std::map<std::string, std::size_t> failures;
    forEachSample([&](const std::string& bytes) {
        ++samples;
        auto result = dlid.parse(ParserStringRef(bytes));
        if (result->error) {
            EXPECT_TRUE(isKnownFeatureFailure(result->error->message)) << result->error->message;
            ++failures[result->error->message.substr(0, 60)];
            return;
        }
        ++extracted;
        ASSERT_EQ(result->fields.size(), 2u);
        EXPECT_EQ(result->fields[0].name, "VERIFICATION_FEATURE_JSON");
        EXPECT_EQ(result->fields[1].name, "ANONYMIZED_VERIFICATION_FEATURE_JSON");
        for (const auto& field : result->fields) {
            EXPECT_EQ(json::parse(field.rawString, nullptr, false), field.parsed);
        }
    });
    std::cout << "features: " << extracted << " of " << samples << " samples\n";
    for (const auto& [message, count] : failures)
        std::cout << "  " << count << "  " << message << "\n";
    EXPECT_GT(samples, 100u);
    // Most real documents give features; the rest are refused with a reason.
    EXPECT_GT(extracted * 2, samples) << extracted << " of " << samples;
}

}  // namespace
