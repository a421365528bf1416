// The data of the page as one JSON object.
#ifndef HOST_REPORT_REPORT_JSON_H_
#define HOST_REPORT_REPORT_JSON_H_

#include <string>

#include "report_record.h"

namespace report {

// One line of ASCII that is safe inside any <script> element: it contains no "<". Invalid UTF-8
// becomes replacement characters. Arrival times and stream times are in seconds.
std::string ReportJson(const ReportRecord& record, const std::string& address);

}  // namespace report

#endif  // HOST_REPORT_REPORT_JSON_H_
