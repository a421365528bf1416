// The file of --report: the page that host/report makes of a run.
//
// It is a player of its own, which a host passes its calls on to: it may be called from
// any thread. OpenRun, Write and the rest belong to the thread that plays.
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

  // Forgets the run before.
  virtual void OpenRun() = 0;
  // False when the file could not be written.
  virtual bool Write(const std::string& address) = 0;
};

// Who says when the next frame comes: the stream, or a host that makes frame calls wait. With the
// second, frames that come late are nothing odd.
enum class Pace { kOfTheStream, kOfTheHost };

// The report borrows `clock`. Null when there can be no such file; then `error` says why. A build
// without npm has no reports, and neither has a host that is built apart from the tree.
std::unique_ptr<Report> OpenReport(const std::filesystem::path& file, Pace pace, const Clock& clock,
                                   std::string& error);

inline constexpr const char* kNoReport =
    "this build has no report: that takes npm and the whole tree";

}  // namespace host

#endif  // HOST_SHARED_REPORT_H_
