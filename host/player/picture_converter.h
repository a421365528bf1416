// Converts decoded pictures to the format that the window shows: 8 bits, 4:2:0, planar. For one
// thread.
#ifndef HOST_PLAYER_PICTURE_CONVERTER_H_
#define HOST_PLAYER_PICTURE_CONVERTER_H_

extern "C" {
#include <libswscale/swscale.h>
}

#include <memory>

#include "av_memory.h"

namespace player {

class PictureConverter {
 public:
  // Returns `frame` itself if it has that format, otherwise a frame of the converter that is valid
  // until the next call. Null if the frame cannot be converted.
  const AVFrame* ToPlanes(const AVFrame& frame);

 private:
  struct FreeScaler {
    void operator()(SwsContext* context) const { sws_freeContext(context); }
  };

  std::unique_ptr<SwsContext, FreeScaler> scaler_;
  AvFrame converted_;
};

}  // namespace player

#endif  // HOST_PLAYER_PICTURE_CONVERTER_H_
