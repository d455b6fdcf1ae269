#include "common/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <system_error>
#include <utility>

#include "qvx/contract.h"

namespace parser {

namespace {

constexpr std::size_t kCharsetCount = 8;

// One row per set, in the order of the enumeration.
constexpr bool belongs(unsigned char b, std::size_t charset) {
    switch (charset) {
        case 0:  // numeric
            return isAsciiDigit(b);
        case 1:  // decimal
            return isAsciiDigit(b) || b == '.';
        case 2:  // alphabetic
            return isAsciiUpper(b) || isAsciiLower(b);
        case 3:  // alphanumeric
            return isAsciiDigit(b) || isAsciiUpper(b) || isAsciiLower(b);
        case 4:  // general
            return true;
        case 5:  // dlid special: blank and punctuation, but not '$'
            return (b >= 0x20 && b <= 0x23) || (b >= 0x25 && b <= 0x2F) ||
                   (b >= 0x3A && b <= 0x40) || (b >= 0x5B && b <= 0x60);
        case 6:  // vin: I, O and Q are left out because they read as 1 and 0
            return isAsciiDigit(b) || (isAsciiUpper(b) && b != 'I' && b != 'O' && b != 'Q');
        case 7:  // limited extended ascii
            return b >= 0xC0;
        default:
            return false;
    }
}

// Bit n of entry b is set when byte b belongs to set n.
constexpr std::array<std::uint8_t, 256> buildMembership() {
    std::array<std::uint8_t, 256> table{};
    for (std::size_t b = 0; b < 256; ++b) {
        std::uint8_t bits = 0;
        for (std::size_t c = 0; c < kCharsetCount; ++c) {
            if (belongs(static_cast<unsigned char>(b), c))
                bits |= static_cast<std::uint8_t>(1u << c);
        }
        table[b] = bits;
    }
    return table;
}

constexpr std::array<std::uint8_t, 256> kMembership = buildMembership();

constexpr std::array<const char*, kCharsetCount> kCharsetNames = {
    "numeric", "decimal",      "alphabetic", "alphanumeric",
    "general", "dlid special", "vin",        "limited extended ascii",
};

using CharPair = std::pair<char, char>;

// Scanners confuse these shapes; a field known to hold letters gets the letter back.
constexpr CharPair kDigitToLetter[] = {
    {'0', 'O'}, {'1', 'I'}, {'2', 'Z'}, {'6', 'G'}, {'8', 'B'},
};

// And a field known to hold digits gets the digit back. D is read as 0 here,
// while 0 goes back to O above: the maps are deliberately not inverses.
constexpr CharPair kLetterToDigit[] = {
    {'B', '8'}, {'D', '0'}, {'G', '6'}, {'I', '1'}, {'O', '0'},
};

template <std::size_t N>
constexpr std::array<char, 256> buildByteMap(const CharPair (&pairs)[N]) {
    std::array<char, 256> map{};
    for (std::size_t b = 0; b < 256; ++b) map[b] = static_cast<char>(static_cast<unsigned char>(b));
    for (const CharPair& p : pairs) map[static_cast<unsigned char>(p.first)] = p.second;
    return map;
}

constexpr std::array<char, 256> kDigitToLetterMap = buildByteMap(kDigitToLetter);
constexpr std::array<char, 256> kLetterToDigitMap = buildByteMap(kLetterToDigit);

std::string mapBytes(const std::string& text, const std::array<char, 256>& map) {
    std::string out(text);
    for (char& c : out) c = map[static_cast<unsigned char>(c)];
    return out;
}

template <typename List>
bool anyAccepts(unsigned char byte, const List& charsets) {
    for (Charset c : charsets) {
        if (isCharInCharset(byte, c)) return true;
    }
    return false;
}

template <typename List>
bool allInCharsets(const char* begin, const char* end, const List& charsets) {
    QVX_GUARD(charsets.size() != 0, "charset list must not be empty");
    if (begin == end) return false;
    for (const char* p = begin; p != end; ++p) {
        if (!anyAccepts(static_cast<unsigned char>(*p), charsets)) return false;
    }
    return true;
}

bool inSet(char c, std::string_view set) {
    return set.find(c) != std::string_view::npos;
}

}  // namespace

bool isCharInCharset(unsigned char byte, Charset charset) {
    const auto index = static_cast<std::size_t>(charset);
    if (index >= kCharsetCount) return false;
    return (kMembership[byte] >> index) & 1u;
}

bool isCharInAnyCharset(unsigned char byte, std::initializer_list<Charset> charsets) {
    QVX_GUARD(charsets.size() != 0, "charset list must not be empty");
    return anyAccepts(byte, charsets);
}

bool isCharInAnyCharset(unsigned char byte, const std::vector<Charset>& charsets) {
    QVX_GUARD(!charsets.empty(), "charset list must not be empty");
    return anyAccepts(byte, charsets);
}

bool isInCharsets(const char* begin, const char* end, std::initializer_list<Charset> charsets) {
    return allInCharsets(begin, end, charsets);
}

bool isInCharsets(const char* begin, const char* end, const std::vector<Charset>& charsets) {
    return allInCharsets(begin, end, charsets);
}

bool isInCharset(const char* begin, const char* end, Charset charset) {
    const auto index = static_cast<std::size_t>(charset);
    if (begin == end || index >= kCharsetCount) return false;
    if (charset == Charset::General) return true;
    const auto bit = static_cast<std::uint8_t>(1u << index);
    for (const char* p = begin; p != end; ++p) {
        if ((kMembership[static_cast<unsigned char>(*p)] & bit) == 0) return false;
    }
    return true;
}

const char* charsetName(Charset charset) {
    const auto index = static_cast<std::size_t>(charset);
    return index < kCharsetCount ? kCharsetNames[index] : "";
}

std::size_t utf8Length(const char* begin, const char* end) {
    std::size_t count = 0;
    for (const char* p = begin; p != end; ++p) {
        if ((static_cast<unsigned char>(*p) & 0xC0) != 0x80) ++count;
    }
    return count;
}

char transformDigitToLetter(char c) {
    return kDigitToLetterMap[static_cast<unsigned char>(c)];
}
char transformLetterToDigit(char c) {
    return kLetterToDigitMap[static_cast<unsigned char>(c)];
}

std::string transformDigitsToLetters(const std::string& text) {
    return mapBytes(text, kDigitToLetterMap);
}

std::string transformLettersToDigits(const std::string& text) {
    return mapBytes(text, kLetterToDigitMap);
}

char noTransform(char c) {
    return c;
}
std::string noTransformStr(const std::string& text) {
    return text;
}

bool isCSpace(unsigned char byte) noexcept {
    return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\v' || byte == '\f' ||
           byte == '\r';
}

std::vector<ParserStringRef> splitBySubstring(ParserStringRef text, std::string_view separator) {
    std::vector<ParserStringRef> pieces;
    // An empty separator would match everywhere without moving on; treat it as absent.
    if (separator.empty()) {
        pieces.push_back(text);
        return pieces;
    }
    std::size_t start = 0;
    for (;;) {
        const char* hit = text.find_substring(separator, start);
        if (hit == text.end()) break;
        const std::size_t at = text.offsetOf(hit);
        pieces.push_back(text.slice(start, at));
        start = at + separator.size();
    }
    pieces.push_back(text.drop_front(start));
    return pieces;
}

std::size_t countOccurrences(ParserStringRef text, std::string_view sequence) {
    if (sequence.empty()) return 0;
    std::size_t count = 0;
    std::size_t from = 0;
    for (;;) {
        const char* hit = text.find_substring(sequence, from);
        if (hit == text.end()) break;
        ++count;
        from = text.offsetOf(hit) + 1;  // overlapping occurrences count
    }
    return count;
}

void splitByChar(const std::string& text, char delimiter, std::vector<std::string>& pieces) {
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t at = text.find(delimiter, start);
        if (at == std::string::npos) {
            pieces.push_back(text.substr(start));
            break;
        }
        pieces.push_back(text.substr(start, at - start));
        start = at + 1;
    }
}

void trimWhitespace(std::string& text) {
    const ParserStringRef kept = trimWhitespace(ParserStringRef(text));
    const auto head = static_cast<std::size_t>(kept.begin() - text.data());
    text.erase(head + kept.size());
    text.erase(0, head);
}

ParserStringRef trimWhitespace(ParserStringRef text) {
    const char* b = text.begin();
    const char* e = text.end();
    while (b != e && isCSpace(static_cast<unsigned char>(*b))) ++b;
    while (e != b && isCSpace(static_cast<unsigned char>(e[-1]))) --e;
    return ParserStringRef(b, e);
}

void trimChars(std::string& text, std::string_view set) {
    std::size_t b = 0;
    std::size_t e = text.size();
    while (b != e && inSet(text[b], set)) ++b;
    while (e != b && inSet(text[e - 1], set)) --e;
    text.erase(e);
    text.erase(0, b);
}

bool endsWith(const char* text, std::size_t length, const char* suffix, std::size_t suffixLength) {
    if (suffixLength > length) return false;
    return suffixLength == 0 ||
           std::memcmp(text + (length - suffixLength), suffix, suffixLength) == 0;
}

bool beginsWith(const char* text, std::size_t length, const char* prefix,
                std::size_t prefixLength) {
    if (prefixLength > length) return false;
    return prefixLength == 0 || std::memcmp(text, prefix, prefixLength) == 0;
}

nlohmann::json splitToJsonArray(ParserStringRef text, char delimiter, bool trim) {
    std::string_view rest = text.view();
    if (rest.empty()) return nullptr;
    // A delimiter at the very end closes the last piece and opens none.
    if (rest.back() == delimiter) rest.remove_suffix(1);
    nlohmann::json array = nlohmann::json::array();
    auto& items = array.get_ref<nlohmann::json::array_t&>();
    items.reserve(static_cast<std::size_t>(std::count(rest.begin(), rest.end(), delimiter)) + 1);
    // Consumers read these lists last entry first, so the walk starts at the end.
    auto add = [&](std::string_view piece) {
        items.emplace_back(
            (trim ? trimWhitespace(ParserStringRef(piece)) : ParserStringRef(piece)).str());
    };
    for (std::size_t at; (at = rest.rfind(delimiter)) != std::string_view::npos;
         rest = rest.substr(0, at)) {
        add(rest.substr(at + 1));
    }
    add(rest);
    return array;
}

nlohmann::json intFieldValue(ParserStringRef text) {
    const std::optional<int> value = readDecimalInt(text);
    return value ? nlohmann::json(*value) : nlohmann::json(nullptr);
}

std::optional<int> readDecimalInt(ParserStringRef text) {
    const char* begin = text.begin();
    while (begin != text.end() && isCSpace(static_cast<unsigned char>(*begin))) ++begin;
    if (!isInCharset(begin, text.end(), Charset::Numeric)) return std::nullopt;
    int value = 0;
    const auto [end, error] = std::from_chars(begin, text.end(), value);
    if (error != std::errc() || end != text.end()) return std::nullopt;  // too large for an int
    return value;
}

nlohmann::json booleanFieldValue(ParserStringRef text) {
    if (text.size() != 1) return nullptr;
    switch (text[0]) {
        case '0':
        case 'N':
        case 'n':
            return "false";
        case '1':
        case 'Y':
        case 'y':
            return "true";
        default:
            return nullptr;
    }
}

bool readInt(std::string_view text, int& value) {
    const char* p = text.data();
    const char* const end = p + text.size();
    while (p != end && isCSpace(static_cast<unsigned char>(*p))) ++p;
    // from_chars takes a minus but no plus; either sign must be followed by a digit.
    const char* digits = p;
    if (digits != end && (*digits == '+' || *digits == '-')) ++digits;
    if (digits == end || !isAsciiDigit(static_cast<unsigned char>(*digits))) return false;
    int read = 0;
    const auto [stop, error] = std::from_chars(*p == '-' ? p : digits, end, read);
    if (error != std::errc() || stop != end) return false;
    value = read;
    return true;
}

nlohmann::json parseJsonString(const std::string& text) {
    return nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false,
                                 /*ignore_comments=*/false);
}

namespace {

// The base64 digits of every 12 bits, two characters per entry: a photo of
// kilobytes takes one lookup per two digits.
constexpr std::size_t kPairTableSize = std::size_t{2} << 12;
constexpr std::array<char, kPairTableSize> kBase64Pairs = [] {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<char, kPairTableSize> pairs{};
    for (std::size_t bits = 0; bits < 4096; ++bits) {
        pairs[2 * bits] = kDigits[bits >> 6];
        pairs[2 * bits + 1] = kDigits[bits & 0x3F];
    }
    return pairs;
}();

const char* digitPair(std::uint32_t bits) {
    return &kBase64Pairs[std::size_t{2} * bits];
}

}  // namespace

std::string base64Encode(std::string_view bytes) {
    // Written into a string of its final size, padding already in place.
    std::string encoded((bytes.size() + 2) / 3 * 4, '=');
    const auto byte = [&bytes](std::size_t i) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i]));
    };
    char* out = encoded.data();
    std::size_t in = 0;
    for (; in + 3 <= bytes.size(); in += 3, out += 4) {
        const std::uint32_t n = byte(in) << 16 | byte(in + 1) << 8 | byte(in + 2);
        std::memcpy(out, digitPair(n >> 12), 2);
        std::memcpy(out + 2, digitPair(n & 0xFFF), 2);
    }
    const std::size_t left = bytes.size() - in;
    if (left > 0) {
        const std::uint32_t n = byte(in) << 16 | (left == 2 ? byte(in + 1) << 8 : 0);
        std::memcpy(out, digitPair(n >> 12), 2);
        if (left == 2) out[2] = *digitPair(n & 0xFFF);
    }
    return encoded;
}

std::string invalidValueMessage(const std::string& value, const std::string& kind) {
    return "'" + value + "' is invalid " + kind + " value";
}

std::string lengthMismatchMessage(const std::string& name, std::size_t expected,
                                  std::size_t actual) {
    return name + " should contain " + std::to_string(expected) + " character(s) but contain " +
           std::to_string(actual);
}

}  // namespace parser
