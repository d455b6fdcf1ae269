// The two loops every format's benchmarks run: through the host-facing parser
// object, and through the format parser alone, so that the frame's share is
// visible.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>

#include "qvx/parser.h"

namespace qvx_bench {

// Null, with the benchmark marked skipped, when the format is not built.
inline std::shared_ptr<qvx::Parser> makeParser(benchmark::State& state, ParserDataFormat format) {
    auto created = qvx::Parser::create(nullptr, format);
    if (!created.ok()) {
        state.SkipWithError(created.error().c_str());
        return nullptr;
    }
    return created.value();
}

inline void parseThroughParser(benchmark::State& state, ParserDataFormat format,
                               const std::string& input) {
    auto parser = makeParser(state, format);
    if (!parser) return;
    for (auto _ : state) {
        auto outcome = parser->parse(input);
        benchmark::DoNotOptimize(outcome);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

template <class FormatParser>
void parseDirect(benchmark::State& state, const std::string& input) {
    FormatParser formatParser;
    for (auto _ : state) {
        auto result = formatParser.parse(ParserStringRef(input));
        benchmark::DoNotOptimize(result);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

}  // namespace qvx_bench
