// The date and time in the console lines that HLS logs when it starts and stops.
#ifndef HLS_DATE_TEXT_H_
#define HLS_DATE_TEXT_H_

#include <ctime>
#include <string>

// For example "2024Y1M9D 8:5:0", without leading zeros. Y, M and D stand for the GB 2312 characters
// for year, month and day. The encoding does not depend on the console's character set.
// Kept for compatibility.
std::string DateText(const std::tm& local);

// The GB 2312 character for second.
inline constexpr char kSecondsGb2312[] = "\xC3\xEB";

#endif  // HLS_DATE_TEXT_H_
