#include "hls/sequence_memory.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

namespace stream {
namespace {

TEST(SequenceMemoryTest, EmptyMemoryKnowsNothing) {
  const SequenceMemory memory;
  EXPECT_FALSE(memory.Contains({0, "a"}));
  EXPECT_EQ(memory.NumberOf("a"), std::nullopt);
  EXPECT_EQ(memory.ReusedAt("a"), std::nullopt);
}

TEST(SequenceMemoryTest, PairIsFoundByNumberAndKey) {
  SequenceMemory memory;
  memory.Record({7, "a"});
  EXPECT_TRUE(memory.Contains({7, "a"}));
  EXPECT_FALSE(memory.Contains({7, "b"}));
  EXPECT_FALSE(memory.Contains({8, "a"}));
  EXPECT_EQ(memory.NumberOf("a"), 7);
}

TEST(SequenceMemoryTest, KeyKeepsItsOlderPairsAndReportsTheNewestNumber) {
  SequenceMemory memory;
  memory.Record({0, "a"});
  memory.Record({8, "a"});
  memory.Record({0, "a"});  // an old pair that is listed again
  EXPECT_TRUE(memory.Contains({0, "a"}));
  EXPECT_TRUE(memory.Contains({8, "a"}));
  EXPECT_EQ(memory.NumberOf("a"), 8);
}

TEST(SequenceMemoryTest, NumberBelongsToTheKeyListedLast) {
  SequenceMemory memory;
  memory.Record({7, "a"});
  memory.Record({7, "b"});
  EXPECT_FALSE(memory.Contains({7, "a"}));
  EXPECT_TRUE(memory.Contains({7, "b"}));
  EXPECT_EQ(memory.Size(), 1U);
}

TEST(SequenceMemoryTest, KeyThatLostItsNumberIsKnownUntilTheTrim) {
  SequenceMemory memory;
  memory.RecordReused({7, "a"});
  memory.Record({7, "b"});
  EXPECT_EQ(memory.ReusedAt("a"), 7);
  memory.Record({6, "a"});
  memory.Trim(10);
  EXPECT_EQ(memory.ReusedAt("a"), 7);
  memory.Record({6, "b"});
  memory.Trim(10);
  EXPECT_EQ(memory.NumberOf("a"), std::nullopt);
}

TEST(SequenceMemoryTest, TrimForgetsThePairsListedLongestAgo) {
  SequenceMemory memory;
  for (int i = 0; i < 5; ++i) memory.Record({i, std::to_string(i)});
  memory.Record({0, "0"});
  memory.Trim(3);
  EXPECT_EQ(memory.Size(), 3U);
  EXPECT_TRUE(memory.Contains({0, "0"}));
  EXPECT_EQ(memory.NumberOf("1"), std::nullopt);
  EXPECT_EQ(memory.NumberOf("2"), std::nullopt);
  EXPECT_TRUE(memory.Contains({3, "3"}));
}

TEST(SequenceMemoryTest, TrimOfOneOfTwoPairsKeepsTheKey) {
  SequenceMemory memory;
  memory.Record({0, "a"});
  memory.Record({8, "a"});
  memory.Trim(1);
  EXPECT_FALSE(memory.Contains({0, "a"}));
  EXPECT_EQ(memory.NumberOf("a"), 8);
}

TEST(SequenceMemoryTest, MovedMemoryKeepsItsPairs) {
  SequenceMemory memory;
  memory.Record({0, "a"});
  memory.Record({1, "b"});
  SequenceMemory moved = std::move(memory);
  moved.Record({0, "a"});
  moved.Trim(1);
  EXPECT_TRUE(moved.Contains({0, "a"}));
  EXPECT_FALSE(moved.Contains({1, "b"}));
}

}  // namespace
}  // namespace stream
