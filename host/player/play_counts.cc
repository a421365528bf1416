#include "play_counts.h"

#include <algorithm>
#include <cmath>

#include "text.h"

namespace player {

void PlayCounts::Compare(double picture, double audio) {
  apart = std::max(apart.load(), std::abs(picture - audio));
  compared = true;
}

std::string CountsText(const PlayCounts& counts) {
  const auto text = [](const PlayCounts::Count& count) { return std::to_string(count.load()); };
  std::string line =
      "video: " + text(counts.video_frames) + " frames received, " + text(counts.access_units) +
      " access units, " + text(counts.pictures) + " pictures decoded, " + text(counts.shown) +
      " shown, " + text(counts.late_pictures) + " late, " + text(counts.skipped_units) +
      " skipped; audio: " + text(counts.audio_frames) + " frames received, " +
      text(counts.decoded_audio_frames) + " decoded; decoder errors: " + text(counts.errors) + "; ";
  if (!counts.compared) return line + "picture and sound never met";
  return line + "picture and sound at most " + host::FixedText(counts.apart * 1000, 1) +
         " ms apart";
}

}  // namespace player
