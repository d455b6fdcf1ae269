#include "qvx/string_ref.h"

#include <cstring>
#include <ostream>

#include "qvx/contract.h"

namespace {
constexpr const char* kOutOfRange = "precondition failed: view operation out of range";
}

ParserStringRef::ParserStringRef(const char* begin, const char* end) : begin_(begin), end_(end) {
    QVX_REQUIRE(begin <= end, "precondition failed: begin <= end");
}

unsigned char ParserStringRef::operator[](std::size_t index) const {
    QVX_REQUIRE(index < size(), kOutOfRange);
    return static_cast<unsigned char>(begin_[index]);
}

unsigned char ParserStringRef::front() const {
    return (*this)[0];
}

unsigned char ParserStringRef::back() const {
    QVX_REQUIRE(!empty(), kOutOfRange);
    return static_cast<unsigned char>(end_[-1]);
}

ParserStringRef ParserStringRef::first(std::size_t n) const {
    QVX_REQUIRE(n <= size(), kOutOfRange);
    return ParserStringRef(begin_, begin_ + n);
}

ParserStringRef ParserStringRef::last(std::size_t n) const {
    QVX_REQUIRE(n <= size(), kOutOfRange);
    return ParserStringRef(end_ - n, end_);
}

ParserStringRef ParserStringRef::drop_front(std::size_t n) const {
    QVX_REQUIRE(n <= size(), kOutOfRange);
    return ParserStringRef(begin_ + n, end_);
}

ParserStringRef ParserStringRef::drop_back(std::size_t n) const {
    QVX_REQUIRE(n <= size(), kOutOfRange);
    return ParserStringRef(begin_, end_ - n);
}

ParserStringRef ParserStringRef::slice(std::size_t a, std::size_t b) const {
    QVX_REQUIRE(a <= b && b <= size(), kOutOfRange);
    return ParserStringRef(begin_ + a, begin_ + b);
}

ParserStringRef ParserStringRef::take_front(std::size_t n) {
    ParserStringRef head = first(n);
    begin_ += n;
    return head;
}

bool ParserStringRef::starts_with(const char* text, std::size_t len) const noexcept {
    return len <= size() && (len == 0 || std::memcmp(begin_, text, len) == 0);
}

bool ParserStringRef::starts_with(char byte) const noexcept {
    return !empty() && *begin_ == byte;
}

bool ParserStringRef::consume_prefix(const char* text, std::size_t len) noexcept {
    if (!starts_with(text, len)) return false;
    begin_ += len;
    return true;
}

bool ParserStringRef::consume_prefix(char byte) noexcept {
    if (!starts_with(byte)) return false;
    ++begin_;
    return true;
}

bool ParserStringRef::consume_any_prefix(
    std::initializer_list<std::string_view> prefixes) noexcept {
    for (std::string_view prefix : prefixes) {
        if (consume_prefix(prefix)) return true;
    }
    return false;
}

const char* ParserStringRef::find_char(char byte) const noexcept {
    if (empty()) return nullptr;
    return static_cast<const char*>(std::memchr(begin_, byte, size()));
}

const char* ParserStringRef::find_char(char byte, std::size_t from) const noexcept {
    if (from >= size()) return nullptr;
    return drop_front(from).find_char(byte);
}

const char* ParserStringRef::find_substring(std::string_view sequence,
                                            std::size_t from) const noexcept {
    if (from > size()) return end_;
    std::size_t at = view().find(sequence, from);
    return at == std::string_view::npos ? end_ : begin_ + at;
}

const char* ParserStringRef::find_first_of(std::string_view set) const noexcept {
    return find_nth_of(set, 1);
}

const char* ParserStringRef::find_nth_of(std::string_view set, std::size_t n) const noexcept {
    if (n < 2) n = 1;
    for (const char* p = begin_; p != end_; ++p) {
        if (set.find(*p) != std::string_view::npos && --n == 0) return p;
    }
    return nullptr;
}

std::size_t ParserStringRef::offsetOf(const char* p) const {
    QVX_REQUIRE(p >= begin_ && p <= end_, kOutOfRange);
    return static_cast<std::size_t>(p - begin_);
}

std::ostream& operator<<(std::ostream& out, ParserStringRef ref) {
    for (const char c : ref.view()) out.put(c);
    return out;
}
