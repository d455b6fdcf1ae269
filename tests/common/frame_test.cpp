// The result model, issues, value-or-error types, the format table and the
// options entry shared by every format parser.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "qvx/bc_parser.h"
#include "qvx/contract.h"
#include "qvx/data_format.h"
#include "qvx/issue.h"
#include "qvx/parsed.h"
#include "qvx/result.h"

namespace parser {
namespace {

using nlohmann::json;

TEST(ParserResult, JsonFormSortsKeysAndShowsIssuesOnlyWhenPresent) {
    ParserResult result;
    EXPECT_EQ(result.jsonString(), "[]");
    result.addField("someField", " abc", "abc", "the issue's text");
    result.addField("plain", "x", nullptr, "");
    EXPECT_EQ(result.jsonString(),
              "[\n"
              "    {\n"
              "        \"issues\": [\n"
              "            \"the issue's text\"\n"
              "        ],\n"
              "        \"name\": \"someField\",\n"
              "        \"parsed\": \"abc\",\n"
              "        \"rawString\": \" abc\"\n"
              "    },\n"
              "    {\n"
              "        \"name\": \"plain\",\n"
              "        \"parsed\": null,\n"
              "        \"rawString\": \"x\"\n"
              "    }\n"
              "]");
}

TEST(ParserResult, JsonTextDropsInvalidUtf8AndKeepsNonAscii) {
    ParserResult result;
    result.addField("f",
                    std::string("a\xFF"
                                "b"),
                    "\xC3\xA9");
    EXPECT_EQ(result.asJson().dump(-1, ' ', false, json::error_handler_t::ignore),
              "[{\"name\":\"f\",\"parsed\":\"\xC3\xA9\",\"rawString\":\"ab\"}]");
    EXPECT_NE(result.jsonString().find("\"rawString\": \"ab\""), std::string::npos);
}

TEST(ParserResult, IssueVariantsOfAddField) {
    ParserResult result;
    result.addField("a", "", 1, std::string());
    result.addField("b", "", 2, std::shared_ptr<ParserIssue>());
    result.addField("c", "", 3, ParserIssue::invalidDate());
    EXPECT_TRUE(result.fields[0].issues.empty());
    EXPECT_TRUE(result.fields[1].issues.empty());
    ASSERT_EQ(result.fields[2].issues.size(), 1u);
    EXPECT_EQ(result.fields[2].issues[0]->code, ParserIssueCode::InvalidDate);
}

TEST(ParserResult, StringFieldKeepsRawAndTrimsParsed) {
    struct Row {
        std::string raw;
        std::string parsed;
    };
    const std::vector<Row> rows = {
        {"  x ", "x"}, {" \t\n\v\f\r", ""}, {"", ""}, {"a b", "a b"}, {"\x1dz\x1d", "\x1dz\x1d"}};
    for (const auto& row : rows) {
        ParserResult result;
        result.addStringField("s", ParserStringRef(row.raw));
        EXPECT_EQ(result.fields[0].rawString, row.raw);
        EXPECT_EQ(result.fields[0].parsed, json(row.parsed)) << row.raw;
        EXPECT_TRUE(result.fields[0].issues.empty());
    }
}

TEST(ParserResult, DuplicateNamesAndReplace) {
    ParserResult result;
    result.addField("dup", "1", 1, "first issue");
    result.addField("dup", "2", 2);
    result.addField("last", "3", 3);
    ASSERT_NE(result.getFieldByName("dup"), nullptr);
    EXPECT_EQ(result.getFieldByName("dup")->rawString, "1");
    EXPECT_FALSE(result.fieldExists("DUP"));
    EXPECT_EQ(result.asJson().size(), 3u);

    result.replaceField(0, "new", "n", "v");
    EXPECT_EQ(result.fields[0].name, "new");
    EXPECT_TRUE(result.fields[0].issues.empty()) << "old issues must go";
    EXPECT_EQ(result.fields[1].name, "dup");
    EXPECT_EQ(result.getFieldByName("dup")->rawString, "2");
}

TEST(ParserResult, LastErrorWinsAndWarningsStayOutOfJson) {
    ParserResult result;
    result.addField("f", "", 1);
    result.setError("first");
    result.setError("second");
    ASSERT_TRUE(result.error);
    EXPECT_EQ(result.error->message, "second");
    EXPECT_EQ(result.error->code, ParserIssueCode::Generic);

    result.addWarning(ParserIssue::generic("careful"));
    EXPECT_EQ(result.asJson().dump(), R"([{"name":"f","parsed":1,"rawString":""}])");
}

TEST(ParsedData, FreezesFieldsWarningsAndJsonText) {
    ParserResult result;
    result.normalizedText = "normalised";
    result.addField("a", "raw", json{{"k", 1}}, "issue");
    result.addWarning(ParserIssue::stringTooShort());
    const std::string expectedJson = result.jsonString();

    const ParsedData copied(result);
    const ParsedData moved(std::move(result));
    for (const ParsedData* data : {&copied, &moved}) {
        EXPECT_EQ(data->normalizedText(), "normalised");
        ASSERT_EQ(data->fields().size(), 1u);
        EXPECT_EQ(data->fields()[0]->rawString, "raw");
        EXPECT_EQ(data->fields()[0]->issues.size(), 1u);
        EXPECT_EQ(data->warnings(), std::vector<std::string>{"string too short"});
        EXPECT_EQ(data->jsonString(), expectedJson);
        EXPECT_EQ(data->getFieldByName("a"), data->fields()[0]);
        EXPECT_EQ(data->getFieldByName("b"), nullptr);
    }
}

TEST(ParserIssue, SwissQrFactoriesCarryCodeMessageAndInfo) {
    using K = ParserIssueInfoKey;
    using C = ParserIssueCode;
    struct Row {
        std::shared_ptr<ParserIssue> issue;
        C code;
        std::string message;
        ParserIssue::Info info;
    };
    const std::vector<Row> rows = {
        {ParserIssue::missingEndOfPaymentData(),
         C::MissingEndOfPaymentData,
         "code does not contain mandatory \"EPD\" string",
         {}},
        {ParserIssue::invalidDate(), C::InvalidDate, "invalid date", {}},
        {ParserIssue::stringTooShort(), C::StringTooShort, "string too short", {}},
        {ParserIssue::wrongStartingCharacters("XYZ"),
         C::WrongStartingCharacters,
         "Code should start with 'SPC' but starts with 'XYZ' string.",
         {{K::StartingCharacters, "XYZ"}}},
        {ParserIssue::invalidSeparation(),
         C::InvalidSeparation,
         "invalid separation between elements",
         {}},
        {ParserIssue::unsupportedVersion("0100", 200),
         C::UnsupportedVersion,
         "Version 0100 is not supported.",
         {{K::Version, "0100"}, {K::MinimalVersion, "200"}}},
        {ParserIssue::incompleteCode(),
         C::IncompleteCode,
         "incomplete code (elements missing)",
         {}},
        {ParserIssue::elementEmpty("IBAN"),
         C::ElementEmpty,
         "element content is empty even though it should not: IBAN",
         {{K::ElementName, "IBAN"}}},
        {ParserIssue::elementLengthMismatch("IBAN", "CH12", 21),
         C::ElementLengthMismatch,
         "IBAN field which is: 'CH12' should be of length 21.",
         {{K::ElementName, "IBAN"}, {K::String, "CH12"}, {K::Length, "21"}}},
        {ParserIssue::elementTooLong("Name", "abc", 2),
         C::ElementTooLong,
         "Name field which is: 'abc' should be of length less or equal to 2.",
         {{K::ElementName, "Name"}, {K::String, "abc"}, {K::Length, "2"}}},
        {ParserIssue::elementNotEmpty("Trailer"),
         C::ElementNotEmpty,
         "Trailer is not empty but should be.",
         {{K::ElementName, "Trailer"}}},
        {ParserIssue::elementWrongCharset("Amt", "1x", "decimal"),
         C::ElementWrongCharset,
         "Amt field which is: '1x' should contain only decimal characters.",
         {{K::ElementName, "Amt"}, {K::String, "1x"}, {K::Charset, "decimal"}}},
        {ParserIssue::tooManyAlternativeProcedures(),
         C::TooManyAlternativeProcedures,
         "code contains more than two AltPmt fields",
         {}},
        {ParserIssue::elementContainsSpaces("Ref", "1 2"),
         C::ElementContainsSpaces,
         "Ref should not contain spaces",
         {{K::ElementName, "Ref"}, {K::String, "1 2"}}},
    };
    for (const auto& row : rows) {
        ASSERT_TRUE(row.issue);
        EXPECT_EQ(row.issue->code, row.code) << row.message;
        EXPECT_EQ(row.issue->message, row.message);
        EXPECT_EQ(row.issue->additionalInfo, row.info) << row.message;
    }
    EXPECT_EQ(static_cast<int>(ParserIssueCode::ElementContainsSpaces), 1013);
}

TEST(DataFormat, TableOrderAndLookups) {
    const std::vector<std::string> names = {"gs1ai",   "hibc",      "dlid",
                                            "mrtd",    "swissqr",   "vin",
                                            "us_usid", "iata_bcbp", "gs1_digital_link"};
    const auto& table = dataFormatTable();
    ASSERT_EQ(table.size(), names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(static_cast<std::size_t>(table[i].first), i);
        EXPECT_EQ(table[i].second, names[i]);
        EXPECT_EQ(dataFormatName(static_cast<ParserDataFormat>(i)), names[i]);
        EXPECT_EQ(dataFormatFromName(names[i]), static_cast<ParserDataFormat>(i));
    }
    EXPECT_FALSE(dataFormatFromName("VIN").has_value());
    EXPECT_FALSE(dataFormatFromName("").has_value());
    EXPECT_FALSE(dataFormatFromName("pdf417").has_value());
}

// Records what reaches the format parser, to see the options entry at work.
class RecordingParser : public BcParser {
  public:
    std::unique_ptr<ParserResult> parse(ParserStringRef) override {
        return std::make_unique<ParserResult>();
    }
    std::unique_ptr<ParserOptionsOutcome> readOptionsFromJSON(json options) override {
        received.push_back(options);
        return ParserOptionsOutcome::success();
    }
    json optionsToJSON() const override { return json::object(); }

    std::vector<json> received;
};

TEST(BcParser, OptionsStringMustBeJsonObject) {
    struct Row {
        std::string text;
        std::string error;  // "" when the parser receives the object
    };
    const std::vector<Row> rows = {
        {"", "Could not parse json string: \"\""},
        {"{\"a\": 1 /* c */}", "Could not parse json string: \"{\"a\": 1 /* c */}\""},
        {"[]", "internal error: JSON options are malformed"},
        {"null", "internal error: JSON options are malformed"},
        {"{}", ""},
        {" {\"b\": true, \"a\": 1} ", ""},
    };
    for (const auto& row : rows) {
        RecordingParser recorder;
        auto outcome = recorder.readOptionsFromJSONString(row.text);
        ASSERT_TRUE(outcome);
        EXPECT_EQ(outcome->ok, row.error.empty()) << row.text;
        EXPECT_EQ(outcome->error, row.error) << row.text;
        EXPECT_EQ(recorder.received.size(), row.error.empty() ? 1u : 0u) << row.text;
    }
}

TEST(ResultDeathTest, ReadingTheWrongArmAborts) {
    using R = result<int, std::string>;
    using V = result<void, std::string>;
    EXPECT_DEATH((void)R::success(1).error(), "");
    EXPECT_DEATH((void)R::failure("e").value(), "");
    EXPECT_DEATH((void)V::success().error(), "");
    EXPECT_EQ(R::success(1).value(), 1);
    EXPECT_EQ(R::failure("e").error(), "e");
    EXPECT_FALSE(V::failure("x").ok());
}

TEST(ContractDeathTest, LocatedGuardPrintsOneLine) {
    EXPECT_DEATH(QVX_GUARD(false, "broken promise"),
                 "^parser: tests/common/frame_test\\.cpp:[0-9]+: broken promise\n");
}

}  // namespace
}  // namespace parser
