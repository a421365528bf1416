// Logs exceptions that the component catches so that the host continues to run.
#ifndef COMMON_CAUGHT_H_
#define COMMON_CAUGHT_H_

namespace stream {

// Logs one line: `before`, the text of the exception, `after`. Call it in a `catch (...)` block.
// The text of the exception is cut to 400 characters. Allocates nothing, since memory may have run
// out.
void LogCaught(const char* before, const char* after) noexcept;

}  // namespace stream

#endif  // COMMON_CAUGHT_H_
