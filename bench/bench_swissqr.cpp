// Parses per second of a typical Swiss payment QR bill (structured addresses,
// creditor reference, bill information and one alternative procedure),
// through the host-facing parser object and through the format parser alone.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "bench_common.h"
#include "bench_inputs.h"
#include "qvx/parser.h"
#include "swissqr/swissqr_parser.h"

namespace {

// Mixed line ends make the parser copy the bill once to drop carriage returns.
std::string mixedLineEnds() {
    std::string text = qvx_bench::kSwissQrBill;
    text.replace(text.find('\n'), 1, "\r\n");
    return text;
}

void BM_ParserParseSwissQr(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::SwissQr, qvx_bench::kSwissQrBill);
}
void BM_SwissQrParserDirect(benchmark::State& state) {
    qvx_bench::parseDirect<parser::SwissQRParser>(state, qvx_bench::kSwissQrBill);
}
void BM_SwissQrParserDirectMixedLineEnds(benchmark::State& state) {
    parser::SwissQRParser formatParser;
    (void)formatParser.readOptionsFromJSONString(R"({"strictMode": false})");
    const std::string input = mixedLineEnds();
    for (auto _ : state) {
        auto result = formatParser.parse(ParserStringRef(input));
        benchmark::DoNotOptimize(result);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

}  // namespace

BENCHMARK(BM_ParserParseSwissQr);
BENCHMARK(BM_SwissQrParserDirect);
BENCHMARK(BM_SwissQrParserDirectMixedLineEnds);
