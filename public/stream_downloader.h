// The facade: the only class that the library exports and the only one that a host calls.
//
// A host makes a CStreamDownloader with its player, hands it an address with BeginDownload, and
// gets frames, status lines, durations and an audio clock through the player (stream_player.h)
// until it calls EndDownload. This header compiles alone, as C++11 or later.
//
// Ownership. The facade borrows the player and owns its pipelines. One facade at a time should
// play: the frame queues and the demultiplexer below it are shared by the whole process. Stop
// (EndDownload) before another address of another kind is started. On Windows, code of one compiler
// makes, assigns and destroys a facade and has compiled its player: the library serves GCC and
// Visual C++, and takes the player for one of the compiler that made the facade.
//
// Threads. Call the members from one thread at a time. No member may be called from inside a call
// to the player: EndDownload waits for the threads that make those calls. Members throw nothing of
// their own, only what the standard library throws when memory or threads run out; in a host of
// Visual C++ they return false then.
//
// Standard output. The component writes lines to the standard output of the process, some of them
// for every damaged packet of a stream. If that is a pipe, something has to read it: a full pipe
// blocks the component, and with it the stop.
//
// End of the process. Call EndDownload before `main` returns, as before the player is destroyed.
#ifndef STREAM_DOWNLOADER_STREAM_DOWNLOADER_H_
#define STREAM_DOWNLOADER_STREAM_DOWNLOADER_H_

#include <cstddef>
#include <string>

#include "stream_player.h"

// Set by the build of the library and by its CMake package; a program that sets nothing links too.
#ifndef STREAM_DOWNLOADER_API
#define STREAM_DOWNLOADER_API
#endif

class CM3u8Downloader;
class CMp4Downloader;
class CFlvDownloader;
class CTsDownloader;

class STREAM_DOWNLOADER_API CStreamDownloader {
 public:
  // `player` is borrowed and must outlive the facade; null plays in silence.
  explicit CStreamDownloader(CStreamPlayerImp* player);

  // Stops everything as EndDownload does, then lets go of the pipelines.
  ~CStreamDownloader();

  CStreamDownloader(const CStreamDownloader&) = delete;

  // Makes this facade share the other's player and pipelines (a shallow copy; what it held before
  // is let go of, not stopped). Of facades that share an HLS pipeline only one may be destroyed.
  CStreamDownloader& operator=(const CStreamDownloader& other);

  // Starts to play `url` ("http", "https" or "file://") and returns without waiting for the
  // network. The address alone decides the format: "m3u8" anywhere in it is HLS, else ".ts" is
  // MPEG-TS, else ".flv" is FLV, else it is MP4. The choice is told as "PLAY M3U8:", "PLAY TS:",
  // "PLAY FLV:" or "PLAY MP4:".
  //
  // Returns false for an empty address (in silence) and for one of another scheme ("PLAY UNKOWN:").
  // true does not mean that the stream can be had: failures come later as status lines.
  bool BeginDownload(std::string url);

  // Stops whatever plays and waits until no thread of the component calls the player any more, at
  // most about 1.5 seconds after the player's own calls have returned. Frames not delivered yet are
  // dropped. The pipelines stay and can be started again; for the same address TS and MP4 then
  // continue after what they have received. So a TS or MP4 stream that has ended plays again only
  // after SetStartPostion(0). Returns false when nothing was playing.
  bool EndDownload();

  // Sets where the next BeginDownload starts, in seconds from the beginning of the stream. Only
  // pipelines that exist receive it: a position set before the first start of a format is lost.
  // Returns false when no pipeline exists.
  // EndDownload sets the position back to 0: the order of a seek is EndDownload, SetStartPostion,
  // BeginDownload. Given while TS or MP4 plays, it makes what plays drop frames that lie before it;
  // HLS passes over whole segments, and FLV plays from its beginning all the same.
  // The name is spelt this way on purpose.
  bool SetStartPostion(float seconds);

#if !defined(_MSC_VER)  // that compiler makes this member by itself
  // Zero-fills the first `size` bytes of the object: part of the binary interface that older hosts
  // were linked against. A host does not call it.
  void __autoclassinit2(std::size_t size);
#endif

 private:
  // Six pointers in this order, part of the binary interface.
  CStreamPlayerImp* player_;
  CM3u8Downloader* hls_;
  void* reserved_;  // never filled
  CMp4Downloader* mp4_;
  CFlvDownloader* flv_;
  CTsDownloader* ts_;
};

#endif  // STREAM_DOWNLOADER_STREAM_DOWNLOADER_H_
