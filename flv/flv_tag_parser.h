// FlvTagParser: an FLV byte stream (Adobe Flash Video File Format, version 10.1, annex E) into
// frames in the global frame queues: NAL units of H.264 with a start code in front, AAC frames with
// an ADTS header. Each NAL unit is a frame of its own. It knows no clocks and no sockets.
//
// Script data is passed over. Times are the tags' milliseconds as 90 kHz ticks; the composition
// time offset is left out, so pts, dts and playTime are one (kept on purpose).
//
// What a stream says of lengths is believed only as far as the bytes are there: a frame of which
// some are missing is not made, and there is nothing to be read behind it. Nor does a tag's handler
// read beyond the tag: where a length or a field would, nothing more of the tag becomes a frame and
// the stream ends there. An AAC sequence header that is too short for a configuration is skipped
// instead, since ffmpeg writes one first when it copies from a transport stream.
#ifndef FLV_FLV_TAG_PARSER_H_
#define FLV_FLV_TAG_PARSER_H_

#include <atomic>
#include <cstdint>

#include "common/frame_queue.h"
#include "flv/flv_reader.h"

class FlvTagParser {
 public:
  // `audio_config` holds the first two bytes of the AudioSpecificConfig that came last; it lives on
  // from one stream to the next (kept on purpose). Both are borrowed.
  FlvTagParser(FlvSource& source, std::atomic<std::uint16_t>& audio_config)
      : reader_(source), audio_config_(audio_config) {}

  // Reads the file header. False when there is none.
  bool ReadHeader();

  // Reads one tag. False at the end of the stream, and where nothing of it can be read any more.
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

#endif  // FLV_FLV_TAG_PARSER_H_
