#include "gs1/gs1_ai_table.h"

#include <algorithm>
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

// Keys are written as single AIs or as inclusive ranges of equal width.
struct KeySpan {
    const char* first;
    const char* last = nullptr;
};

struct WrittenRow {
    KeySpan keys[6];  // unused spans stay null
    std::uint64_t minimumLength;
    Gs1AiDecoder decode;
};

KeySpan range(const char* first, const char* last) {
    return {first, last};
}

// One line per row of the AI dictionary, in its usual reading order. The build
// below puts the rows in byte order.
// clang-format off
const WrittenRow kWrittenRows[] = {
    {{{"00"}}, 18, parseSscc},
    {{{"01"}, {"02"}}, 14, parseGtin},
    {{{"10"}}, 1, variableText<1, 20, Cs::cset82>},
    {{{"11"}, {"12"}, {"13"}, {"15"}, {"16"}, {"17"}}, 6, parseDate},
    {{{"20"}}, 2, fixedInteger<2, Cs::numeric>},
    {{{"21"}, {"22"}}, 1, variableText<1, 20, Cs::cset82>},
    {{{"235"}}, 1, variableText<1, 28, Cs::cset82>},
    {{{"240"}, {"241"}}, 1, variableText<1, 30, Cs::cset82>},
    {{{"242"}}, 1, variableText<1, 6, Cs::numeric, true>},
    {{{"243"}}, 1, variableText<1, 20, Cs::cset82>},
    {{{"250"}, {"251"}}, 1, variableText<1, 30, Cs::cset82>},
    {{{"253"}}, 13, pattern253},
    {{{"254"}}, 1, variableText<1, 20, Cs::cset82>},
    {{{"255"}}, 13, variableText<13, 25, Cs::numeric, true>},
    {{{"30"}, {"37"}}, 1, variableInteger<1, 8>},
    {{range("3100", "3699")}, 6, decimal<6>},
    {{{"390"}}, 2, variableInteger<2, 16, k390x>},
    {{range("3900", "3909")}, 1, variableDecimal<1, 15>},
    {{{"391"}}, 5, variableInteger<5, 19, k391x>},
    {{range("3910", "3919")}, 1, currencyAmount<4, 18>},
    {{range("3920", "3929")}, 1, variableDecimal<1, 15>},
    {{range("3930", "3939")}, 1, currencyAmount<4, 18>},
    {{{"394"}}, 5, variableInteger<5, 5, k394x>},
    {{range("3940", "3943")}, 4, variableDecimal<4, 4>},
    {{range("3950", "3953")}, 6, decimal<6>},
    {{{"400"}, {"401"}, {"403"}}, 1, variableText<1, 30, Cs::cset82>},
    {{{"402"}}, 17, checkedIdentifier<17>},
    {{range("410", "417")}, 13, checkedIdentifier<13>},
    {{{"420"}}, 1, variableText<1, 20, Cs::cset82>},
    {{{"421"}}, 4, parseCountryPostalCode},
    {{{"422"}, {"424"}, {"426"}}, 3, fixedText<3, Cs::numeric>},
    {{{"423"}, {"425"}}, 3, countryList<15>},
    {{{"427"}}, 1, variableText<1, 3, Cs::cset82>},
    {{{"4300"}, {"4301"}, {"4310"}, {"4311"}}, 1, encodedText<35>},
    {{range("4302", "4306"), range("4312", "4316")}, 1, encodedText<70>},
    {{{"4307"}}, 1, fixedText<2, Cs::alphanumeric>},
    {{{"4308"}}, 1, variableText<1, 30, Cs::cset82>},
    {{{"4308"}}, 1, variableText<1, 20, Cs::cset82>},  // never found: the row above wins
    {{{"4317"}}, 2, fixedText<2, Cs::alphanumeric>},
    {{{"4318"}}, 1, variableText<1, 20, Cs::cset82>},
    {{{"4319"}}, 1, variableText<1, 30, Cs::cset82>},
    {{{"4320"}}, 1, variableText<1, 35, Cs::cset82>},
    {{{"4321"}, {"4322"}, {"4323"}}, 1, parseBoolean},
    {{{"4324"}, {"4325"}, {"7003"}}, 10, parseDateTime},
    {{{"4326"}}, 6, parseDate},
    {{range("4330", "4333")}, 6, parseTemperature},
    {{{"7001"}}, 13, variableText<13, 13, Cs::numeric, true>},
    {{{"7002"}}, 1, variableText<1, 30, Cs::cset82>},
    {{{"7004"}}, 1, variableText<1, 4, Cs::numeric, true>},
    {{{"7005"}}, 1, variableText<1, 12, Cs::cset82>},
    {{{"7006"}}, 6, approvalDate7006},
    {{{"7007"}}, 6, variableText<6, 12, Cs::numeric, true>},
    {{{"7008"}}, 1, variableText<1, 3, Cs::cset82>},
    {{{"7009"}}, 1, variableText<1, 10, Cs::cset82>},
    {{{"7010"}}, 1, variableText<1, 2, Cs::cset82>},
    {{{"7020"}}, 1, variableText<1, 20, Cs::alphanumeric>},
    {{{"7021"}, {"7022"}}, 1, variableText<1, 20, Cs::cset82>},
    {{{"7023"}}, 1, variableText<1, 30, Cs::cset82>},
    {{range("7030", "7039")}, 4, variableText<4, 33, Cs::cset82>},
    {{{"7040"}}, 4, pattern7040},
    {{range("710", "714")}, 1, variableText<1, 20, Cs::cset82>},
    {{{"715"}}, 1, pattern715},
    {{range("7230", "7239")}, 3, pattern723x},
    {{{"7240"}}, 1, variableText<1, 20, Cs::cset82>},
    {{{"7241"}}, 1, fixedText<2, Cs::numeric>},
    {{{"7242"}}, 1, variableText<1, 25, Cs::cset82>},
    {{{"8001"}}, 14, variableText<14, 14, Cs::numeric, true>},
    {{{"8002"}}, 1, variableText<1, 20, Cs::cset82>},
    {{{"8003"}}, 14, variableText<14, 30, Cs::cset82>},
    {{{"8004"}}, 1, variableText<1, 30, Cs::cset82>},
    {{{"8005"}}, 6, variableText<6, 6, Cs::numeric, true>},
    {{{"8006"}}, 18, variableText<18, 18, Cs::numeric, true>},
    {{{"8007"}}, 1, variableText<1, 34, Cs::cset82>},
    {{{"8008"}}, 9, variableText<9, 12, Cs::numeric, true>},
    {{{"8009"}}, 1, variableText<1, 50, Cs::cset82>},
    {{{"8010"}}, 1, variableText<1, 30, Cs::cset82>},
    {{{"8011"}}, 1, variableText<1, 12, Cs::numeric, true>},
    {{{"8012"}}, 1, variableText<1, 20, Cs::cset82>},
    {{{"8013"}}, 1, variableText<1, 25, Cs::cset82>},
    {{{"8017"}, {"8018"}}, 18, parseGsrn},
    {{{"8019"}}, 1, variableText<1, 10, Cs::numeric, true>},
    {{{"8020"}}, 1, variableText<1, 25, Cs::cset82>},
    {{{"8026"}}, 1, fixedText<18, Cs::numeric>},
    {{{"8110"}, {"8112"}, {"8200"}}, 1, variableText<1, 70, Cs::cset82>},
    {{{"8111"}}, 1, variableText<4, 4, Cs::numeric, true>},
    {{range("90", "99")}, 1, parseInternal},
};
// clang-format on

// Keys have 2 to 4 digits. Each width gets a block of slots indexed by the
// key's value: 100 two-digit, 1000 three-digit, 10000 four-digit slots.
constexpr std::array<std::size_t, 5> kSlotBase = {0, 0, 0, 100, 1100};
constexpr std::size_t kSlotCount = 11100;

std::size_t slotOf(const std::string& key) {
    QVX_REQUIRE(key.size() >= 2 && key.size() <= 4, "precondition failed: AI of 2 to 4 digits");
    std::size_t value = 0;
    for (char c : key) {
        QVX_REQUIRE(c >= '0' && c <= '9', "precondition failed: AI of 2 to 4 digits");
        value = value * 10 + static_cast<std::size_t>(c - '0');
    }
    return kSlotBase[key.size()] + value;
}

std::string withWidth(std::size_t value, std::size_t width) {
    std::string text(width, '0');
    for (std::size_t i = width; i-- > 0; value /= 10) text[i] = static_cast<char>('0' + value % 10);
    return text;
}

// Drops the rows into their slots (a key may hold several rows, in written
// order), then reads the slots in byte order of the key: each two-digit key,
// followed by its three-digit extensions, each followed by its four-digit
// extensions. No sort is involved, so rows with equal keys keep their order.
std::vector<Gs1AiEntry> buildTable() {
    std::vector<std::vector<Gs1AiEntry>> slots(kSlotCount);
    std::size_t rows = 0;
    for (const WrittenRow& written : kWrittenRows) {
        for (const KeySpan& span : written.keys) {
            if (span.first == nullptr) break;
            const std::string first = span.first;
            const std::string last = span.last != nullptr ? span.last : span.first;
            QVX_REQUIRE(first.size() == last.size() && first <= last,
                        "precondition failed: AI range of equal widths");
            const std::size_t width = first.size();
            const std::size_t begin = slotOf(first) - kSlotBase[width];
            const std::size_t end = slotOf(last) - kSlotBase[width];
            for (std::size_t value = begin; value <= end; ++value) {
                slots[kSlotBase[width] + value].push_back(
                    {withWidth(value, width), written.decode, written.minimumLength});
                ++rows;
            }
        }
    }

    std::vector<Gs1AiEntry> table;
    table.reserve(rows);
    auto emit = [&](std::size_t slot) {
        for (Gs1AiEntry& entry : slots[slot]) table.push_back(std::move(entry));
    };
    for (std::size_t two = 0; two < 100; ++two) {
        emit(kSlotBase[2] + two);
        for (std::size_t three = two * 10; three < two * 10 + 10; ++three) {
            emit(kSlotBase[3] + three);
            for (std::size_t four = three * 10; four < three * 10 + 10; ++four) {
                emit(kSlotBase[4] + four);
            }
        }
    }

    // The lookup bisects; a table out of byte order would silently miss keys.
    QVX_REQUIRE(
        std::is_sorted(table.begin(), table.end(),
                       [](const Gs1AiEntry& a, const Gs1AiEntry& b) { return a.key < b.key; }),
        "postcondition failed: GS1 AI table in ascending key order");
    return table;
}

}  // namespace

const std::vector<Gs1AiEntry>& gs1AiTable() {
    static const std::vector<Gs1AiEntry> table = buildTable();
    return table;
}

const Gs1AiEntry* findGs1Ai(std::string_view key) {
    const std::vector<Gs1AiEntry>& table = gs1AiTable();
    // std::string_view compares bytes as unsigned, then by length.
    auto at = std::lower_bound(
        table.begin(), table.end(), key,
        [](const Gs1AiEntry& entry, std::string_view text) { return entry.key < text; });
    if (at == table.end() || at->key != key) return nullptr;
    return &*at;
}

}  // namespace parser
