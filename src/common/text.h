// Small text helpers under the format parsers: character sets, look-alike
// repairs, splitting, trimming, checked conversions and message wordings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qvx/string_ref.h"

namespace parser {

enum class Charset : std::uint8_t {
    Numeric = 0,               // 0-9
    Decimal = 1,               // 0-9 and the dot
    Alphabetic = 2,            // A-Z, a-z
    Alphanumeric = 3,          // numeric or alphabetic
    General = 4,               // any byte
    DlidSpecial = 5,           // blank and punctuation, without $
    Vin = 6,                   // 0-9, A-Z without I, O and Q
    LimitedExtendedAscii = 7,  // 0xC0-0xFF
};

constexpr bool isAsciiDigit(unsigned char byte) noexcept {
    return byte >= '0' && byte <= '9';
}
constexpr bool isAsciiUpper(unsigned char byte) noexcept {
    return byte >= 'A' && byte <= 'Z';
}
constexpr bool isAsciiLower(unsigned char byte) noexcept {
    return byte >= 'a' && byte <= 'z';
}
bool isCharInCharset(unsigned char byte, Charset charset);
// True when any set of the list accepts the byte; an empty list is a contract failure.
bool isCharInAnyCharset(unsigned char byte, std::initializer_list<Charset> charsets);
bool isCharInAnyCharset(unsigned char byte, const std::vector<Charset>& charsets);
// Every byte accepted by some set of the list. An empty range is false.
bool isInCharsets(const char* begin, const char* end, std::initializer_list<Charset> charsets);
bool isInCharsets(const char* begin, const char* end, const std::vector<Charset>& charsets);
bool isInCharset(const char* begin, const char* end, Charset charset);
inline bool isInCharset(ParserStringRef text, Charset charset) {
    return isInCharset(text.begin(), text.end(), charset);
}
// The display name used in messages ("numeric", ...); "" for an unknown value.
const char* charsetName(Charset charset);
// Code points of a UTF-8 text: bytes minus continuation bytes.
std::size_t utf8Length(const char* begin, const char* end);

// Look-alike repairs for misread characters. The two maps are not inverses:
// D reads as 0, but 0 comes back as O.
char transformDigitToLetter(char c);  // 0->O 1->I 2->Z 6->G 8->B
char transformLetterToDigit(char c);  // B->8 D->0 G->6 I->1 O->0
std::string transformDigitsToLetters(const std::string& text);
std::string transformLettersToDigits(const std::string& text);
char noTransform(char c);
std::string noTransformStr(const std::string& text);

// White space as C `isspace` decides in the "C" locale.
bool isCSpace(unsigned char byte) noexcept;

// Pieces between occurrences of `separator`; no separator gives one piece.
std::vector<ParserStringRef> splitBySubstring(ParserStringRef text, std::string_view separator);
// Overlapping occurrences count; an empty sequence counts 0.
std::size_t countOccurrences(ParserStringRef text, std::string_view sequence);
// Appends the pieces; a delimiter at the very end gives no empty last piece.
void splitByChar(const std::string& text, char delimiter, std::vector<std::string>& pieces);
void trimWhitespace(std::string& text);
ParserStringRef trimWhitespace(ParserStringRef text);
void trimChars(std::string& text, std::string_view set);
bool endsWith(const char* text, std::size_t length, const char* suffix, std::size_t suffixLength);
bool beginsWith(const char* text, std::size_t length, const char* prefix, std::size_t prefixLength);

// The JSON form of a delimited list: null when there are no pieces, else an
// array with the last piece first.
nlohmann::json splitToJsonArray(ParserStringRef text, char delimiter, bool trim);

// Adds member `key` to `object`, which must be a JSON object without that key.
// Members added in ascending key order go in at the end without a search.
template <class Value>
void addMember(nlohmann::json& object, std::string_view key, Value&& value) {
    auto& members = object.get_ref<nlohmann::json::object_t&>();
    members.emplace_hint(members.end(), key, std::forward<Value>(value));
}

// Integer after leading white space, or null.
nlohmann::json intFieldValue(ParserStringRef text);
// For one byte: 0/N/n give the string "false", 1/Y/y the string "true"; else null.
nlohmann::json booleanFieldValue(ParserStringRef text);
// An int after optional C white space and one optional sign, as a stream in
// the "C" locale reads it; true only when the whole text was read.
bool readInt(std::string_view text, int& value);
// A decimal number: leading C white space is skipped and the rest must be
// digits (at least one) whose value fits an int.
std::optional<int> readDecimalInt(ParserStringRef text);
// Non-throwing JSON parse without comments; a discarded value on failure.
nlohmann::json parseJsonString(const std::string& text);
std::string base64Encode(std::string_view bytes);

// "'" + value + "' is invalid " + kind + " value"
std::string invalidValueMessage(const std::string& value, const std::string& kind);
// name + " should contain " + expected + " character(s) but contain " + actual
std::string lengthMismatchMessage(const std::string& name, std::size_t expected,
                                  std::size_t actual);

}  // namespace parser
