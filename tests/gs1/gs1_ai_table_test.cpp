#include "gs1/gs1_ai_table.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using parser::findGs1Ai;
using parser::gs1AiTable;

TEST(Gs1AiTable, HasEveryRowInByteOrderWithOneDuplicate) {
    const auto& table = gs1AiTable();
    ASSERT_EQ(table.size(), 803u);
    std::vector<std::string> repeated;
    for (std::size_t i = 0; i < table.size(); ++i) {
        ASSERT_NE(table[i].decode, nullptr) << table[i].key;
        ASSERT_GE(table[i].key.size(), 2u);
        ASSERT_LE(table[i].key.size(), 4u);
        if (i == 0) continue;
        ASSERT_LE(table[i - 1].key, table[i].key) << "at row " << i;
        if (table[i - 1].key == table[i].key) repeated.push_back(table[i].key);
    }
    EXPECT_EQ(repeated, std::vector<std::string>{"4308"});
    // Of the two 4308 rows (30 and 20 characters) the lookup finds the first.
    const parser::Gs1AiEntry* found = findGs1Ai("4308");
    ASSERT_TRUE(found != nullptr && found > table.data());
    EXPECT_TRUE(found[1].key == "4308" && found[-1].key != "4308");
    EXPECT_NE(found[0].decode, found[1].decode);
}

TEST(Gs1AiTable, LookupFindsEveryKeyAndOnlyKeys) {
    for (const auto& entry : gs1AiTable()) {
        const parser::Gs1AiEntry* found = findGs1Ai(entry.key);
        ASSERT_NE(found, nullptr) << entry.key;
        EXPECT_EQ(found->key, entry.key);
    }
    for (const char* absent : {"",      "0",     "1",        "14",  "140",  "4309", "3944", "3949",
                               "3954",  "3959",  "392",      "393", "3700", "000",  "0000", "991",
                               "99999", "4\xff", "\xff\xff", "31",  "310",  "43"}) {
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
}

TEST(Gs1AiTable, MeasuresRunUnbrokenFrom3100To3699) {
    const auto& table = gs1AiTable();
    const parser::Gs1AiEntry* first = findGs1Ai("3100");
    ASSERT_NE(first, nullptr);
    const std::size_t start = static_cast<std::size_t>(first - table.data());
    ASSERT_LE(start + 600, table.size());
    for (std::size_t i = 0; i < 600; ++i) {
        const auto& entry = table[start + i];
        EXPECT_EQ(entry.key, std::to_string(3100 + i));
        EXPECT_EQ(entry.minimumLength, 6u) << entry.key;
        EXPECT_EQ(entry.decode, first->decode) << entry.key;
    }
    EXPECT_EQ(table[start - 1].key, "30");
    EXPECT_EQ(table[start + 600].key, "37");
}

TEST(Gs1AiTable, MinimumLengths) {
    // A minimum of 1 where the decoder wants more lets short data reach the
    // decoder's own wording (3910, 8111, 8026).
    const std::vector<std::pair<const char*, std::uint64_t>> cases = {
        {"00", 18},   {"01", 14},  {"20", 2},    {"253", 13}, {"3106", 6}, {"390", 2},
        {"3900", 1},  {"391", 5},  {"3910", 1},  {"394", 5},  {"3940", 4}, {"402", 17},
        {"421", 4},   {"4317", 2}, {"4324", 10}, {"7006", 6}, {"7230", 3}, {"7241", 1},
        {"8006", 18}, {"8008", 9}, {"8017", 18}, {"8026", 1}, {"8111", 1}, {"93", 1},
    };
    for (const auto& [key, minimum] : cases) {
        const parser::Gs1AiEntry* entry = findGs1Ai(key);
        ASSERT_NE(entry, nullptr) << key;
        EXPECT_EQ(entry->minimumLength, minimum) << key;
    }
}

}  // namespace
