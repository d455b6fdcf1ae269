// The vocabulary of GS1 Digital Link: which keys may stand in a URI, which
// word stands for which AI, and which sequences of path keys are legal.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "qvx/result.h"

namespace parser {

class DigitalLinkKeys {
  public:
    DigitalLinkKeys();

    // The AI of a word, or "Data attribute key name not found: <key>".
    result<std::string, std::string> getAiForName(const std::string& key) const;

    // A word of the URI to its AI. A word that covers a range of AIs names
    // the last of them.
    std::unordered_map<std::string, std::string> nameToAi;
    // An AI to its word, the data attribute's word where there are two. Its
    // keys are the AIs the standard lists.
    std::unordered_map<std::string, std::string> aiToName;
    // Every legal sequence of path keys, spelled "/01/10/21".
    std::unordered_set<std::string> validPaths;
};

// The AIs whose values are percent-encoded text.
inline constexpr std::array<std::string_view, 15> encodedKeys = {
    "4300", "4301", "4302", "4303", "4304", "4305", "4306", "4310",
    "4311", "4312", "4313", "4314", "4315", "4316", "4320",
};
// The bytes that may reach such a value through a percent escape; any other
// escaped byte is rejected.
inline constexpr std::string_view encodedKeyCharacters = "#/%&+,!()*':;<=>?";

bool isEncodedKey(std::string_view key);

}  // namespace parser
