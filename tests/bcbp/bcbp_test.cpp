// Field parsers, option extractors and a smoke run over real boarding passes.
// Whole passes are checked by the data-driven cases in tests/data/iata_bcbp.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "bcbp/bcbp_field_parsers.h"
#include "bcbp/bcbp_parser.h"
#include "common/date.h"
#include "common/fixed_width_section.h"
#include "common/option_extractors.h"

namespace {

using nlohmann::json;
using parser::Date;

struct Read {
    bool ok = false;
    std::string error;
    bool added = false;
    parser::ParsedField field{"", "", nullptr};
    std::size_t left = 0;
};

// Runs one reader over `input` as the runner would, with a text at least `width` long.
Read run(parser::PassItem::Reader reader, const std::string& input, std::size_t width,
         parser::PassItemArgument argument = {}, parser::PassContext context = {}) {
    parser::ParserResult result;
    parser::FieldTarget target(result);
    const parser::PassItem item{reader, "f", width, argument};
    ParserStringRef text(input);
    Read read;
    read.ok = reader(item, text, width, context, target);
    read.left = text.size();
    read.added = !result.fields.empty();
    if (read.added) read.field = result.fields.front();
    if (result.error) read.error = result.error->message;
    EXPECT_EQ(read.ok, !result.error) << "a reader fails exactly when it sets the error";
    return read;
}

parser::PassContext inYear(int year, bool itinerary = false, int version = 0) {
    parser::PassContext context;
    context.referenceYear = year;
    context.itinerary = itinerary;
    context.version = version;
    return context;
}

std::string issuesOf(const parser::ParsedField& field) {
    std::string text;
    for (const auto& issue : field.issues) text += (text.empty() ? "" : "|") + issue->message;
    return text;
}

json day(int year, int month, int d) {
    return {{"year", year}, {"month", month}, {"day", d}};
}

const std::string kNoYearDigit =
    "Date field does not include year digit as required by BCBP specifications. Ignoring year "
    "field.";
const std::string kDayZero =
    "Illegal day count in date '0'. Must be greater than 0 and less than or equal to 366.";

TEST(BcbpDate, JulianDatesAndYearDigitWindow) {
    struct Row {
        std::string text;
        std::size_t width;
        int referenceYear;
        bool required;
        json parsed;
        std::string issue;
        std::size_t left;  // of the text, which is the item and "X"
    };
    const Row rows[] = {
        {"001", 3, 2024, true, day(2024, 1, 1), "", 1},
        {"060", 3, 2024, true, day(2024, 2, 29), "", 1},
        {"060", 3, 2023, true, day(2023, 3, 1), "", 1},
        {"366", 3, 2023, true, day(2024, 1, 1), "", 1},
        {"000", 3, 2024, true, day(2023, 12, 31), kDayZero, 1},
        {"400", 3, 2024, true, day(2025, 2, 3),
         "Illegal day count in date '400'. Must be greater than 0 and less than or equal to 366.",
         1},
        {"9123", 4, 2024, true, day(2029, 5, 3), "", 1},
        {"0123", 4, 2024, true, day(2020, 5, 2), "", 1},
        {"0123", 4, 2026, true, day(2030, 5, 3), "", 1},
        {"1123", 4, 2026, true, day(2031, 5, 3), "", 1},
        {"2123", 4, 2026, true, day(2022, 5, 3), "", 1},
        {"123 ", 4, 2024, true, day(2024, 5, 2), kNoYearDigit, 1},
        {"000 ", 4, 2024, true, day(2023, 12, 31), kNoYearDigit, 1},
        {"   ", 3, 2024, true, nullptr, "Date field is blank.", 1},
        {"    ", 4, 2024, true, nullptr, "Date field is blank.", 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text + " / " + std::to_string(row.referenceYear));
        // A date that is not required is one that an itinerary receipt may leave out.
        const Read read = run(parser::readPassDate, row.text + "X", row.width,
                              {parser::PassCharacters::Any, !row.required},
                              inYear(row.referenceYear, !row.required));
        ASSERT_TRUE(read.ok) << read.error;
        EXPECT_EQ(read.field.name, "f");
        EXPECT_EQ(read.field.rawString, row.text);
        EXPECT_EQ(read.field.parsed, row.parsed);
        EXPECT_EQ(issuesOf(read.field), row.issue);
        EXPECT_EQ(read.left, row.left);
    }
}

TEST(BcbpDate, OptionalDatesVanishAndBadDigitsFail) {
    const parser::PassItemArgument optional{parser::PassCharacters::Any, true};
    for (const std::string empty : {"0000", "    "}) {
        const Read read = run(parser::readPassDate, empty + "X", 4, optional, inYear(2024, true));
        ASSERT_TRUE(read.ok);
        EXPECT_FALSE(read.added);
        EXPECT_EQ(read.left, 1u);
    }
    // Required, zeros are a day count of 0; so they are outside an itinerary receipt.
    EXPECT_EQ(issuesOf(run(parser::readPassDate, "0000", 4, {}, inYear(2024)).field), kDayZero);
    EXPECT_EQ(issuesOf(run(parser::readPassDate, "0000", 4, optional, inYear(2024)).field),
              kDayZero);
    for (const std::string bad : {"12A", "1 3", "A23 ", "12A4"}) {
        const Read read = run(parser::readPassDate, bad, bad.size(), {}, inYear(2024));
        EXPECT_EQ(read.error,
                  "BCBP parsing error; 'f'. Only numerical characters are permitted in this field.")
            << bad;
    }
}

TEST(BcbpBaggage, GroupsExpandToTags) {
    struct Row {
        std::string text;
        int version;
        json tags;
        std::string issues;
        std::size_t left;
    };
    const Row rows[] = {
        // Up to version 6 the count leaves out the first bag.
        {"0014123456003", 6, {"0014123456", "0014123457", "0014123458", "0014123459"}, "", 0},
        {"0014123456002", 7, {"0014123456", "0014123457"}, "", 0},
        {"0014129999001", 7, {"0014129999"}, "", 0},
        {"0014123456000", 7, json::array(), "", 0},
        {"0014120001001001412000200100141200030011234",
         8,
         {"0014120001", "0014120002", "0014120003"},
         "",
         4},
        // Below version 4 only one group is read.
        {"00141200010010014120002001", 3, {"0014120001", "0014120002"}, "", 13},
        // A bad group adds an issue and the next group is still read.
        {"             0014120002001", 6, {"0014120002", "0014120003"}, "tag base is empty", 0},
        {"001412000A0010014120002000", 7, json::array(), "tag is not numeric", 0},
        {"00141200010X1", 7, json::array(), "tag is not numeric", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        const Read read =
            run(parser::readBaggageTags, row.text, 13, {}, inYear(2024, false, row.version));
        ASSERT_TRUE(read.ok) << read.error;
        EXPECT_EQ(read.field.parsed, row.tags);
        EXPECT_EQ(read.field.rawString, row.text.substr(0, row.text.size() - row.left));
        EXPECT_EQ(issuesOf(read.field), row.issues);
        EXPECT_EQ(read.left, row.left);
    }
    EXPECT_EQ(run(parser::readBaggageTags, "001412345600", 12, {}, inYear(2024, false, 6)).error,
              "BCBP parsing error; 'f'. Underflow parsing baggage tags");
    const Read none = run(parser::readBaggageTags, "0014123456003", 0, {}, inYear(2024, false, 6));
    EXPECT_TRUE(none.field.parsed.is_null());
    EXPECT_EQ(none.left, 13u);
}

TEST(BcbpFields, SimpleReaders) {
    struct Row {
        parser::PassItem::Reader reader;
        std::string text;
        json parsed;  // ignored when `error` is set
        std::string error;
    };
    const std::string notNumeric = "Should contain only numerical characters.";
    const Row rows[] = {
        {parser::readPassText, "     ", nullptr, ""},
        {parser::readPassText, " AB C ", "AB C", ""},
        {parser::readPassText, "\tA", "\tA", ""},  // only blanks are trimmed
        {parser::readPassFlag, "Y", true, ""},
        {parser::readPassFlag, "N", false, ""},
        {parser::readPassFlag, "y", false, ""},
        {parser::readPassFlag, " ", false, ""},
        {parser::readPassengerName, "SMITH/JOHN  ", {"JOHN", "SMITH"}, ""},
        {parser::readPassengerName, " SMITH / JOHN PAUL/", {"JOHN PAUL", "SMITH"}, ""},
        {parser::readPassengerName, "A/B/C", {"C", "B", "A"}, ""},
        {parser::readPassengerName, "/", nullptr, "Only one name was recognized; two required."},
        {parser::readPassengerName, "SMITH/  ", nullptr,
         "Only one name was recognized; two required."},
        {parser::readPassengerName, "      ", nullptr,
         "Only one name was recognized; two required."},
        {parser::readPassCount, "7", 7, ""},
        {parser::readPassCount, "12 ", 12, ""},
        {parser::readPassCount, " 012", 12, ""},
        {parser::readPassCount, "\t3", 3, ""},
        {parser::readPassCount, "2147483647", 2147483647, ""},
        {parser::readPassCount, "2147483648", nullptr, notNumeric},
        {parser::readPassCount, " ", nullptr, notNumeric},
        {parser::readPassCount, "1A", nullptr, notNumeric},
        {parser::readPassCount, "+1", nullptr, notNumeric},
        {parser::readPassCount, "-1", nullptr, notNumeric},
        {parser::readPassCount, "1 2", nullptr, notNumeric},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        const Read read = run(row.reader, row.text, row.text.size());
        if (!row.error.empty()) {
            EXPECT_EQ(read.error, "BCBP parsing error; 'f'. " + row.error);
            continue;
        }
        ASSERT_TRUE(read.ok) << read.error;
        EXPECT_EQ(read.field.parsed, row.parsed);
        EXPECT_EQ(read.field.rawString, row.text);
        EXPECT_EQ(read.left, 0u);
    }
    // Width 0 gives a null field and takes nothing.
    for (const auto reader : {parser::readPassText, parser::readPassFlag, parser::readPassCount,
                              parser::readPassengerName}) {
        const Read empty = run(reader, "xx", 0);
        EXPECT_TRUE(empty.added && empty.field.parsed.is_null() && empty.left == 2u);
    }
}

// Section sizes and the version are read as C reads hexadecimal numbers.
TEST(BcbpFields, HexadecimalNumbers) {
    const std::pair<const char*, std::optional<long>> rows[] = {
        {"F", 15},
        {"2a", 42},
        {"0F", 15},
        {" 5", 5},
        {"+5", 5},
        {"-1", -1},
        {"0x1F", 31},
        {"", std::nullopt},
        {"G", std::nullopt},
        {"1 ", std::nullopt},
        {"0x", std::nullopt},
        {"FFFFFFFFFFFFFFFFFFFF", std::nullopt},
    };
    for (const auto& [text, value] : rows) {
        EXPECT_EQ(parser::readHexNumber(ParserStringRef(text)), value) << text;
    }
}

TEST(BcbpFields, StrictCharacters) {
    using C = parser::PassCharacters;
    struct Row {
        C characters;
        const char* text;
        bool passes;
    };
    // clang-format off
    const Row rows[] = {
        {C::Seat, "    ", true}, {C::Seat, "001A", true}, {C::Seat, "001a", true},
        {C::Seat, "01A ", false}, {C::Seat, "ABC ", true}, {C::Seat, "  ", true},
        {C::Seat, "0001", false}, {C::UpperOrBlanks, "YUL", true}, {C::UpperOrBlanks, "YU ", false},
        {C::UpperOrBlanks, "yul", false}, {C::UpperOrBlanks, "   ", true}, {C::Digits, "014", true},
        {C::Digits, "   ", false}, {C::DigitsUpperBlank, "a", false},
        {C::DigitsUpperBlank, "A 1", true}, {C::Printable, "\x7f", false},
        {C::Printable, "M", true}, {C::Printable, " ~", true}, {C::Any, "\x01", true},
    };
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(parser::hasPassCharacters(ParserStringRef(row.text), row.characters), row.passes);
        parser::PassContext strict;
        strict.strict = true;
        const std::string text = row.text;
        const Read read = run(parser::readPassText, text, text.size(), {row.characters}, strict);
        EXPECT_EQ(read.ok, row.passes);
        if (!row.passes) {
            EXPECT_EQ(read.error, "BCBP parsing error; 'f'. content failed strict check");
            // Seats and sequence numbers of an itinerary receipt are not tested.
            strict.itinerary = true;
            EXPECT_TRUE(
                run(parser::readPassText, text, text.size(), {row.characters, true}, strict).ok);
            EXPECT_FALSE(
                run(parser::readPassText, text, text.size(), {row.characters, false}, strict).ok);
        }
        EXPECT_TRUE(run(parser::readPassText, text, text.size(), {row.characters}).ok);
    }
    // Nothing is taken and nothing is tested for an item of width 0.
    parser::PassContext strict;
    strict.strict = true;
    const Read empty = run(parser::readPassText, "xx", 0, {C::Seat}, strict);
    EXPECT_TRUE(empty.ok && empty.field.parsed.is_null() && empty.left == 2u);
}

TEST(BcbpOptions, ExtractorsTakeEachKeyOnce) {
    const json options = {{"flag", true}, {"year", 2030}, {"extra", 1}, {"alsoExtra", "x"}};
    parser::OptionExtractor extractor(options);
    bool flag = false;
    std::optional<int> year;
    EXPECT_TRUE(parser::extract_to<bool>(extractor, "flag", flag).ok());
    EXPECT_TRUE(flag);
    EXPECT_TRUE(parser::extract_reference_year_to(extractor, "year", year).ok());
    EXPECT_EQ(year, 2030);
    EXPECT_TRUE(parser::extract_to<bool>(extractor, "absent", flag).ok());
    EXPECT_EQ(parser::extract_to<bool>(extractor, "flag", flag).error(),
              "option 'flag' has already been extracted");
    EXPECT_EQ(extractor.refuseLeftovers().error(), R"(invalid option(s): ["alsoExtra","extra"])");

    const auto refusedYear = [](const json& value) {
        const json object = {{"y", value}};
        parser::OptionExtractor years(object);
        std::optional<int> target = 2024;
        auto outcome = parser::extract_reference_year_to(years, "y", target);
        EXPECT_EQ(target, 2024) << "a refused value is not written";
        return outcome.ok() ? std::string() : outcome.error();
    };
    const std::string yearMessage = "option 'y' must be a valid year greater than or equal 2000";
    for (const json& bad : {json(1999), json(-1), json(2020.5), json("2020"), json(nullptr),
                            json(100000), json(18446744073709551615ULL)}) {
        EXPECT_EQ(refusedYear(bad), yearMessage) << bad;
    }
    const json notBoolean = {{"b", "yes"}};
    parser::OptionExtractor booleans(notBoolean);
    EXPECT_EQ(parser::extract_to<bool>(booleans, "b", flag).error(),
              R"(option 'b' ( = '"yes"' ) is not a boolean.)");
}

TEST(BcbpSectionSize, HexadecimalLengthInFront) {
    struct Row {
        std::string text;
        bool soft;
        std::optional<std::string> block;
        std::string error;
        std::string warning;
    };
    const Row rows[] = {
        {"03ABCD", false, "ABC", "", ""},
        {"00", false, "", "", ""},
        {"0", false, std::nullopt, "BCBP parsing error; 's'. Underflow reading section size", ""},
        {"G1AB", false, std::nullopt, "BCBP parsing error; 's'. Error reading section size", ""},
        {"-1AB", false, std::nullopt, "BCBP parsing error; 's'. Error reading section size", ""},
        {"05AB", false, std::nullopt,
         "BCBP parsing error; 's'. Underflow reading 's' data. Expected 5, available: 2.", ""},
        {"05AB", true, "AB", "", "Underflow reading 's' data. Expected 5, available: 2."},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        parser::ParserResult result;
        ParserStringRef text(row.text);
        const auto block = parser::readSectionSize("s", text, result, row.soft);
        ASSERT_EQ(block.has_value(), row.block.has_value());
        if (block) {
            EXPECT_EQ(block->str(), *row.block);
        }
        EXPECT_EQ(result.error ? result.error->message : "", row.error);
        EXPECT_EQ(result.warnings.empty() ? "" : result.warnings[0]->message, row.warning);
    }
}

// Without a reference year, flight dates follow today's year, also when the
// year turns while one parser object lives on.
TEST(BcbpParser, FlightYearFollowsCurrentDate) {
    struct SeamReset {
        ~SeamReset() { Date::overrideCurrentDate(std::nullopt); }
    } reset;
    const std::string pass = "M1SMITH/JOHN          EXYZ789 LHRJFKBA 0117 123Y023C0042 100";
    const auto flightDate = [&pass](parser::IataBcbpParser& bcbp) {
        auto result = bcbp.parse(ParserStringRef(pass));
        if (result->error) return json(result->error->message);
        return result->getFieldByName("legs")->parsed.at(0).at("flightDate");
    };
    parser::IataBcbpParser bcbp;
    Date::overrideCurrentDate(Date{2024, 12, 31});
    EXPECT_EQ(flightDate(bcbp), day(2024, 5, 2));
    Date::overrideCurrentDate(Date{2025, 1, 1});
    EXPECT_EQ(flightDate(bcbp), day(2025, 5, 3));
    ASSERT_TRUE(bcbp.readOptionsFromJSONString(R"({"referenceYear": 2028})")->ok);
    EXPECT_EQ(flightDate(bcbp), day(2028, 5, 2));

    // One parser shared by threads while the year has moved on.
    parser::IataBcbpParser shared;
    Date::overrideCurrentDate(Date{2026, 3, 1});
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 50; ++i) wrong += flightDate(shared) != day(2026, 5, 3);
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

// A flight dated before the pass was issued belongs to the following year,
// on the same day of the year.
TEST(BcbpParser, FlightBeforeIssueMovesToNextYear) {
    struct Row {
        int referenceYear;
        const char* flightDay;
        const char* issued;  // year digit and day of the year
        json flightDate;
    };
    const Row rows[] = {
        {2024, "010", "4360", day(2025, 1, 10)},
        {2024, "361", "4360", day(2024, 12, 26)},
        {2023, "060", "3365", day(2024, 2, 29)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.flightDay);
        const std::string pass = std::string("M1SMITH/JOHN          EXYZ789 LHRJFKBA 0117 ") +
                                 row.flightDay + "Y023C0042 14E>6180WW" + row.issued +
                                 "BBA 01251234560012A1251234567890 0BA BA 12345678         1PCN";
        parser::IataBcbpParser bcbp;
        ASSERT_TRUE(bcbp.readOptionsFromJSON({{"referenceYear", row.referenceYear}})->ok);
        const auto result = bcbp.parse(ParserStringRef(pass));
        ASSERT_FALSE(result->error) << result->error->message;
        EXPECT_EQ(result->getFieldByName("legs")->parsed.at(0).at("flightDate"), row.flightDate);
    }
}

TEST(BcbpCorpus, EveryPassParsesOrFailsCleanly) {
    const std::filesystem::path root = QVX_CORPUS_DIR "/bcbp";
    if (!std::filesystem::exists(root)) GTEST_SKIP() << "no corpus at " << root;
    parser::IataBcbpParser lax;
    parser::IataBcbpParser strict;
    ASSERT_TRUE(lax.readOptionsFromJSONString(R"({"referenceYear": 2024})")->ok);
    ASSERT_TRUE(
        strict.readOptionsFromJSONString(R"({"referenceYear": 2024, "strictMode": true})")->ok);
    std::size_t files = 0;
    std::size_t parsed = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (entry.path().extension() != ".txt") continue;
        std::ifstream in(entry.path(), std::ios::binary);
        const std::string pass((std::istreambuf_iterator<char>(in)), {});
        SCOPED_TRACE(entry.path().string());
        ++files;
        for (parser::IataBcbpParser* bcbp : {&lax, &strict}) {
            auto result = bcbp->parse(ParserStringRef(pass));
            if (result->error) {
                EXPECT_FALSE(result->error->message.empty());
                continue;
            }
            parsed += bcbp == &lax;
            // A pass that is read has its legs, one object per encoded leg.
            const auto* legs = result->getFieldByName("legs");
            ASSERT_NE(legs, nullptr);
            EXPECT_EQ(legs->parsed.size(),
                      result->getFieldByName("numberOfLegsEncoded")->parsed.get<std::size_t>());
        }
    }
    EXPECT_GT(files, 0u);
    // Most of the valid samples are read; the rest break the fixed layout.
    EXPECT_GT(parsed, files / 3);
}

}  // namespace
