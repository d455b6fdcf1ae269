// Parses per second of a typical one-label HIBC code (primary and secondary
// segments with an expiry date and a lot), through the host-facing parser
// object and through the format parser alone.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>

#include "hibc/hibc_parser.h"
#include "qvx/parser.h"

namespace {

const std::string kPrimarySecondary = "+H123GLOVE5/$$3270630LOT8841/16D20240630D";
// A scanner that appends a line end costs a second pass.
const std::string kTrailingNewline = kPrimarySecondary + "\n";

std::shared_ptr<qvx::Parser> makeHibcParser(benchmark::State& state) {
    auto created = qvx::Parser::create(nullptr, ParserDataFormat::Hibc);
    if (!created.ok()) {
        state.SkipWithError(created.error().c_str());
        return nullptr;
    }
    return created.value();
}

void parseThroughParser(benchmark::State& state, const std::string& input) {
    auto parser = makeHibcParser(state);
    if (!parser) return;
    for (auto _ : state) {
        auto outcome = parser->parse(input);
        benchmark::DoNotOptimize(outcome);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

void parseDirect(benchmark::State& state, const std::string& input) {
    parser::HIBCParser hibc;
    for (auto _ : state) {
        auto result = hibc.parse(ParserStringRef(input));
        benchmark::DoNotOptimize(result);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

void BM_ParserParseHibc(benchmark::State& state) {
    parseThroughParser(state, kPrimarySecondary);
}
void BM_ParserParseHibcTrailingNewline(benchmark::State& state) {
    parseThroughParser(state, kTrailingNewline);
}
void BM_HibcParserDirect(benchmark::State& state) {
    parseDirect(state, kPrimarySecondary);
}

}  // namespace

BENCHMARK(BM_ParserParseHibc);
BENCHMARK(BM_ParserParseHibcTrailingNewline);
BENCHMARK(BM_HibcParserDirect);
