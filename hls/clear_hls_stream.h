// What is left of a stream when it has been stopped.
#ifndef HLS_CLEAR_HLS_STREAM_H_
#define HLS_CLEAR_HLS_STREAM_H_

// Forgets all that belongs to the stream: texts, tables, what waits in queue and buffers. Only when
// no task runs.
void ClearHlsStream();

#endif  // HLS_CLEAR_HLS_STREAM_H_
