#include "bench/memory_sample.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

std::optional<MemorySample> LoadMemorySample(const LoopedSample& sample, const std::string& name,
                                             const std::string& description) {
  const std::filesystem::path path = std::filesystem::path(STREAM_BENCH_DATA) / name;
  if (!HaveLoopedSample(sample, path)) return std::nullopt;
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  MemorySample loaded{description, std::vector<std::uint8_t>(error ? 0 : size)};
  std::ifstream file(path, std::ios::binary);
  file.read(reinterpret_cast<char*>(loaded.bytes.data()), static_cast<std::streamsize>(size));
  if (error || !file) {
    std::fprintf(stderr, "%s cannot be read\n", path.string().c_str());
    return std::nullopt;
  }
  loaded.description += ", " + std::to_string(size) + " bytes";
  return loaded;
}
