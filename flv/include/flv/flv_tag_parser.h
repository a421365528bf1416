// FlvTagParser: parses an FLV byte stream (Adobe Flash Video File Format, version 10.1, annex E)
// into frames in the global frame queues: each NAL unit of H.264 with a start code before it, and
// each AAC frame with an ADTS header. It uses no clock and no socket.
//
// Script data is skipped. The tags' times in milliseconds are converted to 90 kHz ticks. The
// composition time offset is ignored, so pts, dts and playTime are equal. Kept for compatibility.
//
// A length in the stream is trusted only as far as its bytes are available: no frame is made of an
// incomplete body; parsing ends there. The handler of a tag does not read beyond the tag: if a
// length or a field exceeds the tag, the rest of the tag is dropped and the stream ends there. An
// AAC sequence header that is too short for a configuration is skipped instead, since ffmpeg writes
// one first when it copies from a transport stream.
#ifndef FLV_FLV_TAG_PARSER_H_
#define FLV_FLV_TAG_PARSER_H_

#include <atomic>
#include <cstdint>

#include "common/frame_queue.h"
#include "flv/flv_reader.h"

namespace stream {

class FlvTagParser {
 public:
  // `audio_config` holds the first two bytes of the latest AudioSpecificConfig. It keeps its value
  // from one stream to the next. Kept for compatibility. Both arguments are borrowed.
  FlvTagParser(FlvSource& source, std::atomic<std::uint16_t>& audio_config)
      : reader_(source), audio_config_(audio_config) {}

  // Reads the file header. Returns false if there is none.
  bool ReadHeader();

  // Reads one tag. Returns false at the end of the stream and if nothing more of it can be read.
  bool ReadTag();

 private:
  struct TagHeader {
    std::uint8_t type = 0;
    std::uint32_t data_size = 0;
    std::uint32_t timestamp = 0;  // milliseconds
    std::uint32_t body_position = 0;
    std::uint8_t first_byte = 0;  // of the body
  };

  bool ReadTagHeader(TagHeader& tag);
  std::int64_t LeftOf(const TagHeader& tag) const;
  bool ReadBody(const TagHeader& tag);
  bool ReadVideo(const TagHeader& tag);
  bool ReadNalUnits(const TagHeader& tag);
  bool ReadParameterSets(const TagHeader& tag);
  bool ReadParameterSet(const TagHeader& tag, const char* message);
  bool ReadAudio(const TagHeader& tag);
  bool ReadAac(const TagHeader& tag);
  bool ReadAudioConfig(const TagHeader& tag);
  bool ReadOtherAudio(const TagHeader& tag);
  bool EmitNalUnit(const TagHeader& tag, std::uint32_t size);
  bool EmitAudio(const TagHeader& tag);

  FlvReader reader_;
  std::atomic<std::uint16_t>& audio_config_;
};

}  // namespace stream

#endif  // FLV_FLV_TAG_PARSER_H_
