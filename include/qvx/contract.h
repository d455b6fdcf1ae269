// Contract failures: bugs in a caller or in the library, never bad input.
//
// Bad input always travels as data (a fatal issue, a field issue, a warning or
// a failed options outcome). What lands here is a broken promise between two
// pieces of code, such as reading the error of a successful result or slicing a
// view past its end. The process is stopped: carrying on would hand wrong data
// to the host application.
#pragma once

#include <string>

namespace parser::contract {

// Composes the failure text and aborts. Nothing is printed; the text is kept in
// `lastFailure()` so that a debugger or crash reporter can read it.
[[noreturn]] void fail(const std::string& text);

// Prints "parser: <file>:<line>: <message>" to standard error, then aborts.
// `file` is the path from the source root.
[[noreturn]] void failWithLocation(const char* file, int line, const std::string& message);

// The text of the failure in progress, for post-mortem inspection.
const char* lastFailure() noexcept;

}  // namespace parser::contract

// Aborts through `parser::contract::fail` with the given text when `cond` is false.
#define QVX_REQUIRE(cond, text)                      \
    do {                                             \
        if (!(cond)) ::parser::contract::fail(text); \
    } while (false)

// Aborts with a located line on standard error.
#define QVX_GUARD(cond, message)                                                        \
    do {                                                                                \
        if (!(cond)) ::parser::contract::failWithLocation(__FILE__, __LINE__, message); \
    } while (false)
