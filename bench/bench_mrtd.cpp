// Parses per second of machine-readable zones: clean documents, and a card
// whose look-alike characters the compensator has to decide by check digits.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "bench_common.h"
#include "bench_inputs.h"
#include "mrtd/mrtd_parser.h"
#include "qvx/parser.h"

namespace {

void BM_ParserParseMrzTd3(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::Mrtd, qvx_bench::kMrzTd3);
}
void BM_ParserParseMrzTd1(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::Mrtd, qvx_bench::kMrzTd1);
}
void BM_ParserParseMrzTd1LookAlikes(benchmark::State& state) {
    auto parser = qvx_bench::makeParser(state, ParserDataFormat::Mrtd);
    if (!parser) return;
    if (!parser->setOptions(R"({"allowFalsePositiveCompensation": true})").ok()) {
        state.SkipWithError("options refused");
        return;
    }
    for (auto _ : state) {
        auto outcome = parser->parse(qvx_bench::kMrzTd1LookAlikes);
        if (!outcome.ok()) {
            state.SkipWithError(outcome.error()->message.c_str());
            return;
        }
        benchmark::DoNotOptimize(outcome);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}
void BM_MrtdParserDirectTd3(benchmark::State& state) {
    qvx_bench::parseDirect<parser::MrtdParser>(state, qvx_bench::kMrzTd3);
}

}  // namespace

BENCHMARK(BM_ParserParseMrzTd3);
BENCHMARK(BM_ParserParseMrzTd1);
BENCHMARK(BM_ParserParseMrzTd1LookAlikes);
BENCHMARK(BM_MrtdParserDirectTd3);
