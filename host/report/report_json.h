// What the page is filled with, as one JSON object.
#ifndef HOST_REPORT_REPORT_JSON_H_
#define HOST_REPORT_REPORT_JSON_H_

#include <string>

#include "report_record.h"

namespace report {

// One line of ASCII that may stand inside a <script> element of any type: it holds no "<". Bytes
// that are no UTF-8 become replacement characters. Times and stream times are in seconds.
std::string ReportJson(const ReportRecord& record, const std::string& address);

}  // namespace report

#endif  // HOST_REPORT_REPORT_JSON_H_
