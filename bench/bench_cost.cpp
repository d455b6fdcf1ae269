// What a parse costs against the least it could cost. For each input, the
// time and heap allocations of one parse through qvx::Parser, beside the
// "floor": copying the same result's fields (names, raw strings, JSON values,
// issues) and warnings into fresh objects, which is what any parser must at
// least build. The ratios parse/floor hardly depend on the machine, so they
// are the numbers to track. `json_ns` is the price of the result's JSON text.
#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <new>
#include <string>
#include <vector>

#include "bench_common.h"
#include "bench_inputs.h"
#include "qvx/parser.h"

namespace {
std::atomic<long> gAllocations{0};
}  // namespace

// Every heap allocation of this binary goes through here, so that a parse's
// allocations can be counted.
void* operator new(std::size_t size) {
    gAllocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    gAllocations.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size == 0 ? 1 : size);
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete[](void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}
void operator delete[](void* p, std::size_t) noexcept {
    std::free(p);
}

namespace {

// Time is this thread's CPU time, so that other work on the machine does not
// blur the ratios.
struct Clock {
    using duration = std::chrono::nanoseconds;
    using time_point = std::chrono::time_point<Clock>;
    static time_point now() noexcept {
        timespec now{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return time_point(std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec));
    }
};

struct FieldCopy {
    std::vector<parser::ParsedField> fields;
    std::vector<std::string> warnings;
};

// The fields as plain values. The frozen result also hands each field out
// through a shared pointer; that bookkeeping is the frame's, not the floor's.
FieldCopy copyFields(const parser::ParsedData& data) {
    FieldCopy copy;
    copy.fields.reserve(data.fields().size());
    for (const auto& field : data.fields()) {
        parser::ParsedField& fresh =
            copy.fields.emplace_back(field->name, field->rawString, field->parsed);
        for (const auto& issue : field->issues) {
            fresh.issues.push_back(std::make_shared<parser::ParserIssue>(*issue));
        }
    }
    copy.warnings = data.warnings();
    return copy;
}

template <class F>
long countAllocations(F&& work) {
    const long before = gAllocations.load(std::memory_order_relaxed);
    work();
    return gAllocations.load(std::memory_order_relaxed) - before;
}

template <class F>
double nanosecondsPerCall(benchmark::IterationCount iterations, F&& work) {
    const auto start = Clock::now();
    for (benchmark::IterationCount i = 0; i < iterations; ++i) work();
    const std::chrono::duration<double, std::nano> elapsed = Clock::now() - start;
    return elapsed.count() / static_cast<double>(iterations);
}

void measureCost(benchmark::State& state, ParserDataFormat format, const std::string& input) {
    auto parser = qvx_bench::makeParser(state, format);
    if (!parser) return;
    auto first = parser->parse(input);
    if (!first.ok()) {
        state.SkipWithError(("the input does not parse: " + first.error()->message).c_str());
        return;
    }
    const parser::ParsedData& data = *first.value();

    const auto start = Clock::now();
    for (auto _ : state) {
        auto outcome = parser->parse(input);
        benchmark::DoNotOptimize(outcome);
    }
    const std::chrono::duration<double, std::nano> elapsed = Clock::now() - start;
    const double parseNs = elapsed.count() / static_cast<double>(state.iterations());

    const long parseAllocations = countAllocations([&] {
        auto outcome = parser->parse(input);
        benchmark::DoNotOptimize(outcome);
    });
    const long floorAllocations = countAllocations([&] {
        auto copy = copyFields(data);
        benchmark::DoNotOptimize(copy);
    });
    const double floorNs = nanosecondsPerCall(state.iterations(), [&] {
        auto copy = copyFields(data);
        benchmark::DoNotOptimize(copy);
    });
    const double jsonNs =
        nanosecondsPerCall(std::max<benchmark::IterationCount>(state.iterations() / 4, 1), [&] {
            auto text = parser::fieldsToJsonText(data.fields());
            benchmark::DoNotOptimize(text);
        });

    state.counters["allocs"] = static_cast<double>(parseAllocations);
    state.counters["floor_allocs"] = static_cast<double>(floorAllocations);
    state.counters["alloc_ratio"] =
        static_cast<double>(parseAllocations) / static_cast<double>(floorAllocations);
    state.counters["parse_ns"] = parseNs;
    state.counters["floor_ns"] = floorNs;
    state.counters["time_ratio"] = parseNs / floorNs;
    state.counters["json_ns"] = jsonNs;
}

std::string readSample(const char* format) {
    std::ifstream in(std::string(QVX_SAMPLES_DIR) + "/" + format + ".txt", std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void registerSample(const char* name, ParserDataFormat format) {
    benchmark::RegisterBenchmark((std::string("BM_Cost/sample/") + name).c_str(),
                                 [format, input = readSample(name)](benchmark::State& state) {
                                     measureCost(state, format, input);
                                 });
}

void registerInput(const char* name, ParserDataFormat format, const std::string& input) {
    benchmark::RegisterBenchmark(
        (std::string("BM_Cost/") + name).c_str(),
        [format, &input](benchmark::State& state) { measureCost(state, format, input); });
}

const bool kRegistered = [] {
    registerSample("dlid", ParserDataFormat::Dlid);
    registerSample("gs1ai", ParserDataFormat::Gs1Ai);
    registerSample("gs1_digital_link", ParserDataFormat::Gs1DigitalLink);
    registerSample("hibc", ParserDataFormat::Hibc);
    registerSample("mrtd", ParserDataFormat::Mrtd);
    registerSample("iata_bcbp", ParserDataFormat::IataBcbp);
    registerSample("swissqr", ParserDataFormat::SwissQr);
    registerSample("us_usid", ParserDataFormat::UsUsid);
    registerSample("vin", ParserDataFormat::Vin);
    registerInput("dlid_v8", ParserDataFormat::Dlid, qvx_bench::kDlidVersion8);
    registerInput("dlid_v1", ParserDataFormat::Dlid, qvx_bench::kDlidVersion1);
    registerInput("dlid_stripe", ParserDataFormat::Dlid, qvx_bench::kDlidStripe);
    registerInput("gs1_retail", ParserDataFormat::Gs1Ai, qvx_bench::kGs1Retail);
    registerInput("gs1_logistics", ParserDataFormat::Gs1Ai, qvx_bench::kGs1Logistics);
    registerInput("digital_link_canonical", ParserDataFormat::Gs1DigitalLink,
                  qvx_bench::kDigitalLinkCanonical);
    registerInput("hibc", ParserDataFormat::Hibc, qvx_bench::kHibc);
    registerInput("mrz_td3", ParserDataFormat::Mrtd, qvx_bench::kMrzTd3);
    registerInput("mrz_td1", ParserDataFormat::Mrtd, qvx_bench::kMrzTd1);
    registerInput("bcbp_one_leg", ParserDataFormat::IataBcbp, qvx_bench::kBcbpOneLeg);
    registerInput("bcbp_two_legs", ParserDataFormat::IataBcbp, qvx_bench::kBcbpTwoLegs);
    registerInput("swissqr", ParserDataFormat::SwissQr, qvx_bench::kSwissQrBill);
    registerInput("usid_dependent", ParserDataFormat::UsUsid, qvx_bench::kUsidDependent);
    registerInput("usid_sponsor", ParserDataFormat::UsUsid, qvx_bench::kUsidSponsor);
    registerInput("vin_clean", ParserDataFormat::Vin, qvx_bench::kVinClean);
    registerInput("vin_label", ParserDataFormat::Vin, qvx_bench::kVinLabel);
    return true;
}();

}  // namespace
