#include "report_page.h"

#include <fstream>
#include <string_view>

#include "report_json.h"
#include "web_files.h"

namespace report {
namespace {

// Returns the text before `mark` and sets `rest` to the text after it.
std::string_view SplitAt(std::string_view mark, std::string_view& rest) {
  const std::size_t at = rest.find(mark);
  const std::string_view part = rest.substr(0, at);
  rest = at == std::string_view::npos ? std::string_view() : rest.substr(at + mark.size());
  return part;
}

}  // namespace

bool CanWriteReports() { return !WebPage().empty(); }

bool IsWritable(const std::filesystem::path& file) {
  return std::ofstream(file, std::ios::binary | std::ios::app).good();
}

std::string ReportPage(const ReportRecord& record, const std::string& address) {
  std::string_view rest = WebPage();
  std::string page(SplitAt("/* styles */", rest));
  page += WebStyles();
  page += SplitAt("{/* data */}", rest);
  page += ReportJson(record, address);
  page += SplitAt("/* scripts */", rest);
  page += WebScripts();
  page += rest;
  return page;
}

bool WriteReport(const std::filesystem::path& file, const ReportRecord& record,
                 const std::string& address) {
  if (!CanWriteReports()) return false;
  const std::string page = ReportPage(record, address);
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream.write(page.data(), static_cast<std::streamsize>(page.size()));
  stream.close();
  return stream.good();
}

}  // namespace report
