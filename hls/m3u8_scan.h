// Scans numbers at the beginning of a text, like the scanf patterns "%d", "%lld" and "%f": blanks
// are skipped, a sign may follow, and the first character that does not fit ends the number. Unlike
// scanf, these functions do not depend on the locale and do not read beyond the text, and a number
// that is out of range yields the nearest value in range.
#ifndef HLS_M3U8_SCAN_H_
#define HLS_M3U8_SCAN_H_

#include <cstdint>
#include <string_view>

// On success, each removes the number from the front of `text`, stores it and returns true. On
// failure, each leaves `value` unchanged and returns false.
bool ScanInt32(std::string_view& text, std::int32_t& value);
bool ScanInt64(std::string_view& text, std::int64_t& value);

// Accepts decimal and hexadecimal numbers, infinities and NaN, like "%f". A number that is too
// large for a float becomes an infinity, one that is too small becomes 0.
bool ScanFloat(std::string_view& text, float& value);

// Like atoi: returns 0 if the text does not begin with a number.
std::int32_t ToInt32(std::string_view text);

#endif  // HLS_M3U8_SCAN_H_
