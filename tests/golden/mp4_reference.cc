#include "tests/golden/mp4_reference.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<std::uint8_t>;

// The denominator of a time base such as "1/12800".
std::uint64_t TimeScale(const std::string& time_base) {
  return std::stoull(time_base.substr(time_base.find('/') + 1));
}

}  // namespace

std::vector<Mp4ReferencePacket> ReadMp4Packets(const fs::path& file, const std::string& stream,
                                               const ScratchDirectory& scratch) {
  const fs::path json_file = scratch.File("packets.json");
  RunTool("ffprobe -v error -ignore_editlist 1 -select_streams " + stream +
              " -show_streams -show_packets -of json " + Quoted(file),
          json_file);
  const Bytes text = ReadWholeFile(json_file);
  const auto json = nlohmann::json::parse(text.begin(), text.end());
  const std::uint64_t scale = TimeScale(json.at("streams").at(0).at("time_base"));
  std::vector<Mp4ReferencePacket> packets;
  const auto& listed = json.at("packets");
  const auto first = listed.at(0).at("dts").get<std::int64_t>();
  const auto milliseconds = [scale](std::int64_t time) {
    return static_cast<std::uint64_t>(time) * 1000 / scale;
  };
  for (const auto& packet : listed) {
    packets.push_back({milliseconds(packet.at("dts").get<std::int64_t>() - first),
                       milliseconds(packet.at("pts").get<std::int64_t>()),
                       std::stoul(packet.at("size").get<std::string>())});
  }
  return packets;
}

Bytes ReadMp4Stream(const fs::path& file, const std::string& stream, const std::string& form,
                    const ScratchDirectory& scratch) {
  const fs::path stream_file = scratch.File("stream");
  RunTool("ffmpeg -nostdin -v error -ignore_editlist 1 -i " + Quoted(file) + " -map 0:" + stream +
              " -c copy " + form + " -",
          stream_file);
  return ReadWholeFile(stream_file);
}

std::vector<Bytes> ReadMp4Units(const fs::path& file, const std::string& stream,
                                const ScratchDirectory& scratch) {
  return SplitAtStartCodes(ReadMp4Stream(file, stream, "-bsf h264_mp4toannexb -f h264", scratch));
}

std::vector<Bytes> SplitAtStartCodes(const Bytes& stream) {
  constexpr std::array<std::uint8_t, 3> kStartCode = {0, 0, 1};
  const auto find = [&](auto from) {
    return std::search(from, stream.end(), kStartCode.begin(), kStartCode.end());
  };
  std::vector<Bytes> units;
  for (auto at = find(stream.begin()); at != stream.end();) {
    const auto begin = at + kStartCode.size();
    at = find(begin);
    Bytes unit(begin, at);
    while (!unit.empty() && unit.back() == 0) unit.pop_back();  // no unit ends with a zero
    units.push_back(std::move(unit));
  }
  return units;
}
