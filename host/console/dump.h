// The files of --dump: the payloads of each kind one after the other, a row for each frame, a row
// for each event.
//
//   video.es, audio.es   payloads
//   frames.csv           kind,index,pts,dts,play,size,crc32,arrival_ms
//   events.csv           arrival_ms,event,value
//
// pts, dts and play are 90 kHz ticks; index counts per kind from 0; crc32 is that of the payload.
//
// Safe from any thread. Each file has a lock of its own, so video waits for audio only while one
// row of frames.csv is written.
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
  // Makes the directory when there is none and the files anew. Null when one cannot be made; then
  // `error` says which.
  static std::unique_ptr<Dump> Open(const std::filesystem::path& directory, std::string& error);

  void WriteFrame(FrameKind kind, const MediaFrame& frame, double arrival_ms);
  void WriteEvent(double arrival_ms, std::string_view event, std::string_view value);

  // Writes what is still buffered. False when anything, now or before, could not be written.
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
