// For hosts built outside this tree, which have no reports.
#include "report.h"

namespace host {

std::unique_ptr<Report> OpenReport(const std::filesystem::path&, Pace /*pace*/,
                                   const Clock& /*clock*/, std::string& error) {
  error = kNoReport;
  return nullptr;
}

}  // namespace host
