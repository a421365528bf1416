#include "host/report/report_page.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "host/report/report_json.h"
#include "tests/report/report_support.h"

namespace report {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;
using testing::Not;

TEST(ReportJsonTest, CountsAndPointsMatchTheRecord) {
  ReportRecord record;
  AddSteadyVideo(record, 0, 100);
  AddSteadyAudio(record, 0, 50);
  record.elapsed_ms = 4000;
  const Json json = Json::parse(ReportJson(record, "http://host/a.ts"));
  EXPECT_EQ(json["address"], "http://host/a.ts");
  EXPECT_EQ(json["elapsed"], 4.0);
  EXPECT_EQ(json["video"]["frames"], 100);
  EXPECT_EQ(json["video"]["bytes"], 10'000);
  EXPECT_EQ(json["audio"]["frames"], 50);
  EXPECT_EQ(json["video"]["points"]["t"].size(), 100U);
  EXPECT_EQ(json["video"]["points"]["pts"][1], 1.04);
  EXPECT_EQ(json["video"]["points"]["step_low"][0], nullptr);
  EXPECT_EQ(json["video"]["points"]["step_high"][1], 0.04);
}

TEST(ReportJsonTest, HostileBytesBecomeHarmlessText) {
  ReportRecord record;
  using std::string_literals::operator""s;
  const std::string hostile = "</script><script>x()</script>\xff\0<!--\xe2\x80\xa8"s;
  record.texts.Add(0, TextKind::kMessage, hostile);
  const std::string text = ReportJson(record, hostile);
  EXPECT_THAT(text, Not(HasSubstr("<")));
  EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7f; }));
  const std::string address = Json::parse(text)["address"];
  EXPECT_THAT(address, HasSubstr("</script><script>x()</script>\xef\xbf\xbd"));
}

TEST(ReportJsonTest, LongRunGivesAPageOfLimitedSize) {
  ReportRecord record;
  for (int n = 0; n < 60'000; ++n) {
    record.AddVideo(n * 0.7, FrameAt(TicksOf(n)));
    record.AddAudio(n * 0.7, FrameAt(TicksOf(n)));
    record.audio_clock.Add(n, n);
    record.texts.Add(n, TextKind::kMessage, std::string(200, 'x'));
  }
  const std::string text = ReportJson(record, "address");
  EXPECT_LT(text.size(), 3'000'000U);
  EXPECT_EQ(Json::parse(text)["video"]["frames"], 60'000);
}

TEST(ReportPageTest, PageHoldsStylesDataAndScriptsAndNamesNoOtherAddress) {
  if (!CanWriteReports()) GTEST_SKIP() << "a build without npm";
  const std::string page = ReportPage(ReportRecord(), "the address");
  EXPECT_THAT(page, HasSubstr("\"address\":\"the address\""));
  EXPECT_THAT(page, HasSubstr("uPlot"));
  EXPECT_THAT(page, HasSubstr("prefers-color-scheme: dark"));
  EXPECT_THAT(page, HasSubstr("</html>"));
  for (const char* mark : {"/* styles */", "/* data */", "/* scripts */", "src=", "@import"}) {
    EXPECT_THAT(page, Not(HasSubstr(mark)));
  }
}

TEST(ReportPageTest, MissingFolderCannotBeWrittenTo) {
  const std::filesystem::path file = std::filesystem::path("no such folder") / "report.html";
  EXPECT_FALSE(IsWritable(file));
  EXPECT_FALSE(WriteReport(file, ReportRecord(), "address"));
}

}  // namespace
}  // namespace report
