// What is odd about a recorded run, in plain sentences. The sentences are ASCII and hold nothing
// that came from the stream but numbers.
#ifndef HOST_REPORT_FINDINGS_H_
#define HOST_REPORT_FINDINGS_H_

#include <string>
#include <vector>

#include "report_record.h"

namespace report {

enum class Weight {
  kOdd,   // a viewer would notice, or something is missing
  kNote,  // worth knowing
};

struct Finding {
  Weight weight;
  std::string title;     // a few words
  std::string sentence;  // with the numbers
};

// The odd ones first.
std::vector<Finding> FindingsOf(const ReportRecord& record);

}  // namespace report

#endif  // HOST_REPORT_FINDINGS_H_
