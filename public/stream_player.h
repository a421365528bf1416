/// @file
///
/// The player interface: everything that the component passes to its host.
///
/// The host implements CStreamPlayerImp and passes a pointer to it to CStreamDownloader. The
/// component borrows the pointer: it never deletes the player, and the player must outlive every
/// facade that refers to it. The pointer may be null; then none of the calls below is made, and
/// frames are dropped.
///
/// This header is a binary contract between two separately built programs: the order of the virtual
/// operations and the layout of MediaFrame never change. It compiles alone, as C++11 or later.
///
/// Threads. The component calls the player from several of its threads at once: status lines and
/// durations from the thread that calls the facade and from download and parse threads, video
/// frames from one thread, audio clocks and audio frames from another. Each further start without
/// an EndDownload before it adds two more threads that deliver frames. The component holds none of
/// its locks during a call, so a call that blocks stalls only its own thread (and an EndDownload
/// that waits for it). The player must be safe to call concurrently, must not throw, and must not
/// call the facade from inside a call.
///
/// End of stream. No call reports the end for every format. Frames that are still queued follow any
/// reported line.
/// - HLS on demand: OnBufferedTime has reached OnDuration, and no frame follows.
/// - HLS live: the stream ends only when its frames stop. `#EXT-X-ENDLIST` in a later refresh is
///   not reported.
/// - TS: nothing is reported. No frame follows, and OnDuration stops growing.
/// - FLV: nothing is reported. No frame follows.
/// - MP4: "PLAY:MP4 OK:" or "PLAY:MP4 NO:" (OnPlayResult): the download has ended, and every
///   received sample is queued. EndDownload in mid-stream causes that line too.
///
/// Therefore a host treats a stream as ended if no call was made for some seconds.
///
/// Units. Timestamps are unsigned 64-bit counts of the 90 kHz system clock of ISO/IEC 13818-1
/// (seconds = ticks / 90000). Durations, positions and clocks are 32-bit floats in seconds.
#ifndef STREAM_DOWNLOADER_STREAM_PLAYER_H_
#define STREAM_DOWNLOADER_STREAM_PLAYER_H_

#include <cstddef>
#include <cstdint>
#include <string>

static_assert(sizeof(void*) == 8,
              "stream_downloader is a 64-bit library: build the host for 64 bits.");

// A std::string crosses the boundary by value, so the host must use the same std::string as the
// library: that of GCC's libstdc++, or of a release build of Visual C++ 2015 or later.
#if defined(_MSC_VER) && defined(_DEBUG)
#error \
    "Debug builds of Visual C++ have another std::string and another heap than stream_downloader.dll expects. Build this host in release mode (/MD or /MT, without _DEBUG), or use the C interface: stream_downloader_c.h."
#endif
static_assert(sizeof(std::string) == 32,
              "This std::string is not that of the stream_downloader library. Build the host with "
              "GCC's libstdc++ (and its new ABI), or with Visual C++ in release mode and without "
              "_ITERATOR_DEBUG_LEVEL, or use the C interface: stream_downloader_c.h.");

/// One frame, passed by value. The record is the receiver's copy; the payload is not.
///
/// The contents of a frame depend on the format. In MP4 and FLV a video frame is one NAL unit
/// (ISO/IEC 14496-10) with a start code. The NAL units of one access unit follow each other with
/// the same timestamps, and parameter sets precede the first access unit. An audio frame is one AAC
/// frame. In TS and HLS a frame is the payload of one PES packet (ISO/IEC 13818-1 2.4.3.6), as
/// carried: usually one whole access unit, or one or several ADTS frames.
struct MediaFrame {
  /// Presentation timestamp, 90 kHz. MP4 and FLV report the decode time here, without the
  /// composition offset: if a stream has B-frames, the decoder's output must be reordered.
  std::uint64_t pts;

  /// Decode timestamp, 90 kHz. MP4 and FLV: the same as pts. TS and HLS: the DTS of the PES packet.
  /// Kept for compatibility: if a PES packet has no DTS, which is usual in streams without
  /// B-frames, this is an arbitrary number. Use dts only in a stream whose dts advances with pts
  /// and stays close to it; otherwise use pts.
  std::uint64_t dts;

  std::uint64_t playTime;  ///< delivery timestamp, 90 kHz, for start position and audio clock
  std::int32_t size;       ///< payload length in bytes
  // Four bytes of padding that are never written.

  /// First byte of the payload: H.264 or H.265 in Annex B form, or AAC in ADTS form. TS and HLS may
  /// carry another codec that the stream declares (MPEG-2 video, MPEG audio, LATM). FLV and MP4 put
  /// an ADTS header before any audio, whatever its codec. The payload belongs to the component and
  /// is valid only until the call returns: copy what is needed longer.
  const std::uint8_t* data;

  std::uint64_t reserved;  ///< never written by the component; do not read it
};

static_assert(sizeof(MediaFrame) == 48, "the frame record is a binary contract");
static_assert(offsetof(MediaFrame, pts) == 0, "the frame record is a binary contract");
static_assert(offsetof(MediaFrame, dts) == 8, "the frame record is a binary contract");
static_assert(offsetof(MediaFrame, playTime) == 16, "the frame record is a binary contract");
static_assert(offsetof(MediaFrame, size) == 24, "the frame record is a binary contract");
static_assert(offsetof(MediaFrame, data) == 32, "the frame record is a binary contract");
static_assert(offsetof(MediaFrame, reserved) == 40, "the frame record is a binary contract");

/// The host's player. The number before an operation is its slot in the virtual table.
///
/// There is no virtual destructor: compilers give it one slot or two, and the slots below must be
/// the same for all of them.
class CStreamPlayerImp {
 public:
  /// 0 to 4: the host's own operations. The component never calls them.
  virtual void HostReserved0() {}
  virtual void HostReserved1() {}
  virtual void HostReserved2() {}
  virtual void HostReserved3() {}
  virtual void HostReserved4() {}

  /// 5: the total playable duration in seconds, as far as it is known. It may be reported many
  /// times and grow while the stream downloads. Never called for FLV.
  virtual void OnDuration(float seconds) = 0;

  /// 6: the stream time up to which the download has advanced, in seconds. Never called for FLV and
  /// TS.
  virtual void OnBufferedTime(float seconds) = 0;

  /// 7: the play time, in whole seconds, of the audio frame that the same thread delivers next.
  virtual void OnAudioClock(float seconds) = 0;

  /// 8: one audio frame. `frame.data` is valid during the call only.
  virtual void OnAudioFrame(MediaFrame frame) = 0;

  /// 9: one video frame. `frame.data` is valid during the call only.
  virtual void OnVideoFrame(MediaFrame frame) = 0;

  /// 10: one status line, for example "PLAY TS OK:" followed by the address. The string is the
  /// player's own copy. Its bytes are those of the stream or the address and need not be UTF-8.
  virtual void OnMessage(std::string line) = 0;

  /// 11: the result of a play attempt, for example "PLAY:M3U8 OK:" followed by the address, right
  /// after the matching status line. Never called for TS.
  virtual void OnPlayResult(std::string line) = 0;

 protected:
  ~CStreamPlayerImp() = default;  // the component never destroys a player
};

#endif  // STREAM_DOWNLOADER_STREAM_PLAYER_H_
