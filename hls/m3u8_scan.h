// Numbers at the beginning of a text, read as the scanning patterns "%d", "%lld" and "%f" read
// them: blanks are skipped, a sign may follow, and the first character that does not fit ends the
// number. Unlike those, nothing here depends on the locale or looks beyond the text, and a number
// that is out of range has a value: the nearest one there is.
#ifndef HLS_M3U8_SCAN_H_
#define HLS_M3U8_SCAN_H_

#include <cstdint>
#include <string_view>

// On success each takes what it has read off `text`, stores the number and returns true; else it
// leaves `value` as it was and returns false.
bool ScanInt32(std::string_view& text, std::int32_t& value);
bool ScanInt64(std::string_view& text, std::int64_t& value);

// Takes decimal and hexadecimal numbers, infinities and NaN, as "%f" does. What is too large for a
// float becomes an infinity, what is too small becomes 0.
bool ScanFloat(std::string_view& text, float& value);

// What atoi makes of a text: 0 when no number is there.
std::int32_t ToInt32(std::string_view text);

#endif  // HLS_M3U8_SCAN_H_
