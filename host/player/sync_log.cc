#include "sync_log.h"

#include "text.h"

namespace player {

std::unique_ptr<SyncLog> SyncLog::Open(const std::filesystem::path& file, std::string& error) {
  std::unique_ptr<SyncLog> made(new SyncLog(file));
  made->file_ << "picture_seconds,sound_seconds\n";
  if (made->file_.flush()) return made;
  error = "cannot write " + file.string();
  return nullptr;
}

void SyncLog::Add(double picture, double audio) {
  constexpr int kMicroseconds = 6;
  file_ << host::FixedText(picture, kMicroseconds) << ',' << host::FixedText(audio, kMicroseconds)
        << '\n';
}

bool SyncLog::Close() {
  file_.close();
  return !file_.fail();
}

}  // namespace player
