// The file of --sync-log: the stream times of each shown picture and of the audio heard at that
// moment. For one thread.
#ifndef HOST_PLAYER_SYNC_LOG_H_
#define HOST_PLAYER_SYNC_LOG_H_

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace player {

class SyncLog {
 public:
  // Returns null if the file cannot be written; `error` then says so.
  static std::unique_ptr<SyncLog> Open(const std::filesystem::path& file, std::string& error);

  // Stream times in seconds.
  void Add(double picture, double audio);
  // Returns false if any write has failed.
  bool Close();

 private:
  explicit SyncLog(const std::filesystem::path& file) : file_(file) {}

  std::ofstream file_;
};

}  // namespace player

#endif  // HOST_PLAYER_SYNC_LOG_H_
