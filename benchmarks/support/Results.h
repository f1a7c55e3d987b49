#pragma once

#include <string>
#include <utility>
#include <vector>

/// What the measuring programs have in common.
namespace Benchmarks {

/// One figure, measured once in each round.
struct Figure {
    /// Unique over all programs; parts divided by slashes: "host/unix/memory/set until event".
    std::string name;
    /// "us", "ms", "bytes", "KiB", "instructions", "allocations" or "count".
    std::string unit;
    std::vector<double> rounds;
};

/// One figure over another of the same rounds.
struct Ratio {
    std::string name;
    /// What it is compared with, in words.
    std::string over;
    std::vector<double> rounds;
    /// What the median must not exceed; 0 when nothing was promised.
    double bar = 0;
};

/// A curve: how `y` grows with `x`. Curves of one `plot` are drawn together.
struct Series {
    std::string plot;
    std::string name;
    std::string x;
    std::string y;
    std::vector<std::pair<double, double>> points;
};

/// Latencies as values in microseconds at percentiles. Distributions of one `plot` are drawn together.
struct Distribution {
    Distribution(std::string itsPlot, std::string itsName, std::vector<double> latencies);

    std::string plot;
    std::string name;
    std::vector<std::pair<double, double>> percentiles;
};

/// Collects what a program measured and prints it as one JSON object, which scripts/benchmark keeps.
class Results {
public:
    void add(Figure figure) { figures.push_back(std::move(figure)); }
    void add(Ratio ratio) { ratios.push_back(std::move(ratio)); }
    void add(Series curve) { series.push_back(std::move(curve)); }
    void add(Distribution distribution) { distributions.push_back(std::move(distribution)); }

    /// `{"figures": […], "ratios": […], "series": […], "distributions": […]}`; members named like those above, rounds
    /// with their "median".
    std::string text() const;
    /// Prints `text()` on standard output.
    void print() const;

private:
    std::vector<Figure> figures;
    std::vector<Ratio> ratios;
    std::vector<Series> series;
    std::vector<Distribution> distributions;
};

/// The middle one of `values`, or the mean of the middle two; 0 when there is none.
double median(std::vector<double> values);

/// `values[i] / others[i]` for each round.
std::vector<double> quotients(const std::vector<double>& values, const std::vector<double>& others);

}  // namespace Benchmarks
