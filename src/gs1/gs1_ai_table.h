// The dictionary of Application Identifiers: for each AI, the fewest data
// bytes that must follow it and the decoder that reads them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "qvx/string_ref.h"

namespace parser {

class Gs1AiParser;
class ResultBuilder;

// Reads the data of AI `key` from the front of `view`, adds its field(s) and
// advances the view; returns true to go on with the next AI.
using Gs1AiDecoder = bool (*)(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                              const Gs1AiParser& parser);

struct Gs1AiEntry {
    std::string key;
    Gs1AiDecoder decode;
    std::uint64_t minimumLength;
};

// Every row in byte order of the key, built once.
const std::vector<Gs1AiEntry>& gs1AiTable();

// The first row whose key equals `key`, or null.
const Gs1AiEntry* findGs1Ai(std::string_view key);

}  // namespace parser
