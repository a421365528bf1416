// The host's standard output: whole lines and, on a terminal, one progress line below them that is
// redrawn in place. The library prints to the same output directly, so the cursor stays at the
// start of the progress line, where such a line simply overwrites it.
//
// Safe to call from any thread. The file is borrowed.
#ifndef HOST_CONSOLE_SCREEN_H_
#define HOST_CONSOLE_SCREEN_H_

#include <cstddef>
#include <cstdio>
#include <mutex>
#include <string>
#include <string_view>

namespace host {

class Screen {
 public:
  struct Form {
    bool terminal = false;  // whether to show a progress line
    bool quiet = false;     // whether to print only what Line is given
  };

  Screen(std::FILE* output, Form form) : output_(output), form_(form) {}

  // Prints a line, also when quiet.
  void Line(std::string_view line);

  // Prints a line with the time of the event, unless quiet: "[1.234 s] text".
  void Status(double at_ms, std::string_view text);

  // Redraws the progress line, if this is a terminal and quiet is off.
  void Progress(std::string_view text);

  void EraseProgress();

  bool ShowsProgress() const { return form_.terminal && !form_.quiet; }

 private:
  void Write(const std::string& text);  // with mutex_ held
  std::string Blank();                  // what erases the progress line; with mutex_ held

  std::FILE* const output_;
  const Form form_;
  std::mutex mutex_;
  std::size_t progress_width_ = 0;  // guarded by mutex_
};

}  // namespace host

#endif  // HOST_CONSOLE_SCREEN_H_
