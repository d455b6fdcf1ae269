// The decoders called directly on the data behind an AI. Whole element strings
// are covered by tests/data/gs1ai.
#include "gs1/gs1_field_parser.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <string_view>

#include "common/date.h"
#include "common/parser_regex.h"
#include "gs1/gs1_ai_parser.h"
#include "gs1/result_builder.h"

namespace {

using namespace parser;
using namespace std::literals;
using Decoder = bool (*)(const std::string&, ResultBuilder&, ParserStringRef&, const Gs1AiParser&);

enum Mode { kStrict, kLax, kStrictHuman, kLaxHuman, kLaxBoth, kLaxLink, kNhs };

void configure(Gs1AiParser& parser, Mode mode) {
    parser.strictMode = mode == kStrict || mode == kStrictHuman;
    parser.allowHumanReadableCodes =
        mode == kStrictHuman || mode == kLaxHuman || mode == kLaxBoth || mode == kLaxLink;
    parser.allowMachineReadableCodes =
        mode != kStrictHuman && mode != kLaxHuman && mode != kLaxLink;
    parser.digitalLinkMode = mode == kLaxLink;
    if (mode == kNhs) parser.standardExtension = Gs1AiStandardExtension::nhs;
}

const ParserRegex& pattern7040() {
    static const ParserRegex regex =
        *ParserRegex::compile("(\\d)([!%-?A-Z_a-z\\x22])([!%-?A-Z_a-z\\x22])([!%-?A-Z_a-z\\x22])",
                              ParserRegexDialect::ECMAScript);
    return regex;
}

// The decoders as the table binds them for a few typical rows.
#define ROW(call)                                                                          \
    [](const std::string& k, ResultBuilder& b, ParserStringRef& v, const Gs1AiParser& p) { \
        return call;                                                                       \
    }
const Decoder kText20 = ROW(parseVariableText(k, b, v, p, 1, 20, Gs1Charset::cset82, false));
const Decoder kDigits6 = ROW(parseVariableText(k, b, v, p, 1, 6, Gs1Charset::numeric, true));
const Decoder kFixed2 = ROW(parseFixedText(k, b, v, p, 2, Gs1Charset::alphanumeric));
const Decoder kInteger8 = ROW(parseVariableInteger(k, b, v, p, 1, 8, Gs1Charset::numeric, true));
const Decoder kInteger391 =
    ROW(parseVariableInteger(k, b, v, p, 5, 19, Gs1Charset::numeric, true, "391x"));
const Decoder kPattern = ROW(parsePatternText(k, b, v, p, 4, 4, pattern7040()));
const Decoder kEncoded = ROW(parseEncodedText(k, b, v, p, 35));
const Decoder kChecked13 = ROW(parseCheckedIdentifier(k, b, v, p, 13, Gs1Charset::numeric));
const Decoder kDecimal = ROW(parseDecimal(k, b, v, p, 6));
const Decoder kVarDecimal = ROW(parseVariableDecimal(k, b, v, p, 4, 15));
const Decoder kAmount = ROW(parseCurrencyAmount(k, b, v, p, 4, 18));
const Decoder kCountries = ROW(parseCountryList(k, b, v, p, 15));
#undef ROW

struct Case {
    std::string_view input;
    Decoder decode;
    const char* key;
    Mode mode;
    bool goOn;
    const char* rest;
    // Each field as name|raw|parsed JSON, then |issue per issue; fields joined by " / ".
    std::string fields;
    const char* error;
    const char* warnings = "";  // after finishField, joined by " / "
};

void PrintTo(const Case& c, std::ostream* out) {
    *out << "AI " << c.key << " data " << ::testing::PrintToString(std::string(c.input));
}

std::string describe(const ResultBuilder& builder) {
    std::string text;
    for (const ParsedField& field : builder.result.fields) {
        if (!text.empty()) text += " / ";
        text += field.name + "|" + field.rawString + "|" + field.parsed.dump();
        for (const auto& issue : field.issues) text += "|" + issue->message;
    }
    return text;
}

class Gs1FieldParser : public ::testing::TestWithParam<Case> {
  protected:
    void SetUp() override { Date::overrideCurrentDate(Date{2024, 6, 15}); }
    void TearDown() override { Date::overrideCurrentDate(std::nullopt); }
};

TEST_P(Gs1FieldParser, Decodes) {
    const Case& c = GetParam();
    Gs1AiParser parser;
    configure(parser, c.mode);
    ResultBuilder builder(parser.strictMode);
    ParserStringRef view(c.input);
    EXPECT_EQ(c.decode(c.key, builder, view, parser), c.goOn);
    EXPECT_EQ(view.str(), c.rest);
    EXPECT_EQ(describe(builder), c.fields);
    EXPECT_EQ(builder.result.error ? builder.result.error->message : "", c.error);
    builder.finishField();
    std::string warnings;
    for (const auto& w : builder.result.warnings)
        warnings += (warnings.empty() ? "" : " / ") + w->message;
    EXPECT_EQ(warnings, c.warnings);
}

// clang-format off
const Case kCases[] = {
    // Variable text: terminators, limits, character sets, trimming, conversion.
    {"ABC(21)DEF", kText20, "10", kLaxHuman, true, "(21)DEF", R"(10|ABC|"ABC")", ""},
    {"AB(C", kText20, "10", kStrict, true, "", R"(10|AB(C|"AB(C")", ""},
    {"ABC\x1D" "21X", kText20, "10", kStrict, true, "21X", R"(10|ABC|"ABC")", ""},
    {"ABC\x1D" "21X", kText20, "10", kLaxBoth, true, "21X", R"(10|ABC|"ABC")", ""},
    {"ABCDEFGHIJKLMNOPQRSTU", kText20, "10", kStrict, false, "ABCDEFGHIJKLMNOPQRSTU", "", "invalid field length 21 in AI 10"},
    {"ABCDEFGHIJKLMNOPQRSTU", kText20, "10", kLax, true, "", R"(10|ABCDEFGHIJKLMNOPQRSTU|"ABCDEFGHIJKLMNOPQRSTU"|invalid field length 21 in AI 10)", ""},
    {"AB C", kText20, "10", kStrict, false, "", "", "unexpected character found (AI: 10)"},
    {"AB C", kText20, "10", kLax, true, "", R"(10|AB C|"AB C"|unexpected character found)", "", "unexpected character found"},
    {"A\0B"sv, kText20, "10", kStrict, true, "", "10|A\0B|\"A\\u0000B\""s, ""},
    {"\x1D" "21X", kText20, "10", kLax, false, "21X", "", "", "Unrecognized conversion of  from string."},
    {"12 \t", kDigits6, "242", kStrict, true, "", R"(242|12|"12")", ""},
    {"1A", kDigits6, "242", kLax, true, "", R"(242|1A|"1A"|field data must be numeric)", "", "field data must be numeric"},
    // Fixed text: surplus in the human form, a view too short.
    {"DEX(10)A", kFixed2, "4307", kLaxHuman, true, "(10)A", R"(4307|DE|"DE"|field overflow. Fixed length field exceeds length.)", ""},
    {"DEX", kFixed2, "4307", kStrictHuman, false, "", R"(4307|DE|"DE")", "field overflow. Fixed length field exceeds length."},
    {"D", kFixed2, "4307", kLax, false, "D", "", "", "invalid field length 1 in AI 4307"},
    // Integers keep their zeros in the raw text; the prefix rows name the field.
    {"00000012", kInteger8, "30", kStrict, true, "", R"(30|00000012|12)", ""},
    {"0123456", kInteger391, "391", kStrict, true, "", R"(391x|0123456|123456)", ""},
    {"0123", kInteger391, "391", kStrict, false, "0123", "", "invalid field length 4 in AI 391"},
    {"01234A", kInteger391, "391", kStrict, false, "", "", "field data must be numeric (AI: 391x)"},
    {"2147483648", kInteger391, "391", kLax, false, "", "", "", "Unrecognized conversion of 2147483648 from string."},
    // Patterns need only occur somewhere in the value.
    {"1A!Z", kPattern, "7040", kStrict, true, "", R"(7040|1A!Z|"1A!Z")", ""},
    {"A123", kPattern, "7040", kStrict, false, "", "", "Does not meet character format requirements for field (AI: 7040)"},
    // Percent encoding; a Digital Link value arrives decoded.
    {"A%20B+C", kEncoded, "4300", kStrict, true, "", R"(4300|A%20B+C|"A B C")", ""},
    {"AB%2", kEncoded, "4300", kStrict, true, "", R"(4300|AB%2|"AB")", ""},
    {"A%B(", kEncoded, "4300", kLaxLink, true, "(", R"(4300|A%B|"A%B")", ""},
    // GTIN, SSCC, GSRN: check digits and the overflow of the human form.
    {"09506000134352\x1D", parseGtin, "01", kStrict, true, "\x1D", R"(01|09506000134352|{"GTIN":"09506000134352"})", ""},
    {"19506000134359", parseGtin, "01", kStrict, true, "", R"(01|19506000134359|{"GTIN":"19506000134359","indicator":1})", ""},
    {"09506000134355", parseGtin, "01", kStrict, false, "", "", "check digit mismatch: expected 5 but got 2 (AI: 01)"},
    {"09506000134355", parseGtin, "01", kLax, true, "", R"(01|09506000134355|"09506000134355"|check digit mismatch: expected 5 but got 2)", "", "check digit mismatch: expected 5 but got 2"},
    {"0950600013435X1", parseGtin, "01", kStrict, false, "1", "", "field data must be numeric (for identifier \"01\") (AI: 01)"},
    {"0950600013435X", parseGtin, "01", kLax, true, "", R"(01|0950600013435X|"0950600013435X"|field data must be numeric (for identifier "01"))", "", "field data must be numeric"},
    {"0950600013435200(10)", parseGtin, "01", kLaxHuman, true, "0950600013435200(10)", R"(01|0950600013435200|"0950600013435200"|field overflowed by 18446744073709551614 in AI 01)", ""},
    {"0950600013435200000", parseGtin, "01", kStrictHuman, false, "0950600013435200000", "", "field overflowed by 1 in AI 01 (AI: 01)"},
    {"009506000100000001", parseSscc, "00", kStrict, true, "", R"(00|009506000100000001|{"SSCC":"009506000100000001","extensionDigit":"0"})", ""},
    {"00950600010000000100", parseSscc, "00", kStrictHuman, false, "00950600010000000100", "", "field overflowed by 2 in AI 00 (AI: 00)"},
    {"123456789012345675", parseGsrn, "8018", kStrict, true, "", R"(8018|123456789012345675|{"GSRN":"123456789012345675"})", ""},
    {"123456789012345670", parseGsrn, "8018", kStrict, false, "", "", "check digit mismatch: expected 0 but got 5 (AI: 8018)"},
    // Identifiers of fixed length that may still end at a separator.
    {"1234567890128\x1D" "10", kChecked13, "410", kStrict, true, "10", R"(410|1234567890128|"1234567890128")", ""},
    {"123456789012\x1D" "10", kChecked13, "410", kLax, false, "\x1D" "10", R"(410|123456789012|"123456789012"|invalid field length 12 in AI 410)", ""},
    {"12345678901234(10)", kChecked13, "410", kLaxHuman, true, "(10)", R"(410|12345678901234|"12345678901234"|invalid field length 14 in AI 410)", ""},
    {"1234567890125", kChecked13, "410", kStrict, false, "", "", "check digit mismatch: expected 5 but got 8 (AI: 410)"},
    // Dates: day 00, the century window around 2024, human-form surplus.
    {"231200", parseDate, "17", kStrict, true, "", R"(17|231200|{"day":31,"month":12,"year":2023})", ""},
    {"740229", parseDate, "17", kStrict, true, "", R"(17|740229|{"day":29,"month":2,"year":2074})", ""},
    {"750101", parseDate, "17", kStrict, true, "", R"(17|750101|{"day":1,"month":1,"year":1975})", ""},
    {"230015", parseDate, "17", kStrict, false, "", "", "Invalid date: string \"230015\" can not be converted to YYMMDD format (AI: 17)"},
    {"23A101", parseDate, "17", kLax, true, "", R"(17|23A101|"23A101"|field data must be numeric)", "", "field data must be numeric"},
    {"2312319(10)", parseDate, "17", kLaxHuman, true, "(10)", R"(17|231231|{"day":31,"month":12,"year":2023}|field overflowed by 1 in AI 17)", ""},
    {"2312000959", parseDateTime, "7003", kStrict, true, "", R"(7003|2312000959|{"day":0,"hour":9,"minute":59,"month":12,"year":2023})", ""},
    {"2312312400", parseDateTime, "7003", kStrict, false, "", "", "invalid time (AI: 7003)"},
    {"23123109A0", parseDateTime, "7003", kLax, true, "", R"(7003|23123109A0|"23123109A0"|time is not numeric)", ""},
    {"231331AAAA", parseDateTime, "7003", kStrict, false, "", "", "Invalid date: string \"231331\" can not be converted to YYMMDD format (AI: 7003)"},
    // Measures with an implied decimal point.
    {"000000", kDecimal, "3103", kStrict, true, "", R"(3103|000000|"0.000" / 310x|0.000|"0.000")", ""},
    {"000000", kDecimal, "3100", kStrict, true, "", R"(3100|000000|"" / 310x||"")", ""},
    {"123456", kDecimal, "3105", kStrict, true, "", R"(3105|123456|"1.23456" / 310x|1.23456|"1.23456")", ""},
    {"012345", kDecimal, "3106", kStrict, true, "", R"(3106|012345|"0.012345" / 310x|0.012345|"0.012345")", ""},
    {"12345X", kDecimal, "3102", kStrict, false, "", "", "field data must be numeric (AI: 3102)"},
    {"12345\x1D" "10", kVarDecimal, "3942", kStrict, true, "\x1D" "10", R"(3942|12345|"123.45" / 394x|123.45|"123.45")", ""},
    {"12\x1D", kVarDecimal, "3942", kLax, true, "12\x1D", "", "", "invalid field length 2 in AI 3942"},
    {"1234567890123456", kVarDecimal, "3900", kLax, true, "", R"(3900|1234567890123456|"1234567890123456"|field overflowed by 1 in AI 3900 / 390x|1234567890123456|"1234567890123456")", ""},
    // Amounts: currency first, then a measure re-labelled with it.
    {"978123456", kAmount, "3912", kStrict, true, "", R"(3912|978123456|"978123456" / 391x|9781234.56|{"amount":"1234.56","currencyCode":"978"})", ""},
    {"97\x1D", kAmount, "3912", kStrict, true, "97\x1D", "", "", "invalid field length 2 in AI 3912"},
    {"97812X(10)", kAmount, "3912", kLaxHuman, true, "(10)", R"(3912|97812X|"97812X"|field data must be numeric)", ""},
    {"97812X", kAmount, "3912", kStrictHuman, false, "", "", "field data must be numeric"},
    {"9781234567890123456(10)", kAmount, "3912", kStrictHuman, false, "(10)", "", "field overflowed by 1 in AI 3912"},
    // Country codes.
    {"276D-123\x1D" "10", parseCountryPostalCode, "421", kStrict, true, "10", R"(421|276D-123|{"countryCode":"276","postalCode":"D-123"})", ""},
    {"2A6123", parseCountryPostalCode, "421", kStrict, false, "", "", "country code data must be numeric (AI: 421)"},
    {"2A6123", parseCountryPostalCode, "421", kLax, true, "", R"(421|2A6123|"2A6123"|country code data must be numeric)", ""},
    {"276 123", parseCountryPostalCode, "421", kStrict, false, "", "", "unexpected character found (AI: 421)"},
    {"276 123", parseCountryPostalCode, "421", kLax, true, "", R"(421|276 123|"276 123"|unexpected character found in postal code / 421|276 123|"276 123"|unexpected character found)", "", "unexpected character found"},
    {"2761234567890123", parseCountryPostalCode, "421", kStrict, false, "", "", "invalid field length 16 in AI 421 (AI: 421)"},
    {"27\x1D", parseCountryPostalCode, "421", kLax, false, "\x1D", "", "", "string too short to hold country code"},
    {"276040", kCountries, "423", kStrict, true, "", R"(423|276040|["276","040"])", ""},
    {"27604", kCountries, "423", kLax, false, "", R"(423|27604|"27604"|invalid field length 5 in AI 423: the field must contain 3-digit country codes)", ""},
    {"276040208250380756", kCountries, "423", kStrict, false, "", "", "invalid field length 18 in AI 423 (AI: 423)"},
    // Flags.
    {"10", parseBoolean, "4321", kStrict, true, "0", R"(4321|1|true)", ""},
    {"0\x1D", parseBoolean, "4321", kStrict, true, "\x1D", R"(4321|0|false)", ""},
    {"2", parseBoolean, "4321", kStrict, false, "", "", "'0' or '1' required (AI: 4321)"},
    {"10(10)", parseBoolean, "4321", kLaxHuman, true, "(10)", R"(4321|1|true|invalid field length 2 in AI 4321)", ""},
    {"\x1D", parseBoolean, "4321", kLax, true, "\x1D", R"(4321||""|no value provided by empty string)", ""},
    // Temperatures carry their sign behind the digits.
    {"001250-\x1D", parseTemperature, "4330", kStrict, true, "\x1D", R"(4330|-12.50|"-12.50")", ""},
    {"000050", parseTemperature, "4330", kStrict, true, "", R"(4330|0.50|"0.50")", ""},
    {"00125", parseTemperature, "4330", kLax, false, "00125", "", "", "string too short"},
    // Company-internal AIs, and the NHS patient records.
    {"A,B,1,C", parseInternal, "91", kStrict, true, "", R"(91|A,B,1,C|"A,B,1,C")", ""},
    {"A,B,123,C", parseInternal, "91", kNhs, true, "C", R"(91|A,B,123,|{"organisationCode":"A","organisationPrefix":"123","patientHospitalNumber":"B"})", ""},
    {"A,B,X1,C", parseInternal, "91", kNhs, true, "X1,C", R"(91|A,B,|{"organisationCode":"A","patientHospitalNumber":"B"})", ""},
    {"2,DOE,X", parseInternal, "92", kNhs, true, "X", R"(92|2,DOE,|{"babyOfLastName":"DOE","numberOfBabiesIndicator":"2"})", ""},
    {"DOE,JO,010190,12:30,\x1D", parseInternal, "93", kNhs, true, "\x1D", R"(93|DOE,JO,010190,12:30,|{"dateOfBirth":"010190","firstName":"JO","lastName":"DOE","timeOfBirth":"12:30"})", ""},
    {"DOE,JO,010190,1230,", parseInternal, "93", kNhs, true, "1230,", R"(93|DOE,JO,010190,|{"dateOfBirth":"010190","firstName":"JO","lastName":"DOE"})", ""},
    {"DOE", parseInternal, "93", kNhs, true, "", R"(93|DOE|{"lastName":"DOE"})", ""},
    {"AB", parseInternal, "94", kNhs, true, "", R"(94|AB|"AB")", ""},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(All, Gs1FieldParser, ::testing::ValuesIn(kCases));

TEST(Gs1Helpers, CheckDigitsAndCharsets) {
    EXPECT_EQ(gs1CheckDigit("0950600013435"), '2');
    EXPECT_EQ(gs1CheckDigit("950600013435"), '2');  // weights count from the right
    EXPECT_EQ(gs1CheckDigit(""), '0');
    EXPECT_EQ(checkDigitMismatch('5', '5'), std::nullopt);
    EXPECT_EQ(checkDigitMismatch('5', '3'), "check digit mismatch: expected 5 but got 3");
    EXPECT_EQ(charsetProblem("!\"%&'()*+,-./09:;<=>?AZ_az", Gs1Charset::cset82), std::nullopt);
    EXPECT_EQ(charsetProblem("#", Gs1Charset::cset82), "unexpected character found");
    EXPECT_EQ(charsetProblem("#-/09AZ", Gs1Charset::cset39), std::nullopt);
    EXPECT_EQ(charsetProblem("a", Gs1Charset::cset39), "unexpected character found");
    EXPECT_EQ(charsetProblem("A-", Gs1Charset::alphanumeric), "unexpected character found");
    EXPECT_EQ(charsetProblem("1A", Gs1Charset::numeric), "field data must be numeric");
    EXPECT_EQ(charsetProblem(""sv, Gs1Charset::numeric), std::nullopt);
    EXPECT_EQ(charsetProblem("1\0"sv, Gs1Charset::numeric), std::nullopt);  // NUL passes
}

TEST(Gs1Helpers, DecodeUriComponentRejectsWhatIsNotAllowed) {
    std::string rejected;
    EXPECT_EQ(decodeUriComponent("a+b%41%2B%zz%4", "", rejected), "a bA+"s + '\0');
    EXPECT_EQ(decodeUriComponent("%41%2Bx%2", "+", rejected), "+x");
    EXPECT_EQ(rejected, "A");
}

TEST(Gs1ResultBuilder, StrictStopsWhereLaxAnnotates) {
    ResultBuilder strict(true);
    strict.addFailedField("01", "123", "bad", true);
    EXPECT_TRUE(strict.failed);
    EXPECT_TRUE(strict.result.fields.empty());
    EXPECT_EQ(strict.result.error->message, "bad (AI: 01)");
    strict.message = "left behind";
    strict.finishField();  // a failed builder adds no further message
    EXPECT_TRUE(strict.result.warnings.empty());

    ResultBuilder lax(false);
    lax.addIssue("first");
    lax.finishField();  // a pending issue with no field goes to the warnings
    lax.addIssue("second");
    lax.addParsedField("10", "x", "x");  // the next field takes the pending issue
    lax.addFailedField("11", "y", "bad", true);
    lax.message = "note";
    lax.finishField();
    ASSERT_EQ(lax.result.warnings.size(), 2u);
    EXPECT_EQ(lax.result.warnings[0]->message, "first");
    EXPECT_EQ(lax.result.warnings[1]->message, "note");
    EXPECT_EQ(describe(lax), R"(10|x|"x"|second / 11|y|"y"|bad)");
    EXPECT_FALSE(lax.result.error);
}

}  // namespace
