// Parses per second of one uniformed-services ID card, through the
// host-facing parser object and through the format parser alone.
#include <benchmark/benchmark.h>

#include <string>

#include "bench_common.h"
#include "qvx/parser.h"
#include "usid/usid_parser.h"

namespace {

std::string pad(std::string text, std::size_t width) {
    text.resize(width, ' ');
    return text;
}

// Everything from the name to the pay grade, shared by both card kinds.
std::string personalPart() {
    return pad("DOE,JANE M", 27) + "123456789" + "0" + "000000000" + "30" + "64" + "130" + "BN" +
           "GR" + "1987SEP02" + "SMYYU" + "2019JUN01" + "2025JUN01" + "2   " + "2021JUN01" +
           "2025JUN01" + "A1B2" + "A" + "AD    " + "USA  " + "CPT   " + "O3  ";
}

const std::string kDependent =
    "IDUS28C7Q0" + personalPart() + pad("DOE,JOHN A", 27) + "123456789" + "SP    ";
// A sponsor card carries its photograph behind the text; 2 KB stands in for it.
const std::string kSponsor = "IDUS28C7Q1" + personalPart() + "II O+ " + std::string(2048, '\x5A');

void BM_ParserParseUsidDependent(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::UsUsid, kDependent);
}
void BM_ParserParseUsidSponsor(benchmark::State& state) {
    qvx_bench::parseThroughParser(state, ParserDataFormat::UsUsid, kSponsor);
}
void BM_UsidParserDirect(benchmark::State& state) {
    qvx_bench::parseDirect<parser::UsUsidParser>(state, kDependent);
}

}  // namespace

BENCHMARK(BM_ParserParseUsidDependent);
BENCHMARK(BM_ParserParseUsidSponsor);
BENCHMARK(BM_UsidParserDirect);
