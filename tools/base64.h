// Base64 decoding for the command line (the library itself only encodes).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qvx_cli {

// Decodes standard base64 (RFC 4648 alphabet with "+" and "/"). The "="
// padding may be present, then it must make the length a multiple of 4, or be
// left out entirely. Anything else is refused: white space, line breaks, the
// URL-safe alphabet, "=" inside the text, a length of 4n+1, and unused low
// bits in the last character that are not zero. Returns nothing when refused.
std::optional<std::string> decodeBase64(std::string_view text);

}  // namespace qvx_cli
