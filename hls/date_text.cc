#include "hls/date_text.h"

#include "common/format_text.h"

std::string DateText(const std::tm& local) {
  return FormatText(
      "%d\xC4\xEA"
      "%d\xD4\xC2"
      "%d\xC8\xD5 %d:%d:%d",
      local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
      local.tm_sec);
}
