#include "mp4/mp4_play.h"

#include <optional>

#include "common/address.h"
#include "common/clock.h"
#include "common/pipeline.h"
#include "mp4/mp4_sample.h"
#include "mp4/mp4_state.h"

namespace stream {
namespace {

// What the next pass reads; nullopt if another address was started.
std::optional<Mp4TrackReader::Source> SourceOf(const Mp4Play& play) {
  const bool is_local = IsFileUrl(play.url);
  Mp4File& file = *g_mp4File;
  const MutexLock lock(file.mutex);
  if (!file.runs.IsCurrent(play.run)) return std::nullopt;
  if (is_local) file.ranges.MarkLocalFile();
  const std::string path = is_local ? FileUrlPath(play.url) : file.path;
  return Mp4TrackReader::Source{play.run,      play.url,           path, file.ranges.First(),
                                file.revision, play.start_position};
}

// Returns false if another address was started.
bool ReadPasses(const Mp4Play& play) {
  while (g_mp4Running.load()) {
    const bool download_complete = !play.downloading->load();  // checked before the pass begins
    const auto source = SourceOf(play);
    if (!source) return false;
    const bool pass_done =
        (download_complete || play.reader.MayFindMore(*source)) && play.reader.RunPass(*source);
    if (download_complete && pass_done) return true;
    if (g_mp4Running.load()) SleepFor(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace

std::string Mp4MediaPath(const std::string& url) {
  if (IsFileUrl(url)) return FileUrlPath(url);
  const MutexLock lock(g_mp4File->mutex);
  return g_mp4File->path;
}

// The result is reported after a stop too. Kept for compatibility.
void PlayMp4(const Mp4Play& play) {
  if (!ReadPasses(play)) return;
  ReportOutcome(play.player, Mp4VideoHasBegun() ? "MP4 OK" : "MP4 NO", play.url);
}

}  // namespace stream
