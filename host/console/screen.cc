#include "screen.h"

#include "text.h"

namespace host {
namespace {

// A line as wide as the terminal would wrap, and could then not be overwritten.
constexpr std::size_t kMaxProgressWidth = 78;

}  // namespace

void Screen::Line(std::string_view line) {
  const std::lock_guard lock(mutex_);
  Write(Blank().append(line).append("\n"));
}

void Screen::Status(double at_ms, std::string_view text) {
  if (form_.quiet) return;
  std::string line = "[";
  Line(line.append(FixedText(at_ms / 1000, 3)).append(" s] ").append(text));
}

void Screen::Progress(std::string_view text) {
  if (!ShowsProgress()) return;
  const std::string_view shown = text.substr(0, kMaxProgressWidth);
  const std::lock_guard lock(mutex_);
  Write(Blank().append(shown).append("\r"));
  progress_width_ = shown.size();
}

void Screen::EraseProgress() {
  const std::lock_guard lock(mutex_);
  if (progress_width_ != 0) Write(Blank());
}

void Screen::Write(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), output_);
  std::fflush(output_);
}

std::string Screen::Blank() {
  if (progress_width_ == 0) return {};
  std::string blank = "\r";
  blank.append(progress_width_, ' ').append("\r");
  progress_width_ = 0;
  return blank;
}

}  // namespace host
