// The component's log: plain lines on standard output, no file and no levels. Safe from any thread;
// what one call writes stays together.
#ifndef COMMON_CONSOLE_H_
#define COMMON_CONSOLE_H_

#include <string_view>

// Writes `line` and a line break, and flushes, so that a reader sees it at once.
void ConsoleLine(std::string_view line);

// Writes `text` as it stands, without a line break, and flushes.
void ConsoleText(std::string_view text);

#endif  // COMMON_CONSOLE_H_
