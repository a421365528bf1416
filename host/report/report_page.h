// The report as one HTML file that needs no network and no other file.
#ifndef HOST_REPORT_REPORT_PAGE_H_
#define HOST_REPORT_REPORT_PAGE_H_

#include <filesystem>
#include <string>

#include "report_record.h"

namespace report {

// False in a build without npm: it cannot write reports.
bool CanWriteReports();

// Whether `file` can be written. Call it before a run; it creates the file if it does not exist.
bool IsWritable(const std::filesystem::path& file);

// The whole page. `address` and all texts may hold any bytes.
std::string ReportPage(const ReportRecord& record, const std::string& address);

// Overwrites `file` with the page. Returns false on failure, or if this build has no reports.
bool WriteReport(const std::filesystem::path& file, const ReportRecord& record,
                 const std::string& address);

}  // namespace report

#endif  // HOST_REPORT_REPORT_PAGE_H_
