// Parses per second of a typical one-label HIBC code (primary and secondary
// segments with an expiry date and a lot), through the host-facing parser
// object and through the format parser alone.
#include <benchmark/benchmark.h>

#include <string>

#include "bench_common.h"
#include "bench_inputs.h"
#include "hibc/hibc_parser.h"
#include "qvx/parser.h"

namespace {

// A scanner that appends a line end costs a second pass.
const std::string kTrailingNewline = qvx_bench::kHibc + "\n";

void BM_ParserParseHibc(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::Hibc, qvx_bench::kHibc);
}
void BM_ParserParseHibcTrailingNewline(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::Hibc, kTrailingNewline);
}
void BM_HibcParserDirect(benchmark::State& state) {
    qvx_bench::parseDirect<parser::HIBCParser>(state, qvx_bench::kHibc);
}

}  // namespace

BENCHMARK(BM_ParserParseHibc);
BENCHMARK(BM_ParserParseHibcTrailingNewline);
BENCHMARK(BM_HibcParserDirect);
