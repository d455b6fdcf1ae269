// Parses per second of machine-form GS1 element strings: a retail label (GTIN,
// expiry, lot, serial) and a long logistics label (SSCC, weights, dimensions,
// counts, ship-to address, dates), through the host-facing parser object and
// through the format parser alone.
#include <benchmark/benchmark.h>

#include <string>

#include "bench_common.h"
#include "gs1/gs1_ai_parser.h"
#include "qvx/parser.h"

namespace {

const std::string kRetail =
    "01095011015300031727063010AB12345\x1d"
    "21SN00042";
const std::string kLogistics =
    "00006141411234567890"
    "0210614141000415"
    "3103001250"
    "3302000830"
    "3122000120"
    "3132000080"
    "3142000060"
    "3724\x1d"
    "400PO-2024-000117\x1d"
    "4300ACME%20Logistics%20Ltd\x1d"
    "43021%20High%20Street\x1d"
    "4304Springfield\x1d"
    "4307GB"
    "43242406151430"
    "4330002500"
    "1524063010BATCH-42\x1d"
    "4104012345000009";

void BM_ParserParseGs1Retail(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::Gs1Ai, kRetail);
}
void BM_ParserParseGs1Logistics(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::Gs1Ai, kLogistics);
}
void BM_Gs1AiParserDirectRetail(benchmark::State& state) {
    qvx_bench::parseDirect<parser::Gs1AiParser>(state, kRetail);
}
void BM_Gs1AiParserDirectLogistics(benchmark::State& state) {
    qvx_bench::parseDirect<parser::Gs1AiParser>(state, kLogistics);
}

}  // namespace

BENCHMARK(BM_ParserParseGs1Retail);
BENCHMARK(BM_ParserParseGs1Logistics);
BENCHMARK(BM_Gs1AiParserDirectRetail);
BENCHMARK(BM_Gs1AiParserDirectLogistics);
