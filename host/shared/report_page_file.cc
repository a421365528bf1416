// The report, for hosts built in this tree.
#include <utility>

#include "report.h"
#include "report_page.h"
#include "report_recorder.h"

namespace host {
namespace {

class PageFile final : public Report {
 public:
  PageFile(std::filesystem::path file, Pace pace, const Clock& clock)
      : file_(std::move(file)),
        recorder_([&clock] { return clock.NowMs(); }, pace == Pace::kOfTheHost) {}

  void OnDuration(float seconds) override { recorder_.Duration(seconds); }
  void OnBufferedTime(float seconds) override { recorder_.BufferedTime(seconds); }
  void OnAudioClock(float seconds) override { recorder_.AudioClock(seconds); }
  void OnAudioFrame(MediaFrame frame) override { recorder_.Audio(frame); }
  void OnVideoFrame(MediaFrame frame) override { recorder_.Video(frame); }
  // By value, because the binary interface says so.
  void OnMessage(std::string line) override {  // NOLINT(performance-unnecessary-value-param)
    recorder_.Message(line);
  }
  void OnPlayResult(std::string line) override {  // NOLINT(performance-unnecessary-value-param)
    recorder_.PlayResult(line);
  }

  void OpenRun() override { recorder_.Restart(); }
  bool Write(const std::string& address) override {
    return report::WriteReport(file_, recorder_.Snapshot(), address);
  }

 private:
  const std::filesystem::path file_;
  report::ReportRecorder recorder_;
};

}  // namespace

std::unique_ptr<Report> OpenReport(const std::filesystem::path& file, Pace pace, const Clock& clock,
                                   std::string& error) {
  if (!report::CanWriteReports()) {
    error = kNoReport;
    return nullptr;
  }
  if (!report::IsWritable(file)) {
    error = "cannot write " + file.string();
    return nullptr;
  }
  return std::make_unique<PageFile>(file, pace, clock);
}

}  // namespace host
