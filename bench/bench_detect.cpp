// Detection against parsing, for every bundled sample: the detector alone,
// a parse in the known format, and a parse through the detected candidates
// with parsers made beforehand, as a batch runner keeps them.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "qvx/detect.h"
#include "qvx/parser.h"

namespace {

namespace fs = std::filesystem;

struct Sample {
    std::string name;  // the file name without ".txt"
    ParserDataFormat format;
    std::string bytes;
};

std::vector<Sample> loadSamples() {
    std::vector<Sample> samples;
    for (const auto& entry : fs::directory_iterator(QVX_SAMPLES_DIR)) {
        const std::string file = entry.path().filename().string();
        auto format = parser::dataFormatFromName(file.substr(0, file.find('.')));
        if (!format) continue;
        std::ifstream in(entry.path(), std::ios::binary);
        samples.push_back({entry.path().stem().string(),
                           *format,
                           {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()}});
    }
    std::sort(samples.begin(), samples.end(),
              [](const Sample& a, const Sample& b) { return a.name < b.name; });
    return samples;
}

void detect(benchmark::State& state, const std::string& bytes) {
    for (auto _ : state) {
        auto candidates = qvx::detectFormats(bytes);
        benchmark::DoNotOptimize(candidates);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

void parseKnown(benchmark::State& state, ParserDataFormat format, const std::string& bytes) {
    auto parser = qvx::Parser::create(nullptr, format).value();
    for (auto _ : state) {
        auto outcome = parser->parse(bytes);
        benchmark::DoNotOptimize(outcome);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

void parseDetected(benchmark::State& state, const std::string& bytes) {
    std::map<ParserDataFormat, std::shared_ptr<qvx::Parser>> parsers;
    for (const auto& [format, name] : parser::dataFormatTable()) {
        if (qvx::Parser::isFormatAvailable(format)) {
            parsers[format] = qvx::Parser::create(nullptr, format).value();
        }
    }
    const qvx::ParserForFormat parserFor = [&parsers](ParserDataFormat format) {
        auto found = parsers.find(format);
        return found == parsers.end() ? nullptr : found->second;
    };
    for (auto _ : state) {
        auto detected = qvx::parseDetected(bytes, parserFor);
        benchmark::DoNotOptimize(detected);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

const bool kRegistered = [] {
    for (const auto& sample : loadSamples()) {
        benchmark::RegisterBenchmark(("BM_Detect/" + sample.name).c_str(), detect, sample.bytes);
        if (!qvx::Parser::isFormatAvailable(sample.format)) continue;
        benchmark::RegisterBenchmark(("BM_ParseKnownFormat/" + sample.name).c_str(), parseKnown,
                                     sample.format, sample.bytes);
        benchmark::RegisterBenchmark(("BM_ParseDetected/" + sample.name).c_str(), parseDetected,
                                     sample.bytes);
    }
    return true;
}();

}  // namespace
