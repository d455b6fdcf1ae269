// Parses per second of machine-form GS1 element strings: a retail label (GTIN,
// expiry, lot, serial) and a long logistics label (SSCC, weights, dimensions,
// counts, ship-to address, dates), through the host-facing parser object and
// through the format parser alone. Last, long machine-form inputs, with the
// human form allowed as well or without any separator, whose time must grow
// linearly with the length.
#include <benchmark/benchmark.h>

#include <cstdint>
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

// Parses `unit` repeated up to the length the benchmark asks for.
void parseRepeated(benchmark::State& state, const std::string& unit, bool allowHuman) {
    const auto length = static_cast<std::size_t>(state.range(0));
    std::string input;
    input.reserve(length + unit.size());
    while (input.size() < length) input += unit;
    parser::Gs1AiParser formatParser;
    formatParser.allowHumanReadableCodes = allowHuman;
    for (auto _ : state) {
        auto result = formatParser.parse(ParserStringRef(input));
        benchmark::DoNotOptimize(result);
    }
    state.SetComplexityN(state.range(0));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(input.size()));
}

// A measure and a lot; no "(" anywhere, so every AI would see the whole rest
// if the walk searched it each time.
void BM_Gs1AiParserLongMachineFormWithHumanAllowed(benchmark::State& state) {
    parseRepeated(state, std::string("3103001250") + "10LOT42\x1d", true);
}

// Checked identifiers and flags back to back without a separator: each of
// them looks for the next terminator, which never comes.
void BM_Gs1AiParserLongMachineFormWithoutSeparators(benchmark::State& state) {
    parseRepeated(state, "410401234500000943211", false);
}

}  // namespace

BENCHMARK(BM_ParserParseGs1Retail);
BENCHMARK(BM_ParserParseGs1Logistics);
BENCHMARK(BM_Gs1AiParserDirectRetail);
BENCHMARK(BM_Gs1AiParserDirectLogistics);
BENCHMARK(BM_Gs1AiParserLongMachineFormWithHumanAllowed)
    ->Range(1 << 10, 1 << 20)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity(benchmark::oN);
BENCHMARK(BM_Gs1AiParserLongMachineFormWithoutSeparators)
    ->Range(1 << 10, 1 << 20)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity(benchmark::oN);
