// stream_player: plays an address in a window, with audio (see player_options.h).
#include <cstdio>
#include <exception>
#include <memory>
#include <string>

#include "argument_path.h"
#include "audio_output.h"
#include "av_memory.h"
#include "clock.h"
#include "event_loop.h"
#include "frame_receiver.h"
#include "interrupt.h"
#include "library_downloader.h"
#include "play_control.h"
#include "play_counts.h"
#include "player_options.h"
#include "presenter.h"
#include "report.h"
#include "sdl_audio_device.h"
#include "sdl_commands.h"
#include "sdl_system.h"
#include "sdl_window.h"
#include "silent_audio_device.h"
#include "sync_log.h"

namespace {

void PrintLine(std::FILE* file, const std::string& line) {
  std::fputs((line + '\n').c_str(), file);
  std::fflush(file);
}

int NoDisplay(const std::string& why) {
  PrintLine(stderr, "stream_player: there is no display: " + why);
  return player::kExitNoDisplay;
}

// The system's audio device, or a silent replacement if there is none.
std::unique_ptr<player::AudioDevice> OpenAudioDevice(const host::Clock& clock,
                                                     const std::string& audio_error) {
  std::string error;
  if (auto device = player::SdlAudioDevice::Open(clock, error)) return device;
  PrintLine(stderr, "stream_player: there is no sound device, so it plays without sound: " +
                        (audio_error.empty() ? error : audio_error));
  return std::make_unique<player::SilentAudioDevice>(clock);
}

// The output files of a run; either may be null.
struct Files {
  std::unique_ptr<host::Report> report;
  std::unique_ptr<player::SyncLog> sync_log;
};

// Returns false and prints one line if a requested file cannot be opened.
bool OpenFiles(const player::PlayerOptions& options, const host::Clock& clock, Files& files) {
  std::string error;
  if (!options.report_file.empty()) {
    files.report = host::OpenReport(host::PathOfArgument(options.report_file),
                                    host::Pace::kOfTheHost, clock, error);
    if (files.report == nullptr) error = "--report: " + error;
  }
  if (error.empty() && !options.sync_log_file.empty()) {
    files.sync_log = player::SyncLog::Open(host::PathOfArgument(options.sync_log_file), error);
    if (files.sync_log == nullptr) error = "--sync-log: " + error;
  }
  if (!error.empty()) PrintLine(stderr, "stream_player: " + error);
  return error.empty();
}

void CloseFiles(const player::PlayerOptions& options, const Files& files) {
  if (files.report != nullptr && !files.report->Write(options.address)) {
    PrintLine(stderr, "stream_player: the report could not be written");
  }
  if (files.sync_log != nullptr && !files.sync_log->Close()) {
    PrintLine(stderr, "stream_player: the sync log could not be written");
  }
}

struct Playing {
  const player::PlayerOptions& options;
  const std::string& audio_error;
  const host::Clock& clock;
  player::Window& window;
  player::PlayCounts& counts;
  const Files& files;
};

void Play(const Playing& playing) {
  const player::PlayerOptions& options = playing.options;
  player::PlayCounts& counts = playing.counts;
  host::Report* const report = playing.files.report.get();
  player::SyncLog* const sync_log = playing.files.sync_log.get();
  const host::Clock& clock = playing.clock;
  player::FrameReceiver receiver(clock, counts, report);
  host::LibraryDownloader downloader(receiver);
  const auto device = OpenAudioDevice(clock, playing.audio_error);
  player::AudioOutput output(*device);
  player::PlayControl control({options.address, options.start_seconds, options.idle_seconds},
                              {downloader, receiver, output, clock, counts, [report] {
                                 if (report != nullptr) report->OpenRun();
                               }});
  if (!control.Begin()) {
    PrintLine(stderr, "stream_player: the address was refused");
    return;
  }
  player::Presenter presenter(playing.window, clock, counts,
                              [sync_log](double picture, double audio) {
                                if (sync_log != nullptr) sync_log->Add(picture, audio);
                              });
  player::SdlCommands commands;
  player::EventLoop({commands, playing.window, presenter, control, host::Interrupted},
                    options.exit_at_end)
      .Run();
  control.End();
}

int Run(const player::PlayerOptions& options) {
  const player::SdlSystem sdl;
  if (!sdl.display_error().empty()) return NoDisplay(sdl.display_error());
  const host::SteadyClock clock;
  Files files;
  if (!OpenFiles(options, clock, files)) return player::kExitUsage;
  host::InstallInterruptHandlers();
  player::CountAvErrors();
  std::string error;
  const std::unique_ptr<player::Window> window = player::SdlWindow::Open(error);
  if (window == nullptr) return NoDisplay(error);
  player::PlayCounts counts;
  Play({options, sdl.audio_error(), clock, *window, counts, files});
  counts.errors += player::AvErrors();
  PrintLine(stdout, player::CountsText(counts));
  CloseFiles(options, files);
  return counts.video_frames + counts.audio_frames > 0 ? player::kExitPlayed : player::kExitNothing;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const player::ParsedPlayerOptions parsed = player::ParsePlayerOptions(argc, argv);
    if (parsed.options) return Run(*parsed.options);
    PrintLine(parsed.exit_status == 0 ? stdout : stderr, parsed.text);
    return parsed.exit_status;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "stream_player: %s\n", failure.what());
    return player::kExitNothing;
  }
}
