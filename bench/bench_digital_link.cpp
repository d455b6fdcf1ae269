// Parses per second of GS1 Digital Link URIs: a canonical GTIN URI with lot,
// serial and expiry, strict, and a long lax URI with many attributes, through
// the host-facing parser object and through the format parser alone. Most of
// the time goes to the two URI patterns on the standard library's matcher.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "bench_common.h"
#include "bench_inputs.h"
#include "gs1/gs1_digital_link_parser.h"
#include "qvx/parser.h"

namespace {

void BM_ParserParseDigitalLinkCanonical(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::Gs1DigitalLink,
                                  qvx_bench::kDigitalLinkCanonical);
}

void BM_ParserParseDigitalLinkLongLax(benchmark::State& state) {
    auto parser = qvx_bench::makeParser(state, ParserDataFormat::Gs1DigitalLink);
    if (!parser || !parser->setOptions(R"({"strictMode": false})").ok()) return;
    for (auto _ : state) {
        auto outcome = parser->parse(qvx_bench::kDigitalLinkLongLax);
        benchmark::DoNotOptimize(outcome);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

void BM_DigitalLinkParserDirectCanonical(benchmark::State& state) {
    qvx_bench::parseDirect<parser::Gs1DigitalLinkParser>(state, qvx_bench::kDigitalLinkCanonical);
}

void BM_DigitalLinkParserDirectLongLax(benchmark::State& state) {
    parser::Gs1DigitalLinkParser formatParser;
    formatParser.engine().set_strict_mode(false);
    for (auto _ : state) {
        auto result = formatParser.parse(ParserStringRef(qvx_bench::kDigitalLinkLongLax));
        benchmark::DoNotOptimize(result);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

}  // namespace

BENCHMARK(BM_ParserParseDigitalLinkCanonical);
BENCHMARK(BM_ParserParseDigitalLinkLongLax);
BENCHMARK(BM_DigitalLinkParserDirectCanonical);
BENCHMARK(BM_DigitalLinkParserDirectLongLax);
