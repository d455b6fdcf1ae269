// Byte-exact input reading and the text conversions of the human-readable mode.
#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace qvx_cli {

// All bytes of an open stream, unchanged (NUL and 0xFF included). Nothing
// when a read error occurs.
std::optional<std::string> readAll(std::FILE* stream);

// All bytes of the file at `path`; on failure, nothing and a reason in `why`.
std::optional<std::string> readFile(const std::string& path, std::string& why);

// Removes one trailing "\n" or "\r\n", if there is one.
void stripOneLineEnd(std::string& text);

// Interprets the escapes \xHH (two hex digits), \n, \r, \t and \\ in `text`.
// Any other backslash sequence, a lone trailing backslash included, is refused
// with a reason in `why`.
std::optional<std::string> unescape(std::string_view text, std::string& why);

// `bytes` made safe to print on a terminal: control bytes, DEL and bytes that
// are not part of valid UTF-8 become \n, \r, \t or \xHH; the backslash is
// doubled, and so is escaped the double quote when `quoted` is set. Valid
// UTF-8 sequences are kept as they are.
std::string escapeForDisplay(std::string_view bytes, bool quoted);

}  // namespace qvx_cli
