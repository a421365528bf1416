#include "picture_converter.h"

namespace player {

const AVFrame* PictureConverter::ToPlanes(const AVFrame& frame) {
  if (frame.format == AV_PIX_FMT_YUV420P || frame.format == AV_PIX_FMT_YUVJ420P) return &frame;
  scaler_.reset(sws_getCachedContext(
      scaler_.release(), frame.width, frame.height, static_cast<AVPixelFormat>(frame.format),
      frame.width, frame.height, AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr, nullptr, nullptr));
  if (scaler_ == nullptr) return nullptr;
  converted_ = MakeFrame();
  converted_->format = AV_PIX_FMT_YUV420P;
  converted_->width = frame.width;
  converted_->height = frame.height;
  converted_->sample_aspect_ratio = frame.sample_aspect_ratio;
  converted_->colorspace = frame.colorspace;
  converted_->color_range = AVCOL_RANGE_MPEG;
  if (av_frame_get_buffer(converted_.get(), 0) < 0) return nullptr;
  const int lines = sws_scale(scaler_.get(), frame.data, frame.linesize, 0, frame.height,
                              converted_->data, converted_->linesize);
  return lines > 0 ? converted_.get() : nullptr;
}

}  // namespace player
