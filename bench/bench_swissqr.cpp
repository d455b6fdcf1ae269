// Parses per second of a typical Swiss payment QR bill (structured addresses,
// creditor reference, bill information and one alternative procedure),
// through the host-facing parser object and through the format parser alone.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "bench_common.h"
#include "qvx/parser.h"
#include "swissqr/swissqr_parser.h"

namespace {

const std::string kBill =
    "SPC\n0200\n1\nCH9300762011623852957\nS\nGenossenschaft Wasserversorgung Aaretal\n"
    "Dorfstrasse\n27\n3113\nRubigen\nCH\n\n\n\n\n\n\n\n386.40\nCHF\nS\nBeat Zimmermann\n"
    "Hofweg\n9\n3114\nWichtrach\nCH\nSCOR\nRF18539007547034\nWasserrechnung 2. Quartal 2024\n"
    "EPD\n//S1/10/2024042/11/240630/30/106017086/32/8.1\neBill/B/beat.zimmermann@example.ch";

// Mixed line ends make the parser copy the bill once to drop carriage returns.
std::string mixedLineEnds() {
    std::string text = kBill;
    text.replace(text.find('\n'), 1, "\r\n");
    return text;
}

void BM_ParserParseSwissQr(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::SwissQr, kBill);
}
void BM_SwissQrParserDirect(benchmark::State& state) {
    qvx_bench::parseDirect<parser::SwissQRParser>(state, kBill);
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
