#include <stream_downloader.h>

#include "cases.h"
#include "echo.h"
#include "recorder.h"
#include "report.h"
#include "system.h"

void MembersAnswerWhileNothingPlays() {
  Recorder player;
  CStreamDownloader facade(&player);
  Expect(!facade.EndDownload(), "something was stopped");
  Expect(!facade.SetStartPostion(1.5F), "a position was accepted");
  Expect(!facade.BeginDownload(std::string()), "an empty address was accepted");
  Expect(player.Messages() == 0, "an empty address was reported");
  ExpectEcho(facade, player, "rtmp");

  auto* const on_the_heap = new CStreamDownloader(&player);
  ExpectEcho(*on_the_heap, player, "an address that has to be in a block");
  delete on_the_heap;
  ExpectEcho(facade, player, "the first facade goes on, and with it its player");
  ExpectValidHeap();
}

void NullPlayerIsSilent() {
  CStreamDownloader facade(nullptr);
  Expect(!facade.BeginDownload("an address that has to be in a block"), "it was accepted");
  Expect(!facade.EndDownload(), "something was stopped");
  ExpectValidHeap();
}

void AssignedFacadeUsesThePlayerOfTheOther() {
  Recorder first;
  Recorder second;
  auto* const facade = new CStreamDownloader(&first);
  CStreamDownloader copy(&second);
  Expect(&(copy = *facade) == &copy, "the left-hand facade was not returned");
  ExpectEcho(copy, first, "an address that has to be in a block");
  Expect(second.Messages() == 0, "the previous player was called");
  delete facade;
  ExpectEcho(copy, first, "another address, after the end of the facade that was copied");
  const CStreamDownloader& itself = copy;
  ExpectEcho(copy = itself, first, "a third address, after a copy of the facade to itself");
  ExpectValidHeap();
}

void PlayerThatIsTheSecondBaseIsCalled() {
  struct Window {
    virtual void Resize() {}
    int width = 0;
  };
  struct WindowWithAPlayer : Window, Recorder {};
  WindowWithAPlayer player;
  CStreamDownloader facade(&player);
  ExpectEcho(facade, player, "an address that has to be in a block");
  ExpectValidHeap();
}

void DestructionStopsWhatPlays() {
  Recorder player;
  auto* const facade = new CStreamDownloader(&player);
  Expect(facade->BeginDownload("file:///no/such.m3u8"), "the address was not accepted");
  Expect(!player.HasMessage("PLAY STOP OK"), "it was stopped too early");
  delete facade;
  Expect(player.HasMessage("PLAY STOP OK"), "it was not stopped");
  player.ExpectNoCall();
}

void ZeroFillIsReached() {
  using ZeroFill = void (*)(void* facade, std::size_t size);
  const auto zero_fill = reinterpret_cast<ZeroFill>(GetProcAddress(
      GetModuleHandleA("stream_downloader.dll"), "?__autoclassinit2@CStreamDownloader@@QEAAX_K@Z"));
  Expect(zero_fill != nullptr, "there is no __autoclassinit2");
  unsigned char bytes[sizeof(CStreamDownloader) + 1];
  for (unsigned char& byte : bytes) byte = 0xAA;
  zero_fill(bytes, sizeof(CStreamDownloader));
  for (std::size_t i = 0; i < sizeof(CStreamDownloader); ++i) {
    Expect(bytes[i] == 0, "a byte was not set to zero");
  }
  Expect(bytes[sizeof(CStreamDownloader)] == 0xAA, "a byte after the end was set");
}
