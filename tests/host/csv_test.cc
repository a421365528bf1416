#include "host/console/csv.h"

#include <gtest/gtest.h>

namespace host {
namespace {

TEST(CsvTest, PlainValueIsNotChanged) { EXPECT_EQ(CsvField("PLAY TS OK:x y"), "PLAY TS OK:x y"); }

TEST(CsvTest, EmptyValueStaysEmpty) { EXPECT_EQ(CsvField(""), ""); }

TEST(CsvTest, CommaIsQuoted) { EXPECT_EQ(CsvField("a,b"), "\"a,b\""); }

TEST(CsvTest, QuoteIsQuotedAndDoubled) { EXPECT_EQ(CsvField("a\"b"), "\"a\"\"b\""); }

TEST(CsvTest, LineBreaksAreQuoted) {
  EXPECT_EQ(CsvField("a\nb"), "\"a\nb\"");
  EXPECT_EQ(CsvField("a\rb"), "\"a\rb\"");
}

TEST(CsvTest, BytesThatAreNoTextAreNotChanged) {
  const std::string bytes("\xff\x00\x80", 3);
  EXPECT_EQ(CsvField(bytes), bytes);
}

}  // namespace
}  // namespace host
