// Clears the state of an HLS stream after a stop.
#ifndef HLS_CLEAR_HLS_STREAM_H_
#define HLS_CLEAR_HLS_STREAM_H_

// Clears everything that belongs to the stream: texts, tables, queued segments and buffers. No task
// may be running.
void ClearHlsStream();

#endif  // HLS_CLEAR_HLS_STREAM_H_
