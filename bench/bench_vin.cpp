// Parses per second of one VIN, through the host-facing parser object and
// through the format parser alone, so that the frame's share is visible.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "bench_common.h"
#include "bench_inputs.h"
#include "qvx/parser.h"
#include "vin/vin_parser.h"

namespace {

// Parse and print the JSON text, as a caller that forwards results does.
void BM_ParserParseVinToJsonText(benchmark::State& state) {
    auto parser = qvx_bench::makeParser(state, ParserDataFormat::Vin);
    if (!parser) return;
    for (auto _ : state) {
        auto outcome = parser->parse(qvx_bench::kVinClean);
        benchmark::DoNotOptimize(outcome.value()->jsonString());
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

void BM_ParserParseVin(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::Vin, qvx_bench::kVinClean);
}
void BM_ParserParseLabelVin(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::Vin, qvx_bench::kVinLabel);
}
void BM_VinParserDirect(benchmark::State& state) {
    qvx_bench::parseDirect<parser::VinParser>(state, qvx_bench::kVinClean);
}

}  // namespace

BENCHMARK(BM_ParserParseVin);
BENCHMARK(BM_ParserParseLabelVin);
BENCHMARK(BM_ParserParseVinToJsonText);
BENCHMARK(BM_VinParserDirect);
