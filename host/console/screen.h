// What the host prints on standard output: whole lines, and on a terminal one progress line below
// them that is drawn over itself. The library logs to the same output on its own, so the cursor
// rests at the beginning of the progress line, where a foreign line simply overwrites it.
//
// Safe from any thread. The file is borrowed.
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
    bool terminal = false;  // whether there is a progress line
    bool quiet = false;     // whether only Line prints
  };

  Screen(std::FILE* output, Form form) : output_(output), form_(form) {}

  // Prints a line, whatever the form.
  void Line(std::string_view line);

  // Prints what happened at that time, unless quiet: "[1.234 s] text".
  void Status(double at_ms, std::string_view text);

  // Draws the progress line anew, on a terminal and unless quiet.
  void Progress(std::string_view text);

  // Takes the progress line away.
  void EraseProgress();

  bool ShowsProgress() const { return form_.terminal && !form_.quiet; }

 private:
  void Write(const std::string& text);  // with mutex_ held
  std::string Blank();                  // what takes the progress line away; with mutex_ held

  std::FILE* const output_;
  const Form form_;
  std::mutex mutex_;
  std::size_t progress_width_ = 0;  // guarded by mutex_
};

}  // namespace host

#endif  // HOST_CONSOLE_SCREEN_H_
