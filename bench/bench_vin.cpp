// Parses per second of one VIN, through the host-facing parser object and
// through the format parser alone, so that the frame's share is visible.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>

#include "qvx/parser.h"
#include "vin/vin_parser.h"

namespace {

const std::string kCleanVin = "1HGCM82633A004352";
// A label scan: caption, blank, number.
const std::string kLabelVin = "VIN 1HGCM82633A004352";

std::shared_ptr<qvx::Parser> makeVinParser(benchmark::State& state) {
    auto created = qvx::Parser::create(nullptr, ParserDataFormat::Vin);
    if (!created.ok()) {
        state.SkipWithError(created.error().c_str());
        return nullptr;
    }
    return created.value();
}

void parseThroughParser(benchmark::State& state, const std::string& input) {
    auto parser = makeVinParser(state);
    if (!parser) return;
    for (auto _ : state) {
        auto outcome = parser->parse(input);
        benchmark::DoNotOptimize(outcome);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

// Parse and print the JSON text, as a caller that forwards results does.
void BM_ParserParseVinToJsonText(benchmark::State& state) {
    auto parser = makeVinParser(state);
    if (!parser) return;
    for (auto _ : state) {
        auto outcome = parser->parse(kCleanVin);
        benchmark::DoNotOptimize(outcome.value()->jsonString());
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

void parseDirect(benchmark::State& state, const std::string& input) {
    parser::VinParser vin;
    for (auto _ : state) {
        auto result = vin.parse(ParserStringRef(input));
        benchmark::DoNotOptimize(result);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

void BM_ParserParseVin(benchmark::State& state) {
    parseThroughParser(state, kCleanVin);
}
void BM_ParserParseLabelVin(benchmark::State& state) {
    parseThroughParser(state, kLabelVin);
}
void BM_VinParserDirect(benchmark::State& state) {
    parseDirect(state, kCleanVin);
}

}  // namespace

BENCHMARK(BM_ParserParseVin);
BENCHMARK(BM_ParserParseLabelVin);
BENCHMARK(BM_ParserParseVinToJsonText);
BENCHMARK(BM_VinParserDirect);
