// Parses per second of driver licences: a 333-byte version 8 barcode, a
// version 1 barcode and a magnetic stripe, through the host-facing parser
// object and through the format parser alone; and the verification features
// of the version 8 barcode.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "bench_common.h"
#include "bench_inputs.h"
#include "dlid/dlid_parser.h"
#include "qvx/parser.h"

namespace {

void BM_ParserParseDlidVersion8(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::Dlid, qvx_bench::kDlidVersion8);
}
void BM_ParserParseDlidVersion1(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::Dlid, qvx_bench::kDlidVersion1);
}
void BM_ParserParseDlidStripe(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::Dlid, qvx_bench::kDlidStripe);
}
void BM_DlidParserDirect(benchmark::State& state) {
    qvx_bench::parseDirect<parser::DLIDParser>(state, qvx_bench::kDlidVersion8);
}
// The verification features of the version 8 barcode, both JSON texts made.
void BM_DlidFeatures(benchmark::State& state) {
    parser::DLIDParser dlid;
    if (!dlid.readOptionsFromJSONString(R"({"enhanceDataForFeatureExtraction": true})")->ok) {
        state.SkipWithError("options refused");
        return;
    }
    for (auto _ : state) {
        auto result = dlid.parse(ParserStringRef(qvx_bench::kDlidVersion8));
        if (result->error) state.SkipWithError(result->error->message.c_str());
        benchmark::DoNotOptimize(result);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

}  // namespace

BENCHMARK(BM_ParserParseDlidVersion8);
BENCHMARK(BM_ParserParseDlidVersion1);
BENCHMARK(BM_ParserParseDlidStripe);
BENCHMARK(BM_DlidParserDirect);
BENCHMARK(BM_DlidFeatures);
