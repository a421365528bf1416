// The report as one HTML file that needs nothing else: no network, no other file.
#ifndef HOST_REPORT_REPORT_PAGE_H_
#define HOST_REPORT_REPORT_PAGE_H_

#include <filesystem>
#include <string>

#include "report_record.h"

namespace report {

// False in a build that was made without npm; then no report can be written.
bool CanWriteReports();

// Whether `file` can be written. Asked before a run, it makes the file when there is none.
bool IsWritable(const std::filesystem::path& file);

// The whole page. `address` and all texts may hold any bytes.
std::string ReportPage(const ReportRecord& record, const std::string& address);

// Writes the page over `file`. False when that failed, or when this build has no report.
bool WriteReport(const std::filesystem::path& file, const ReportRecord& record,
                 const std::string& address);

}  // namespace report

#endif  // HOST_REPORT_REPORT_PAGE_H_
