// The file of --sync-log: how far picture and sound were apart, for each picture that was compared
// with the sound heard when it was shown. For one thread.
#ifndef HOST_PLAYER_SYNC_LOG_H_
#define HOST_PLAYER_SYNC_LOG_H_

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace player {

class SyncLog {
 public:
  // Null when the file cannot be written; then `error` says so.
  static std::unique_ptr<SyncLog> Open(const std::filesystem::path& file, std::string& error);

  // Stream times in seconds.
  void Add(double picture, double sound);
  // False when not all could be written.
  bool Close();

 private:
  explicit SyncLog(const std::filesystem::path& file) : file_(file) {}

  std::ofstream file_;
};

}  // namespace player

#endif  // HOST_PLAYER_SYNC_LOG_H_
