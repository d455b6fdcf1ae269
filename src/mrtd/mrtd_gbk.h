// GBK to Unicode, as Windows code page 936 maps it, and the letter-coded
// Chinese names of the Chinese travel permits.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "qvx/string_ref.h"

namespace parser {

// The code point of a 16-bit GBK code: 0x0000..0x007F map to themselves, 0x0080
// to U+20AC and the double-byte codes 0x8140..0xFEFE as code page 936 has them.
// Any other code is unassigned and gives 0.
std::uint32_t unicodeFromGbk(std::uint16_t code);

// A Chinese name written as groups of four letters A..P, each group one GBK code
// in hexadecimal (A = 0 ... P = 15, most significant first), decoded to UTF-8.
// A length that is not a multiple of four or any other letter anywhere gives
// the empty string. An unassigned code gives a NUL byte, so the result may hold
// zeros and is no C string.
std::string decodeGbkLetters(ParserStringRef text);

// The generated table behind unicodeFromGbk, in mrtd_gbk_table.cpp.
namespace gbk_detail {

inline constexpr unsigned kFirstLead = 0x81;
inline constexpr unsigned kLastLead = 0xFE;

// The code points of one lead byte's trails firstTrail..lastTrail start at
// kGbkCodePoints[offset]; 0 marks a trail without a character.
struct GbkRow {
    std::uint16_t offset;
    std::uint8_t firstTrail;
    std::uint8_t lastTrail;
};

extern const std::array<GbkRow, kLastLead - kFirstLead + 1> kGbkRows;
extern const std::uint16_t kGbkCodePoints[];

}  // namespace gbk_detail

}  // namespace parser
