#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "hls/m3u8_downloader.h"

namespace stream {
namespace {

TEST(DateTextTest, NumbersHaveNoLeadingZerosAndCharactersAreGb2312) {
  std::tm date{};
  date.tm_year = 124;
  date.tm_mon = 0;
  date.tm_mday = 9;
  date.tm_hour = 8;
  date.tm_min = 5;
  date.tm_sec = 0;
  const unsigned char expected[] = {'2', '0',  '2',  '4', 0xC4, 0xEA, '1', 0xD4, 0xC2,
                                    '9', 0xC8, 0xD5, ' ', '8',  ':',  '5', ':',  '0'};
  EXPECT_EQ(DateText(date), std::string(std::begin(expected), std::end(expected)));
}

TEST(DateTextTest, LastSecondOfAYear) {
  std::tm date{};
  date.tm_year = 99;
  date.tm_mon = 11;
  date.tm_mday = 31;
  date.tm_hour = 23;
  date.tm_min = 59;
  date.tm_sec = 59;
  EXPECT_EQ(DateText(date),
            "1999\xC4\xEA"
            "12\xD4\xC2"
            "31\xC8\xD5 23:59:59");
}

TEST(DateTextTest, SecondIsOneGb2312Character) {
  EXPECT_EQ(std::string(kSecondsGb2312), "\xC3\xEB");
}

}  // namespace
}  // namespace stream
