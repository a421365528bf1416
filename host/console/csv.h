// CSV fields in the format of RFC 4180.
#ifndef HOST_CONSOLE_CSV_H_
#define HOST_CONSOLE_CSV_H_

#include <string>
#include <string_view>

namespace host {

// Returns `value` unchanged, or, if it contains a comma, a quote or a line break, in quotes with
// its own quotes doubled. Other bytes, including zeros, are not changed.
std::string CsvField(std::string_view value);

}  // namespace host

#endif  // HOST_CONSOLE_CSV_H_
