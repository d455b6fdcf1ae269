#include "base64.h"

#include <array>
#include <cstdint>

namespace qvx_cli {

namespace {

constexpr std::uint8_t kNotBase64 = 0xFF;

// The 6-bit value of each base64 character; kNotBase64 for every other byte.
constexpr std::array<std::uint8_t, 256> kSextets = [] {
    std::array<std::uint8_t, 256> table{};
    for (auto& value : table) value = kNotBase64;
    constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (int i = 0; i < 64; ++i)
        table[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
    return table;
}();

}  // namespace

std::optional<std::string> decodeBase64(std::string_view text) {
    std::size_t padding = 0;
    if (text.size() % 4 == 0 && !text.empty() && text.back() == '=') {
        padding = text[text.size() - 2] == '=' ? 2 : 1;
    }
    std::string_view body = text.substr(0, text.size() - padding);
    if (body.size() % 4 == 1) return std::nullopt;

    std::string out(body.size() / 4 * 3 + (body.size() % 4 == 0 ? 0 : body.size() % 4 - 1), '\0');
    char* p = out.data();
    std::uint32_t bits = 0;
    int bitCount = 0;
    for (char c : body) {
        const std::uint8_t value = kSextets[static_cast<unsigned char>(c)];
        if (value == kNotBase64) return std::nullopt;
        bits = ((bits << 6) | static_cast<std::uint32_t>(value)) & 0xFFFF;
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            *p++ = static_cast<char>((bits >> bitCount) & 0xFF);
        }
    }
    // What is left over must be the zero filler of a canonical encoding.
    if ((bits & ((1U << bitCount) - 1)) != 0) return std::nullopt;
    return out;
}

}  // namespace qvx_cli
