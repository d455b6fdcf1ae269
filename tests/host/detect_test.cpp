// Format detection: every bundled sample and every valid conformance case is
// ranked under its own format first; near-misses show how the ranking falls.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "base64.h"
#include "common/date.h"
#include "qvx/qvx.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using qvx::Evidence;
using F = ParserDataFormat;

std::string readBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string describe(const qvx::FormatCandidates& candidates) {
    std::ostringstream out;
    for (const auto& candidate : candidates) {
        out << "\n  " << parser::dataFormatName(candidate.format) << " ("
            << static_cast<int>(candidate.evidence) << "): " << candidate.reason;
    }
    return candidates.empty() ? "\n  (none)" : out.str();
}

std::string topFormat(const std::string& bytes) {
    auto candidates = qvx::detectFormats(bytes);
    return candidates.empty() ? "" : parser::dataFormatName(candidates[0].format);
}

TEST(Detect, EveryBundledSampleRanksItsOwnFormatFirst) {
    int samples = 0;
    for (const auto& entry : fs::directory_iterator(QVX_SAMPLES_DIR)) {
        // Samples are named <format>.txt or <format>.<what>.txt.
        const std::string name = entry.path().filename().string();
        const std::string format = name.substr(0, name.find('.'));
        const std::string bytes = readBytes(entry.path());
        EXPECT_EQ(topFormat(bytes), format) << name << describe(qvx::detectFormats(bytes));
        ++samples;
    }
    EXPECT_GT(samples, 0);
}

// A case is a valid code of its format when it parses with its own options
// into at least one field and no field carries an issue: lax walks over text
// that is no code of the format are left out that way.
bool isValidCode(qvx::Parser& parser, const json& testCase, const std::string& input) {
    if (!testCase.contains("fields") && !testCase.contains("fieldsInclude")) return false;
    if (testCase.contains("options") && !parser.setOptions(testCase["options"].dump()).ok()) {
        return false;
    }
    if (testCase.contains("optionsText") &&
        !parser.setOptions(testCase["optionsText"].get<std::string>()).ok()) {
        return false;
    }
    struct TodayPin {
        ~TodayPin() { parser::Date::overrideCurrentDate(std::nullopt); }
    } pin;
    if (testCase.contains("today")) {
        const std::string today = testCase["today"].get<std::string>();
        parser::Date::overrideCurrentDate(parser::Date{std::stoi(today.substr(0, 4)),
                                                       std::stoi(today.substr(5, 2)),
                                                       std::stoi(today.substr(8, 2))});
    }
    auto outcome = parser.parse(input);
    if (!outcome.ok() || outcome.value()->fields().empty()) return false;
    for (const auto& field : outcome.value()->fields()) {
        if (!field->issues.empty()) return false;
    }
    return true;
}

TEST(Detect, EveryValidConformanceCaseRanksItsOwnFormatFirst) {
    std::map<std::string, int> checked;
    for (const auto& dir : fs::directory_iterator(QVX_TEST_DATA_DIR)) {
        const std::string format = dir.path().filename().string();
        auto value = parser::dataFormatFromName(format);
        ASSERT_TRUE(value.has_value()) << format;
        if (!qvx::Parser::isFormatAvailable(*value)) continue;
        for (const auto& file : fs::directory_iterator(dir.path())) {
            std::ifstream in(file.path(), std::ios::binary);
            const json cases = json::parse(in, nullptr, false);
            for (const auto& testCase : cases) {
                std::string input;
                if (testCase.contains("data")) {
                    input = testCase["data"].get<std::string>();
                } else if (testCase.contains("dataBase64")) {
                    input = qvx_cli::decodeBase64(testCase["dataBase64"].get<std::string>())
                                .value_or("");
                }
                auto parser = qvx::Parser::create(nullptr, *value).value();
                if (!isValidCode(*parser, testCase, input)) continue;
                ++checked[format];
                EXPECT_EQ(topFormat(input), format)
                    << file.path().filename() << ": " << testCase.value("name", "")
                    << describe(qvx::detectFormats(input));
            }
        }
        EXPECT_GT(checked[format], 0) << "no valid case of " << format;
    }
}

struct Ranking {
    const char* name;
    std::string input;
    std::vector<std::pair<F, Evidence>> expected;
};

// Near-misses and the formats this build cannot parse yet: the ranking and
// the evidence behind it.
const std::vector<Ranking>& rankings() {
    static const std::vector<Ranking> table = {
        {"serial number of 17 characters with an O",
         "SN2024OB000123456",
         {{F::Vin, Evidence::Opening}}},
        {"serial number of 17 characters in the VIN alphabet",
         "SN20240B000123456",
         {{F::Vin, Evidence::Shape}}},
        {"17 digits: a batch number for GS1, a VIN by its check digit",
         "10123456489012345",
         {{F::Vin, Evidence::Check}, {F::Gs1Ai, Evidence::Opening}}},
        {"GS1 string behind a \"+\" as HIBC codes open",
         "+01095011015300031727063010AB12345",
         {{F::Hibc, Evidence::Opening}}},
        {"GS1 string with a checked GTIN",
         "0109501101530003\x1d"
         "10AB12",
         {{F::Gs1Ai, Evidence::Check}}},
        {"GS1 string whose GTIN check digit fails",
         "0109501101530004\x1d"
         "10AB12",
         {{F::Gs1Ai, Evidence::Shape}}},
        {"MRZ with one short line",
         "P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<\nL898902C36UTO7408122F1204159ZE184226B<<<<<",
         {{F::Mrtd, Evidence::Opening}}},
        {"MRZ with a stray punctuation mark",
         "P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<\nL898902C36UTO7408122F1204159ZE184226B<<<<"
         "1.",
         {}},
        {"AAMVA barcode",
         "@\n\x1e\rANSI 636015080102DL00410020ZX00610007DLDAQ1\nDAK787011234\r",
         {{F::Dlid, Evidence::Layout}}},
        {"AAMVA barcode with Windows line ends",
         " \n@\r\n\x1e\rAAMVA6360150101DL00290024DLDAQ1\r\n",
         {{F::Dlid, Evidence::Layout}}},
        {"compliance indicator without a file type", "@\n\x1e\rXYZ 636015080102DL", {}},
        {"AAMVA stripe",
         "%TXAUSTIN^DOE$JOHN^1 MAIN ST^?;6360151234567=250319850314?%81787",
         {{F::Dlid, Evidence::Layout}}},
        {"Digital Link",
         "https://example.com/01/09506000134352/10/ABC?17=261231",
         {{F::Gs1DigitalLink, Evidence::Layout}}},
        {"Digital Link key by name",
         "http://example.com/shop/gtin/09506000134352",
         {{F::Gs1DigitalLink, Evidence::Layout}}},
        {"web address without a GS1 key", "https://example.com/products/0950600013435", {}},
        {"SPC without a version line", "SPC\nXY00\n1", {{F::SwissQr, Evidence::Opening}}},
        {"boarding pass head without legs",
         "M0SMITH/JOHN          E",
         {{F::IataBcbp, Evidence::Shape}}},
        {"boarding pass whose flight day is not a number",
         "M1SMITH/JOHN          EXYZ789 LHRJFKBA 0117 1X3Y023C0042 100",
         {{F::IataBcbp, Evidence::Shape}}},
        {"HIBC code with a wrong check character", "+A12312345U", {{F::Hibc, Evidence::Opening}}},
        {"empty", "", {}},
        {"bytes of no format", std::string("\0\xff\x80\x1d", 4), {}},
    };
    return table;
}

TEST(Detect, NearMissesRankAsTheirSignaturesSay) {
    for (const auto& row : rankings()) {
        const auto candidates = qvx::detectFormats(row.input);
        std::vector<std::pair<F, Evidence>> got;
        for (const auto& candidate : candidates) {
            got.emplace_back(candidate.format, candidate.evidence);
            EXPECT_FALSE(candidate.reason.empty());
        }
        EXPECT_EQ(got, row.expected) << row.name << describe(candidates);
    }
}

TEST(Detect, EveryFormatHasASignatureAndEveryReasonIsOneLine) {
    std::map<F, int> rows;
    for (auto it = qvx::formatSignaturesBegin(); it != qvx::formatSignaturesEnd(); ++it) {
        ++rows[it->format];
        EXPECT_EQ(it->reason.find('\n'), std::string_view::npos) << it->reason;
    }
    for (const auto& [format, name] : parser::dataFormatTable()) {
        EXPECT_GT(rows[format], 0) << name;
    }
}

TEST(Detect, ParseTakesTheFirstCandidateThatSucceeds) {
    // The VIN ranks first; strict, it refuses the check digit, and GS1 reads a batch.
    const std::string bytes = "10123456789012346";
    std::vector<F> asked;
    auto detected = qvx::parseDetected(bytes, [&asked](F format) {
        asked.push_back(format);
        auto parser = qvx::Parser::create(nullptr, format).value();
        if (format == F::Vin) {
            EXPECT_TRUE(parser->setOptions(R"({"strictMode":true})").ok());
        }
        return parser;
    });
    EXPECT_EQ(asked, (std::vector<F>{F::Vin, F::Gs1Ai})) << describe(detected.candidates);
    ASSERT_TRUE(detected.outcome.ok());
    EXPECT_EQ(detected.format, F::Gs1Ai);
}

TEST(Detect, ParseReportsTheTopCandidatesIssueWhenNoneSucceeds) {
    auto detected = qvx::parseDetected(
        "P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<\nL898902C36UTO7408122F1204159ZE184226B<<<<<");
    ASSERT_FALSE(detected.outcome.ok());
    EXPECT_EQ(detected.format, F::Mrtd);
    EXPECT_EQ(detected.outcome.error()->message, "Could not determine MRTD type.");

    auto none = qvx::parseDetected("hello");
    ASSERT_FALSE(none.outcome.ok());
    EXPECT_FALSE(none.format.has_value());
    EXPECT_EQ(none.outcome.error()->message, "no format recognized");

    auto passedOver =
        qvx::parseDetected("1HGCM82633A004352", [](F) { return std::shared_ptr<qvx::Parser>(); });
    ASSERT_FALSE(passedOver.outcome.ok());
    EXPECT_FALSE(passedOver.format.has_value());
    EXPECT_EQ(passedOver.outcome.error()->message, "no parser for the detected format 'vin'");
}

TEST(Detect, ParseWithDefaultParsersGivesTheFormatThatSucceeded) {
    auto detected = qvx::parseDetected("1HGCM82633A004352");
    ASSERT_TRUE(detected.outcome.ok());
    EXPECT_EQ(detected.format, F::Vin);
}

// Cuts and random bytes from a fixed seed: detection must read no byte outside
// the input (the sanitizer build watches) and always answer.
TEST(Detect, AnyBytesAreAnswered) {
    std::vector<std::string> inputs;
    for (const auto& entry : fs::directory_iterator(QVX_SAMPLES_DIR)) {
        const std::string bytes = readBytes(entry.path());
        for (std::size_t n = 0; n <= bytes.size(); ++n) inputs.push_back(bytes.substr(0, n));
    }
    std::mt19937 random(17);
    for (int i = 0; i < 500; ++i) {
        std::string bytes(random() % 80, '\0');
        for (char& c : bytes) c = static_cast<char>(random() % 256);
        inputs.push_back(bytes);
    }
    for (const auto& bytes : inputs) {
        const auto candidates = qvx::detectFormats(bytes);
        EXPECT_LE(candidates.size(), qvx::FormatCandidates::kCapacity);
    }
}

}  // namespace
