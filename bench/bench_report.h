// Runs the registered benchmarks of a program and prints, below what Google Benchmark prints, one
// median a benchmark and what the medians are to each other.
//
// The machine is taken to be noisy: rates are by processor time unless a benchmark says otherwise,
// each benchmark runs in several rounds, and the rounds of all of them are interleaved, so that a
// slow minute falls on all alike.
#ifndef BENCH_BENCH_REPORT_H_
#define BENCH_BENCH_REPORT_H_

#include <string>
#include <vector>

// "`a` works at so many times the rate of `b`", rates being the bytes a second of the medians.
struct BenchRatio {
  std::string title;
  std::string a;  // names of benchmarks
  std::string b;
};

// The main function of a benchmark program: takes Google Benchmark's options, returns an exit
// status.
int RunBenchmarks(int argc, char** argv, const std::vector<BenchRatio>& ratios);

#endif  // BENCH_BENCH_REPORT_H_
