// Parses per second of boarding passes, through the host-facing parser object
// and through the format parser alone.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "bcbp/bcbp_parser.h"
#include "bench_common.h"
#include "qvx/parser.h"

namespace {

// One leg, version 6, with the pass-level items, one baggage group and airline use.
const std::string kOneLegPass =
    "M1SMITH/JOHN          EXYZ789 LHRJFKBA 0117 123Y023C0042 14E>6180WW4122BBA "
    "01251234560012A1251234567890 0BA BA 12345678         1PCNABC123";
// Two legs, the second with its own leg-level items, and security data.
const std::string kTwoLegPass =
    "M2SMITH/JOHN          EXYZ789 LHRJFKBA 0117 123Y023C0042 148>6180WW4122BBA "
    "01251234560012A1251234567890 0BA BA 12345678         1PCNXYZ789 JFKBOSAA 42   "
    "125Y012A7    12C2A0019876543210 0AA                        Y^10ASIGNATURE1";

void BM_ParserParseBcbpOneLeg(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::IataBcbp, kOneLegPass);
}
void BM_ParserParseBcbpTwoLegs(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::IataBcbp, kTwoLegPass);
}
// A host that creates a parser per code, as the batch mode of the command line does.
void BM_CreateAndParseBcbpOneLeg(benchmark::State& state) {
    for (auto _ : state) {
        parser::IataBcbpParser bcbp;
        auto result = bcbp.parse(ParserStringRef(kOneLegPass));
        benchmark::DoNotOptimize(result);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}
void BM_BcbpParserDirectOneLeg(benchmark::State& state) {
    qvx_bench::parseDirect<parser::IataBcbpParser>(state, kOneLegPass);
}
void BM_BcbpParserDirectTwoLegs(benchmark::State& state) {
    qvx_bench::parseDirect<parser::IataBcbpParser>(state, kTwoLegPass);
}

}  // namespace

BENCHMARK(BM_ParserParseBcbpOneLeg);
BENCHMARK(BM_ParserParseBcbpTwoLegs);
BENCHMARK(BM_BcbpParserDirectOneLeg);
BENCHMARK(BM_CreateAndParseBcbpOneLeg);
BENCHMARK(BM_BcbpParserDirectTwoLegs);
