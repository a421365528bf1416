// What is odd about a recorded run, in plain sentences of ASCII. Numbers are the only data from the
// stream in them.
#ifndef HOST_REPORT_FINDINGS_H_
#define HOST_REPORT_FINDINGS_H_

#include <string>
#include <vector>

#include "report_record.h"

namespace report {

enum class Weight {
  kOdd,   // a viewer would notice it, or something is missing
  kNote,  // good to know
};

struct Finding {
  Weight weight;
  std::string title;     // a few words
  std::string sentence;  // with the numbers
};

// Findings of weight kOdd are first.
std::vector<Finding> FindingsOf(const ReportRecord& record);

}  // namespace report

#endif  // HOST_REPORT_FINDINGS_H_
