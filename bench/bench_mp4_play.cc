// Plays a one-hour MP4 file while it downloads at a steady rate. Prints the processor time of the
// component in percent of one core. The server is a process of its own, so its time is not counted.
//
//   bench_mp4_play [MEGABYTES_A_SECOND [ROUNDS]]
#include <arpa/inet.h>
#include <fcntl.h>
#include <mp4v2/mp4v2.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>

#include "bench/looped_sample.h"
#include "bench/piece_size.h"
#include "common/frame_queue.h"
#include "mp4/mp4_downloader.h"
#include "mp4/mp4_file_handle.h"
#include "public/stream_player.h"

using namespace stream;

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// One minute, repeated to one hour: the file of bench_mp4, and a copy with the index first.
constexpr char kEncode[] =
    "-f lavfi -i testsrc2=size=640x360:rate=30:duration=60"
    " -f lavfi -i sine=frequency=440:sample_rate=44100:duration=60"
    " -c:v libx264 -preset veryfast -bf 2 -g 60 -pix_fmt yuv420p -c:a aac -b:a 128k";
constexpr int kRepeats = 59;

bool HaveIndexFirst(const fs::path& from, const fs::path& to) {
  if (fs::exists(to)) return true;
  const fs::path unfinished = to.parent_path() / "unfinished_index_first.mp4";
  const std::string command = "ffmpeg -v error -y -i \"" + from.string() +
                              "\" -map 0 -c copy -movflags +faststart \"" + unfinished.string() +
                              '"';
  // The command is built from constants and the build directory.
  if (std::system(command.c_str()) != 0) return false;  // NOLINT(cert-env33-c)
  fs::rename(unfinished, to);
  return true;
}

// --- The server's process ---

// Answers every request with the whole file at a fixed number of bytes per second.
class PacedServer {
 public:
  PacedServer(const fs::path& file, double bytes_a_second) {
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener_, plain, size) != 0 || listen(listener_, 8) != 0) return;
    getsockname(listener_, plain, &size);
    port_ = ntohs(address.sin_port);
    child_ = fork();
    if (child_ == 0) Serve(file, bytes_a_second);
  }
  ~PacedServer() {
    if (child_ > 0) {
      kill(child_, SIGKILL);
      waitpid(child_, nullptr, 0);
    }
    close(listener_);
  }
  PacedServer(const PacedServer&) = delete;
  PacedServer& operator=(const PacedServer&) = delete;

  std::string Url(const std::string& name) const {
    return "http://127.0.0.1:" + std::to_string(port_) + "/" + name;
  }

 private:
  [[noreturn]] void Serve(const fs::path& file, double bytes_a_second) const {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::signal(SIGPIPE, SIG_IGN);
    const int media = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    while (true) {
      const int client = accept(listener_, nullptr, nullptr);
      if (client < 0) continue;
      Answer(client, media, static_cast<off_t>(fs::file_size(file)), bytes_a_second);
      close(client);
    }
  }

  static void Answer(int client, int media, off_t size, double bytes_a_second) {
    char request[4096];
    if (read(client, request, sizeof(request)) <= 0) return;
    const std::string head =
        "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " + std::to_string(size) +
        "\r\n\r\n";
    if (write(client, head.data(), head.size()) < 0) return;
    const auto start = Clock::now();
    for (off_t sent = 0; sent < size;) {
      if (sendfile(client, media, &sent, kPieceSize) <= 0) return;
      const std::chrono::duration<double> due(static_cast<double>(sent) / bytes_a_second);
      std::this_thread::sleep_until(start + std::chrono::duration_cast<Clock::duration>(due));
    }
  }

  int listener_ = -1;
  std::uint16_t port_ = 0;
  pid_t child_ = -1;
};

// --- The player's process ---

class CountingPlayer final : public CStreamPlayerImp {
 public:
  void OnDuration(float /*seconds*/) override {}
  void OnBufferedTime(float /*seconds*/) override {}
  void OnAudioClock(float /*seconds*/) override {}
  void OnAudioFrame(MediaFrame /*frame*/) override { ++delivered; }
  void OnVideoFrame(MediaFrame /*frame*/) override { ++delivered; }
  void OnMessage(std::string /*line*/) override {}
  void OnPlayResult(std::string line) override {
    plays = line.starts_with("PLAY:MP4 OK:");
    is_over = true;
  }

  std::atomic<std::uint64_t> delivered{0};
  std::atomic<bool> plays{false};
  std::atomic<bool> is_over{false};
};

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

struct ProcessorTime {
  double user;
  double system;
};

ProcessorTime Used() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return {Seconds(usage.ru_utime), Seconds(usage.ru_stime)};
}

std::uint64_t CountAudioSamples(const std::string& path) {
  const Mp4FileHandle file = OpenMp4(path);
  const MP4TrackId track = MP4FindTrackId(file.get(), 0, "soun");
  MP4SampleId count = 0;
  while (MP4GetSampleTime(file.get(), track, count + 1) != MP4_INVALID_TIMESTAMP) ++count;
  return count;
}

std::uint64_t QueuedAudioFrames() {
  const std::lock_guard lock(g_frameQueueMutex);
  return g_audioQueue->pushed;
}

// Plays until the result line, which is sent when everything was downloaded and read. Prints the
// time taken. Returns false if not every audio sample was queued by then.
bool Play(const char* name, const std::string& url, std::uint64_t audio_samples) {
  CountingPlayer player;
  CMp4Downloader pipeline(&player);
  const ProcessorTime before = Used();
  const auto start = Clock::now();
  pipeline.BeginDownload(url);
  while (!player.is_over) std::this_thread::sleep_for(std::chrono::milliseconds(20));
  const std::chrono::duration<double> elapsed = Clock::now() - start;
  const ProcessorTime after = Used();
  const std::uint64_t delivered = player.delivered;
  const bool is_whole = player.plays && QueuedAudioFrames() == audio_samples;
  pipeline.EndDownload();
  const double user = after.user - before.user;
  const double system = after.system - before.system;
  std::fprintf(stderr,
               "%-12s %6.2f s, user %5.2f s, system %5.2f s: %5.1f %% of a core, %llu"
               " frames delivered%s\n",
               name, elapsed.count(), user, system, 100 * (user + system) / elapsed.count(),
               static_cast<unsigned long long>(delivered),
               is_whole ? "" : "; NOT EVERY SAMPLE WAS RECEIVED");
  return is_whole;
}

}  // namespace

int main(int argc, char** argv) {
  const double rate = (argc > 1 ? std::atof(argv[1]) : 20) * 1e6;
  const int rounds = argc > 2 ? std::atoi(argv[2]) : 3;
  const fs::path index_last = fs::path(STREAM_BENCH_DATA) / "one_hour.mp4";
  const fs::path index_first = fs::path(STREAM_BENCH_DATA) / "one_hour_index_first.mp4";
  if (rate <= 0 || !HaveLoopedSample({kEncode, ".mp4", kRepeats}, index_last) ||
      !HaveIndexFirst(index_last, index_first)) {
    return 1;
  }
  // The servers fork, so they are created before any thread.
  const PacedServer first(index_first, rate);
  const PacedServer last(index_last, rate);
  const std::uint64_t audio_samples = CountAudioSamples(index_last.string());
  bool all = true;
  for (int round = 0; round < rounds; ++round) {
    const std::string file = std::to_string(round) + ".mp4";
    all = Play("index first", first.Url(file), audio_samples) && all;
    all = Play("index last", last.Url(file), audio_samples) && all;
  }
  return all ? 0 : 1;
}
