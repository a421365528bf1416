#include "access_units.h"

#include <algorithm>
#include <utility>

namespace player {

std::vector<MediaUnit> AccessUnitGatherer::Add(const MediaUnit& frame) {
  std::vector<MediaUnit> complete;
  const Bytes stream(frame.data);
  const std::vector<NalUnit> units = SplitNalUnits(stream);
  // Bytes before the first start code continue the previous frame.
  const Bytes rest = stream.first(units.empty() ? stream.size() : units.front().begin);
  if (!current_.data.empty()) Append(rest);
  for (std::size_t i = 0; i < units.size(); ++i) {
    if (!codec_) LearnCodec(units[i].payload, frame, complete);
    const std::size_t end = i + 1 < units.size() ? units[i + 1].begin : stream.size();
    const NalRole role = codec_ ? RoleOf(*codec_, units[i].payload) : NalRole{};
    AddPart(stream.subspan(units[i].begin, end - units[i].begin), role, frame, complete);
  }
  return complete;
}

std::vector<MediaUnit> AccessUnitGatherer::Finish() {
  std::vector<MediaUnit> complete;
  CompleteCurrent(complete);
  return complete;
}

// Earlier data with a different time is of unknown codec and cannot be decoded.
void AccessUnitGatherer::LearnCodec(Bytes unit, const MediaUnit& frame,
                                    std::vector<MediaUnit>& complete) {
  const std::optional<VideoCodec> codec = CodecOfParameterSet(unit);
  if (codec && frame.pts != current_.pts) CompleteCurrent(complete);
  codec_ = codec;
}

void AccessUnitGatherer::AddPart(Bytes part, const NalRole& role, const MediaUnit& frame,
                                 std::vector<MediaUnit>& complete) {
  const bool other_time = frame.pts != current_.pts;
  const bool next_picture = role.begins_picture || role.leads_picture;
  if (current_has_picture_ && (other_time || next_picture)) CompleteCurrent(complete);
  if (!codec_ && other_time) CompleteCurrent(complete);  // data of an unknown codec is not kept
  // Parameter sets may have an earlier time than their picture.
  if (current_.data.empty() || other_time) {
    current_.pts = frame.pts;
    current_.dts = frame.dts;
  }
  Append(part);
  current_has_picture_ |= role.is_picture;
  current_has_entry_ |= role.is_entry;
}

void AccessUnitGatherer::Append(Bytes part) {
  const Bytes kept = part.first(std::min(part.size(), kMaxBytes - current_.data.size()));
  current_.data.insert(current_.data.end(), kept.begin(), kept.end());
}

void AccessUnitGatherer::CompleteCurrent(std::vector<MediaUnit>& complete) {
  MediaUnit unit = std::exchange(current_, {});
  const bool has_picture = std::exchange(current_has_picture_, false);
  entered_ |= std::exchange(current_has_entry_, false);
  if (unit.data.empty()) return;
  if (entered_ && has_picture) {
    complete.push_back(std::move(unit));
  } else if (has_picture || !codec_) {
    ++skipped_units_;
  }
}

}  // namespace player
