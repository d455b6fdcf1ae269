// Parses per second of machine-form GS1 element strings: a retail label (GTIN,
// expiry, lot, serial) and a long logistics label (SSCC, weights, dimensions,
// counts, ship-to address, dates), through the host-facing parser object and
// through the format parser alone.
#include <benchmark/benchmark.h>

#include <string>

#include "bench_common.h"
#include "bench_inputs.h"
#include "gs1/gs1_ai_parser.h"
#include "qvx/parser.h"

namespace {

void BM_ParserParseGs1Retail(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::Gs1Ai, qvx_bench::kGs1Retail);
}
void BM_ParserParseGs1Logistics(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::Gs1Ai, qvx_bench::kGs1Logistics);
}
void BM_Gs1AiParserDirectRetail(benchmark::State& state) {
    qvx_bench::parseDirect<parser::Gs1AiParser>(state, qvx_bench::kGs1Retail);
}
void BM_Gs1AiParserDirectLogistics(benchmark::State& state) {
    qvx_bench::parseDirect<parser::Gs1AiParser>(state, qvx_bench::kGs1Logistics);
}

}  // namespace

BENCHMARK(BM_ParserParseGs1Retail);
BENCHMARK(BM_ParserParseGs1Logistics);
BENCHMARK(BM_Gs1AiParserDirectRetail);
BENCHMARK(BM_Gs1AiParserDirectLogistics);
