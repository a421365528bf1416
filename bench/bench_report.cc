#include "bench/bench_report.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>

namespace {

using Rates = std::map<std::string, std::vector<double>>;  // bytes per second in each round

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t half = values.size() / 2;
  return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

// Prints as usual and records the rate of every round.
class RateKeeper : public benchmark::ConsoleReporter {
 public:
  RateKeeper() : ConsoleReporter(OO_Tabular) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      const auto rate = run.counters.find("bytes_per_second");
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      if (rate != run.counters.end()) rates_[run.run_name.function_name].push_back(rate->second);
    }
    ConsoleReporter::ReportRuns(runs);
  }

  const Rates& Kept() const { return rates_; }

 private:
  Rates rates_;
};

void PrintMedians(const Rates& rates) {
  std::printf("\nMedians\n");
  for (const auto& [name, values] : rates) {
    const double median = Median(values);
    const auto [lowest, highest] = std::minmax_element(values.begin(), values.end());
    std::printf("  %-40s %7.2f GB/s  %7.4f ns/byte  (%zu rounds, %.2f to %.2f GB/s)\n",
                name.c_str(), median / 1e9, 1e9 / median, values.size(), *lowest / 1e9,
                *highest / 1e9);
  }
}

bool PrintRatios(const Rates& rates, const std::vector<BenchRatio>& ratios) {
  std::printf("\nRatios of the medians\n");
  bool complete = true;
  for (const BenchRatio& ratio : ratios) {
    const auto a = rates.find(ratio.a);
    const auto b = rates.find(ratio.b);
    if (a == rates.end() || b == rates.end()) {
      complete = false;
      continue;
    }
    std::printf("  %-60s %5.2f\n", ratio.title.c_str(), Median(a->second) / Median(b->second));
  }
  if (!complete) std::printf("  (some were not measured: see above)\n");
  return complete;
}

// The program's own arguments are last, so they override the defaults.
std::vector<char*> WithDefaults(int argc, char** argv) {
  static std::string repetitions = "--benchmark_repetitions=9";
  static std::string interleaving = "--benchmark_enable_random_interleaving=true";
  static std::string time = "--benchmark_min_time=0.3";
  std::vector<char*> all = {argv[0], repetitions.data(), interleaving.data(), time.data()};
  all.insert(all.end(), argv + 1, argv + argc);
  return all;
}

}  // namespace

int RunBenchmarks(int argc, char** argv, const std::vector<BenchRatio>& ratios) {
  std::vector<char*> arguments = WithDefaults(argc, argv);
  auto count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
  benchmark::AddCustomContext("compiler", __VERSION__);
  RateKeeper keeper;
  benchmark::RunSpecifiedBenchmarks(&keeper);
  benchmark::Shutdown();
  PrintMedians(keeper.Kept());
  return PrintRatios(keeper.Kept(), ratios) ? 0 : 1;
}
