// The component's log: plain lines on standard output, without levels and without a log file. Safe
// from any thread; the text of one call stays together.
#ifndef COMMON_CONSOLE_H_
#define COMMON_CONSOLE_H_

#include <string_view>

namespace stream {

// Writes `line` and a line break, and flushes.
void ConsoleLine(std::string_view line);

// Writes `text` unchanged, without a line break, and flushes.
void ConsoleText(std::string_view text);

}  // namespace stream

#endif  // COMMON_CONSOLE_H_
