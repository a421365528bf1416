#include "tests/golden/reference_reader.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

namespace {

namespace fs = std::filesystem;

// The name of a scratch file.
std::string Name(const std::string& what, std::string stream) {
  std::replace(stream.begin(), stream.end(), ':', '_');
  return what + "_" + stream;
}

}  // namespace

// Without the codec parsers, which would split PES packets into access units.
std::vector<ReferencePacket> ReadPackets(const fs::path& file, const std::string& stream,
                                         const ScratchDirectory& scratch) {
  const fs::path json_file = scratch.File(Name("packets", stream));
  RunTool("ffprobe -v error -fflags +noparse -select_streams " + stream +
              " -show_packets -show_entries packet=pts,dts,size -of json " + Quoted(file),
          json_file);
  const std::vector<std::uint8_t> text = ReadWholeFile(json_file);
  const nlohmann::json document = nlohmann::json::parse(text.begin(), text.end());
  std::vector<ReferencePacket> packets;
  for (const nlohmann::json& packet : document.at("packets")) {
    packets.push_back({packet.at("pts").get<std::uint64_t>(), packet.at("dts").get<std::uint64_t>(),
                       std::stoul(packet.at("size").get<std::string>())});
  }
  return packets;
}

std::vector<std::uint8_t> ReadElementaryStream(const fs::path& file, const std::string& stream,
                                               const std::string& format,
                                               const ScratchDirectory& scratch) {
  const fs::path es_file = scratch.File(Name(format, stream));
  RunTool(
      "ffmpeg -v error -i " + Quoted(file) + " -map 0:" + stream + " -c copy -f " + format + " -",
      es_file);
  return ReadWholeFile(es_file);
}

ReferenceStream ReadReference(const fs::path& file, std::uint16_t pid,
                              const ScratchDirectory& scratch) {
  const std::string stream = "i:" + std::to_string(pid);
  return {ReadPackets(file, stream, scratch), ReadElementaryStream(file, stream, "data", scratch)};
}
