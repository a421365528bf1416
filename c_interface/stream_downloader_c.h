/// @file
///
/// The C interface: the functions of stream_downloader.h and stream_player.h for hosts in C, in
/// languages that call C functions (C#, Python, Rust), and in C++ of any compiler and any build. No
/// C++ type crosses it.
///
/// A host fills in sd_callbacks, creates a downloader with sd_create and starts an address with
/// sd_begin_download. It then gets frames, status lines, durations and an audio clock through its
/// callbacks until it calls sd_end_download. This header compiles alone, as C99 and as C++11 or
/// later, for 64-bit programs. The functions and callbacks have the platform's default C calling
/// convention.
///
/// Ownership. sd_create copies the struct of callbacks. The caller owns the downloader until it
/// passes it to sd_destroy. It also owns the object that `user` points to, which must exist until
/// sd_destroy has returned. The arguments of a callback belong to the library and are valid until
/// the callback returns: copy what is needed longer. A text that a function returns is a constant
/// and is never released. Only one downloader should play at a time, whether created here or as a
/// CStreamDownloader: all downloaders of a process share the frame queues and cache files. Call
/// sd_end_download before an address of another kind is started.
///
/// Cache files. They are in the directory `tmp` beside the executable of the process or, if that
/// cannot be created or written, in the user's cache. For a host in Python the executable is the
/// interpreter. Two processes of one executable must not play at the same time.
///
/// Threads. Call the functions of one downloader from one thread at a time. Different downloaders
/// may be used by different threads. The callbacks are called from several threads at once: video
/// frames from one thread of the library, audio clocks and audio frames from another, durations
/// from download and parse threads, status lines from those and from the thread that calls a
/// function of the downloader. Each further start without an sd_end_download before it adds two
/// more threads that deliver frames. The library holds no lock during a callback, so a callback
/// that blocks stalls only its own thread (and an sd_end_download that waits for it). The callbacks
/// must be safe to call concurrently, and must return: no C++ exception, no longjmp, no end of the
/// thread and no panic or exception of another language may leave one.
///
/// Calls from inside a callback. sd_version, sd_version_number and sd_result_text may be called
/// anywhere, also from inside a callback. The other functions return SD_ERROR_IN_CALLBACK there and
/// do nothing else, for any downloader, since a stop waits for the callbacks to return. For the
/// same reason a callback must not wait for another thread that calls one of them, and a thread
/// must not call one of them while it holds a lock that a callback takes: the library cannot detect
/// this, and neither thread would continue. The lock of an interpreter counts too (Python's
/// ctypes.CDLL releases it, ctypes.PyDLL does not).
///
/// Errors. Each function that can fail returns an sd_result: SD_OK, a positive value if there was
/// nothing to do, or a negative value for an error. After an error nothing has been started or
/// stopped. SD_ERROR_OUT_OF_MEMORY and SD_ERROR_OTHER report exceptions: call sd_end_download or
/// sd_destroy after them. No C++ exception leaves a function. A pointer that is not null must be
/// valid: this cannot be checked.
///
/// Texts. Addresses and lines are bytes, given as a pointer and a length, and are not converted: a
/// line has the bytes of the server, the playlist or the address, and need not be UTF-8. An address
/// need not be terminated by a zero. In a line a zero follows the last byte and is not counted in
/// the length; a line may also contain zeros. For addresses that are not ASCII see
/// sd_begin_download.
///
/// Units. Timestamps are counts of the 90 kHz system clock of ISO/IEC 13818-1 (seconds = ticks /
/// 90000). Durations, positions and clocks are floats in seconds.
///
/// End of stream. No call reports the end for every format. Frames that are still queued follow any
/// reported line.
/// - HLS on demand: on_buffered_time has reached on_duration, and no frame follows.
/// - HLS live: the stream ends only when its frames stop.
/// - TS: nothing is reported. No frame follows, and on_duration stops growing.
/// - FLV: nothing is reported. No frame follows.
/// - MP4: "PLAY:MP4 OK:" or "PLAY:MP4 NO:" (on_play_result): the download has ended, and every
///   received sample is queued. sd_end_download in mid-stream causes that line too.
///
/// Therefore a host treats a stream as ended if no callback was called for some seconds.
///
/// Standard output. The library writes lines to the standard output of the process. If that is a
/// pipe, something must read it: a full pipe blocks the library, and with it a stop.
///
/// End of the process. Call sd_end_download or sd_destroy before `main` returns. Once loaded, the
/// library stays in the process: dlclose and FreeLibrary succeed, but do not unload it.
#ifndef STREAM_DOWNLOADER_STREAM_DOWNLOADER_C_H_
#define STREAM_DOWNLOADER_STREAM_DOWNLOADER_C_H_

#include <stddef.h>
#include <stdint.h>

// Defined by the build of the library and by its CMake package. A program that leaves it undefined
// can link too.
#ifndef SD_API
#define SD_API
#endif

/// The version of this header, to be compared with sd_version() and sd_version_number(). Before 1.0
/// the interface may change with each minor version: a host that loads the library at run time
/// compares sd_version_number() / 1000 with SD_VERSION_NUMBER / 1000.
#define SD_VERSION "0.1.0"
#define SD_VERSION_NUMBER 1000  ///< major * 1000000 + minor * 1000 + patch

#ifdef __cplusplus
extern "C" {
#endif

/// The result of a call. The values are fixed; the type has the size of an int (32 bits, signed).
typedef enum sd_result {
  SD_OK = 0,

  // Nothing to do.
  SD_NOT_PLAYING = 1,      ///< sd_end_download: nothing was playing
  SD_NOTHING_STARTED = 2,  ///< sd_set_start_position: no start yet, the position is lost

  // Errors.
  SD_ERROR_EMPTY_ADDRESS = -1,    ///< an address of length 0; no line is sent
  SD_ERROR_UNKNOWN_SCHEME = -2,   ///< "PLAY UNKOWN:" and the address were sent to on_message
  SD_ERROR_NULL_DOWNLOADER = -3,  ///< the downloader is null
  SD_ERROR_NULL_ADDRESS = -4,     ///< the address is null, whatever its length
  SD_ERROR_NULL_CALLBACKS = -5,   ///< the pointer to the struct of callbacks is null
  SD_ERROR_NULL_OUT = -6,         ///< the pointer for the new downloader is null
  SD_ERROR_CALLBACKS_SIZE = -7,   ///< sd_callbacks.size is unknown to this library
  SD_ERROR_IN_CALLBACK = -8,      ///< called from inside a callback
  SD_ERROR_OUT_OF_MEMORY = -9,    ///< or an address that is longer than any memory
  SD_ERROR_OTHER = -10            ///< another failure, such as starting a thread
} sd_result;

/// One frame: the 48 bytes of MediaFrame (stream_player.h), field by field.
///
/// The contents of a frame depend on the format. In MP4 and FLV a video frame is one NAL unit
/// (ISO/IEC 14496-10) with a start code. The NAL units of one access unit follow each other with
/// the same timestamps, and parameter sets precede the first access unit. An audio frame is one AAC
/// frame. In TS and HLS a frame is the payload of one PES packet (ISO/IEC 13818-1 2.4.3.6), as
/// carried: usually one whole access unit, or one or several ADTS frames.
typedef struct sd_frame {
  /// Presentation timestamp, 90 kHz. MP4 and FLV report the decode time here, without the
  /// composition offset: if a stream has B-frames, the decoder's output must be reordered.
  uint64_t pts;

  /// Decode timestamp, 90 kHz. MP4 and FLV: the same as pts. TS and HLS: the DTS of the PES packet.
  /// Kept for compatibility: if a PES packet has no DTS, which is usual in streams without
  /// B-frames, this is an arbitrary number. Use dts only in a stream whose dts advances with pts
  /// and stays close to it; otherwise use pts.
  uint64_t dts;

  uint64_t play_time;  ///< delivery timestamp, 90 kHz, for start position and audio clock
  int32_t size;        ///< payload length in bytes
  // Four bytes of padding.

  /// First byte of the payload: H.264 or H.265 in Annex B form, or AAC in ADTS form. TS and HLS may
  /// carry another codec that the stream declares (MPEG-2 video, MPEG audio, LATM). FLV and MP4 put
  /// an ADTS header before any audio, whatever its codec. Valid until the callback returns.
  const uint8_t* data;

  uint64_t reserved;  ///< do not read it
} sd_frame;

/// Fails to compile if sd_frame has another size, as in 32-bit programs.
typedef char sd_frame_has_48_bytes[sizeof(sd_frame) == 48 ? 1 : -1];

/// The host's callbacks. Each gets `user` as its first argument. A call whose function pointer is
/// null is skipped: set the whole struct to zero before filling it in.
typedef struct sd_callbacks {
  /// sizeof(sd_callbacks): identifies the header that the host was compiled with. A size that no
  /// released header has is refused.
  size_t size;

  void* user;  ///< passed to every callback; the library does nothing else with it

  /// The total playable duration in seconds, as far as it is known. It may be reported many times
  /// and grow while the stream downloads. Never called for FLV.
  void (*on_duration)(void* user, float seconds);

  /// The stream time up to which the download has advanced, in seconds. Never called for FLV and
  /// TS.
  void (*on_buffered_time)(void* user, float seconds);

  /// The play time, in whole seconds, of the audio frame that the same thread delivers next.
  void (*on_audio_clock)(void* user, float seconds);

  /// One audio frame, one video frame. The record and its payload are valid until the callback
  /// returns.
  void (*on_audio_frame)(void* user, const sd_frame* frame);
  void (*on_video_frame)(void* user, const sd_frame* frame);

  /// One status line, for example "PLAY TS OK:" followed by the address.
  void (*on_message)(void* user, const char* line, size_t length);

  /// The result of a play attempt, for example "PLAY:M3U8 OK:" followed by the address, right after
  /// the matching status line. Never called for TS.
  void (*on_play_result)(void* user, const char* line, size_t length);
} sd_callbacks;

/// A downloader. It plays one address after another.
typedef struct sd_downloader sd_downloader;

/// The version of the library as text ("0.1.0") and as a number (major * 1000000 + minor * 1000 +
/// patch).
SD_API const char* sd_version(void);
SD_API uint32_t sd_version_number(void);

/// Returns the meaning of a result, in English, in lower case and without a full stop. Takes an
/// int, so that a host may pass any value that it has received: a value that is not in sd_result is
/// "unknown result". Never null.
SD_API const char* sd_result_text(int result);

/// Creates a downloader and stores it in `*out`, or stores null if that fails. Nothing plays yet.
///
/// Errors: SD_ERROR_NULL_CALLBACKS, SD_ERROR_NULL_OUT, SD_ERROR_CALLBACKS_SIZE,
/// SD_ERROR_IN_CALLBACK, SD_ERROR_OUT_OF_MEMORY, SD_ERROR_OTHER.
SD_API sd_result sd_create(const sd_callbacks* callbacks, sd_downloader** out);

/// Stops as sd_end_download does and may block as long, then releases the downloader. After success
/// no callback is called, and the downloader is not valid any more. After an error it remains
/// valid. Some kilobytes stay allocated for each downloader that has played TS, FLV or MP4: play
/// one address after another with the same downloader.
///
/// Errors: SD_ERROR_NULL_DOWNLOADER, SD_ERROR_IN_CALLBACK, SD_ERROR_OUT_OF_MEMORY, SD_ERROR_OTHER.
SD_API sd_result sd_destroy(sd_downloader* downloader);

/// Starts to play the address (`length` bytes at `url`; "http", "https" or "file://", in lower
/// case) and returns without waiting for the network. The address alone selects the format: HLS if
/// it contains "m3u8", otherwise MPEG-TS if it contains ".ts", otherwise FLV if it contains ".flv",
/// otherwise MP4. The choice is reported on this thread as "PLAY M3U8:", "PLAY TS:", "PLAY FLV:" or
/// "PLAY MP4:", followed by the address as given. SD_OK does not mean that the stream can be
/// fetched: failures are reported later, as status lines.
///
/// The address is ASCII. The requested part ends before the first control byte (below 0x20, or
/// 0x7F), also before a zero. Two adjacent bytes above 0x7F become one byte, and a single one ends
/// the address too, so neither UTF-8 nor another encoding is preserved: percent-encode such bytes
/// in "http" and "https" addresses (`%C3%A9`). The rest of a "file://" address is a path
/// (`file:///home/me/a.ts`, `file://C:\clips\a.ts`). TS and MP4 use the path unchanged, HLS decodes
/// percent signs and accepts no space, and FLV accepts both forms: use file names of ASCII without
/// spaces and percent signs.
///
/// Errors: SD_ERROR_EMPTY_ADDRESS, SD_ERROR_UNKNOWN_SCHEME, SD_ERROR_NULL_DOWNLOADER,
/// SD_ERROR_NULL_ADDRESS, SD_ERROR_IN_CALLBACK, SD_ERROR_OUT_OF_MEMORY, SD_ERROR_OTHER.
SD_API sd_result sd_begin_download(sd_downloader* downloader, const char* url, size_t length);

/// Stops whatever plays and blocks until no thread of the library calls a callback any more, at
/// most about 1.5 seconds after the callbacks themselves have returned. Frames not delivered yet
/// are dropped. The downloader can be started again. For the same address, TS and MP4 then continue
/// after the bytes received so far. So a TS or MP4 stream that has ended plays again only after
/// sd_set_start_position(downloader, 0). Returns SD_NOT_PLAYING if nothing was playing; a stream
/// that has ended by itself counts as playing.
///
/// Errors: SD_ERROR_NULL_DOWNLOADER, SD_ERROR_IN_CALLBACK, SD_ERROR_OUT_OF_MEMORY, SD_ERROR_OTHER.
SD_API sd_result sd_end_download(sd_downloader* downloader);

/// Sets where the next sd_begin_download starts, in seconds from the beginning of the stream: a
/// finite number, 0 or more, which is not checked. Only formats that this downloader has played
/// before receive it. If there is none, the position is lost and SD_NOTHING_STARTED is returned.
///
/// sd_end_download resets the position to 0, so a seek is sd_end_download, sd_set_start_position,
/// sd_begin_download, in this order. If the position is set while TS or MP4 plays, frames before it
/// are dropped from then on. HLS skips whole segments. FLV always plays from its beginning.
///
/// Errors: SD_ERROR_NULL_DOWNLOADER, SD_ERROR_IN_CALLBACK, SD_ERROR_OUT_OF_MEMORY, SD_ERROR_OTHER.
SD_API sd_result sd_set_start_position(sd_downloader* downloader, float seconds);

#ifdef __cplusplus
}
#endif

#endif  // STREAM_DOWNLOADER_STREAM_DOWNLOADER_C_H_
