// Check-digit arithmetic, the look-alike compensator, parser options and a
// smoke run over zones gathered from other projects' test suites. Whole
// documents are covered by the conformance data in tests/data/mrtd.
#include "mrtd/mrtd_parser.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <vector>

#include "mrtd/mrtd_compensator.h"
#include "mrtd/mrtd_parser_helper.h"
#include "mrtd/mrtd_readers.h"

namespace {

using nlohmann::json;
using parser::MrtdChecksum;
using parser::MrtdParser;

unsigned digitOf(const std::vector<std::string>& segments, bool repeat = false) {
    MrtdChecksum checksum;
    checksum.fillerRepeats = repeat;
    for (const std::string& segment : segments) checksum.addSegment(segment, false);
    return checksum.computeDigit(false);
}

TEST(MrtdChecksum, WeightsRunAcrossSegmentsAndFillers) {
    struct Case {
        std::vector<std::string> segments;
        bool repeat;
        unsigned digit;
    };
    const Case cases[] = {
        {{"L898902C<"}, false, 3},      // sums to 313
        {{"L898", "902C<"}, false, 3},  // one weight counter over all segments
        {{"<<<1"}, false, 7},           // fillers use up weights
        {{}, false, 0},
        {{"740812"}, false, 2},
        {{"12<<<<<<<"}, true, 5},  // each filler repeats the product of "2"
        {{"12<<<<<<<"}, false, 3},
        {{"<<12"}, true, 5},    // nothing to repeat at the start
        {{"1", "<"}, true, 4},  // the repeat crosses segments
    };
    for (const Case& c : cases) {
        EXPECT_EQ(digitOf(c.segments, c.repeat), c.digit) << c.segments.size();
    }
}

TEST(MrtdChecksum, AlternateReadingLeavesPrimaryOnlySegmentsOut) {
    const std::string number = "ABC123456";
    const std::string filler = "<";
    const std::string rest = "1234";
    MrtdChecksum checksum;
    checksum.addSegment(number, false);
    checksum.addSegment(filler, true);
    checksum.addSegment(rest, false);
    const unsigned withFiller = digitOf({number, filler, rest});
    const unsigned without = digitOf({number, rest});
    ASSERT_NE(withFiller, without);
    EXPECT_EQ(checksum.computeDigit(false), withFiller);
    EXPECT_EQ(checksum.computeDigit(true), without);
    for (unsigned passed : {withFiller, without}) {
        checksum.passedDigit = passed;
        EXPECT_TRUE(checksum.isValid());
    }
    checksum.passedDigit =
        (withFiller + 1) % 10 == without ? (withFiller + 2) % 10 : (withFiller + 1) % 10;
    EXPECT_FALSE(checksum.isValid());
}

TEST(MrtdCompensator, VariantsCountInBinaryWithTheFirstDoubtLowest) {
    std::string text = "A0BOC";
    parser::StandardMrtdCompensator compensator(&text);
    ParserStringRef view(text);
    compensator.compensateField(0, parser::MrtdFieldClass::Ambiguous, view);
    ASSERT_EQ(compensator.candidates().size(), 1u);
    const auto& candidate = compensator.candidates().front();
    ASSERT_EQ(candidate.variantCount(), 4u);
    const char* expected[] = {"A0B0C", "AOB0C", "A0BOC", "AOBOC"};
    for (std::uint64_t i = 0; i < 4; ++i) {
        candidate.writeVariant(text, i);
        EXPECT_EQ(text, expected[i]);
    }
}

TEST(MrtdCompensator, ClassesAreRepairedInPlace) {
    struct Case {
        parser::MrtdFieldClass fieldClass;
        const char* before;
        const char* after;
    };
    const Case cases[] = {
        {parser::MrtdFieldClass::Digits, "BDGIO<", "80610<"},
        {parser::MrtdFieldClass::Letters, "01268<", "OIZGB<"},
        {parser::MrtdFieldClass::Any, "0O1I<", "0O1I<"},
        {parser::MrtdFieldClass::Ambiguous, "0O1I<", "0O1I<"},
    };
    for (const Case& c : cases) {
        std::string text = std::string("xx") + c.before;
        parser::StandardMrtdCompensator standard(&text);
        ParserStringRef view = ParserStringRef(text).drop_front(2);
        standard.compensateField(2, c.fieldClass, view);
        EXPECT_EQ(view.str(), c.after);
        EXPECT_EQ(text, std::string("xx") + c.after);

        std::string untouched = std::string("xx") + c.before;
        parser::NullMrtdCompensator null(&untouched);
        ParserStringRef same = ParserStringRef(untouched).drop_front(2);
        null.compensateField(2, c.fieldClass, same);
        EXPECT_EQ(untouched, std::string("xx") + c.before);
        EXPECT_TRUE(null.candidates().empty());
    }
}

TEST(MrtdCompensator, NoCandidatesOrMoreThanTwoNeverRepair) {
    std::string text = "0000";
    parser::StandardMrtdCompensator compensator(&text);
    const parser::MrtdChecksums none;
    EXPECT_FALSE(compensator.tryCandidates(none));
    for (std::size_t i = 0; i < 3; ++i) {
        ParserStringRef view = ParserStringRef(text).slice(i, i + 1);
        compensator.compensateField(i, parser::MrtdFieldClass::Ambiguous, view);
    }
    EXPECT_FALSE(compensator.tryCandidates(none));
    compensator.reset();
    EXPECT_TRUE(compensator.candidates().empty());
}

TEST(MrtdCountries, SetHoldsTheListedCodesWithFillers) {
    EXPECT_EQ(parser::knownCountryCount(), 278u);
    for (const char* code : {"D<<", "SI<", "UTO", "RKS", "XXX", "ANT", "ZWE", "ABW"}) {
        EXPECT_TRUE(parser::isKnownCountry(code)) << code;
    }
    for (const char* code : {"D<X", "DEU<", "DE", "UTX", "<<<", "d<<", "GB<"}) {
        EXPECT_FALSE(parser::isKnownCountry(code)) << code;
    }
    // The table is listed in order, with the special codes at its end.
    const auto* codes = parser::knownCountriesBegin();
    EXPECT_EQ(codes[0], "ABW");
    EXPECT_EQ(codes[251], "ZWE");
    EXPECT_EQ(codes[252], "D<<");
    EXPECT_EQ(codes[277], "UTO");
}

TEST(MrtdParser, OptionsAreReadInCamelCaseAndWrittenInSnakeCase) {
    MrtdParser parser;
    EXPECT_EQ(parser.optionsToJSON(), json::parse(R"({"allow_false_positive_compensation": false,
                              "relaxed_checksum_validation": false})"));
    EXPECT_EQ(parser.readOptionsFromJSON(json::array({true}))->error, "invalid option: 0");
    EXPECT_EQ(parser.readOptionsFromJSON(json(true))->error, "invalid option: ");
    EXPECT_TRUE(parser.readOptionsFromJSON(json())->ok);
    EXPECT_EQ(parser.readOptionsFromJSON(parser.optionsToJSON())->error,
              "invalid option: allow_false_positive_compensation");
}

TEST(MrtdParser, BothOptionsAreRefusedButStaySetForTheNextParse) {
    MrtdParser parser;
    const auto outcome = parser.readOptionsFromJSON(
        json{{"relaxedChecksumValidation", true}, {"allowFalsePositiveCompensation", true}});
    EXPECT_EQ(outcome->error,
              "relaxedChecksumValidation and allowFalsePositiveCompensation options can not be "
              "enabled at the same time");
    EXPECT_EQ(parser.optionsToJSON(), json::parse(R"({"allow_false_positive_compensation": true,
                              "relaxed_checksum_validation": true})"));
    // A wrong birth digit passes in relaxed mode, and an O in a date is
    // repaired by the compensator before the check digits are read.
    const std::string zone =
        "P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<\n"
        "L898902C36UTO7408123F1204159ZE184226B<<<<<10";
    auto result = parser.parse(zone);
    ASSERT_FALSE(result->error) << result->error->message;
    EXPECT_EQ(result->getFieldByName("birthDate")->rawString, "740812");
    EXPECT_FALSE(result->getFieldByName("metadata")->parsed["checksumValidation"]["birthDate"]);
    std::string withLetter = zone;
    withLetter.replace(zone.find("7408123"), 7, "74O8122");
    result = parser.parse(withLetter);
    ASSERT_FALSE(result->error) << result->error->message;
    EXPECT_EQ(result->getFieldByName("birthDate")->rawString, "740812");
}

TEST(MrtdParser, PublicPatternsCompileAndMatchTheirDocuments) {
    EXPECT_EQ(MrtdParser::strictMrzRegexPattern,
              MrtdParser::td1RegexPattern + "|" + MrtdParser::td2RegexPattern + "|" +
                  MrtdParser::td3RegexPattern + "|" + MrtdParser::mrvRegexPattern + "|" +
                  MrtdParser::swissDrivingLicenseRegexPattern + "|" +
                  MrtdParser::chineseExitEntryMrzRegexPattern + "|" +
                  MrtdParser::chinaOneWayPermitMrzRegexPattern + "|" +
                  MrtdParser::vietnamesePassportRegexPattern + "|" +
                  MrtdParser::borderCrossingCardRegexPattern);
    const std::string td3 =
        "P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<\n"
        "L898902C36UTO7408122F1204159ZE184226B<<<<<10\n";
    const std::string td1 =
        "I<UTOD231458907<<<<<<<<<<<<<<<\n7408122F1204159UTO<<<<<<<<<<<6\n"
        "ERIKSSON<<ANNA<MARIA<<<<<<<<<<";
    EXPECT_TRUE(std::regex_match(td3, std::regex(MrtdParser::td3RegexPattern)));
    EXPECT_TRUE(std::regex_match(td1, std::regex(MrtdParser::td1RegexPattern)));
    EXPECT_TRUE(std::regex_match(td3, std::regex(MrtdParser::strictMrzRegexPattern)));
    EXPECT_TRUE(std::regex_match(td1, std::regex(MrtdParser::universalMrzRegexPattern)));
    EXPECT_FALSE(std::regex_match(td3, std::regex(MrtdParser::td2RegexPattern)));
}

// Hostile shapes: every one must end in a result, never in an abort.
TEST(MrtdParser, DamagedZonesEndInResults) {
    const std::string shapes[] = {
        // a digit where the permit's century letter belongs
        "CR12345678970132501017M9001011\nLAKBNCLL<<<<<<<<AA1A1234567846\n"
        "ZHANG<<SAN<<<<<<<<<<<<<<<<<<<<",
        std::string(30, '<') + "\n" + std::string(30, '<') + "\n" + std::string(30, '<'),
        "I<UTO" + std::string(25, '0') + "\n" + std::string(30, '0') + "\n" + std::string(30, '0'),
        "CS" + std::string(28, '<'),
        "IDFRA" + std::string(31, '<') + "\n" + std::string(36, '<'),
        std::string(9, '<') + "\nFA" + std::string(28, '<') + "\n" + std::string(30, '<'),
        std::string(100000, '\n'),
    };
    for (const char* options : {"{}", R"({"relaxedChecksumValidation": true})",
                                R"({"allowFalsePositiveCompensation": true})"}) {
        MrtdParser parser;
        ASSERT_TRUE(parser.readOptionsFromJSONString(options)->ok);
        for (const std::string& shape : shapes) {
            auto result = parser.parse(shape);
            ASSERT_TRUE(result != nullptr);
            if (result->error) {
                EXPECT_FALSE(result->error->message.empty());
            }
            EXPECT_EQ(result->fields.back().name, "metadata");
        }
    }
}

// Zones from other projects' suites. Their expectations follow their own
// rules; here every zone must parse or fail with a message, and a parsed
// zone always ends with its type and metadata.
TEST(MrtdCorpus, EveryZoneParsesOrFailsCleanly) {
    const std::filesystem::path root = QVX_CORPUS_DIR "/mrz";
    if (!std::filesystem::exists(root)) GTEST_SKIP() << "no corpus at " << root;
    MrtdParser strict;
    MrtdParser relaxed;
    ASSERT_TRUE(relaxed.readOptionsFromJSONString(R"({"relaxedChecksumValidation": true})")->ok);
    std::size_t zones = 0;
    std::size_t parsed = 0;
    for (const auto& entry : std::filesystem::directory_iterator(root)) {
        if (entry.path().extension() != ".json") continue;
        std::ifstream in(entry.path());
        const json file = json::parse(in, nullptr, false);
        ASSERT_FALSE(file.is_discarded()) << entry.path();
        for (const json& vector : file.value("vectors", json::array())) {
            std::string zone;
            for (const json& line : vector.value("lines", json::array())) {
                if (!line.is_string()) continue;
                if (!zone.empty()) zone += '\n';
                zone += line.get<std::string>();
            }
            SCOPED_TRACE(vector.value("id", std::string()) + ": " + zone);
            ++zones;
            for (MrtdParser* parser : {&strict, &relaxed}) {
                auto result = parser->parse(zone);
                if (result->error) {
                    EXPECT_FALSE(result->error->message.empty());
                    continue;
                }
                ASSERT_GE(result->fields.size(), 2u);
                EXPECT_EQ(result->fields[result->fields.size() - 2].name, "documentType");
                EXPECT_EQ(result->fields.back().name, "metadata");
                parsed += parser == &strict;
            }
        }
    }
    EXPECT_GT(zones, 100u);
    std::cout << parsed << " of " << zones << " corpus zones parse with default options\n";
}

}  // namespace
