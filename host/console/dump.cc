#include "dump.h"

#include <zlib.h>

#include <algorithm>
#include <system_error>

#include "csv.h"
#include "text.h"

namespace host {
namespace {

std::size_t SizeOf(const MediaFrame& frame) {
  return frame.data == nullptr ? 0 : static_cast<std::size_t>(std::max(frame.size, 0));
}

std::uint32_t ChecksumOf(const MediaFrame& frame) {
  const uLong none = crc32_z(0, nullptr, 0);
  if (SizeOf(frame) == 0) return static_cast<std::uint32_t>(none);
  return static_cast<std::uint32_t>(crc32_z(none, frame.data, SizeOf(frame)));
}

std::string FrameRow(FrameKind kind, std::uint64_t index, const MediaFrame& frame,
                     double arrival_ms) {
  std::string row = NameOf(kind);
  for (const std::uint64_t number : {index, frame.pts, frame.dts, frame.playTime}) {
    row += ',' + std::to_string(number);
  }
  return row + ',' + std::to_string(frame.size) + ',' + HexText(ChecksumOf(frame)) + ',' +
         FixedText(arrival_ms, 3) + '\n';
}

}  // namespace

std::unique_ptr<Dump> Dump::Open(const std::filesystem::path& directory, std::string& error) {
  std::error_code failure;
  std::filesystem::create_directories(directory, failure);
  if (failure) {
    error = "cannot make the directory " + directory.string() + ": " + failure.message();
    return nullptr;
  }
  std::unique_ptr<Dump> dump(new Dump);
  if (!OpenFile(dump->video_, directory / "video.es", error) ||
      !OpenFile(dump->audio_, directory / "audio.es", error) ||
      !OpenFile(dump->frames_, directory / "frames.csv", error) ||
      !OpenFile(dump->events_, directory / "events.csv", error)) {
    return nullptr;
  }
  WriteRow(dump->frames_, "kind,index,pts,dts,play,size,crc32,arrival_ms\n");
  WriteRow(dump->events_, "arrival_ms,event,value\n");
  return dump;
}

void Dump::WriteFrame(FrameKind kind, const MediaFrame& frame, double arrival_ms) {
  File& payloads = kind == FrameKind::kVideo ? video_ : audio_;
  // Held until the row is written, so that the rows of a kind are in the order of its payloads.
  const std::lock_guard lock(payloads.mutex);
  if (SizeOf(frame) != 0) {
    payloads.stream.write(reinterpret_cast<const char*>(frame.data),
                          static_cast<std::streamsize>(SizeOf(frame)));
  }
  WriteRow(frames_, FrameRow(kind, payloads.next_index++, frame, arrival_ms));
}

void Dump::WriteEvent(double arrival_ms, std::string_view event, std::string_view value) {
  WriteRow(events_,
           FixedText(arrival_ms, 3) + ',' + CsvField(event) + ',' + CsvField(value) + '\n');
}

bool Dump::Close() {
  bool complete = true;
  for (File* file : {&video_, &audio_, &frames_, &events_}) complete &= CloseFile(*file);
  return complete;
}

bool Dump::OpenFile(File& file, const std::filesystem::path& path, std::string& error) {
  file.stream.open(path, std::ios::binary | std::ios::trunc);
  if (!file.stream) error = "cannot write " + path.string();
  return file.stream.good();
}

void Dump::WriteRow(File& file, const std::string& row) {
  const std::lock_guard lock(file.mutex);
  file.stream.write(row.data(), static_cast<std::streamsize>(row.size()));
}

bool Dump::CloseFile(File& file) {
  const std::lock_guard lock(file.mutex);
  file.stream.close();
  return file.stream.good();
}

}  // namespace host
