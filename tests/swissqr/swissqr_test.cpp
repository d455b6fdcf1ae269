// What the JSON form of a result cannot show: the codes and details of the
// issues, on fields and as the fatal error; and a smoke run over bills
// gathered from other projects' test suites.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "swissqr/swissqr_elements.h"
#include "swissqr/swissqr_parser.h"

namespace parser {
namespace {

using nlohmann::json;
using Code = ParserIssueCode;
using Key = ParserIssueInfoKey;
using Info = std::map<Key, std::string>;

// clang-format off
const std::vector<std::string> kBill = {
    "SPC", "0200", "1", "CH6630808001234567890",
    "S", "Bergbahnen Alpenblick AG", "Talstrasse", "12", "3818", "Grindelwald", "CH",
    "", "", "", "", "", "", "",
    "249.50", "CHF",
    "S", "Anna Muster", "Seeweg", "5a", "8800", "Thalwil", "CH",
    "QRR", "000000000000000000001234565", "Saisonkarte 2024/25", "EPD"};
// clang-format on

std::string join(const std::vector<std::string>& lines, const std::string& separator = "\n") {
    std::string text;
    for (std::size_t i = 0; i < lines.size(); ++i) text += (i ? separator : "") + lines[i];
    return text;
}

// The version 2 bill with the lines of the named elements replaced.
std::string bill(const std::map<std::string, std::string>& changes,
                 const std::vector<std::string>& extra = {}) {
    std::vector<std::string> lines = kBill;
    const auto& elements = swissqr::elementsForVersion('2');
    for (const auto& [name, value] : changes) {
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (elements[i].name == name) lines[i] = value;
        }
    }
    lines.insert(lines.end(), extra.begin(), extra.end());
    return join(lines);
}

std::unique_ptr<ParserResult> parse(const std::string& input, bool strict,
                                    int minimalVersion = 200) {
    SwissQRParser parser;
    const json options = {{"minimalVersion", minimalVersion}, {"strictMode", strict}};
    EXPECT_TRUE(parser.readOptionsFromJSONString(options.dump())->ok);
    return parser.parse(ParserStringRef(input));
}

Info infoOf(const ParserIssue& issue) {
    return Info(issue.additionalInfo.begin(), issue.additionalInfo.end());
}

struct IssueCase {
    const char* label;
    std::string input;
    bool strict;
    const char* field;  // null: the issue is the fatal error
    Code code;
    Info info;
    int minimalVersion = 200;
};

TEST(SwissQrIssues, CodesAndDetails) {
    const std::string version1 =
        "SPC\n0100\n1\nCH9300762011623852957\nPro Natura\nWeg\n1\n3007\nBern\nCH\n\n\n\n\n\n\n"
        "50.00\nCHF\n2019/10/31\n\n\n\n\n\n\nNON\n\nBeitrag";
    const std::string ccy = "QRCH/CcyAmtDate/Ccy";
    const std::string ibanName = "QRCH/CdtrInf/IBAN";
    const std::string iban = "CH66 3080 8001 2345 6789 0";
    // clang-format off
    const std::vector<IssueCase> cases = {
        {"trailer", bill({{"QRCH/RmtInf/AddInf/Trailer", "EPX"}}), false, nullptr, Code::MissingEndOfPaymentData, {}},
        {"date", version1, true, nullptr, Code::InvalidDate, {}, 100},
        {"too short", "SPC\n0200", true, nullptr, Code::StringTooShort, {}},
        {"start", "XYZ1234567", true, nullptr, Code::WrongStartingCharacters, {{Key::StartingCharacters, "XYZ"}}},
        {"separation", "SPCSPCSPC", false, nullptr, Code::InvalidSeparation, {}},
        {"version", version1, true, nullptr, Code::UnsupportedVersion, {{Key::Version, "100"}, {Key::MinimalVersion, "200"}}},
        {"version overflow", bill({{"QRCH/Header/Version", "02000000000000"}}), true, nullptr, Code::UnsupportedVersion,
         {{Key::Version, "-1"}, {Key::MinimalVersion, "200"}}},
        {"incomplete", "SPC\n0200\n1\n", true, nullptr, Code::IncompleteCode, {}},
        {"empty on field", bill({{ccy, ""}}), false, ccy.c_str(), Code::ElementEmpty, {{Key::ElementName, ccy}}},
        {"empty fatal", bill({{"QRCH/RmtInf/Tp", ""}}), true, nullptr, Code::ElementEmpty, {{Key::ElementName, "QRCH/RmtInf/Tp"}}},
        {"length on field", bill({{ccy, "EU"}}), false, ccy.c_str(), Code::ElementLengthMismatch,
         {{Key::ElementName, ccy}, {Key::String, "EU"}, {Key::Length, "3"}}},
        {"length fatal", bill({{ibanName, iban}}), true, nullptr, Code::ElementLengthMismatch,
         {{Key::ElementName, ibanName}, {Key::String, iban}, {Key::Length, "21"}}},
        {"too long", bill({{ccy, "EURO"}}), false, nullptr, Code::ElementTooLong,
         {{Key::ElementName, ccy}, {Key::String, "EURO"}, {Key::Length, "3"}}},
        {"not empty", bill({{"QRCH/CdtrInf/Cdtr/AdrTp", "K"}}), false, "QRCH/CdtrInf/Cdtr/TwnNm", Code::ElementNotEmpty,
         {{Key::ElementName, "QRCH/CdtrInf/Cdtr/TwnNm"}}},
        {"charset fatal", bill({{"QRCH/Header/Version", "020f"}}), true, nullptr, Code::ElementWrongCharset,
         {{Key::ElementName, "Version"}, {Key::String, "020f"}, {Key::Charset, "numeric"}}},
        {"charset on field", bill({{ccy, "E$"}}), false, ccy.c_str(), Code::ElementWrongCharset,
         {{Key::ElementName, ccy}, {Key::String, "E$"}, {Key::Charset, "alphanumeric"}}},
        {"alternatives", bill({}, {"", "a", "b", "c"}), true, nullptr, Code::TooManyAlternativeProcedures, {}},
        {"spaces", bill({{ibanName, iban}}), false, ibanName.c_str(), Code::ElementContainsSpaces,
         {{Key::ElementName, ibanName}, {Key::String, iban}}},
    };
    // clang-format on
    for (const IssueCase& c : cases) {
        SCOPED_TRACE(c.label);
        auto result = parse(c.input, c.strict, c.minimalVersion);
        const ParserIssue* issue = result->error.get();
        if (c.field != nullptr) {
            ASSERT_EQ(issue, nullptr) << issue->message;
            const ParsedField* field = result->getFieldByName(c.field);
            ASSERT_NE(field, nullptr);
            ASSERT_EQ(field->issues.size(), 1u);
            issue = field->issues[0].get();
        }
        ASSERT_NE(issue, nullptr);
        EXPECT_EQ(issue->code, c.code) << issue->message;
        EXPECT_EQ(infoOf(*issue), c.info) << issue->message;
    }
}

// Only a last empty line at the procedure is a stray line end; an empty
// procedure before another one is a field.
TEST(SwissQrProcedures, EmptyLinesAtTheEnd) {
    struct Case {
        std::vector<std::string> extra;
        std::vector<std::string> procedures;  // raw strings of the AltPmt fields
    };
    for (const Case& c :
         {Case{{}, {}}, Case{{""}, {}}, Case{{"", ""}, {}}, Case{{"", "a", ""}, {"a"}},
          Case{{"", "", "b"}, {"", "b"}}, Case{{"x", "a"}, {"a"}}}) {
        SCOPED_TRACE(join(c.extra, "|"));
        auto result = parse(bill({}, c.extra), true);
        ASSERT_EQ(result->error, nullptr) << result->error->message;
        std::vector<std::string> procedures;
        for (const auto& field : result->fields) {
            if (field.name.rfind("QRCH/AltPmtInf/AltPmt/", 0) == 0) {
                EXPECT_EQ(field.name,
                          "QRCH/AltPmtInf/AltPmt/" + std::to_string(procedures.size() + 1));
                procedures.push_back(field.rawString);
            }
        }
        EXPECT_EQ(procedures, c.procedures);
        EXPECT_EQ(result->fields.size(), kBill.size() + 1 + c.procedures.size());
    }
}

// ---- Corpus ----

const std::filesystem::path kCorpus = QVX_CORPUS_DIR "/swissqr";

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

json fieldValue(const ParserResult& result, const std::string& name) {
    const ParsedField* field = result.getFieldByName(name);
    return field ? field->parsed : json("<missing>");
}

std::string withCrlf(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\n') out += '\r';
        if (c != '\r') out += c;
    }
    return out;
}

TEST(SwissQrCorpus, BillsParseOrFailCleanly) {
    std::ifstream index(kCorpus / "index.jsonl");
    if (!index) GTEST_SKIP() << "no corpus at " << kCorpus;
    std::size_t rows = 0;
    for (std::string line; std::getline(index, line);) {
        if (line.empty()) continue;
        const json row = json::parse(line, nullptr, false);
        ASSERT_FALSE(row.is_discarded()) << line;
        ++rows;
        const std::string file = row.at("file").get<std::string>();
        SCOPED_TRACE(file);
        const std::string text = readFile(kCorpus / file);

        if (file.rfind("invalid/", 0) == 0) {
            EXPECT_NE(parse(text, true)->error, nullptr);
            EXPECT_NE(parse(text, false, 100)->error, nullptr);
            continue;
        }
        if (file.rfind("billinfo/", 0) == 0) {
            // Bill information alone is no bill; it stands on its own line.
            auto result = parse(bill({}, {text}), true);
            ASSERT_EQ(result->error, nullptr) << result->error->message;
            EXPECT_EQ(fieldValue(*result, "QRCH/RmtInf/AddInf/StrdBkgInf"), text);
            continue;
        }
        auto result = parse(text, true);
        ASSERT_EQ(result->error, nullptr) << result->error->message;
        EXPECT_EQ(fieldValue(*result, "QRCH/Header/QRType"), "SPC");
        EXPECT_EQ(fieldValue(*result, "QRCH/Header/Coding"), 1);
        EXPECT_EQ(parse(text, false)->asJson(), result->asJson()) << "lenient adds issues";
        EXPECT_EQ(parse(withCrlf(text), true)->asJson(), result->asJson()) << "CRLF differs";
    }
    EXPECT_GT(rows, 50u);
}

}  // namespace
}  // namespace parser
