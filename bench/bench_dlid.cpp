// Parses per second of driver licences: a 333-byte version 8 barcode, a
// version 1 barcode and a magnetic stripe, through the host-facing parser
// object and through the format parser alone.
#include <benchmark/benchmark.h>

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

}  // namespace

BENCHMARK(BM_ParserParseDlidVersion8);
BENCHMARK(BM_ParserParseDlidVersion1);
BENCHMARK(BM_ParserParseDlidStripe);
BENCHMARK(BM_DlidParserDirect);
