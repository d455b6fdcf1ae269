#include "base64.h"

#include <cstdint>

namespace qvx_cli {

namespace {

// The 6-bit value of a base64 character, or -1.
int sextet(char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '+') return 62;
    if (c == '/') return 63;
    return -1;
}

}  // namespace

std::optional<std::string> decodeBase64(std::string_view text) {
    std::size_t padding = 0;
    if (text.size() % 4 == 0 && !text.empty() && text.back() == '=') {
        padding = text[text.size() - 2] == '=' ? 2 : 1;
    }
    std::string_view body = text.substr(0, text.size() - padding);
    if (body.size() % 4 == 1) return std::nullopt;

    std::string out;
    out.reserve(body.size() / 4 * 3 + 2);
    std::uint32_t bits = 0;
    int bitCount = 0;
    for (char c : body) {
        int value = sextet(c);
        if (value < 0) return std::nullopt;
        bits = ((bits << 6) | static_cast<std::uint32_t>(value)) & 0xFFFF;
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            out.push_back(static_cast<char>((bits >> bitCount) & 0xFF));
        }
    }
    // What is left over must be the zero filler of a canonical encoding.
    if ((bits & ((1U << bitCount) - 1)) != 0) return std::nullopt;
    return out;
}

}  // namespace qvx_cli
