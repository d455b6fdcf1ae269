// Smoke test over VINs gathered from other projects' test suites. The folder
// lives outside the repository and may be missing; then the test is skipped.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "vin/vin_parser.h"

namespace {

using nlohmann::json;

const std::filesystem::path kCorpusFile = QVX_CORPUS_DIR "/vin/vins.jsonl";

constexpr const char* kLengthError = "valid VIN consists of 17 characters";
constexpr const char* kCharsetError =
    "valid VIN contains only digits and uppercase letters (except 'Q', 'O', 'I')";

std::string errorOf(const parser::ParserResult& result) {
    return result.error ? result.error->message : std::string();
}

TEST(VinCorpus, EveryVinParsesOrFailsCleanly) {
    std::ifstream in(kCorpusFile);
    if (!in) GTEST_SKIP() << "no corpus at " << kCorpusFile;
    parser::VinParser lenient;
    parser::VinParser strict;
    ASSERT_TRUE(strict.readOptionsFromJSONString(R"({"strictMode": true})")->ok);

    std::size_t rows = 0;
    std::size_t parsed = 0;
    for (std::string line; std::getline(in, line);) {
        if (line.empty()) continue;
        const json row = json::parse(line, nullptr, false);
        ASSERT_FALSE(row.is_discarded()) << line;
        ++rows;
        const std::string vin = row.value("vin", std::string());
        SCOPED_TRACE(vin + " from " + row.value("source", std::string()));

        auto result = lenient.parse(ParserStringRef(vin));
        const std::string error = errorOf(*result);
        EXPECT_TRUE(error.empty() || error == kLengthError || error == kCharsetError) << error;
        ASSERT_EQ(result->fields.size(), error.empty() ? 4u : 0u);
        parsed += error.empty();
        const bool passed = error.empty() && result->fields[3].parsed["passedChecksum"] == true;
        // Decoders that know the maker pick one of the two years the code allows.
        const json year = row.value("expected_corgi_fixture", json::object()).value("year", json());
        if (error.empty() && !year.is_null()) {
            const json years = result->fields[2].parsed["modelYear"];
            EXPECT_TRUE(years.is_array() && (years[0] == year || years[1] == year))
                << years << " vs " << year;
        }
        // The check digit verdict agrees with the one computed for the corpus.
        const json checkOk = row.value("check_digit_ok_computed", json());
        if (checkOk.is_boolean()) {
            EXPECT_EQ(passed, checkOk.get<bool>());
        }
        // Strict mode refuses exactly what does not pass leniently, for the same reason.
        const std::string refusal = error.empty() ? "checksum verification failed" : error;
        EXPECT_EQ(errorOf(*strict.parse(ParserStringRef(vin))), passed ? "" : refusal);
    }
    EXPECT_GT(rows, 0u);
    EXPECT_GT(parsed, rows / 2);
}

}  // namespace
