// The dictionary of Application Identifiers: for each AI, the fewest data
// bytes that must follow it and the decoder that reads them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "qvx/string_ref.h"

namespace parser {

class Gs1AiParser;
class ResultBuilder;

// Reads the data of AI `key` from the front of `view`, adds its field(s) and
// advances the view; returns true to go on with the next AI.
using Gs1AiDecoder = bool (*)(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                              const Gs1AiParser& parser);

struct Gs1AiEntry {
    std::array<char, 4> digits{};  // the AI, 2 to 4 digits; unused bytes stay 0
    std::uint8_t length = 0;
    Gs1AiDecoder decode = nullptr;
    std::uint64_t minimumLength = 0;

    constexpr std::string_view key() const noexcept { return {digits.data(), length}; }
};

// A read-only view of the rows, in byte order of the key.
class Gs1AiRows {
  public:
    constexpr Gs1AiRows(const Gs1AiEntry* rows, std::size_t count) : rows_(rows), count_(count) {}
    constexpr const Gs1AiEntry* begin() const noexcept { return rows_; }
    constexpr const Gs1AiEntry* end() const noexcept { return rows_ + count_; }
    constexpr const Gs1AiEntry* data() const noexcept { return rows_; }
    constexpr std::size_t size() const noexcept { return count_; }
    constexpr const Gs1AiEntry& operator[](std::size_t i) const noexcept { return rows_[i]; }

  private:
    const Gs1AiEntry* rows_;
    std::size_t count_;
};

Gs1AiRows gs1AiTable() noexcept;

// The first row whose key equals `key`, or null.
const Gs1AiEntry* findGs1Ai(std::string_view key) noexcept;

}  // namespace parser
