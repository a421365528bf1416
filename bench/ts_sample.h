// The transport stream for the demultiplexer benchmarks.
#ifndef BENCH_TS_SAMPLE_H_
#define BENCH_TS_SAMPLE_H_

#include <optional>

#include "bench/memory_sample.h"

std::optional<MemorySample> LoadTsSample();

#endif  // BENCH_TS_SAMPLE_H_
