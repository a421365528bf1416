#include "isobmff/movie_text.h"

#include <array>
#include <cstdio>
#include <utility>

namespace isobmff {
namespace {

constexpr std::uint8_t kMpeg4Audio = 0x40;

// printf-style; truncated to 255 characters.
template <typename... Values>
std::string Format(const char* format, Values... values) {
  std::array<char, 256> text{};
  std::snprintf(text.data(), text.size(), format, values...);
  return text.data();
}

double Seconds(const Timing& timing) {
  return timing.scale == 0 ? 0 : static_cast<double>(timing.duration) / timing.scale;
}

std::string ProfileName(unsigned profile) {
  static constexpr std::pair<unsigned, const char*> kNames[] = {
      {66, "Baseline"}, {77, "Main"}, {88, "Extended"}, {100, "High"}, {110, "High 10"}};
  for (const auto& [number, name] : kNames) {
    if (number == profile) return name;
  }
  return "profile " + std::to_string(profile);
}

std::string VideoCodec(const SampleEntry& entry) {
  constexpr std::size_t kProfileAt = 1;  // in a sequence parameter set
  constexpr std::size_t kLevelAt = 3;
  if (!entry.avc || entry.avc->sequence.empty() || entry.avc->sequence[0].size() <= kLevelAt)
    return entry.name;
  const Bytes& set = entry.avc->sequence[0];
  const unsigned level = set[kLevelAt];
  std::string text = "H264 " + ProfileName(set[kProfileAt]) + '@' + std::to_string(level / 10);
  if (level % 10 != 0) text += '.' + std::to_string(level % 10);
  return text;
}

std::string AudioCodec(const SampleEntry& entry) {
  if (!entry.stream || entry.stream->object_type != kMpeg4Audio || !entry.stream->specific_info)
    return entry.name;
  switch (AudioObjectType(*entry.stream->specific_info)) {
    case 1:
      return "MPEG-4 AAC Main";
    case 2:
      return "MPEG-4 AAC LC";
    case 5:
      return "MPEG-4 AAC HE";
    default:
      return "MPEG-4 audio";
  }
}

}  // namespace

std::string TrackText(const File& file, const Track& track) {
  const TrackFacts& facts = track.facts;
  const double seconds = Seconds(facts.timing);
  const double bits = static_cast<double>(track.tables.TotalSize(file)) * 8;
  const std::string rate =
      Format(", %.3f secs, %.0f kbps", seconds, seconds == 0 ? 0.0 : bits / seconds / 1000);
  const std::string number = std::to_string(facts.id) + '\t';
  if (facts.handler == "vide") {
    const double frames = seconds == 0 ? 0 : track.tables.Count() / seconds;
    return number + "video\t" + VideoCodec(facts.entry) + rate +
           Format(", %ux%u @ %f fps", unsigned{facts.entry.width}, unsigned{facts.entry.height},
                  frames);
  }
  if (facts.handler == "soun") {
    return number + "audio\t" + AudioCodec(facts.entry) + rate +
           Format(", %u Hz", unsigned{facts.timing.scale});
  }
  return number + facts.handler + '\t' + facts.entry.name + rate;
}

std::string MovieText(const File& file, const MovieIndex& index) {
  std::string text = "Track\tType\tInfo\n";
  for (const Track& track : index.Tracks()) text += TrackText(file, track) + '\n';
  return text;
}

}  // namespace isobmff
