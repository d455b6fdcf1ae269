// Table texts and a reader message that whole payloads (tests/data/us_usid)
// do not show.
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "common/text.h"
#include "usid/usid_parser.h"
#include "usid/usid_tables.h"

namespace {

using namespace parser::usid;
using nlohmann::json;

TEST(UsidTables, LookupsAreExactAndFirstRowWins) {
    EXPECT_EQ(*findText(kBloodType, "0-"), "0-");  // the letter O and the digit both read
    EXPECT_EQ(*findText(kServiceNames, "X"), "other of not applicable");
    EXPECT_FALSE(isListed(kPayGrade, "o3"));
    const std::string& retdec = *findText(kStatus, "RETDEC");
    EXPECT_EQ(retdec.substr(retdec.find('\n')),
              "\nbeginning on their 60th birthday, the TDRL, and the PDRL.");
}

// The runner stops a short payload before a reader sees it, so the reader's
// own length message only shows when the reader is called alone.
TEST(UsidReaders, CodedFieldLengthMessage) {
    const std::string text = "O+";
    ParserStringRef view(text);
    parser::ParserResult result;
    parser::FieldTarget target(result);
    parser::CardItem item{parser::readCodedField, "bloodType", 3, {&kBloodType}};
    EXPECT_FALSE(parser::readCodedField(item, view, 3, {}, target));
    ASSERT_TRUE(result.error);
    EXPECT_EQ(result.error->message, "bloodType should contain 3 character(s) but contain 2");
    EXPECT_EQ(view.size(), 2u);

    parser::ParserResult read;
    parser::FieldTarget readTarget(read);
    EXPECT_TRUE(parser::readCodedField(item, view, 2, {}, readTarget));
    ASSERT_EQ(read.fields.size(), 1u);
    EXPECT_EQ(read.fields[0].parsed, "0+");
    EXPECT_TRUE(view.empty());
}

// The photo's encoder against the general one, over every length of
// remainder and every byte value.
TEST(UsidReaders, PhotoEncodingMatchesBase64) {
    std::string bytes;
    for (int i = 0; i < 300; ++i) bytes.push_back(static_cast<char>((i * 7 + 3) % 256));
    for (std::size_t length : {0u, 1u, 2u, 3u, 4u, 5u, 255u, 256u, 300u}) {
        const std::string part = bytes.substr(0, length);
        EXPECT_EQ(parser::encodeBase64(part), parser::base64Encode(part)) << length;
    }
    EXPECT_EQ(parser::encodeBase64("Man"), "TWFu");
    EXPECT_EQ(parser::encodeBase64("Ma"), "TWE=");
    EXPECT_EQ(parser::encodeBase64("M"), "TQ==");
}

// The corpus holds no card of this format, only a Common Access Card that
// must be refused cleanly.
TEST(UsidCorpus, OtherCardsAreRefusedCleanly) {
    std::ifstream in(QVX_CORPUS_DIR "/aamva/usid_dod.json");
    if (!in) GTEST_SKIP() << "no corpus";
    const json corpus = json::parse(in, nullptr, false);
    ASSERT_TRUE(corpus.is_object());
    parser::UsUsidParser usid;
    for (const auto& vector : corpus.value("vectors", json::array())) {
        const std::string input = vector.value("input_text", std::string());
        SCOPED_TRACE(vector.value("id", std::string()));
        auto result = usid.parse(ParserStringRef(input));
        ASSERT_TRUE(result->error);
        if (!input.empty() && input[0] == 'N') {
            EXPECT_EQ(result->error->message,
                      "Common Access Card (CAC) PDF417 VN is not supported by the parser.");
        }
    }
}

}  // namespace
