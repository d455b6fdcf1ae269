#include "mrtd/mrtd_gbk.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace parser {

std::uint32_t unicodeFromGbk(std::uint16_t code) {
    using namespace gbk_detail;
    if (code < 0x80) return code;
    if (code == 0x80) return 0x20AC;  // the euro sign, code page 936's one extra single byte
    const unsigned lead = code >> 8U;
    const unsigned trail = code & 0xFFU;
    if (lead < kFirstLead || lead > kLastLead) return 0;
    const GbkRow& row = kGbkRows[lead - kFirstLead];
    if (trail < row.firstTrail || trail > row.lastTrail) return 0;
    return kGbkCodePoints[row.offset + (trail - row.firstTrail)];
}

namespace {

void appendUtf8(std::string& out, std::uint32_t cp) {
    // GBK reaches no further than the Basic Multilingual Plane.
    if (cp <= 0x7F) {
        out += static_cast<char>(cp);
    } else if (cp <= 0x7FF) {
        out += static_cast<char>(0xC0U | (cp >> 6U));
        out += static_cast<char>(0x80U | (cp & 0x3FU));
    } else {
        out += static_cast<char>(0xE0U | (cp >> 12U));
        out += static_cast<char>(0x80U | ((cp >> 6U) & 0x3FU));
        out += static_cast<char>(0x80U | (cp & 0x3FU));
    }
}

}  // namespace

std::string decodeGbkLetters(ParserStringRef text) {
    if (text.size() % 4 != 0) return {};
    std::string out;
    out.reserve(text.size() / 4 * 3);
    for (std::size_t i = 0; i < text.size(); i += 4) {
        unsigned code = 0;
        for (std::size_t k = i; k < i + 4; ++k) {
            const unsigned char letter = text[k];
            if (letter < 'A' || letter > 'P') return {};
            code = code << 4U | static_cast<unsigned>(letter - 'A');
        }
        appendUtf8(out, unicodeFromGbk(static_cast<std::uint16_t>(code)));
    }
    return out;
}

}  // namespace parser
