// Value-or-error types of the library.
#pragma once

#include <utility>
#include <variant>

#include "qvx/contract.h"

namespace parser {

// Holds either a T (success) or an E (failure). Reading the arm that is not
// there is a contract failure.
template <class T, class E>
class result {
  public:
    static result success(T value) { return result(std::in_place_index<0>, std::move(value)); }
    static result failure(E error) { return result(std::in_place_index<1>, std::move(error)); }

    bool ok() const noexcept { return state_.index() == 0; }
    explicit operator bool() const noexcept { return ok(); }

    const T& value() const& {
        QVX_REQUIRE(this->ok(), "precondition failed: this->ok()");
        return std::get<0>(state_);
    }
    T& value() & {
        QVX_REQUIRE(this->ok(), "precondition failed: this->ok()");
        return std::get<0>(state_);
    }
    T&& value() && {
        QVX_REQUIRE(this->ok(), "precondition failed: this->ok()");
        return std::get<0>(std::move(state_));
    }
    const E& error() const& {
        QVX_REQUIRE(!this->ok(), "precondition failed: !this->ok()");
        return std::get<1>(state_);
    }
    E&& error() && {
        QVX_REQUIRE(!this->ok(), "precondition failed: !this->ok()");
        return std::get<1>(std::move(state_));
    }

  private:
    template <std::size_t I, class V>
    result(std::in_place_index_t<I> tag, V&& v) : state_(tag, std::forward<V>(v)) {}

    std::variant<T, E> state_;
};

// The form without a value: success, or an error.
template <class E>
class result<void, E> {
  public:
    static result success() { return result(); }
    static result failure(E error) { return result(std::move(error)); }

    bool ok() const noexcept { return ok_; }
    explicit operator bool() const noexcept { return ok_; }

    const E& error() const& {
        QVX_REQUIRE(!ok(), "precondition failed: !ok()");
        return error_;
    }
    E&& error() && {
        QVX_REQUIRE(!ok(), "precondition failed: !ok()");
        return std::move(error_);
    }

  private:
    result() = default;
    explicit result(E error) : ok_(false), error_(std::move(error)) {}

    bool ok_ = true;
    E error_{};
};

}  // namespace parser

namespace bar {
// The host-facing twin of parser::result.
template <class T, class E>
using result = parser::result<T, E>;
}  // namespace bar
