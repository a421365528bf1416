// The player interface: everything the component hands to its host.
//
// The host implements CStreamPlayerImp and gives a pointer to it to CStreamDownloader. The
// component borrows that pointer: it never deletes it, and the player must outlive every facade
// that holds it. The pointer may be null; then every call below is left out and frames are released
// unseen.
//
// This header is a binary contract between two separately built programs: the order of the virtual
// operations and the layout of MediaFrame never change. It compiles alone, as C++11 or later.
//
// Threads. The component calls the player from several of its threads at once: status lines and
// durations from the caller of the facade and from download and parse threads, video frames from
// one thread, audio clocks and audio frames from another; two more after each further start that no
// EndDownload came before. It holds no lock of its own meanwhile, so a call that blocks stalls the
// calling thread only (and an EndDownload that waits for it). The player must be safe to call
// concurrently, must not throw, and must not call the facade from inside a call.
//
// End of stream. No call reports it for every format; the frames that are still queued follow
// whatever line is reported.
//   HLS   On demand: OnBufferedTime has reached OnDuration and no frame follows. A live stream ends
//         only when its frames cease: "#EXT-X-ENDLIST" in a later refresh is not reported.
//   TS    Nothing is reported: no frame follows, and OnDuration stops growing.
//   FLV   Nothing is reported: no frame follows.
//   MP4   "PLAY:MP4 OK:" or "PLAY:MP4 NO:" (OnPlayResult): the download has ended, and every sample
//         that was received is queued. EndDownload in mid-stream causes that line too.
// A host therefore takes a stream for ended when no call was made for some seconds.
//
// Units. Timestamps are unsigned 64-bit counts of the 90 kHz system clock of ISO/IEC 13818-1
// (seconds = ticks / 90000). Durations, positions and clocks are 32-bit floats in seconds.
#ifndef STREAM_DOWNLOADER_STREAM_PLAYER_H_
#define STREAM_DOWNLOADER_STREAM_PLAYER_H_

#include <cstddef>
#include <cstdint>
#include <string>

static_assert(sizeof(void*) == 8,
              "stream_downloader is a 64-bit library: build the host for 64 bits.");

// A std::string crosses the boundary by value, so the host's has to be the library's: that of GCC's
// libstdc++, or of a release build of Visual C++ 2015 or later.
#if defined(_MSC_VER) && defined(_DEBUG)
#error \
    "Debug builds of Visual C++ have another std::string and another heap than stream_downloader.dll expects. Build this host in release mode (/MD or /MT, without _DEBUG), or use the C interface: stream_downloader_c.h."
#endif
static_assert(sizeof(std::string) == 32,
              "This std::string is not that of the stream_downloader library. Build the host with "
              "GCC's libstdc++ (and its new ABI), or with Visual C++ in release mode and without "
              "_ITERATOR_DEBUG_LEVEL, or use the C interface: stream_downloader_c.h.");

// One frame, passed by value: the record is the receiver's copy, the payload is not.
//
// What a frame is depends on the format. In MP4 and FLV a video frame is one NAL unit
// (ISO/IEC 14496-10) with a start code: the units of one picture follow each other with the same
// timestamps, and parameter sets precede the first picture. An audio frame is one AAC frame. In TS
// and HLS a frame is the payload of one PES packet (ISO/IEC 13818-1 2.4.3.6) as it was carried:
// usually one whole picture, and one or several ADTS frames.
struct MediaFrame {
  // Presentation timestamp, 90 kHz. MP4 and FLV report the decode time here, without the
  // composition offset: where a stream has B-frames, the decoder's output has to be reordered.
  std::uint64_t pts;

  // Decode timestamp, 90 kHz. MP4 and FLV: the same as pts. TS and HLS: that of the PES packet. A
  // PES packet without one, which is usual in streams without B-frames, yields an arbitrary number
  // here (kept for compatibility): use dts only in a stream whose dts advances with pts and stays
  // close to it, otherwise use pts.
  std::uint64_t dts;

  std::uint64_t playTime;  // delivery timestamp, 90 kHz: start position and audio clock follow it
  std::int32_t size;       // payload length in bytes
  // Four bytes of padding that are never written.

  // First byte of the payload: H.264 or H.265 in Annex B form, or AAC in ADTS form. TS and HLS may
  // carry another codec that the stream declares (MPEG-2 video, MPEG audio, LATM); FLV and MP4 put
  // an ADTS header in front of any audio, whatever its codec. The payload belongs to the component
  // and is valid only until the call returns; copy what must last.
  const std::uint8_t* data;

  std::uint64_t reserved;  // never written by the component; do not read it
};

static_assert(sizeof(MediaFrame) == 48, "the frame record is a binary contract");
static_assert(offsetof(MediaFrame, pts) == 0, "the frame record is a binary contract");
static_assert(offsetof(MediaFrame, dts) == 8, "the frame record is a binary contract");
static_assert(offsetof(MediaFrame, playTime) == 16, "the frame record is a binary contract");
static_assert(offsetof(MediaFrame, size) == 24, "the frame record is a binary contract");
static_assert(offsetof(MediaFrame, data) == 32, "the frame record is a binary contract");
static_assert(offsetof(MediaFrame, reserved) == 40, "the frame record is a binary contract");

// The host's player. The number before an operation is its slot in the virtual table.
//
// There is no virtual destructor on purpose: compilers give it one slot or two, and the slots below
// must be the same for all of them.
class CStreamPlayerImp {
 public:
  // 0 to 4: the host's own. The component never calls them.
  virtual void HostReserved0() {}
  virtual void HostReserved1() {}
  virtual void HostReserved2() {}
  virtual void HostReserved3() {}
  virtual void HostReserved4() {}

  // 5: total playable duration in seconds, as far as it is known now. It may be reported many times
  // and grow while the stream downloads. Never called for FLV.
  virtual void OnDuration(float seconds) = 0;

  // 6: how far the download has got, in seconds of stream time. Never called for FLV and TS.
  virtual void OnBufferedTime(float seconds) = 0;

  // 7: the play time, in whole seconds, of the audio frame that the same thread delivers next.
  virtual void OnAudioClock(float seconds) = 0;

  // 8: one audio frame. `frame.data` is valid during the call only.
  virtual void OnAudioFrame(MediaFrame frame) = 0;

  // 9: one video frame. `frame.data` is valid during the call only.
  virtual void OnVideoFrame(MediaFrame frame) = 0;

  // 10: one status line, for example "PLAY TS OK:" followed by the address. The string is the
  // player's own copy; its bytes are those of the stream or address and need not be UTF-8.
  virtual void OnMessage(std::string line) = 0;

  // 11: the outcome of a play attempt, for example "PLAY:M3U8 OK:" and the address, right after the
  // matching status line. Never called for TS.
  virtual void OnPlayResult(std::string line) = 0;

 protected:
  ~CStreamPlayerImp() = default;  // the component never destroys a player
};

#endif  // STREAM_DOWNLOADER_STREAM_PLAYER_H_
