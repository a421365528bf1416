// A directory beside the executable that cannot be made, since a file is in its place, and a user's
// cache of the test's own. That holds for every user: root may write where permissions forbid it.
#ifndef TESTS_SUPPORT_BLOCKED_TEMP_FOLDER_H_
#define TESTS_SUPPORT_BLOCKED_TEMP_FOLDER_H_

#include <filesystem>
#include <fstream>
#include <string>

#include "common/platform.h"
#include "common/temp_folder.h"
#include "tests/support/environment.h"

class BlockedTempFolder {
 public:
  BlockedTempFolder() {
    Remove();
    std::ofstream(Beside()) << kContents;
    SetUserCache(cache_.string());
  }
  ~BlockedTempFolder() {
    Remove();
    ReturnToTempFolderBeside();
  }
  BlockedTempFolder(const BlockedTempFolder&) = delete;
  BlockedTempFolder& operator=(const BlockedTempFolder&) = delete;

  // The path that is blocked, without a separator at its end.
  static std::filesystem::path Beside() {
    const std::string path = TempDirBeside(platform::ModuleFileName());
    return path.substr(0, path.size() - 1);
  }
  static bool IsBlocked() {
    return std::filesystem::is_regular_file(Beside()) &&
           std::filesystem::file_size(Beside()) == sizeof(kContents) - 1;
  }
  static void Unblock() { std::filesystem::remove_all(Beside()); }

  // Puts a file in the place of the cache as well.
  void BlockCache() const { std::ofstream(cache_) << kContents; }

  // The narrow form of the directory that takes the place of the blocked one.
  std::string InCache() const {
    std::string cache = (cache_ / "").make_preferred().string();
    return TempDirInCache(cache, platform::ModuleFileNameWide());
  }

  std::string Line() const {
    return "Cache files are in " + InCache() + ": " + Beside().string() + "/ cannot be written.\n";
  }

 private:
  static constexpr char kContents[] = "no directory";

  void Remove() const {
    Unblock();
    std::filesystem::remove_all(cache_);
  }

  const std::filesystem::path cache_ = std::filesystem::current_path() / "user_cache";
};

#endif  // TESTS_SUPPORT_BLOCKED_TEMP_FOLDER_H_
