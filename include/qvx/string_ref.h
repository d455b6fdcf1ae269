// ParserStringRef: the non-owning byte view every format parser walks with.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <string_view>

#include "qvx/contract.h"

// A view of bytes [begin, end). It never owns what it looks at and must not
// outlive the string behind it. Every operation that would leave the view
// aborts instead of shortening silently: the caller checks lengths first.
// Bytes compare as unsigned values.
class ParserStringRef {
  public:
    constexpr ParserStringRef() noexcept = default;
    ParserStringRef(const char* begin, const char* end) : begin_(begin), end_(end) {
        QVX_REQUIRE(begin <= end, "precondition failed: begin <= end");
    }
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
    unsigned char operator[](std::size_t index) const {
        QVX_REQUIRE(index < size(), kOutOfRange);
        return static_cast<unsigned char>(begin_[index]);
    }
    unsigned char front() const { return (*this)[0]; }
    unsigned char back() const {
        QVX_REQUIRE(!empty(), kOutOfRange);
        return static_cast<unsigned char>(end_[-1]);
    }

    std::string str() const { return std::string(begin_, end_); }
    std::string_view view() const noexcept { return std::string_view(begin_, size()); }

    ParserStringRef first(std::size_t n) const {
        QVX_REQUIRE(n <= size(), kOutOfRange);
        return ParserStringRef(begin_, begin_ + n, Unchecked{});
    }
    ParserStringRef last(std::size_t n) const {
        QVX_REQUIRE(n <= size(), kOutOfRange);
        return ParserStringRef(end_ - n, end_, Unchecked{});
    }
    ParserStringRef drop_front(std::size_t n) const {
        QVX_REQUIRE(n <= size(), kOutOfRange);
        return ParserStringRef(begin_ + n, end_, Unchecked{});
    }
    ParserStringRef drop_back(std::size_t n) const {
        QVX_REQUIRE(n <= size(), kOutOfRange);
        return ParserStringRef(begin_, end_ - n, Unchecked{});
    }
    // Bytes from position `a` up to, not including, position `b`.
    ParserStringRef slice(std::size_t a, std::size_t b) const {
        QVX_REQUIRE(a <= b && b <= size(), kOutOfRange);
        return ParserStringRef(begin_ + a, begin_ + b, Unchecked{});
    }
    // Returns the first n bytes and advances this view past them.
    ParserStringRef take_front(std::size_t n) {
        ParserStringRef head = first(n);
        begin_ += n;
        return head;
    }

    bool starts_with(const char* text, std::size_t len) const noexcept {
        return len <= size() &&
               (len == 0 || std::char_traits<char>::compare(begin_, text, len) == 0);
    }
    bool starts_with(std::string_view text) const noexcept {
        return starts_with(text.data(), text.size());
    }
    bool starts_with(char byte) const noexcept { return !empty() && *begin_ == byte; }
    bool consume_prefix(const char* text, std::size_t len) noexcept {
        if (!starts_with(text, len)) return false;
        begin_ += len;
        return true;
    }
    bool consume_prefix(std::string_view text) noexcept {
        return consume_prefix(text.data(), text.size());
    }
    bool consume_prefix(char byte) noexcept {
        if (!starts_with(byte)) return false;
        ++begin_;
        return true;
    }
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
    static constexpr const char* kOutOfRange = "precondition failed: view operation out of range";
    // For views cut from this one, whose bounds are already known to be in order.
    struct Unchecked {};
    ParserStringRef(const char* begin, const char* end, Unchecked) noexcept
        : begin_(begin), end_(end) {}

    const char* begin_ = nullptr;
    const char* end_ = nullptr;
};

std::ostream& operator<<(std::ostream& out, ParserStringRef ref);

namespace parser {
using ::ParserStringRef;
}
