// The C interface: what stream_downloader.h and stream_player.h offer, for hosts in C, in languages
// that call C functions (C#, Python, Rust), and in C++ of any compiler and any build. No C++ type
// crosses it.
//
// A host fills in sd_callbacks, makes a downloader with sd_create, hands it an address with
// sd_begin_download, and gets frames, status lines, durations and an audio clock through its
// callbacks until it calls sd_end_download. This header compiles alone, as C99 and as C++11 or
// later, for 64-bit programs. The functions and callbacks have the platform's default C calling
// convention.
//
// Ownership. sd_create copies the struct of callbacks. The caller owns the downloader until it
// passes it to sd_destroy; it owns what `user` points to, which must last until sd_destroy has
// returned. What a callback is given belongs to the library and is valid until the callback
// returns: copy what must last. A text that a function returns is a constant and is never released.
// One downloader at a time should play, whether made here or by CStreamDownloader: frame queues and
// cache files are shared by the whole process. Stop (sd_end_download) before an address of another
// kind is started.
//
// Cache files. They are in the directory `tmp` beside the executable of the process or, where that
// cannot be made or written, in the user's cache. For a host in Python the executable is the
// interpreter. Two processes of one executable must not play at the same time.
//
// Threads. Call the functions of one downloader from one thread at a time. Different downloaders
// may be used by different threads. The callbacks are called from several threads at once: video
// frames from one thread of the library, audio clocks and audio frames from another (from two more
// after each further start without an sd_end_download before it), durations from download and parse
// threads, status lines from those and from the thread that calls a function of the downloader. The
// library holds no lock meanwhile, so a callback that blocks stalls its own thread only (and an
// sd_end_download that waits for it). The callbacks must be safe to call concurrently, and must
// return: no C++ exception, no longjmp, no end of the thread and no panic or exception of another
// language may leave one.
//
// Calls from inside a callback. sd_version, sd_version_number and sd_result_text may be called
// anywhere, also from inside a callback. The other functions return SD_ERROR_IN_CALLBACK there and
// do nothing else, whichever downloader they are given, since a stop waits for the callbacks to
// return. For the same reason no callback may wait for another thread that calls one of them, and
// no thread may call one of them while it holds a lock that a callback takes: nothing can refuse
// that, and neither thread would go on. The lock of an interpreter counts too (Python's ctypes.CDLL
// releases it, ctypes.PyDLL does not).
//
// Errors. Each function that can fail returns an sd_result: SD_OK, a positive value where there was
// nothing to do, or a negative one for an error. After an error nothing has been started or
// stopped. SD_ERROR_OUT_OF_MEMORY and SD_ERROR_OTHER are exceptions: after them call
// sd_end_download or sd_destroy. No C++ exception leaves a function. A pointer that is not null
// must be valid: that cannot be checked.
//
// Texts. Addresses and lines are bytes, given as a pointer and a length, and are not converted: a
// line has the bytes that the server, the playlist or the address had, and need not be UTF-8. An
// address need not be terminated by a zero. In a line a zero follows the last byte and is not
// counted in the length; a line may also contain zeros. About addresses that are not ASCII see
// sd_begin_download.
//
// Units. Timestamps are counts of the 90 kHz system clock of ISO/IEC 13818-1 (seconds = ticks /
// 90000). Durations, positions and clocks are floats in seconds.
//
// End of stream. No call reports it for every format; frames that are still queued follow whatever
// line is reported.
//   HLS   On demand: on_buffered_time has reached on_duration and no frame follows. A live stream
//         ends only when its frames cease.
//   TS    Nothing is reported: no frame follows, and on_duration stops growing.
//   FLV   Nothing is reported: no frame follows.
//   MP4   "PLAY:MP4 OK:" or "PLAY:MP4 NO:" (on_play_result): the download has ended, and every
//         sample that was received is queued. sd_end_download in mid-stream causes that line too.
// A host therefore takes a stream for ended when no callback was called for some seconds.
//
// Standard output. The library writes lines to the standard output of the process. If that is a
// pipe, something has to read it: a full pipe blocks the library, and with it the stop.
//
// End of the process. Call sd_end_download or sd_destroy before `main` returns. Once loaded, the
// library stays in the process: dlclose and FreeLibrary succeed, but do not unload it.
#ifndef STREAM_DOWNLOADER_STREAM_DOWNLOADER_C_H_
#define STREAM_DOWNLOADER_STREAM_DOWNLOADER_C_H_

#include <stddef.h>
#include <stdint.h>

// Set by the build of the library and by its CMake package; a program that sets nothing links too.
#ifndef SD_API
#define SD_API
#endif

// The version of this header, to be compared with sd_version() and sd_version_number(). Before 1.0
// the interface may change with each minor version: a host that loads the library by itself
// compares sd_version_number() / 1000 with SD_VERSION_NUMBER / 1000.
#define SD_VERSION "0.1.0"
#define SD_VERSION_NUMBER 1000  // major * 1000000 + minor * 1000 + patch

#ifdef __cplusplus
extern "C" {
#endif

// How a call went. The values are fixed; the type has the size of an int (32 bits, signed).
typedef enum sd_result {
  SD_OK = 0,

  // Nothing to do.
  SD_NOT_PLAYING = 1,      // sd_end_download: nothing was playing
  SD_NOTHING_STARTED = 2,  // sd_set_start_position: nothing was started yet; the position is lost

  // Errors.
  SD_ERROR_EMPTY_ADDRESS = -1,    // an address of length 0; no line is sent
  SD_ERROR_UNKNOWN_SCHEME = -2,   // "PLAY UNKOWN:" and the address were sent to on_message
  SD_ERROR_NULL_DOWNLOADER = -3,  // the downloader is null
  SD_ERROR_NULL_ADDRESS = -4,     // the address is null, whatever its length
  SD_ERROR_NULL_CALLBACKS = -5,   // the pointer to the struct of callbacks is null
  SD_ERROR_NULL_OUT = -6,         // the pointer to where the downloader is to be stored is null
  SD_ERROR_CALLBACKS_SIZE = -7,   // sd_callbacks.size is not one that this library knows
  SD_ERROR_IN_CALLBACK = -8,      // called from inside a callback
  SD_ERROR_OUT_OF_MEMORY = -9,    // or an address that is longer than any memory
  SD_ERROR_OTHER = -10            // something else failed, such as starting a thread
} sd_result;

// One frame: the 48 bytes of MediaFrame (stream_player.h), field for field.
//
// What a frame is depends on the format. In MP4 and FLV a video frame is one NAL unit (ISO/IEC
// 14496-10) with a start code: the units of one picture follow each other with the same timestamps,
// and parameter sets precede the first picture. An audio frame is one AAC frame. In TS and HLS a
// frame is the payload of one PES packet (ISO/IEC 13818-1 2.4.3.6) as it was carried: usually one
// whole picture, and one or several ADTS frames.
typedef struct sd_frame {
  // Presentation timestamp, 90 kHz. MP4 and FLV report the decode time here, without the
  // composition offset: where a stream has B-frames, the decoder's output has to be reordered.
  uint64_t pts;

  // Decode timestamp, 90 kHz. MP4 and FLV: the same as pts. TS and HLS: that of the PES packet. A
  // PES packet without one, which is usual in streams without B-frames, yields an arbitrary number
  // here: use dts only in a stream whose dts advances with pts and stays close to it, otherwise use
  // pts.
  uint64_t dts;

  uint64_t play_time;  // delivery timestamp, 90 kHz: start position and audio clock follow it
  int32_t size;        // payload length in bytes
  // Four bytes of padding.

  // First byte of the payload: H.264 or H.265 in Annex B form, or AAC in ADTS form. TS and HLS may
  // carry another codec that the stream declares (MPEG-2 video, MPEG audio, LATM); FLV and MP4 put
  // an ADTS header in front of any audio, whatever its codec. Valid until the callback returns.
  const uint8_t* data;

  uint64_t reserved;  // do not read it
} sd_frame;

// Fails to compile where the layout of sd_frame is another one, as in 32-bit programs.
typedef char sd_frame_has_48_bytes[sizeof(sd_frame) == 48 ? 1 : -1];

// The host's callbacks. Each is given `user` first. A null function pointer leaves that call out:
// set the whole struct to zero before filling it in.
typedef struct sd_callbacks {
  // sizeof(sd_callbacks): identifies the header that the host was compiled with. A size that no
  // released header has is refused.
  size_t size;

  void* user;  // passed on; the library does nothing else with it

  // Total playable duration in seconds, as far as it is known now. It may be reported many times
  // and grow while the stream downloads. Never called for FLV.
  void (*on_duration)(void* user, float seconds);

  // How far the download has got, in seconds of stream time. Never called for FLV and TS.
  void (*on_buffered_time)(void* user, float seconds);

  // The play time, in whole seconds, of the audio frame that the same thread delivers next.
  void (*on_audio_clock)(void* user, float seconds);

  // One audio frame, one video frame. The record and its payload are valid until the callback
  // returns.
  void (*on_audio_frame)(void* user, const sd_frame* frame);
  void (*on_video_frame)(void* user, const sd_frame* frame);

  // One status line, for example "PLAY TS OK:" followed by the address.
  void (*on_message)(void* user, const char* line, size_t length);

  // The outcome of a play attempt, for example "PLAY:M3U8 OK:" and the address, right after the
  // matching status line. Never called for TS.
  void (*on_play_result)(void* user, const char* line, size_t length);
} sd_callbacks;

// One downloader: an address plays on it, then another.
typedef struct sd_downloader sd_downloader;

// The version of the library as text ("0.1.0") and as a number (major * 1000000 + minor * 1000 +
// patch).
SD_API const char* sd_version(void);
SD_API uint32_t sd_version_number(void);

// What a result means, in English, in lower case and without a full stop. It takes an int, so that
// a host may ask about whatever it has received: a value that is not in sd_result is "unknown
// result". Never null.
SD_API const char* sd_result_text(int result);

// Makes a downloader and stores it in `*out`; null is stored where that fails. Nothing plays yet.
// Errors: SD_ERROR_NULL_CALLBACKS, SD_ERROR_NULL_OUT, SD_ERROR_CALLBACKS_SIZE,
// SD_ERROR_IN_CALLBACK, SD_ERROR_OUT_OF_MEMORY, SD_ERROR_OTHER.
SD_API sd_result sd_create(const sd_callbacks* callbacks, sd_downloader** out);

// Stops as sd_end_download does, also in how long it waits, and releases the downloader: once this
// has succeeded, no callback is called and the downloader is not valid any more. After an error it
// remains valid. Some kilobytes stay allocated for each downloader that has played TS, FLV or MP4:
// play one address after another with the same downloader. Errors: SD_ERROR_NULL_DOWNLOADER,
// SD_ERROR_IN_CALLBACK, SD_ERROR_OUT_OF_MEMORY, SD_ERROR_OTHER.
SD_API sd_result sd_destroy(sd_downloader* downloader);

// Starts to play the address (`length` bytes at `url`; "http", "https" or "file://", in lower case)
// and returns without waiting for the network. The address alone decides the format: "m3u8"
// anywhere in it is HLS, else ".ts" is MPEG-TS, else ".flv" is FLV, else it is MP4. The choice is
// reported as "PLAY M3U8:", "PLAY TS:", "PLAY FLV:" or "PLAY MP4:" and the address as it was given,
// on this thread. SD_OK does not mean that the stream can be fetched: failures are reported later,
// as status lines.
//
// The address is made of ASCII. What is requested ends before the first control byte (below 0x20,
// or 0x7F), also before a zero. Of bytes above 0x7F two in a row become one, and a single one ends
// the address too, so that neither UTF-8 nor another encoding arrives as it was: in "http" and
// "https" addresses percent-encode those bytes ("%C3%A9"). The rest of a "file://" address is a
// path ("file:///home/me/a.ts", "file://C:\clips\a.ts"). TS and MP4 take it as it is, HLS decodes
// percent signs and takes no space, FLV takes both forms: keep its names to ASCII, without spaces
// and percent signs.
//
// Errors: SD_ERROR_EMPTY_ADDRESS, SD_ERROR_UNKNOWN_SCHEME, SD_ERROR_NULL_DOWNLOADER,
// SD_ERROR_NULL_ADDRESS, SD_ERROR_IN_CALLBACK, SD_ERROR_OUT_OF_MEMORY, SD_ERROR_OTHER.
SD_API sd_result sd_begin_download(sd_downloader* downloader, const char* url, size_t length);

// Stops whatever plays and waits until no thread of the library calls a callback any more, at most
// about 1.5 seconds after the callbacks themselves have returned. Frames not delivered yet are
// dropped. The downloader can be started again; for the same address TS and MP4 then continue after
// what they have received. So a TS or MP4 stream that has ended plays again only after
// sd_set_start_position(downloader, 0). Returns SD_NOT_PLAYING when nothing was playing; a stream
// that has ended by itself counts as playing. Errors: SD_ERROR_NULL_DOWNLOADER,
// SD_ERROR_IN_CALLBACK, SD_ERROR_OUT_OF_MEMORY, SD_ERROR_OTHER.
SD_API sd_result sd_end_download(sd_downloader* downloader);

// Sets where the next sd_begin_download starts, in seconds from the beginning of the stream: a
// finite number, 0 or more, which is not checked. Only formats that this downloader has played
// before receive it; SD_NOTHING_STARTED is returned, and the position is lost, when there is none.
// sd_end_download sets the position back to 0: the order of a seek is sd_end_download,
// sd_set_start_position, sd_begin_download. Given while TS or MP4 plays, it makes what plays drop
// frames that lie before it; HLS skips whole segments, and FLV always plays from its beginning.
// Errors: SD_ERROR_NULL_DOWNLOADER, SD_ERROR_IN_CALLBACK, SD_ERROR_OUT_OF_MEMORY, SD_ERROR_OTHER.
SD_API sd_result sd_set_start_position(sd_downloader* downloader, float seconds);

#ifdef __cplusplus
}
#endif

#endif  // STREAM_DOWNLOADER_STREAM_DOWNLOADER_C_H_
