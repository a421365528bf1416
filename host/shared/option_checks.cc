#include "option_checks.h"

#include <cmath>

#include "text.h"

namespace host {
namespace {

// About thirty years: longer than any stream, and still representable as a float.
constexpr double kMaxSeconds = 1e9;

std::string CheckSeconds(const std::string& text, bool zero_allowed) {
  double seconds = 0;
  if (!CLI::detail::lexical_cast(text, seconds) || !std::isfinite(seconds)) {
    return "'" + text + "' is not a number of seconds";
  }
  if (seconds < 0 || (seconds == 0 && !zero_allowed)) {
    return zero_allowed ? "must not be negative" : "must be more than 0";
  }
  return seconds > kMaxSeconds ? "must not be more than " + FixedText(kMaxSeconds, 0) : "";
}

}  // namespace

CLI::Validator SecondsFromZero() {
  return {[](std::string& text) { return CheckSeconds(text, true); }, "", "seconds"};
}

CLI::Validator SecondsAboveZero() {
  return {[](std::string& text) { return CheckSeconds(text, false); }, "", "seconds above zero"};
}

CLI::Validator NotEmpty() {
  return {[](std::string& text) { return std::string(text.empty() ? "must not be empty" : ""); },
          "", "not empty"};
}

std::string HelpText(const CLI::App& app) {
  const std::string help = app.help();
  return help.substr(0, help.find_last_not_of('\n') + 1);
}

std::string RefusalText(const CLI::ParseError& error, const std::string& program) {
  return program + ": " + PrintableText(error.what()) + " (" + program + " --help shows the usage)";
}

}  // namespace host
