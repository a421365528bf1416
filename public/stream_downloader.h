/// @file
///
/// The facade: the only class that the library exports and the only one that a host calls.
///
/// A host creates a CStreamDownloader with its player and starts an address with BeginDownload. It
/// then gets frames, status lines, durations and an audio clock through the player
/// (stream_player.h) until it calls EndDownload. This header compiles alone, as C++11 or later.
///
/// Ownership. The facade borrows the player and owns its pipelines. Only one facade should play at
/// a time: all facades of a process share the frame queues and the demultiplexer. Call EndDownload
/// before an address of another kind is started. On Windows, code of one compiler must construct,
/// assign and destroy a facade and must have compiled its player. The library serves GCC and Visual
/// C++, and assumes that a player is of the compiler that constructed the facade.
///
/// Threads. Call the members from one thread at a time. Do not call a member from inside a call to
/// the player: EndDownload waits for the threads that make those calls. Members throw only the
/// exceptions of the standard library when memory or threads run out; for a host of Visual C++ they
/// return false instead.
///
/// Standard output. The component writes lines to the standard output of the process, some of them
/// for every damaged packet of a stream. If that is a pipe, something must read it: a full pipe
/// blocks the component, and with it a stop.
///
/// End of the process. Call EndDownload before `main` returns and before the player is destroyed.
#ifndef STREAM_DOWNLOADER_STREAM_DOWNLOADER_H_
#define STREAM_DOWNLOADER_STREAM_DOWNLOADER_H_

#include <cstddef>
#include <string>

#include "stream_player.h"

// Defined by the build of the library and by its CMake package. A program that leaves it undefined
// can link too.
#ifndef STREAM_DOWNLOADER_API
#define STREAM_DOWNLOADER_API
#endif

class CM3u8Downloader;
class CMp4Downloader;
class CFlvDownloader;
class CTsDownloader;

class STREAM_DOWNLOADER_API CStreamDownloader {
 public:
  /// `player` is borrowed and must outlive the facade. Null: nothing is reported or delivered.
  explicit CStreamDownloader(CStreamPlayerImp* player);

  /// Stops as EndDownload does, and deletes the HLS pipeline. Kept for compatibility: the TS, FLV
  /// and MP4 pipelines are not deleted.
  ~CStreamDownloader();

  CStreamDownloader(const CStreamDownloader&) = delete;

  /// Makes this facade share the player and the pipelines of `other` (a shallow copy). The
  /// pipelines that it had before are neither stopped nor deleted. Of the facades that share an HLS
  /// pipeline, only one may be destroyed.
  CStreamDownloader& operator=(const CStreamDownloader& other);

  /// Starts to play `url` ("http", "https" or "file://") and returns without waiting for the
  /// network. The address alone selects the format: HLS if it contains "m3u8", otherwise MPEG-TS if
  /// it contains ".ts", otherwise FLV if it contains ".flv", otherwise MP4. The choice is reported
  /// as "PLAY M3U8:", "PLAY TS:", "PLAY FLV:" or "PLAY MP4:".
  ///
  /// Returns false for an empty address (nothing is reported) and for one of another scheme
  /// ("PLAY UNKOWN:" is reported). True does not mean that the stream can be fetched: failures are
  /// reported later, as status lines.
  bool BeginDownload(std::string url);

  /// Stops whatever plays and blocks until no thread of the component calls the player any more, at
  /// most about 1.5 seconds after the player's own calls have returned. Frames not delivered yet
  /// are dropped. The pipelines remain and can be started again. For the same address, TS and MP4
  /// then continue after the bytes received so far. So a TS or MP4 stream that has ended plays
  /// again only after SetStartPostion(0). Returns false if nothing was playing.
  bool EndDownload();

  /// Sets where the next BeginDownload starts, in seconds from the beginning of the stream. Only
  /// pipelines that exist receive it: a position set before the first start of a format is lost.
  /// Returns false if no pipeline exists.
  ///
  /// EndDownload resets the position to 0, so a seek is EndDownload, SetStartPostion,
  /// BeginDownload, in this order. If the position is set while TS or MP4 plays, frames before it
  /// are dropped from then on. HLS skips whole segments. FLV always plays from its beginning.
  ///
  /// Kept for compatibility: the spelling of the name.
  bool SetStartPostion(float seconds);

#if !defined(_MSC_VER)  // Visual C++ generates this member by itself
  /// Zero-fills the first `size` bytes of the object. Part of the binary interface that older hosts
  /// were linked against. A host does not call it.
  void __autoclassinit2(std::size_t size);
#endif

 private:
  // Six pointers in this order: part of the binary interface.
  CStreamPlayerImp* player_;
  CM3u8Downloader* hls_;
  void* reserved_;  // never set
  CMp4Downloader* mp4_;
  CFlvDownloader* flv_;
  CTsDownloader* ts_;
};

#endif  // STREAM_DOWNLOADER_STREAM_DOWNLOADER_H_
