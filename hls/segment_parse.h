// The parse thread: feeds the downloaded segments to the demultiplexer.
#ifndef HLS_SEGMENT_PARSE_H_
#define HLS_SEGMENT_PARSE_H_

#include <string>

#include "hls/hls_pipeline.h"

// Runs until the pipeline is stopped. A segment without video is stored in the file "tmpE.ts" in
// the temporary directory, for inspection: the first segment of a run replaces the file, later ones
// are appended. Reports to the player what the first segment contains, with `url`.
void ParseSegmentsThread(HlsPipeline& pipeline, const std::string& url);

#endif  // HLS_SEGMENT_PARSE_H_
