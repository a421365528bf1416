#include "csv.h"

namespace host {

std::string CsvField(std::string_view value) {
  if (value.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(value);
  std::string field = "\"";
  for (const char c : value) {
    if (c == '"') field += '"';
    field += c;
  }
  return field + '"';
}

}  // namespace host
