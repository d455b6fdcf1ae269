#include "gs1/gs1_ai_table.h"

#include <array>
#include <cstddef>

#include "common/parser_regex.h"
#include "gs1/gs1_ai_parser.h"
#include "gs1/gs1_field_parser.h"
#include "qvx/contract.h"

namespace parser {

namespace {

using Cs = Gs1Charset;

// Each row binds its decoder's further parameters here, so that the table
// holds plain function pointers.

template <std::size_t Min, std::size_t Max, Gs1Charset Set, bool Trim = false>
bool variableText(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                  const Gs1AiParser& parser) {
    return parseVariableText(key, builder, view, parser, Min, Max, Set, Trim);
}

template <std::size_t Length, Gs1Charset Set>
bool fixedText(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
               const Gs1AiParser& parser) {
    return parseFixedText(key, builder, view, parser, Length, Set);
}

template <std::size_t Length, Gs1Charset Set>
bool fixedInteger(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                  const Gs1AiParser& parser) {
    return parseFixedInteger(key, builder, view, parser, Length, Set);
}

constexpr char kOwnKey[] = "";  // the field is named after its AI

template <std::size_t Min, std::size_t Max, const char* FieldName = kOwnKey>
bool variableInteger(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                     const Gs1AiParser& parser) {
    return parseVariableInteger(key, builder, view, parser, Min, Max, Cs::numeric, true,
                                std::string(FieldName));
}

// In the machine form 390, 391 and 394 win over their four-digit rows as the
// shorter keys, so the digit that would give the decimal places is read as part
// of the number; the "x" in the field name says that it is not known.
constexpr char k390x[] = "390x";
constexpr char k391x[] = "391x";
constexpr char k394x[] = "394x";

template <std::size_t Length>
bool decimal(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
             const Gs1AiParser& parser) {
    return parseDecimal(key, builder, view, parser, Length);
}

template <std::size_t Min, std::size_t Max>
bool variableDecimal(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                     const Gs1AiParser& parser) {
    return parseVariableDecimal(key, builder, view, parser, Min, Max);
}

template <std::size_t Min, std::size_t Max>
bool currencyAmount(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                    const Gs1AiParser& parser) {
    return parseCurrencyAmount(key, builder, view, parser, Min, Max);
}

template <std::size_t Length>
bool checkedIdentifier(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                       const Gs1AiParser& parser) {
    return parseCheckedIdentifier(key, builder, view, parser, Length, Cs::numeric);
}

template <std::size_t Max>
bool encodedText(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                 const Gs1AiParser& parser) {
    return parseEncodedText(key, builder, view, parser, Max);
}

template <std::size_t Max>
bool countryList(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                 const Gs1AiParser& parser) {
    return parseCountryList(key, builder, view, parser, Max);
}

::ParserRegex compilePattern(const char* pattern) {
    auto regex = ::ParserRegex::compile(pattern, ParserRegexDialect::ECMAScript);
    QVX_REQUIRE(regex.has_value(), "precondition failed: GS1 AI pattern compiles");
    return std::move(*regex);
}

// The pattern rows use the 82-character set written as a class, "\x22" being
// the double quote.
bool pattern253(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                const Gs1AiParser& parser) {
    static const ::ParserRegex pattern = compilePattern(R"((\d{13})([!%-?A-Z_a-z\x22]{0,17}))");
    return parsePatternText(key, builder, view, parser, 13, 30, pattern);
}

bool pattern7040(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                 const Gs1AiParser& parser) {
    static const ::ParserRegex pattern =
        compilePattern(R"((\d)([!%-?A-Z_a-z\x22])([!%-?A-Z_a-z\x22])([!%-?A-Z_a-z\x22]))");
    return parsePatternText(key, builder, view, parser, 4, 4, pattern);
}

bool pattern715(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                const Gs1AiParser& parser) {
    static const ::ParserRegex pattern = compilePattern(R"([!%-?A-Z_a-z\x22]{1,20})");
    return parsePatternText(key, builder, view, parser, 1, 20, pattern);
}

bool pattern723x(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                 const Gs1AiParser& parser) {
    static const ::ParserRegex pattern = compilePattern(R"([!%-?A-Z_a-z\x22]{3,30})");
    return parsePatternText(key, builder, view, parser, 3, 30, pattern);
}

// The processor approval date reads as a date where people type it, and as
// plain digits in the machine form.
bool approvalDate7006(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                      const Gs1AiParser& parser) {
    if (!parser.allowMachineReadableCodes) return parseDate(key, builder, view, parser);
    return parseVariableText(key, builder, view, parser, 6, 6, Cs::numeric, true);
}

// A key, or an inclusive range of keys of equal width.
struct WrittenRow {
    const char* first;
    const char* last;
    std::uint64_t minimumLength;
    Gs1AiDecoder decode;
};

constexpr WrittenRow row(const char* key, std::uint64_t minimumLength, Gs1AiDecoder decode) {
    return {key, key, minimumLength, decode};
}
constexpr WrittenRow row(const char* first, const char* last, std::uint64_t minimumLength,
                         Gs1AiDecoder decode) {
    return {first, last, minimumLength, decode};
}

// Rows follow the GS1 General Specifications' table of Application Identifiers,
// one key or range per line in byte order of the key ("3100" before "37").
// clang-format off
constexpr WrittenRow kWrittenRows[] = {
    row("00", 18, parseSscc),
    row("01", 14, parseGtin),
    row("02", 14, parseGtin),
    row("10", 1, variableText<1, 20, Cs::cset82>),
    row("11", 6, parseDate),
    row("12", 6, parseDate),
    row("13", 6, parseDate),
    row("15", 6, parseDate),
    row("16", 6, parseDate),
    row("17", 6, parseDate),
    row("20", 2, fixedInteger<2, Cs::numeric>),
    row("21", 1, variableText<1, 20, Cs::cset82>),
    row("22", 1, variableText<1, 20, Cs::cset82>),
    row("235", 1, variableText<1, 28, Cs::cset82>),
    row("240", 1, variableText<1, 30, Cs::cset82>),
    row("241", 1, variableText<1, 30, Cs::cset82>),
    row("242", 1, variableText<1, 6, Cs::numeric, true>),
    row("243", 1, variableText<1, 20, Cs::cset82>),
    row("250", 1, variableText<1, 30, Cs::cset82>),
    row("251", 1, variableText<1, 30, Cs::cset82>),
    row("253", 13, pattern253),
    row("254", 1, variableText<1, 20, Cs::cset82>),
    row("255", 13, variableText<13, 25, Cs::numeric, true>),
    row("30", 1, variableInteger<1, 8>),
    row("3100", "3699", 6, decimal<6>),
    row("37", 1, variableInteger<1, 8>),
    row("390", 2, variableInteger<2, 16, k390x>),
    row("3900", "3909", 1, variableDecimal<1, 15>),
    row("391", 5, variableInteger<5, 19, k391x>),
    row("3910", "3919", 1, currencyAmount<4, 18>),
    row("3920", "3929", 1, variableDecimal<1, 15>),
    row("3930", "3939", 1, currencyAmount<4, 18>),
    row("394", 5, variableInteger<5, 5, k394x>),
    row("3940", "3943", 4, variableDecimal<4, 4>),
    row("3950", "3953", 6, decimal<6>),
    row("400", 1, variableText<1, 30, Cs::cset82>),
    row("401", 1, variableText<1, 30, Cs::cset82>),
    row("402", 17, checkedIdentifier<17>),
    row("403", 1, variableText<1, 30, Cs::cset82>),
    row("410", "417", 13, checkedIdentifier<13>),
    row("420", 1, variableText<1, 20, Cs::cset82>),
    row("421", 4, parseCountryPostalCode),
    row("422", 3, fixedText<3, Cs::numeric>),
    row("423", 3, countryList<15>),
    row("424", 3, fixedText<3, Cs::numeric>),
    row("425", 3, countryList<15>),
    row("426", 3, fixedText<3, Cs::numeric>),
    row("427", 1, variableText<1, 3, Cs::cset82>),
    row("4300", 1, encodedText<35>),
    row("4301", 1, encodedText<35>),
    row("4302", "4306", 1, encodedText<70>),
    row("4307", 1, fixedText<2, Cs::alphanumeric>),
    row("4308", 1, variableText<1, 30, Cs::cset82>),
    // 4308 is listed twice (limits 30 and 20) in the table these rows came from; both stay so
    // that the rows match it one for one (803 of them), and lookups find the first.
    row("4308", 1, variableText<1, 20, Cs::cset82>),
    row("4310", 1, encodedText<35>),
    row("4311", 1, encodedText<35>),
    row("4312", "4316", 1, encodedText<70>),
    row("4317", 2, fixedText<2, Cs::alphanumeric>),
    row("4318", 1, variableText<1, 20, Cs::cset82>),
    row("4319", 1, variableText<1, 30, Cs::cset82>),
    row("4320", 1, variableText<1, 35, Cs::cset82>),
    row("4321", 1, parseBoolean),
    row("4322", 1, parseBoolean),
    row("4323", 1, parseBoolean),
    row("4324", 10, parseDateTime),
    row("4325", 10, parseDateTime),
    row("4326", 6, parseDate),
    row("4330", "4333", 6, parseTemperature),
    row("7001", 13, variableText<13, 13, Cs::numeric, true>),
    row("7002", 1, variableText<1, 30, Cs::cset82>),
    row("7003", 10, parseDateTime),
    row("7004", 1, variableText<1, 4, Cs::numeric, true>),
    row("7005", 1, variableText<1, 12, Cs::cset82>),
    row("7006", 6, approvalDate7006),
    row("7007", 6, variableText<6, 12, Cs::numeric, true>),
    row("7008", 1, variableText<1, 3, Cs::cset82>),
    row("7009", 1, variableText<1, 10, Cs::cset82>),
    row("7010", 1, variableText<1, 2, Cs::cset82>),
    row("7020", 1, variableText<1, 20, Cs::alphanumeric>),
    row("7021", 1, variableText<1, 20, Cs::cset82>),
    row("7022", 1, variableText<1, 20, Cs::cset82>),
    row("7023", 1, variableText<1, 30, Cs::cset82>),
    row("7030", "7039", 4, variableText<4, 33, Cs::cset82>),
    row("7040", 4, pattern7040),
    row("710", "714", 1, variableText<1, 20, Cs::cset82>),
    row("715", 1, pattern715),
    row("7230", "7239", 3, pattern723x),
    row("7240", 1, variableText<1, 20, Cs::cset82>),
    row("7241", 1, fixedText<2, Cs::numeric>),
    row("7242", 1, variableText<1, 25, Cs::cset82>),
    row("8001", 14, variableText<14, 14, Cs::numeric, true>),
    row("8002", 1, variableText<1, 20, Cs::cset82>),
    row("8003", 14, variableText<14, 30, Cs::cset82>),
    row("8004", 1, variableText<1, 30, Cs::cset82>),
    row("8005", 6, variableText<6, 6, Cs::numeric, true>),
    row("8006", 18, variableText<18, 18, Cs::numeric, true>),
    row("8007", 1, variableText<1, 34, Cs::cset82>),
    row("8008", 9, variableText<9, 12, Cs::numeric, true>),
    row("8009", 1, variableText<1, 50, Cs::cset82>),
    row("8010", 1, variableText<1, 30, Cs::cset82>),
    row("8011", 1, variableText<1, 12, Cs::numeric, true>),
    row("8012", 1, variableText<1, 20, Cs::cset82>),
    row("8013", 1, variableText<1, 25, Cs::cset82>),
    row("8017", 18, parseGsrn),
    row("8018", 18, parseGsrn),
    row("8019", 1, variableText<1, 10, Cs::numeric, true>),
    row("8020", 1, variableText<1, 25, Cs::cset82>),
    row("8026", 1, fixedText<18, Cs::numeric>),
    row("8110", 1, variableText<1, 70, Cs::cset82>),
    row("8111", 1, variableText<4, 4, Cs::numeric, true>),
    row("8112", 1, variableText<1, 70, Cs::cset82>),
    row("8200", 1, variableText<1, 70, Cs::cset82>),
    row("90", "99", 1, parseInternal),
};
// clang-format on

constexpr std::size_t widthOf(const char* key) {
    std::size_t width = 0;
    while (key[width] != '\0') ++width;
    return width;
}

constexpr std::size_t valueOf(const char* key) {
    std::size_t value = 0;
    for (std::size_t i = 0; key[i] != '\0'; ++i)
        value = value * 10 + static_cast<std::size_t>(key[i] - '0');
    return value;
}

constexpr std::size_t countRows() {
    std::size_t count = 0;
    for (const WrittenRow& written : kWrittenRows) {
        count += valueOf(written.last) - valueOf(written.first) + 1;
    }
    return count;
}

constexpr std::size_t kRowCount = countRows();

// Ranges are counted out here, at compile time.
constexpr std::array<Gs1AiEntry, kRowCount> expandRows() {
    std::array<Gs1AiEntry, kRowCount> table{};
    std::size_t at = 0;
    for (const WrittenRow& written : kWrittenRows) {
        const std::size_t width = widthOf(written.first);
        for (std::size_t value = valueOf(written.first); value <= valueOf(written.last); ++value) {
            Gs1AiEntry& entry = table[at++];
            std::size_t rest = value;
            for (std::size_t i = width; i-- > 0; rest /= 10) {
                entry.digits[i] = static_cast<char>('0' + rest % 10);
            }
            entry.length = static_cast<std::uint8_t>(width);
            entry.decode = written.decode;
            entry.minimumLength = written.minimumLength;
        }
    }
    return table;
}

constexpr std::array<Gs1AiEntry, kRowCount> kTable = expandRows();

constexpr bool isDigitKey(std::string_view key) {
    if (key.size() < 2 || key.size() > 4) return false;
    for (const char c : key) {
        if (c < '0' || c > '9') return false;
    }
    return true;
}

// Byte order, a key before its own extensions; equal keys are in order.
constexpr bool notBefore(std::string_view a, std::string_view b) {
    for (std::size_t i = 0; i < a.size() && i < b.size(); ++i) {
        if (a[i] != b[i]) return a[i] > b[i];
    }
    return a.size() >= b.size();
}

constexpr bool isWellFormed() {
    for (std::size_t i = 0; i < kTable.size(); ++i) {
        if (!isDigitKey(kTable[i].key())) return false;
        if (i > 0 && !notBefore(kTable[i].key(), kTable[i - 1].key())) return false;
    }
    return true;
}

// Listings rely on byte order, and of equal keys the first in that order is the one found.
static_assert(isWellFormed(), "GS1 AI rows must be 2 to 4 digits, in ascending key order");

// Every key of 2 to 4 digits has a rank: its place in byte order among all
// such keys ("00", "000", "0000", ..., "0009", "001", ...). A key's rank
// picks its row at once; 0 marks a key without a row, so rows count from 1.
constexpr std::size_t kRanks = std::size_t{100} * 111;

constexpr std::size_t rankOf(std::string_view key) {
    const auto digit = [&key](std::size_t i) { return static_cast<std::size_t>(key[i] - '0'); };
    std::size_t rank = (digit(0) * 10 + digit(1)) * 111;
    if (key.size() >= 3) rank += 1 + digit(2) * 11;
    if (key.size() == 4) rank += 1 + digit(3);
    return rank;
}

constexpr std::array<std::uint16_t, kRanks> rowByRank() {
    std::array<std::uint16_t, kRanks> rows{};
    for (std::size_t i = 0; i < kTable.size(); ++i) {
        std::uint16_t& slot = rows[rankOf(kTable[i].key())];
        if (slot == 0) slot = static_cast<std::uint16_t>(i + 1);  // of equal keys, the first
    }
    return rows;
}

constexpr std::array<std::uint16_t, kRanks> kRowByRank = rowByRank();

}  // namespace

Gs1AiRows gs1AiTable() noexcept {
    return {kTable.data(), kTable.size()};
}

const Gs1AiEntry* findGs1Ai(std::string_view key) noexcept {
    if (!isDigitKey(key)) return nullptr;
    const std::uint16_t row = kRowByRank[rankOf(key)];
    return row == 0 ? nullptr : &kTable[row - 1];
}

}  // namespace parser
