// One field of a CSV file, as RFC 4180 writes it.
#ifndef HOST_CONSOLE_CSV_H_
#define HOST_CONSOLE_CSV_H_

#include <string>
#include <string_view>

namespace host {

// `value` as it is, or in quotes with its own quotes doubled when it holds a comma, a quote or a
// line break. Other bytes, zeros too, are left alone.
std::string CsvField(std::string_view value);

}  // namespace host

#endif  // HOST_CONSOLE_CSV_H_
