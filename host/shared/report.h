// The file of --report: the page that host/report makes of a run.
//
// The host passes its player calls on to this class. These may be made from any thread; OpenRun and
// Write belong to the thread that plays.
#ifndef HOST_SHARED_REPORT_H_
#define HOST_SHARED_REPORT_H_

#include <filesystem>
#include <memory>
#include <string>

#include "clock.h"
#include "stream_player.h"

namespace host {

class Report : public CStreamPlayerImp {
 public:
  virtual ~Report() = default;

  // Clears everything recorded in the previous run.
  virtual void OpenRun() = 0;
  // Returns false if the file could not be written.
  virtual bool Write(const std::string& address) = 0;
};

// What determines when frames arrive: the stream, or a host whose frame calls block. In the second
// case late frames are not reported as odd.
enum class Pace { kOfTheStream, kOfTheHost };

// The report borrows `clock`. Returns null if the file cannot be written or this build has no
// reports; `error` then says why. Builds without npm, and hosts built outside this tree, have no
// reports.
std::unique_ptr<Report> OpenReport(const std::filesystem::path& file, Pace pace, const Clock& clock,
                                   std::string& error);

inline constexpr const char* kNoReport =
    "this build has no report: that takes npm and the whole tree";

}  // namespace host

#endif  // HOST_SHARED_REPORT_H_
