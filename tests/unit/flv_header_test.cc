#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/flv_parse.h"
#include "tests/support/flv_tags.h"

namespace stream {
namespace {

using flv_test::Bytes;
using flv_test::Header;
using flv_test::Join;
using flv_test::LastBackPointer;
using flv_test::NalTag;

// The nine bytes of a header, with this data offset.
Bytes HeaderWithOffset(std::uint32_t offset) {
  return Join({{'F', 'L', 'V', 1, 5}, flv_test::BigEndian(offset, 4)});
}

// One frame. It is delivered if the parser finds the first tag.
Bytes OneFrame() { return Join({NalTag(40, {{0x65, 1}}), LastBackPointer()}); }

TEST(FlvHeaderTest, SignatureIsAccepted) {
  const ParsedFlv parsed = ParseFlv(Header());
  EXPECT_TRUE(parsed.has_header);
  EXPECT_EQ(parsed.console, "headlength:9\n");
  EXPECT_TRUE(parsed.frames.video.empty());
}

TEST(FlvHeaderTest, SignatureInLowerCaseIsAccepted) {
  const ParsedFlv parsed = ParseFlv(Join({Header({}, "flv"), OneFrame()}));
  EXPECT_TRUE(parsed.has_header);
  EXPECT_EQ(parsed.frames.video.size(), 1U);
}

TEST(FlvHeaderTest, MixedCaseIsNoSignature) {
  for (const char* signature : {"Flv", "fLV", "FLv", "FLW", "\x89PN", "ID3"}) {
    const ParsedFlv parsed = ParseFlv(Join({Header({}, signature), OneFrame()}));
    EXPECT_FALSE(parsed.has_header) << signature;
    EXPECT_EQ(parsed.console, "not flv file\n") << signature;
    EXPECT_TRUE(parsed.frames.video.empty()) << signature;
  }
}

TEST(FlvHeaderTest, VersionAndTypeFlagsAreIgnored) {
  Bytes stream = Join({Header(), OneFrame()});
  stream[3] = 0xFF;
  stream[4] = 0;  // neither audio nor video
  EXPECT_EQ(ParseFlv(stream).frames.video.size(), 1U);
}

TEST(FlvHeaderTest, DataOffsetOfNineSkipsNothing) {
  EXPECT_EQ(ParseFlv(Join({HeaderWithOffset(9), OneFrame()})).frames.video.size(), 1U);
}

TEST(FlvHeaderTest, LargerDataOffsetSkipsTheExtraBytes) {
  const ParsedFlv parsed = ParseFlv(Join({Header(Bytes(100, 0xEE)), OneFrame()}));
  EXPECT_EQ(parsed.console, "headlength:109\n");
  EXPECT_EQ(parsed.frames.video.size(), 1U);
}

TEST(FlvHeaderTest, SmallerDataOffsetSkipsNothing) {
  for (const std::uint32_t offset : {0U, 1U, 8U}) {
    EXPECT_EQ(ParseFlv(Join({HeaderWithOffset(offset), OneFrame()})).frames.video.size(), 1U)
        << offset;
  }
}

TEST(FlvHeaderTest, DataOffsetAbove31BitsIsPrintedAsNegativeAndSkipsNothing) {
  const ParsedFlv parsed = ParseFlv(Join({HeaderWithOffset(0xFFFFFFFF), OneFrame()}));
  EXPECT_TRUE(parsed.has_header);
  EXPECT_EQ(parsed.console, "headlength:-1\n");
  EXPECT_EQ(parsed.frames.video.size(), 1U);
}

// Some writers store the 9 with its low byte first.
TEST(FlvHeaderTest, DataOffsetBeyondTheEndOfTheStreamSkipsNothing) {
  for (const std::uint32_t offset : {1000U, 0x09000000U, 0x7FFFFFFFU, 0x80000008U}) {
    const ParsedFlv parsed = ParseFlv(Join({HeaderWithOffset(offset), OneFrame()}));
    EXPECT_TRUE(parsed.has_header) << offset;
    EXPECT_EQ(parsed.frames.video.size(), 1U) << offset;
  }
}

TEST(FlvHeaderTest, TruncatedSignatureIsNoHeaderAndPrintsNothing) {
  for (const std::size_t size : {0U, 1U, 2U}) {
    Bytes stream = Header();
    stream.resize(size);
    const ParsedFlv parsed = ParseFlv(stream);
    EXPECT_FALSE(parsed.has_header) << size;
    EXPECT_EQ(parsed.console, "") << size;
  }
}

TEST(FlvHeaderTest, HeaderTruncatedAfterItsSignatureIsNoHeader) {
  for (std::size_t size = 3; size < flv_test::kHeaderSize; ++size) {
    Bytes stream = Header();
    stream.resize(size);
    const ParsedFlv parsed = ParseFlv(stream);
    EXPECT_FALSE(parsed.has_header) << size;
    EXPECT_EQ(parsed.console, "") << size;
  }
}

TEST(FlvHeaderTest, PagesAndNoiseAreNoHeader) {
  const std::string page = "<html><head><title>404 Not Found</title></head></html>";
  EXPECT_FALSE(ParseFlv(Bytes(page.begin(), page.end())).has_header);
  EXPECT_FALSE(ParseFlv(Bytes(1000, 0)).has_header);
  EXPECT_FALSE(ParseFlv(Bytes(1000, 0xFF)).has_header);
}

}  // namespace
}  // namespace stream
