#include "gs1/gs1_ai_table.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "gs1/gs1_ai_parser.h"
#include "gs1/gs1_field_parser.h"
#include "gs1/result_builder.h"

namespace {

using parser::findGs1Ai;
using parser::gs1AiTable;

TEST(Gs1AiTable, HasEveryRowWithOneDuplicateFoundFirst) {
    const auto table = gs1AiTable();
    ASSERT_EQ(table.size(), 803u);
    std::vector<std::string> repeated;
    for (std::size_t i = 1; i < table.size(); ++i) {
        if (table[i - 1].key() == table[i].key()) repeated.emplace_back(table[i].key());
    }
    EXPECT_EQ(repeated, std::vector<std::string>{"4308"});
    // Of the two 4308 rows (30 and 20 characters) the lookup finds the first.
    const parser::Gs1AiEntry* found = findGs1Ai("4308");
    ASSERT_TRUE(found != nullptr && found > table.data());
    EXPECT_TRUE(found[1].key() == "4308" && found[-1].key() != "4308");
    EXPECT_NE(found[0].decode, found[1].decode);
}

TEST(Gs1AiTable, LookupFindsEveryKeyAndOnlyKeys) {
    for (const auto& entry : gs1AiTable()) {
        const parser::Gs1AiEntry* found = findGs1Ai(entry.key());
        ASSERT_NE(found, nullptr) << entry.key();
        EXPECT_EQ(found->key(), entry.key());
    }
    for (const char* absent :
         {"",    "0",   "1",    "14",  "140",  "4309", "3944",  "3949",  "3954",     "3959",
          "392", "393", "3700", "000", "0000", "991",  "99999", "4\xff", "\xff\xff", "31",
          "310", "43",  "0a",   "/0",  "9:",   "01 ",  " 01",   "-1"}) {
        EXPECT_EQ(findGs1Ai(absent), nullptr) << absent;
    }
}

TEST(Gs1AiTable, KeepsPrefixRowsBesideTheirFourDigitRuns) {
    for (const char* prefix : {"390", "391", "394"}) {
        const parser::Gs1AiEntry* shortRow = findGs1Ai(prefix);
        const parser::Gs1AiEntry* longRow = findGs1Ai(std::string(prefix) + "0");
        ASSERT_NE(shortRow, nullptr) << prefix;
        ASSERT_NE(longRow, nullptr) << prefix;
        EXPECT_EQ(shortRow + 1, longRow) << prefix;
        EXPECT_NE(shortRow->decode, longRow->decode) << prefix;
    }
    for (const char* present : {"3909", "3919", "3929", "3939", "3940", "3943", "3950", "3953"}) {
        EXPECT_NE(findGs1Ai(present), nullptr) << present;
    }
    // 3100 to 3699 is one unbroken run between "30" and "37".
    const parser::Gs1AiEntry* first = findGs1Ai("3100");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first[-1].key(), "30");
    EXPECT_EQ(first[599].key(), "3699");
    EXPECT_EQ(first[600].key(), "37");
}

// Digits that satisfy every decoder: ones, closed by a GS1 check digit
// ("111119" is also a date, "1111111111" a date and time).
std::string validData(std::size_t length) {
    std::string data(length - 1, '1');
    data += parser::gs1CheckDigit(data);
    return data;
}

// The shortest data the row's decoder reads without a complaint.
std::size_t decoderMinimum(const parser::Gs1AiEntry& entry) {
    const std::string key(entry.key());
    const parser::Gs1AiParser parser;
    for (std::size_t length = 1; length <= 40; ++length) {
        parser::ResultBuilder builder(true);
        const std::string data = validData(length);
        ParserStringRef view(data);
        const bool goOn = entry.decode(key, builder, view, parser);
        builder.finishField();
        bool clean = goOn && !builder.result.error && builder.result.warnings.empty() &&
                     !builder.result.fields.empty();
        for (const auto& field : builder.result.fields) clean = clean && field.issues.empty();
        if (clean) return length;
    }
    return 0;
}

// The walk's minimum must never turn away data its decoder reads. Where it
// is lower (1), short data reaches the decoder and is reported in the
// decoder's own words; 421 alone asks for a postal code character as well.
TEST(Gs1AiTable, MinimumLengthsAgreeWithTheDecoders) {
    const std::set<std::string> looser = {"4307", "7241", "8026", "8111"};
    for (const auto& entry : gs1AiTable()) {
        const std::string key(entry.key());
        ASSERT_NE(entry.decode, nullptr) << key;
        const std::size_t minimum = decoderMinimum(entry);
        ASSERT_NE(minimum, 0u) << key;
        if (key == "421") {
            EXPECT_EQ(entry.minimumLength, minimum + 1);
        } else if (looser.count(key) > 0 ||
                   (key >= "3910" && key <= "3939" && key.size() == 4 && key[2] != '2')) {
            EXPECT_EQ(entry.minimumLength, 1u) << key;
            EXPECT_GT(minimum, 1u) << key;
        } else {
            EXPECT_EQ(entry.minimumLength, minimum) << key;
        }
    }
}

}  // namespace
