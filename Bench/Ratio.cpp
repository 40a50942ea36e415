#include "Ratio.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

namespace {

constexpr int kTurns = 11;

struct SResult {
    std::string name;
    double figure;
    double target;
    std::string details;
};

std::vector<SResult> & Results()
{
    static std::vector<SResult> results;
    return results;
}

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

std::string Details(double baseline, double subject)
{
    char text[96];
    std::snprintf(text, sizeof(text), "%.1f ns against %.1f ns", subject, baseline);
    return text;
}

void Compare(benchmark::State & state, std::string const & name, double target, Bench::SPair const & pair)
{
    std::vector<double> baselines;
    std::vector<double> subjects;
    std::vector<double> ratios;
    for (auto _ : state) {
        pair.baseline(); // both once for nothing, to warm up
        pair.subject();
        for (int turn = 0; turn < kTurns; ++turn) {
            baselines.push_back(pair.baseline());
            subjects.push_back(pair.subject());
            ratios.push_back(subjects.back() / baselines.back());
        }
    }
    const double ratio = Median(ratios);
    const double baseline = Median(baselines);
    const double subject = Median(subjects);
    state.counters["baseline_ns"] = baseline;
    state.counters["subject_ns"] = subject;
    state.counters["ratio"] = ratio;
    Results().push_back({name, ratio, target, Details(baseline, subject)});
}

} // namespace

void Bench::AddRatio(std::string name, double target, std::function<SPair()> make)
{
    auto run = [name, target, make = std::move(make)](benchmark::State & state) {
        Compare(state, name, target, make());
    };
    benchmark::RegisterBenchmark(name.c_str(), std::move(run))->Iterations(1)->Unit(benchmark::kMillisecond);
}

void Bench::AddAmount(std::string name, double limit, std::string unit, std::function<double()> measure)
{
    auto run = [name, limit, unit = std::move(unit), measure = std::move(measure)](benchmark::State & state) {
        double amount = 0;
        for (auto _ : state)
            amount = measure();
        state.counters[unit] = amount;
        Results().push_back({name, amount, limit, unit});
    };
    benchmark::RegisterBenchmark(name.c_str(), std::move(run))->Iterations(1)->Unit(benchmark::kMillisecond);
}

int Bench::Main(int argc, char ** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
#ifndef NDEBUG
    std::puts("\nThis is no release build: the figures say nothing.");
#endif
    std::printf("\n%-44s %9s %9s\n", "figure", "measured", "target");
    for (SResult const & result : Results()) {
        std::printf("%-44s %9.3f %9.3f  %-6s  %s\n", result.name.c_str(), result.figure, result.target,
                    result.figure <= result.target ? "met" : "MISSED", result.details.c_str());
    }
    return 0;
}
