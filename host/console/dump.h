// The files of --dump: the payloads of each kind, concatenated; one row per frame; one row per
// event.
//
//   video.es, audio.es   payloads
//   frames.csv           kind,index,pts,dts,play,size,crc32,arrival_ms
//   events.csv           arrival_ms,event,value
//
// pts, dts and play are 90 kHz ticks. index counts from 0 for each kind. crc32 is the checksum of
// the payload.
//
// Safe to call from any thread. Each file has its own lock, so video and audio block each other
// only while a row of frames.csv is written.
#ifndef HOST_CONSOLE_DUMP_H_
#define HOST_CONSOLE_DUMP_H_

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "totals.h"

namespace host {

class Dump {
 public:
  // Creates the directory if it does not exist and truncates existing files. Returns null if the
  // directory or a file cannot be created; `error` then says which.
  static std::unique_ptr<Dump> Open(const std::filesystem::path& directory, std::string& error);

  void WriteFrame(FrameKind kind, const MediaFrame& frame, double arrival_ms);
  void WriteEvent(double arrival_ms, std::string_view event, std::string_view value);

  // Flushes and closes all files. Returns false if any write so far has failed.
  bool Close();

 private:
  struct File {
    std::mutex mutex;
    std::ofstream stream;          // guarded by mutex
    std::uint64_t next_index = 0;  // guarded by mutex
  };

  Dump() = default;
  static bool OpenFile(File& file, const std::filesystem::path& path, std::string& error);
  static void WriteRow(File& file, const std::string& row);
  static bool CloseFile(File& file);

  File video_;
  File audio_;
  File frames_;
  File events_;
};

}  // namespace host

#endif  // HOST_CONSOLE_DUMP_H_
