// Parses per second of one VIN, through the host-facing parser object and
// through the format parser alone, so that the frame's share is visible.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "bench_common.h"
#include "qvx/parser.h"
#include "vin/vin_parser.h"

namespace {

const std::string kCleanVin = "1HGCM82633A004352";
// A label scan: caption, blank, number.
const std::string kLabelVin = "VIN 1HGCM82633A004352";

// Parse and print the JSON text, as a caller that forwards results does.
void BM_ParserParseVinToJsonText(benchmark::State& state) {
    auto parser = qvx_bench::makeParser(state, ParserDataFormat::Vin);
    if (!parser) return;
    for (auto _ : state) {
        auto outcome = parser->parse(kCleanVin);
        benchmark::DoNotOptimize(outcome.value()->jsonString());
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

void BM_ParserParseVin(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::Vin, kCleanVin);
}
void BM_ParserParseLabelVin(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::Vin, kLabelVin);
}
void BM_VinParserDirect(benchmark::State& state) {
    qvx_bench::parseDirect<parser::VinParser>(state, kCleanVin);
}

}  // namespace

BENCHMARK(BM_ParserParseVin);
BENCHMARK(BM_ParserParseLabelVin);
BENCHMARK(BM_ParserParseVinToJsonText);
BENCHMARK(BM_VinParserDirect);
