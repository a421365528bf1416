// The date and time in the console lines that HLS starts and stops with.
#ifndef HLS_DATE_TEXT_H_
#define HLS_DATE_TEXT_H_

#include <ctime>
#include <string>

// For example "2024Y1M9D 8:5:0", without leading zeros, where Y, M and D stand for the characters
// for year, month and day in GB 2312, whatever the console's character set is: kept on purpose.
std::string DateText(const std::tm& local);

// The character for second in GB 2312.
inline constexpr char kSecondsGb2312[] = "\xC3\xEB";

#endif  // HLS_DATE_TEXT_H_
