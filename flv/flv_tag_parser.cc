#include "flv/flv_tag_parser.h"

#include <algorithm>
#include <array>
#include <span>

#include "common/adts.h"
#include "common/console.h"
#include "common/format_text.h"

namespace stream {
namespace {

constexpr std::uint8_t kAudioTag = 8;
constexpr std::uint8_t kVideoTag = 9;
constexpr std::array<std::uint8_t, 4> kStartCode = {0, 0, 0, 1};

// `format` is printf-style and includes the line break.
void ConsoleNumber(const char* format, std::int32_t number) {
  ConsoleText(FormatText(format, number));  // NOLINT(clang-diagnostic-format-nonliteral)
}

// Reads `size` bytes of a tag into a new frame, after `prefix`, and queues the frame. Returns
// false, and queues nothing, if the bytes cannot be read or if the stream was stopped or replaced.
// If there is no memory for the frame, it is dropped and the stream continues.
bool EmitFrame(FlvReader& reader, std::span<const std::uint8_t> prefix, std::uint32_t size,
               std::uint32_t timestamp, PayloadKind kind) {
  constexpr std::uint64_t kTicksPerMillisecond = 90;
  const bool is_video = kind == PayloadKind::kVideo;
  if (!reader.WaitForBytes(size)) return false;
  const std::uint64_t ticks = timestamp * kTicksPerMillisecond;
  FrameRecord frame;
  if (AllocateFrameNode(frame, ticks, ticks, static_cast<std::int32_t>(prefix.size() + size),
                        is_video, true) != 0) {
    return reader.Skip(static_cast<std::int32_t>(size));
  }
  frame.isVideo = 1;  // audio frames are marked as video too. Kept for compatibility.
  frame.playTime = ticks;
  std::uint8_t* const body = std::copy(prefix.begin(), prefix.end(), frame.data);
  if (!reader.ReadBytes(body, size)) {
    ReleasePayload(frame);
    return false;
  }
  const MutexLock lock(g_frameQueueMutex);
  // Checked with the queues locked, so that no frame of a replaced stream is queued before those of
  // the new one.
  const bool is_wanted = reader.Runs();
  if (!is_wanted || PushFrame(frame, EnsureQueue(is_video)) != 0) ReleasePayload(frame);
  return is_wanted;
}

}  // namespace

bool FlvTagParser::ReadHeader() {
  constexpr std::uint32_t kSignature = 0x464C56;
  constexpr std::uint32_t kLowerCaseSignature = 0x666C76;  // Kept for compatibility
  constexpr std::uint32_t kHeaderSize = 9;
  std::uint32_t signature = 0;
  if (!reader_.Read24(signature)) return false;
  if (signature != kSignature && signature != kLowerCaseSignature) {
    ConsoleText("not flv file\n");
    return false;
  }
  std::uint32_t data_offset = 0;
  if (!reader_.Skip(2) || !reader_.Read32(data_offset)) return false;
  ConsoleNumber("headlength:%d\n", static_cast<std::int32_t>(data_offset));
  // If the header claims to end after the end of the stream, nothing is skipped and the tags are
  // read from here. Kept for compatibility.
  reader_.Skip(static_cast<std::int32_t>(data_offset - kHeaderSize));
  return true;
}

bool FlvTagParser::ReadTag() {
  TagHeader tag;
  if (!ReadTagHeader(tag) || !ReadBody(tag)) return false;
  const std::int64_t left = LeftOf(tag);
  return left >= 0 && reader_.Skip(static_cast<std::int32_t>(left));
}

// Number of bytes of the tag that were not requested yet. Negative for an empty tag, whose first
// byte is always requested.
std::int64_t FlvTagParser::LeftOf(const TagHeader& tag) const {
  const std::uint32_t consumed = reader_.Position() - tag.body_position;
  return std::int64_t{tag.data_size} - consumed;
}

bool FlvTagParser::ReadTagHeader(TagHeader& tag) {
  constexpr std::int32_t kPreviousTagSizeBytes = 4;
  constexpr std::int32_t kStreamIdBytes = 3;
  if (!reader_.Skip(kPreviousTagSizeBytes) || !reader_.Read8(tag.type) ||
      !reader_.Read24(tag.data_size) || !reader_.ReadTimestamp(tag.timestamp) ||
      !reader_.Skip(kStreamIdBytes)) {
    return false;
  }
  tag.body_position = reader_.Position();
  return reader_.Read8(tag.first_byte);
}

bool FlvTagParser::ReadBody(const TagHeader& tag) {
  if (tag.type == kVideoTag) return ReadVideo(tag);
  if (tag.type == kAudioTag) return ReadAudio(tag);
  return true;
}

// Every video tag is parsed as AVC, whatever its codec field says. Kept for compatibility.
bool FlvTagParser::ReadVideo(const TagHeader& tag) {
  constexpr std::int32_t kCompositionTimeBytes = 3;
  std::uint8_t packet_type = 0;
  if (LeftOf(tag) < 1 + kCompositionTimeBytes) return false;
  if (!reader_.Read8(packet_type) || !reader_.Skip(kCompositionTimeBytes)) return false;
  return packet_type == 0 ? ReadParameterSets(tag) : ReadNalUnits(tag);
}

// The length before each NAL unit is assumed to have four bytes. Kept for compatibility.
bool FlvTagParser::ReadNalUnits(const TagHeader& tag) {
  constexpr std::int64_t kLengthBytes = 4;
  while (LeftOf(tag) > 0) {
    std::uint32_t size = 0;
    if (LeftOf(tag) < kLengthBytes || !reader_.Runs() || !reader_.Read32(size)) return false;
    if (!EmitNalUnit(tag, size)) return false;
  }
  return true;
}

// Parses an AVCDecoderConfigurationRecord (ISO/IEC 14496-15, 5.2.4.1). Reads only the first
// parameter set of each kind and ignores their counts. Kept for compatibility.
bool FlvTagParser::ReadParameterSets(const TagHeader& tag) {
  constexpr std::int32_t kBytesBeforeSps = 6;
  std::uint8_t pps_count = 0;
  return LeftOf(tag) >= kBytesBeforeSps && reader_.Skip(kBytesBeforeSps) &&
         ReadParameterSet(tag, "sssize:%d\n") && LeftOf(tag) >= 1 && reader_.Read8(pps_count) &&
         ReadParameterSet(tag, "ppsize:%d\n");
}

bool FlvTagParser::ReadParameterSet(const TagHeader& tag, const char* message) {
  constexpr std::int64_t kLengthBytes = 2;
  std::uint16_t size = 0;
  if (LeftOf(tag) < kLengthBytes || !reader_.Read16(size)) return false;
  ConsoleNumber(message, size);
  return EmitNalUnit(tag, size);
}

bool FlvTagParser::ReadAudio(const TagHeader& tag) {
  constexpr std::uint8_t kSoundFormatMask = 0xF0;
  constexpr std::uint8_t kSoundFormatAac = 0xA0;
  const bool is_aac = (tag.first_byte & kSoundFormatMask) == kSoundFormatAac;
  return is_aac ? ReadAac(tag) : ReadOtherAudio(tag);
}

bool FlvTagParser::ReadAac(const TagHeader& tag) {
  constexpr std::uint8_t kSequenceHeader = 0;
  constexpr std::uint8_t kRawFrame = 1;
  std::uint8_t packet_type = 0;
  if (LeftOf(tag) < 1 || !reader_.Read8(packet_type)) return false;
  if (packet_type == kSequenceHeader) return ReadAudioConfig(tag);
  return packet_type != kRawFrame || EmitAudio(tag);
}

// A header that is too short leaves the configuration unchanged.
bool FlvTagParser::ReadAudioConfig(const TagHeader& tag) {
  constexpr std::int64_t kConfigBytes = 2;
  if (LeftOf(tag) < kConfigBytes) return true;
  std::uint16_t config = 0;
  if (!reader_.Read16(config)) return false;
  audio_config_ = config;
  return true;
}

// Audio of another codec gets an ADTS header too. Kept for compatibility.
bool FlvTagParser::ReadOtherAudio(const TagHeader& tag) {
  ConsoleNumber("write autio data:%d\n", static_cast<std::int32_t>(tag.data_size) - 1);
  return EmitAudio(tag);
}

bool FlvTagParser::EmitNalUnit(const TagHeader& tag, std::uint32_t size) {
  return size <= LeftOf(tag) &&
         EmitFrame(reader_, kStartCode, size, tag.timestamp, PayloadKind::kVideo);
}

// The frame is the rest of the tag.
bool FlvTagParser::EmitAudio(const TagHeader& tag) {
  if (LeftOf(tag) < 0) return false;
  const auto size = static_cast<std::uint32_t>(LeftOf(tag));
  const AdtsHeader header = MakeAdtsHeader(FieldsOfAudioSpecificConfig(audio_config_.load()), size);
  return EmitFrame(reader_, header, size, tag.timestamp, PayloadKind::kAudio);
}

}  // namespace stream
