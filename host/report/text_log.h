// Status lines and results: the first and the latest of them, and how many there were. Lines that
// report a failure are also counted by their beginning. A plain value without a lock.
#ifndef HOST_REPORT_TEXT_LOG_H_
#define HOST_REPORT_TEXT_LOG_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace report {

inline constexpr std::size_t kFirstTexts = 500;
inline constexpr std::size_t kNewestTexts = 1500;
inline constexpr std::size_t kLongestText = 1000;  // bytes; longer texts are truncated

enum class TextKind { kMessage, kResult };

struct TimedText {
  double ms;
  TextKind kind;
  std::string text;
};

// Lines that report a failure and have the same beginning.
struct FailureLines {
  std::string_view beginning;
  std::uint64_t count = 0;
  double first_ms = 0;
};

class TextLog {
 public:
  void Add(double ms, TextKind kind, const std::string& line);

  std::uint64_t Count(TextKind kind) const;
  // How many lines between the first and the latest were not kept.
  std::uint64_t Dropped() const;
  std::vector<TimedText> Kept() const;
  // The failures of which at least one line was received.
  std::vector<FailureLines> Failures() const;

 private:
  void CountFailure(double ms, std::string_view line);

  std::vector<TimedText> first_;
  std::deque<TimedText> newest_;
  std::uint64_t messages_ = 0;
  std::uint64_t results_ = 0;
  std::array<FailureLines, 8> failures_ = {{{"PLAY UNKOWN:"},
                                            {"PLAY Try:"},
                                            {"PLAY Failed:"},
                                            {"PLAY M3U8 NO:"},
                                            {"PLAY M3U8 DATAERR "},
                                            {"PLAY TS NO:"},
                                            {"PLAY FLV NO:"},
                                            {"PLAY MP4 NO:"}}};
};

}  // namespace report

#endif  // HOST_REPORT_TEXT_LOG_H_
