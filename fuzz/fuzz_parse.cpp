// One input: [format byte][options length byte][options text][data].
// The format byte picks a row of the format table; formats not built yet are
// skipped. A per-format target (QVX_FUZZ_FORMAT set to a format name) ignores
// the format byte, so that every target reads the same seeds. Any abort,
// sanitizer report or exception is a bug.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "qvx/qvx.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    // Detection reads any bytes, whatever format the input is meant for.
    const auto candidates =
        qvx::detectFormats(std::string_view(reinterpret_cast<const char*>(data), size));
    if (candidates.size() > qvx::FormatCandidates::kCapacity) __builtin_trap();
#ifdef QVX_FUZZ_FORMAT
    static const ParserDataFormat format = *parser::dataFormatFromName(QVX_FUZZ_FORMAT);
#else
    const auto& table = parser::dataFormatTable();
    const ParserDataFormat format = table[data[0] % table.size()].first;
#endif
    if (!qvx::Parser::isFormatAvailable(format)) return 0;

    std::size_t optionsLength = data[1];
    if (optionsLength > size - 2) optionsLength = size - 2;
    const char* bytes = reinterpret_cast<const char*>(data);
    const std::string options(bytes + 2, optionsLength);
    const std::string input(bytes + 2 + optionsLength, size - 2 - optionsLength);

    auto created = qvx::Parser::create(nullptr, format);
    if (!created.ok()) return 0;
    auto parser = created.value();
    if (!options.empty()) (void)parser->setOptions(options);
    auto outcome = parser->parse(input);
    if (outcome.ok()) {
        // The stored text and the JSON form must agree for every result.
        const auto& result = *outcome.value();
        if (result.asJson().dump(4, ' ', false, nlohmann::json::error_handler_t::ignore) !=
            result.jsonString()) {
            __builtin_trap();
        }
    } else if (!outcome.error()) {
        __builtin_trap();
    }
    return 0;
}
