// Parses per second of boarding passes, through the host-facing parser object
// and through the format parser alone.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "bcbp/bcbp_parser.h"
#include "bench_common.h"
#include "bench_inputs.h"
#include "qvx/parser.h"

namespace {

void BM_ParserParseBcbpOneLeg(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::IataBcbp, qvx_bench::kBcbpOneLeg);
}
void BM_ParserParseBcbpTwoLegs(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::IataBcbp, qvx_bench::kBcbpTwoLegs);
}
// A host that creates a parser per code, as the batch mode of the command line does.
void BM_CreateAndParseBcbpOneLeg(benchmark::State& state) {
    for (auto _ : state) {
        parser::IataBcbpParser bcbp;
        auto result = bcbp.parse(ParserStringRef(qvx_bench::kBcbpOneLeg));
        benchmark::DoNotOptimize(result);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}
void BM_BcbpParserDirectOneLeg(benchmark::State& state) {
    qvx_bench::parseDirect<parser::IataBcbpParser>(state, qvx_bench::kBcbpOneLeg);
}
void BM_BcbpParserDirectTwoLegs(benchmark::State& state) {
    qvx_bench::parseDirect<parser::IataBcbpParser>(state, qvx_bench::kBcbpTwoLegs);
}

}  // namespace

BENCHMARK(BM_ParserParseBcbpOneLeg);
BENCHMARK(BM_ParserParseBcbpTwoLegs);
BENCHMARK(BM_BcbpParserDirectOneLeg);
BENCHMARK(BM_CreateAndParseBcbpOneLeg);
BENCHMARK(BM_BcbpParserDirectTwoLegs);
