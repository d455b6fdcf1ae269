// Behaviour of the driver-licence parser that the conformance data cannot
// show, because a failed parse reaches callers without its fields.
#include <gtest/gtest.h>

#include <string>

#include "dlid/dlid_issuers.h"
#include "dlid/dlid_parser.h"

namespace {

using nlohmann::json;

std::vector<std::string> fieldNames(const parser::ParserResult& result) {
    std::vector<std::string> names;
    for (const auto& field : result.fields) names.push_back(field.name);
    return names;
}

TEST(DlidIssuers, Lookup) {
    using parser::dlid::issuerForIin;
    EXPECT_EQ(issuerForIin("636027"), "State Dept. (Diplomatic)");
    EXPECT_EQ(issuerForIin("36026"), "AZ");
    EXPECT_EQ(issuerForIin("36004"), "NC");
    EXPECT_EQ(issuerForIin("990876"), "AB");
    EXPECT_EQ(issuerForIin("604432"), "AB");
    EXPECT_EQ(issuerForIin("123456"), "123456");
    EXPECT_EQ(issuerForIin(""), "");
    // The tests take the IIN as printed: a five-digit Arizona IIN is no Arizona.
    EXPECT_FALSE(parser::dlid::isArizona("36026"));
    EXPECT_TRUE(parser::dlid::isCanadian("604429"));
    EXPECT_FALSE(parser::dlid::isCanadian("636015"));
}

TEST(DlidParser, WindowsLineEndsBecomeLineFeeds) {
    using parser::DLIDParser;
    EXPECT_EQ(DLIDParser::removeWindowsEOLFromString("a\r\nb\r"), "a\nb\r");
    EXPECT_EQ(DLIDParser::removeWindowsEOLFromString("\r\r\n\n"), "\r\n\n");
    EXPECT_TRUE(DLIDParser::dataElementSeparatorOrSegmentTerminatorIsWindowsEOL("@\r\n\x1e\r\nA"));
    EXPECT_TRUE(DLIDParser::dataElementSeparatorOrSegmentTerminatorIsWindowsEOL("@\n\x1e\r\r\nA"));
    EXPECT_FALSE(DLIDParser::dataElementSeparatorOrSegmentTerminatorIsWindowsEOL("@\n\x1e\rANSI"));
}

// A partly read stripe still gets its unified field; the header stays null.
TEST(DlidParser, StripeWithoutEndSentinelKeepsTrackOne) {
    parser::DLIDParser dlid;
    auto result = dlid.parse("%TXAUSTIN^DOE$JOHN$^1 MAIN ST^?;6360151234567=250319850314%?81");
    ASSERT_TRUE(result->error);
    EXPECT_EQ(result->error->message, "missing end sentinel");
    EXPECT_EQ(fieldNames(*result),
              (std::vector<std::string>{"header", "DAJ", "DAI", "DCS", "DAC", "DAD", "DDE", "DDF",
                                        "DDG", "DAG", "unified"}));
    EXPECT_TRUE(result->fields.front().parsed.is_null());
    EXPECT_EQ(result->fields.back().parsed["documentType"], "DL");
    EXPECT_EQ(result->fields.back().parsed["name"], "JOHN DOE");
}

// An unreadable height is reported, but the subfile is read to its end.
TEST(DlidParser, ShortHeightDoesNotStopTheWalk) {
    parser::DLIDParser dlid;
    auto result =
        dlid.parse("@\n\x1e\rANSI 636015080101DL00310031DLDAQ1\nDAU  7i\nDCSSMITH\nDACJOHN\r");
    ASSERT_TRUE(result->error);
    EXPECT_EQ(result->error->message, "trimmed data too short to parse height");
    EXPECT_EQ(fieldNames(*result),
              (std::vector<std::string>{"header", "DAQ", "DCS", "DAC", "unified"}));
}

// Every parse starts afresh: a flag set by one document does not reach the next.
TEST(DlidParser, ParsesShareNoState) {
    parser::DLIDParser dlid;
    ASSERT_TRUE(dlid.readOptionsFromJSONString(R"({"currentDate": "20240601"})")->ok);
    const std::string neverExpires =
        "@\n\x1e\rANSI 636035080101ID00310033IDDAQ1\nDBB03141950\nDBA99999999\r";
    const std::string noExpiry = "@\n\x1e\rANSI 636035080101ID00310021IDDAQ1\nDBB03141950\r";
    EXPECT_EQ(dlid.parse(neverExpires)->fields.back().parsed["neverExpires"], true);
    EXPECT_EQ(dlid.parse(noExpiry)->fields.back().parsed["neverExpires"], false);
}

}  // namespace
