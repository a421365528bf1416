// An address with an unknown scheme is reported in a line, unchanged.
#ifndef TESTS_MSVC_ECHO_H_
#define TESTS_MSVC_ECHO_H_

#include <stream_downloader.h>

#include <string>

#include "recorder.h"
#include "report.h"

inline void ExpectEcho(CStreamDownloader& facade, const Recorder& player, std::string address) {
  const std::string line = "PLAY UNKOWN:" + address;
  Expect(!facade.BeginDownload(static_cast<std::string&&>(address)),
         "an address with an unknown scheme was accepted");
  if (player.LastMessage() != line) Fail("expected " + line + " but got " + player.LastMessage());
}

#endif  // TESTS_MSVC_ECHO_H_
