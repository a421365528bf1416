// Runs the registered benchmarks of a program. After the output of Google Benchmark it prints the
// median of each benchmark and the ratios of medians.
//
// Machines are noisy. Rates are therefore measured in processor time unless a benchmark says
// otherwise, each benchmark runs in several rounds, and the rounds of all benchmarks are
// interleaved, so that a slow minute affects all of them alike.
#ifndef BENCH_BENCH_REPORT_H_
#define BENCH_BENCH_REPORT_H_

#include <string>
#include <vector>

// The rate of `a` divided by the rate of `b`. A rate is the median of the bytes per second.
struct BenchRatio {
  std::string title;
  std::string a;  // names of benchmarks
  std::string b;
};

// The main function of a benchmark program. Accepts Google Benchmark's options and returns an exit
// status.
int RunBenchmarks(int argc, char** argv, const std::vector<BenchRatio>& ratios);

#endif  // BENCH_BENCH_REPORT_H_
