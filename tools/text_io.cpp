#include "text_io.h"

#include <cerrno>
#include <cstring>

namespace qvx_cli {

namespace {

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

void appendHexEscape(std::string& out, unsigned char byte) {
    static constexpr char kDigits[] = "0123456789abcdef";
    out += "\\x";
    out.push_back(kDigits[byte >> 4]);
    out.push_back(kDigits[byte & 0x0F]);
}

// Length of the well-formed UTF-8 sequence at the start of `bytes` (which
// begins with a byte of 0x80 or above), or 0 when there is none: no overlong
// forms, no surrogates, nothing above U+10FFFF.
std::size_t utf8SequenceLength(std::string_view bytes) {
    auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    unsigned char lead = at(0);
    std::size_t length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) low = 0xA0;
        if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;
    } else {
        return 0;
    }
    if (bytes.size() < length) return 0;
    if (at(1) < low || at(1) > high) return 0;
    for (std::size_t i = 2; i < length; ++i) {
        if (at(i) < 0x80 || at(i) > 0xBF) return 0;
    }
    return length;
}

}  // namespace

std::optional<std::string> readAll(std::FILE* stream) {
    std::string out;
    char buffer[1 << 16];
    for (;;) {
        std::size_t n = std::fread(buffer, 1, sizeof buffer, stream);
        out.append(buffer, n);
        if (n < sizeof buffer) break;
    }
    if (std::ferror(stream)) return std::nullopt;
    return out;
}

std::optional<std::string> readFile(const std::string& path, std::string& why) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        why = std::strerror(errno);
        return std::nullopt;
    }
    errno = 0;
    auto content = readAll(file);
    if (!content) why = errno != 0 ? std::strerror(errno) : "read error";
    std::fclose(file);
    return content;
}

void stripOneLineEnd(std::string& text) {
    if (text.size() >= 2 && text.compare(text.size() - 2, 2, "\r\n") == 0) {
        text.resize(text.size() - 2);
    } else if (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
}

std::optional<std::string> unescape(std::string_view text, std::string& why) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            out.push_back(text[i]);
            continue;
        }
        if (i + 1 == text.size()) {
            why = "a lone backslash ends the text";
            return std::nullopt;
        }
        char kind = text[++i];
        switch (kind) {
            case 'n':
                out.push_back('\n');
                break;
            case 'r':
                out.push_back('\r');
                break;
            case 't':
                out.push_back('\t');
                break;
            case '\\':
                out.push_back('\\');
                break;
            case 'x': {
                int hi = i + 1 < text.size() ? hexValue(text[i + 1]) : -1;
                int lo = i + 2 < text.size() ? hexValue(text[i + 2]) : -1;
                if (hi < 0 || lo < 0) {
                    why = "\\x must be followed by two hex digits";
                    return std::nullopt;
                }
                out.push_back(static_cast<char>(hi * 16 + lo));
                i += 2;
                break;
            }
            default:
                why = std::string("unknown escape \\") + kind +
                      " (known: \\xHH, \\n, \\r, \\t, \\\\)";
                return std::nullopt;
        }
    }
    return out;
}

std::string escapeForDisplay(std::string_view bytes, bool quoted) {
    std::string out;
    out.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size();) {
        auto byte = static_cast<unsigned char>(bytes[i]);
        if (byte >= 0x80) {
            std::size_t length = utf8SequenceLength(bytes.substr(i));
            if (length == 0) {
                appendHexEscape(out, byte);
                ++i;
            } else {
                out.append(bytes.substr(i, length));
                i += length;
            }
            continue;
        }
        switch (byte) {
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '"':
                out += quoted ? "\\\"" : "\"";
                break;
            default:
                if (byte < 0x20 || byte == 0x7F) {
                    appendHexEscape(out, byte);
                } else {
                    out.push_back(static_cast<char>(byte));
                }
        }
        ++i;
    }
    return out;
}

}  // namespace qvx_cli
