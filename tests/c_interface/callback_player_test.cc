#include "c_interface/callback_player.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "c_interface/callback_scope.h"

namespace {

// The last callback and its arguments.
struct Called {
  std::string name;
  float seconds = 0;
  sd_frame frame{};
  std::string text;
  bool was_inside = false;
};

void RecordCall(void* user, const char* name) {
  auto& called = *static_cast<Called*>(user);
  called = Called();
  called.name = name;
  called.was_inside = CallbackScope::IsInside();
}

sd_callbacks RecordingCallbacks(Called& called) {
  sd_callbacks callbacks;
  callbacks.size = sizeof(callbacks);
  callbacks.user = &called;
  callbacks.on_duration = [](void* user, float seconds) {
    RecordCall(user, "duration");
    static_cast<Called*>(user)->seconds = seconds;
  };
  callbacks.on_buffered_time = [](void* user, float seconds) {
    RecordCall(user, "buffered time");
    static_cast<Called*>(user)->seconds = seconds;
  };
  callbacks.on_audio_clock = [](void* user, float seconds) {
    RecordCall(user, "audio clock");
    static_cast<Called*>(user)->seconds = seconds;
  };
  callbacks.on_audio_frame = [](void* user, const sd_frame* frame) {
    RecordCall(user, "audio frame");
    static_cast<Called*>(user)->frame = *frame;
  };
  callbacks.on_video_frame = [](void* user, const sd_frame* frame) {
    RecordCall(user, "video frame");
    static_cast<Called*>(user)->frame = *frame;
  };
  callbacks.on_message = [](void* user, const char* line, std::size_t length) {
    RecordCall(user, "message");
    static_cast<Called*>(user)->text = std::string(line, length + 1);  // with its terminating zero
  };
  callbacks.on_play_result = [](void* user, const char* line, std::size_t length) {
    RecordCall(user, "play result");
    static_cast<Called*>(user)->text = std::string(line, length + 1);
  };
  return callbacks;
}

class CInterfaceCallbackPlayerTest : public testing::Test {
 protected:
  void ExpectCall(const char* name, float seconds) const {
    EXPECT_EQ(called_.name, name);
    EXPECT_EQ(called_.seconds, seconds);
    ExpectScope();
  }
  void ExpectCall(const char* name, const MediaFrame& frame) const {
    EXPECT_EQ(called_.name, name);
    EXPECT_EQ(called_.frame.pts, frame.pts);
    EXPECT_EQ(called_.frame.dts, frame.dts);
    EXPECT_EQ(called_.frame.play_time, frame.playTime);
    EXPECT_EQ(called_.frame.size, frame.size);
    EXPECT_EQ(called_.frame.data, frame.data);
    ExpectScope();
  }
  void ExpectCall(const char* name, const std::string& line) const {
    EXPECT_EQ(called_.name, name);
    EXPECT_EQ(called_.text, line + '\0');
    ExpectScope();
  }
  void ExpectScope() const {
    EXPECT_TRUE(called_.was_inside);
    EXPECT_FALSE(CallbackScope::IsInside());
  }

  Called called_;
  CallbackPlayer player_{RecordingCallbacks(called_)};
};

TEST_F(CInterfaceCallbackPlayerTest, EachPlayerCallReachesItsCallback) {
  const std::array<std::uint8_t, 2> payload = {1, 2};
  const MediaFrame frame{0x1111111111, 0x2222222222, 0x3333333333, 2, payload.data(), 0};
  player_.OnDuration(1.5F);
  ExpectCall("duration", 1.5F);
  player_.OnBufferedTime(2.5F);
  ExpectCall("buffered time", 2.5F);
  player_.OnAudioClock(3.5F);
  ExpectCall("audio clock", 3.5F);
  player_.OnAudioFrame(frame);
  ExpectCall("audio frame", frame);
  player_.OnVideoFrame(frame);
  ExpectCall("video frame", frame);
  player_.OnMessage(std::string("a\0line", 6));
  ExpectCall("message", std::string("a\0line", 6));
  player_.OnPlayResult("");
  ExpectCall("play result", "");
}

TEST_F(CInterfaceCallbackPlayerTest, FrameRecordHasTheLayoutOfMediaFrame) {
  const MediaFrame frame{1, 2, 3, 4, nullptr, 0};
  player_.OnVideoFrame(frame);
  std::array<unsigned char, 48> record;
  std::array<unsigned char, 48> original;
  std::memcpy(record.data(), &called_.frame, sizeof(called_.frame));
  std::memcpy(original.data(), &frame, sizeof(frame));
  for (std::size_t padding = 28; padding < 32; ++padding) record[padding] = original[padding];
  EXPECT_EQ(record, original);
}

TEST_F(CInterfaceCallbackPlayerTest, NullCallbacksAreSkipped) {
  CallbackPlayer silent{sd_callbacks{}};
  silent.OnDuration(1);
  silent.OnBufferedTime(1);
  silent.OnAudioClock(1);
  silent.OnAudioFrame({});
  silent.OnVideoFrame({});
  silent.OnMessage("line");
  silent.OnPlayResult("line");
  EXPECT_FALSE(CallbackScope::IsInside());
}

TEST(CInterfaceCallbackScopeTest, NestedScopesEndWithTheOuterOne) {
  const CallbackScope outer;
  { const CallbackScope inner; }
  EXPECT_TRUE(CallbackScope::IsInside());
}

}  // namespace
