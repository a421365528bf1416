#include "common/temp_folder.h"

#include <cstdint>
#include <cstdio>
#include <optional>
#include <utility>

#include "common/console.h"
#include "common/never_destroyed.h"
#include "platform/files.h"
#include "platform/mutex.h"
#include "platform/paths.h"

namespace stream {
namespace {

struct Choice {
  Mutex mutex;  // held only while values are copied
  // Used instead of the directory beside the executable.
  std::optional<TempFolder> cache GUARDED_BY(mutex);
  bool is_writable GUARDED_BY(mutex) = true;
};
NeverDestroyed<Choice> g_choice;

// Returns everything up to and including the last separator of either kind, or the whole name if it
// has none.
template <typename Text>
Text DirectoryOf(const Text& module_name, const Text& separators) {
  const auto last = module_name.find_last_of(separators);
  return last == Text::npos ? module_name : module_name.substr(0, last + 1);
}

TempFolder FolderBeside() {
  return {TempDirBeside(platform::ModuleFileName()), TempDirBeside(platform::ModuleFileNameWide())};
}

// 64-bit FNV-1a, in hexadecimal digits.
std::string HashOf(const std::wstring& text) {
  constexpr std::uint64_t kOffsetBasis = 0xCBF29CE484222325;
  constexpr std::uint64_t kPrime = 0x100000001B3;
  constexpr int kBits = 64;
  constexpr int kBitsADigit = 4;
  std::uint64_t hash = kOffsetBasis;
  for (const wchar_t c : text) hash = (hash ^ static_cast<std::uint64_t>(c)) * kPrime;
  std::string digits;
  for (int shift = kBits - kBitsADigit; shift >= 0; shift -= kBitsADigit)
    digits += "0123456789abcdef"[hash >> shift & 0xF];
  return digits;
}

template <typename Text>
Text BelowCache(const Text& cache, const std::wstring& module_name) {
  Text path = cache;
  for (const std::string& name : {std::string("stream_downloader"), std::string("tmp")}) {
    path.append(name.begin(), name.end());
    path += cache.back();
  }
  const std::string hash = HashOf(module_name);
  return path.append(hash.begin(), hash.end());
}

// Returns nullopt if the user has no cache directory.
std::optional<TempFolder> FolderInCache() {
  const std::string narrow = platform::UserCacheDirectory();
  const std::wstring wide = platform::UserCacheDirectoryWide();
  if (narrow.empty() || wide.empty()) return std::nullopt;
  const std::wstring module_name = platform::ModuleFileNameWide();
  return TempFolder{TempDirInCache(narrow, module_name), TempDirInCache(wide, module_name)};
}

// Creates the directory and those above it.
void MakePrivateDirectories(const std::wstring& path, wchar_t separator) {
  for (auto end = path.find(separator, 1); end != std::wstring::npos;
       end = path.find(separator, end + 1)) {
    platform::MakePrivateDirectory(path.substr(0, end));
  }
  platform::MakePrivateDirectory(path);
}

// Tries to create a file: only this shows on every system whether the directory is writable.
bool IsWritable(const TempFolder& folder) {
  const std::string probe = folder.narrow + "stream_downloader.probe";
  if (platform::OpenFile(probe, "wb") == nullptr) return false;
  std::remove(probe.c_str());
  return true;
}

// Leaves behind no directory that did not exist before.
bool CanBeMadeAndWritten(const TempFolder& folder) {
  const bool was_made = platform::MakeDirectory(folder.wide);
  const bool is_writable = IsWritable(folder);
  if (was_made) platform::RemoveEmptyDirectory(folder.wide);
  return is_writable;
}

// Stores a choice. Returns whether the directory chosen before was writable.
bool Choose(const std::optional<TempFolder>& cache, bool is_writable) {
  const MutexLock lock(g_choice->mutex);
  g_choice->cache = cache;
  return std::exchange(g_choice->is_writable, is_writable);
}

// Creates the directory in the user's cache. Returns nullopt if there is no cache or it is not
// writable.
std::optional<TempFolder> MakeFolderInCache() {
  const std::optional<TempFolder> folder = FolderInCache();
  if (!folder) return std::nullopt;
  MakePrivateDirectories(folder->wide, platform::UserCacheDirectoryWide().back());
  return IsWritable(*folder) ? folder : std::nullopt;
}

std::string LineAbout(const TempFolder& beside, const std::optional<TempFolder>& cache) {
  if (cache)
    return "Cache files are in " + cache->narrow + ": " + beside.narrow + " cannot be written.";
  const std::optional<TempFolder> tried = FolderInCache();
  return "Cache files cannot be written in " + beside.narrow +
         (tried ? " nor in " + tried->narrow : std::string()) + ".";
}

}  // namespace

std::string TempDirBeside(const std::string& module_name) {
  return DirectoryOf<std::string>(module_name, "/\\") + "tmp/";
}

std::wstring TempDirBeside(const std::wstring& module_name) {
  return DirectoryOf<std::wstring>(module_name, L"/\\") + L"tmp";
}

std::string TempDirInCache(const std::string& cache, const std::wstring& module_name) {
  return BelowCache(cache, module_name) + "/";
}

std::wstring TempDirInCache(const std::wstring& cache, const std::wstring& module_name) {
  return BelowCache(cache, module_name);
}

TempFolder TempFolderInUse() {
  {
    const MutexLock lock(g_choice->mutex);
    if (g_choice->cache) return *g_choice->cache;
  }
  return FolderBeside();
}

bool TempFolderIsWritable() {
  const MutexLock lock(g_choice->mutex);
  return g_choice->is_writable;
}

void UseFolderBesideExecutable() {
  platform::MakeDirectory(FolderBeside().wide);
  ResetTempFolder();
}

void ResetTempFolder() { Choose(std::nullopt, true); }

bool FallBackToCacheFolder() {
  const TempFolder beside = FolderBeside();
  if (TempFolderInUse().narrow != beside.narrow || CanBeMadeAndWritten(beside)) return false;
  const std::optional<TempFolder> cache = MakeFolderInCache();
  const bool was_writable = Choose(cache, cache.has_value());
  if (cache || was_writable) ConsoleLine(LineAbout(beside, cache));
  return cache.has_value();
}

}  // namespace stream
