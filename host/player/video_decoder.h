// Decodes access units into pictures with the times to show them at. For one thread.
#ifndef HOST_PLAYER_VIDEO_DECODER_H_
#define HOST_PLAYER_VIDEO_DECODER_H_

#include <functional>

#include "av_memory.h"
#include "media_unit.h"
#include "nal_units.h"
#include "picture_times.h"
#include "play_counts.h"

namespace player {

struct Picture {
  AvFrame frame;
  double seconds = 0;  // of stream time
};

class VideoDecoder {
 public:
  using Sink = std::function<void(Picture)>;

  // `shown_later` is for PictureTimes. `counts` is borrowed.
  VideoDecoder(VideoCodec codec, bool shown_later, PlayCounts& counts, Sink sink);

  void Decode(const MediaUnit& unit);

  // Outputs the pictures that the decoder still holds. The next unit must be one at which decoding
  // can begin.
  void Drain();

 private:
  void Send(const AVPacket* packet);
  void ReceivePictures();

  AvCodec context_;
  PictureTimes times_;
  PlayCounts& counts_;
  const Sink sink_;
};

}  // namespace player

#endif  // HOST_PLAYER_VIDEO_DECODER_H_
