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
// Units. Timestamps are unsigned 64-bit counts of the 90 kHz system clock of ISO/IEC 13818-1
// (seconds = ticks / 90000). Durations, positions and clocks are 32-bit floats in seconds.
#ifndef STREAM_DOWNLOADER_STREAM_PLAYER_H_
#define STREAM_DOWNLOADER_STREAM_PLAYER_H_

#include <cstddef>
#include <cstdint>
#include <string>

// One access unit, passed by value: the record is the receiver's copy, the payload is not.
struct MediaFrame {
  std::uint64_t pts;       // presentation timestamp, 90 kHz
  std::uint64_t dts;       // decode timestamp, 90 kHz
  std::uint64_t playTime;  // delivery timestamp, 90 kHz: what start position and audio clock go by
  std::int32_t size;       // payload length in bytes
  // Four bytes of padding that are never written.

  // First byte of the payload: H.264 or H.265 in Annex B form, or AAC in ADTS form. A transport
  // stream gives the payload of one PES packet as it was carried, so there a frame may hold several
  // ADTS frames, or another codec that the stream names (MPEG-2 video, MPEG audio, LATM). The
  // payload belongs to the component and is valid only until the call returns; copy what must last.
  const std::uint8_t* data;

  std::uint64_t reserved;  // never written by the component; do not read it
};

static_assert(sizeof(void*) == 8, "the frame record is defined for 64-bit programs");
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

  // 8: one AAC access unit. `frame.data` is valid during the call only.
  virtual void OnAudioFrame(MediaFrame frame) = 0;

  // 9: one H.264 or H.265 access unit. `frame.data` is valid during the call only.
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
