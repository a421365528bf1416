// The parse thread: feeds each segment that was handed over to the demultiplexer.
#ifndef HLS_SEGMENT_PARSE_H_
#define HLS_SEGMENT_PARSE_H_

#include <string>

#include "hls/hls_pipeline.h"

// Runs until the pipeline is stopped. A segment that yields no video is kept in the file "tmpE.ts"
// in the temporary directory, for inspection: the first segment of a run begins the file, later
// ones are appended. What the first segment holds is told to the player, with `url`.
void ParseSegmentsThread(HlsPipeline& pipeline, const std::string& url);

#endif  // HLS_SEGMENT_PARSE_H_
