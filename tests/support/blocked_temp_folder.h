// Makes the cache directory beside the executable unusable by putting a file in its place, and
// gives the user a cache directory of the test's own. A file blocks every user, while root may
// write where permissions forbid it.
#ifndef TESTS_SUPPORT_BLOCKED_TEMP_FOLDER_H_
#define TESTS_SUPPORT_BLOCKED_TEMP_FOLDER_H_

#include <filesystem>
#include <fstream>
#include <string>

#include "common/temp_folder.h"
#include "platform/paths.h"
#include "tests/support/environment.h"

namespace stream {

class BlockedTempFolder {
 public:
  BlockedTempFolder() {
    Remove();
    std::ofstream(BesideExecutable()) << kContents;
    SetUserCache(cache_.string());
  }
  ~BlockedTempFolder() {
    Remove();
    UseFolderBesideExecutable();
  }
  BlockedTempFolder(const BlockedTempFolder&) = delete;
  BlockedTempFolder& operator=(const BlockedTempFolder&) = delete;

  // The blocked path, without a trailing separator.
  static std::filesystem::path BesideExecutable() {
    const std::string path = TempDirBeside(platform::ModuleFileName());
    return path.substr(0, path.size() - 1);
  }
  static bool IsBlocked() {
    return std::filesystem::is_regular_file(BesideExecutable()) &&
           std::filesystem::file_size(BesideExecutable()) == sizeof(kContents) - 1;
  }
  static void Unblock() { std::filesystem::remove_all(BesideExecutable()); }

  // Puts a file in the place of the user's cache directory as well.
  void BlockCache() const { std::ofstream(cache_) << kContents; }

  // The narrow form of the directory that is used instead of the blocked one.
  std::string InCache() const {
    std::string cache = (cache_ / "").make_preferred().string();
    return TempDirInCache(cache, platform::ModuleFileNameWide());
  }

  std::string Line() const {
    return "Cache files are in " + InCache() + ": " + BesideExecutable().string() +
           "/ cannot be written.\n";
  }

 private:
  static constexpr char kContents[] = "no directory";

  void Remove() const {
    Unblock();
    std::filesystem::remove_all(cache_);
  }

  const std::filesystem::path cache_ = std::filesystem::current_path() / "user_cache";
};

}  // namespace stream

#endif  // TESTS_SUPPORT_BLOCKED_TEMP_FOLDER_H_
