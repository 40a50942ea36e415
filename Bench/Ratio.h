#ifndef BENCH_RATIO_H
#define BENCH_RATIO_H

#include <cstddef>
#include <ctime>
#include <functional>
#include <string>

/// Figures as ratios: a subject against a baseline of the same run.
namespace Bench {

/// Runs one batch and returns what it measured, such as nanoseconds for one operation.
using TBatch = std::function<double()>;

/// Subject and baseline over the same data.
struct SPair {
    TBatch baseline;
    TBatch subject;
};

/// Adds a figure. `make` builds the data when the figure's turn comes; both batches run by turns several times,
/// and the figure is the median of the ratios subject / baseline. target: what it should not exceed.
void AddRatio(std::string name, double target, std::function<SPair()> make);

/// Adds a figure that needs no baseline in time, such as bytes for one object: measured once and compared with
/// `limit`.
void AddAmount(std::string name, double limit, std::string unit, std::function<double()> measure);

/// Runs the figures by Google Benchmark (its options hold) and prints each with its target behind them. A figure
/// that misses its target is reported as MISSED; the exit status is 0 all the same.
int Main(int argc, char ** argv);

/// Nanoseconds of processor time for one of `operations` operations that `work` makes. Not of the clock on the wall:
/// other programs take their share of that.
template <class TWork>
double NanosecondsEach(std::size_t operations, TWork work)
{
    const std::clock_t start = std::clock();
    work();
    const double ticks = static_cast<double>(std::clock() - start);
    return ticks / CLOCKS_PER_SEC * 1e9 / static_cast<double>(operations);
}

} // namespace Bench

#endif
