// Reports exceptions that were caught so that the host goes on.
#ifndef COMMON_CAUGHT_H_
#define COMMON_CAUGHT_H_

// Logs a line: `before`, what the exception was, `after`. Call it in a `catch (...)` block. What
// the exception says is cut to 400 characters. Nothing is allocated, since memory may have run out.
void LogCaught(const char* before, const char* after) noexcept;

#endif  // COMMON_CAUGHT_H_
