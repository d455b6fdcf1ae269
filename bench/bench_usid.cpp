// Parses per second of one uniformed-services ID card, through the
// host-facing parser object and through the format parser alone.
#include <benchmark/benchmark.h>

#include <string>

#include "bench_common.h"
#include "bench_inputs.h"
#include "qvx/parser.h"
#include "usid/usid_parser.h"

namespace {

void BM_ParserParseUsidDependent(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::UsUsid, qvx_bench::kUsidDependent);
}
void BM_ParserParseUsidSponsor(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::UsUsid, qvx_bench::kUsidSponsor);
}
void BM_UsidParserDirect(benchmark::State& state) {
    qvx_bench::parseDirect<parser::UsUsidParser>(state, qvx_bench::kUsidDependent);
}

}  // namespace

BENCHMARK(BM_ParserParseUsidDependent);
BENCHMARK(BM_ParserParseUsidSponsor);
BENCHMARK(BM_UsidParserDirect);
