#include "qvx/string_ref.h"

#include <cstring>
#include <ostream>

#include "qvx/contract.h"

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
    QVX_REQUIRE(p >= begin_ && p <= end_, "precondition failed: view operation out of range");
    return static_cast<std::size_t>(p - begin_);
}

std::ostream& operator<<(std::ostream& out, ParserStringRef ref) {
    for (const char c : ref.view()) out.put(c);
    return out;
}
