// Smoke test over VINs gathered from other projects' test suites. The folder
// lives outside the repository and may be missing; then the test is skipped.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "vin/vin_parser.h"

namespace {

using nlohmann::json;

const std::filesystem::path kCorpusFile = QVX_CORPUS_DIR "/vin/vins.jsonl";

const std::set<std::string> kCleanFailures = {
    "valid VIN consists of 17 characters",
    "valid VIN contains only digits and uppercase letters (except 'Q', 'O', 'I')",
    "checksum verification failed",
};

bool yearMatches(const json& modelYear, const json& year) {
    if (!modelYear.is_array() || !year.is_number_integer())
        return false;
    return modelYear[0] == year || modelYear[1] == year;
}

TEST(VinCorpus, EveryVinParsesOrFailsCleanly) {
    std::ifstream in(kCorpusFile);
    if (!in)
        GTEST_SKIP() << "no corpus at " << kCorpusFile;

    parser::VinParser lenient;
    parser::VinParser strict;
    ASSERT_TRUE(strict.readOptionsFromJSONString(R"({"strictMode": true})")->ok);

    std::size_t rows = 0;
    std::size_t parsed = 0;
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty())
            continue;
        const json row = json::parse(line, nullptr, false);
        ASSERT_FALSE(row.is_discarded()) << line;
        ++rows;
        const std::string vin = row.value("vin", std::string());
        SCOPED_TRACE(vin + " from " + row.value("source", std::string()));

        auto result = lenient.parse(ParserStringRef(vin));
        auto strictResult = strict.parse(ParserStringRef(vin));
        const json checkOk = row.value("check_digit_ok_computed", json());

        if (result->error) {
            EXPECT_TRUE(result->fields.empty());
            EXPECT_EQ(kCleanFailures.count(result->error->message), 1u) << result->error->message;
            // A number whose check digit is right is never refused as a whole.
            if (checkOk.is_boolean()) {
                EXPECT_FALSE(checkOk.get<bool>());
            }
            ASSERT_TRUE(strictResult->error);
            continue;
        }
        ++parsed;
        ASSERT_EQ(result->fields.size(), 4u);
        const json& metadata = result->fields[3].parsed;
        if (checkOk.is_boolean()) {
            EXPECT_EQ(metadata["passedChecksum"], checkOk);
        }
        EXPECT_EQ(strictResult->error != nullptr, !metadata["passedChecksum"].get<bool>());

        // Decoders that know the maker pick one year of the two the code allows.
        const json expected = row.value("expected_corgi_fixture", json::object());
        if (expected.contains("year")) {
            EXPECT_TRUE(yearMatches(result->fields[2].parsed["modelYear"], expected["year"]))
                << result->fields[2].parsed["modelYear"] << " vs " << expected["year"];
        }
    }
    EXPECT_GT(rows, 0u);
    EXPECT_GT(parsed, rows / 2);
}

}  // namespace
