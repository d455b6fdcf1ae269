// ParserStringRef: the non-owning byte view every format parser walks with.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <string_view>

// A view of bytes [begin, end). It never owns what it looks at and must not
// outlive the string behind it. Every operation that would leave the view
// aborts instead of shortening silently: the caller checks lengths first.
// Bytes compare as unsigned values.
class ParserStringRef {
  public:
    constexpr ParserStringRef() noexcept = default;
    ParserStringRef(const char* begin, const char* end);
    // Views of a whole string. The string must outlive the view.
    ParserStringRef(const std::string& text) noexcept  // NOLINT(google-explicit-constructor)
        : begin_(text.data()), end_(text.data() + text.size()) {}
    ParserStringRef(std::string&&) = delete;  // would dangle at once
    constexpr ParserStringRef(
        std::string_view text) noexcept  // NOLINT(google-explicit-constructor)
        : begin_(text.data()), end_(text.data() + text.size()) {}
    ParserStringRef(const char* text) noexcept  // NOLINT(google-explicit-constructor)
        : ParserStringRef(std::string_view(text)) {}

    const char* begin() const noexcept { return begin_; }
    const char* end() const noexcept { return end_; }
    const char* data() const noexcept { return begin_; }
    std::size_t size() const noexcept { return static_cast<std::size_t>(end_ - begin_); }
    bool empty() const noexcept { return begin_ == end_; }

    // The byte at `index`, as an unsigned value; aborts when out of range.
    unsigned char operator[](std::size_t index) const;
    unsigned char front() const;
    unsigned char back() const;

    std::string str() const { return std::string(begin_, end_); }
    std::string_view view() const noexcept { return std::string_view(begin_, size()); }

    ParserStringRef first(std::size_t n) const;
    ParserStringRef last(std::size_t n) const;
    ParserStringRef drop_front(std::size_t n) const;
    ParserStringRef drop_back(std::size_t n) const;
    // Bytes from position `a` up to, not including, position `b`.
    ParserStringRef slice(std::size_t a, std::size_t b) const;
    // Returns the first n bytes and advances this view past them.
    ParserStringRef take_front(std::size_t n);

    bool starts_with(const char* text, std::size_t len) const noexcept;
    bool starts_with(std::string_view text) const noexcept {
        return starts_with(text.data(), text.size());
    }
    bool starts_with(char byte) const noexcept;
    bool consume_prefix(const char* text, std::size_t len) noexcept;
    bool consume_prefix(std::string_view text) noexcept {
        return consume_prefix(text.data(), text.size());
    }
    bool consume_prefix(char byte) noexcept;
    // Consumes the first string of the list that is a prefix; false when none is.
    bool consume_any_prefix(std::initializer_list<std::string_view> prefixes) noexcept;

    // Address of the first occurrence of `byte`, or null.
    const char* find_char(char byte) const noexcept;
    // The same, starting at offset `from`; null when `from` lies outside the view.
    const char* find_char(char byte, std::size_t from) const noexcept;
    // Address of the first occurrence at or after offset `from`; `end()` when none.
    const char* find_substring(std::string_view sequence, std::size_t from = 0) const noexcept;
    // Address of the first byte that is in `set`, or null.
    const char* find_first_of(std::string_view set) const noexcept;
    // Address of the n-th byte that is in `set`, or null; n below 2 acts as 1.
    const char* find_nth_of(std::string_view set, std::size_t n) const noexcept;

    // Offset of an address inside the view.
    std::size_t offsetOf(const char* p) const;

    friend bool operator==(ParserStringRef a, ParserStringRef b) noexcept {
        return a.view() == b.view();
    }
    friend bool operator!=(ParserStringRef a, ParserStringRef b) noexcept { return !(a == b); }

  private:
    const char* begin_ = nullptr;
    const char* end_ = nullptr;
};

std::ostream& operator<<(std::ostream& out, ParserStringRef ref);

namespace parser {
using ::ParserStringRef;
}
