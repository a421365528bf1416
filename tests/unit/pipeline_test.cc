#include "common/pipeline.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "common/console.h"
#include "common/frame_queue.h"
#include "tests/support/recording_player.h"
#include "tests/support/test_limit.h"

namespace stream {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using testing::UnorderedElementsAre;

void QueueFrame(FrameQueue* queue, std::uint64_t pts, bool is_video) {
  const std::uint8_t byte = 1;
  FrameRecord frame;
  ASSERT_EQ(CreateFrameNode(frame, pts, 0, &byte, 1, is_video, true), 0);
  const std::lock_guard lock(g_frameQueueMutex);
  ASSERT_EQ(PushFrame(frame, queue), 0);
}

void QueueBothKinds(std::uint64_t pts) {
  QueueFrame(g_videoQueue, pts, true);
  QueueFrame(g_audioQueue, pts, false);
}

class PipelineStopTest : public testing::Test {
 protected:
  PipelineStopTest() { ResetFrameQueues(); }

  // The console output of a stop. `result` receives its return value.
  std::string Stop(bool& result) {
    testing::internal::CaptureStdout();
    result = pipeline_.Stop([this] { wake_(); });
    return testing::internal::GetCapturedStdout();
  }
  bool Stop() {
    bool result = false;
    Stop(result);
    return result;
  }

  // Queues more than one frame of each kind, so that a single pop does not empty a queue.
  static void QueueFrames() {
    for (int i = 0; i < 3; ++i) QueueBothKinds(0);
  }

  std::atomic<bool> running_{true};
  std::function<void()> wake_ = [] {};
  CThreadPool pool_{1};
  Pipeline pipeline_{{"ts", "TS"}, PlayerPort(), running_, pool_};
};

TEST_F(PipelineStopTest, OrderIsLineFlagWakeTasksVideoAudio) {
  std::promise<void> woken;
  std::promise<void> begun;
  pipeline_.AddTask([&] {
    begun.set_value();
    const bool was_woken = woken.get_future().wait_for(kTestLimit) == std::future_status::ready;
    ConsoleLine(was_woken ? "task ends" : "task was joined before it was woken");
  });
  begun.get_future().wait();
  wake_ = [&] {
    ConsoleLine(running_.load() ? "wake while the flag is set" : "wake");
    woken.set_value();
  };
  bool was_running = false;
  EXPECT_EQ(Stop(was_running),
            "ts EndDownload...\nwake\ntask ends\nts video clear.\nts audio clear.\n");
  EXPECT_TRUE(was_running);
}

TEST_F(PipelineStopTest, LinesBeginWithTheNameOfThePipeline) {
  testing::internal::CaptureStdout();
  Pipeline({"flv", "FLV"}, PlayerPort(), running_, pool_).Stop([] {});
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "flv EndDownload...\nflv video clear.\nflv audio clear.\n");
}

TEST_F(PipelineStopTest, VideoQueueIsEmptied) {
  QueueFrames();
  EXPECT_TRUE(Stop());
  EXPECT_EQ(PopVideoFrame(), nullptr);
}

TEST_F(PipelineStopTest, AudioQueueIsEmptied) {
  QueueFrames();
  EXPECT_TRUE(Stop());
  EXPECT_EQ(PopAudioFrame(), nullptr);
}

TEST_F(PipelineStopTest, FramesQueuedByATaskAfterTheFlagWasClearedAreDroppedToo) {
  std::promise<void> woken;
  std::promise<void> begun;
  pipeline_.AddTask([&] {
    begun.set_value();
    woken.get_future().wait_for(kTestLimit);
    QueueFrames();
  });
  begun.get_future().wait();
  wake_ = [&] { woken.set_value(); };
  EXPECT_TRUE(Stop());
  EXPECT_EQ(PopVideoFrame(), nullptr);
  EXPECT_EQ(PopAudioFrame(), nullptr);
}

TEST_F(PipelineStopTest, ClearFlagReturnsFalseWithoutALineAndLeavesTheQueuesUnchanged) {
  running_ = false;
  QueueFrames();
  bool was_running = true;
  EXPECT_EQ(Stop(was_running), "");
  EXPECT_FALSE(was_running);
  EXPECT_NE(PopVideoFrame(), nullptr);
  EXPECT_NE(PopAudioFrame(), nullptr);
}

TEST_F(PipelineStopTest, TasksAreWokenAndJoinedEvenIfTheFlagIsClear) {
  running_ = false;
  std::promise<void> woken;
  std::promise<void> begun;
  std::atomic<bool> ended{false};
  pipeline_.AddTask([&] {
    begun.set_value();
    woken.get_future().wait_for(kTestLimit);
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();  // a stop that joins waits for this
    ended = true;
  });
  begun.get_future().wait();
  bool was_woken = false;
  wake_ = [&] {
    woken.set_value();
    was_woken = true;
  };
  EXPECT_FALSE(Stop());
  EXPECT_TRUE(was_woken);
  EXPECT_TRUE(ended.load());
  if (!was_woken) woken.set_value();  // the task must end before the objects it uses
  pool_.Stop();
}

// The only worker runs the first task while two tasks wait: an admitted task, and a task without
// admission, which shows when the admitted task has been removed from the pool.
TEST_F(PipelineStopTest, AdmittedTaskThatHasNotStartedNeverRuns) {
  std::promise<void> release;
  std::promise<void> begun;
  std::promise<void> ran;
  std::atomic<bool> has_run{false};
  pipeline_.AddTask([&] {
    begun.set_value();
    release.get_future().wait_for(kTestLimit);
  });
  pipeline_.AddTask([&] { has_run = true; });
  pool_.AddTask([&] { ran.set_value(); });
  begun.get_future().wait();
  wake_ = [&] {
    release.set_value();
    EXPECT_EQ(ran.get_future().wait_for(kTestLimit), std::future_status::ready);
  };
  EXPECT_TRUE(Stop());
  EXPECT_FALSE(has_run.load()) << "the gate was closed too late";
}

TEST_F(PipelineStopTest, AdmittedTaskLeftInThePoolDoesNotRunAfterTheNextStart) {
  std::promise<void> woken;
  std::promise<void> begun;
  std::atomic<bool> has_run{false};
  pipeline_.AddTask([&] {
    begun.set_value();
    woken.get_future().wait_for(kTestLimit);
  });
  begun.get_future().wait();
  wake_ = [&] { woken.set_value(); };
  pipeline_.AddTask([&] { has_run = true; });
  EXPECT_TRUE(Stop());
  std::promise<void> next;
  pool_.Start();
  pipeline_.AddTask([&] { next.set_value(); });
  EXPECT_EQ(next.get_future().wait_for(kTestLimit), std::future_status::ready);
  EXPECT_FALSE(has_run.load());
}

TEST_F(PipelineStopTest, SecondStopReturnsFalse) {
  EXPECT_TRUE(Stop());
  EXPECT_FALSE(Stop());
}

// Records both kinds of lines in their order.
struct OutcomePlayer final : CStreamPlayerImp {
  void OnDuration(float /*seconds*/) override {}
  void OnBufferedTime(float /*seconds*/) override {}
  void OnAudioClock(float /*seconds*/) override {}
  void OnAudioFrame(MediaFrame /*frame*/) override {}
  void OnVideoFrame(MediaFrame /*frame*/) override {}
  void OnMessage(std::string line) override { lines.push_back("message " + line); }
  void OnPlayResult(std::string line) override { lines.push_back("result " + line); }

  std::vector<std::string> lines;
};

// A pipeline with a player, which is destroyed before the player.
class PipelineTest : public testing::Test {
 protected:
  PipelineTest() { ResetFrameQueues(); }

  // Stops the pipeline and returns the console output from now on.
  std::string Stop() {
    testing::internal::CaptureStdout();
    pipeline_.Stop([] {});
    return testing::internal::GetCapturedStdout();
  }

  RecordingPlayer player_;
  std::atomic<bool> running_{false};
  CThreadPool pool_{2};
  Pipeline pipeline_{{"flv", "FLV"}, PlayerPort(&player_), running_, pool_};
};

TEST_F(PipelineTest, StartSetsTheFlagAndRunsTasksAddedBefore) {
  pool_.Stop();
  std::promise<bool> flag_of_task;
  pipeline_.AddTask([&] { flag_of_task.set_value(running_.load()); });
  pipeline_.Start();
  EXPECT_TRUE(running_.load());
  EXPECT_TRUE(flag_of_task.get_future().get());
}

TEST_F(PipelineTest, TaskOfAnEarlierStartIsDroppedAndOneOfTheNextStartRuns) {
  pipeline_.Start();
  pool_.Stop();  // no worker starts the first task
  bool earlier_has_run = false;
  pipeline_.AddTask([&] { earlier_has_run = true; });
  Stop();
  pipeline_.Start();
  std::promise<void> next_has_run;
  pipeline_.AddTask([&] { next_has_run.set_value(); });
  EXPECT_EQ(next_has_run.get_future().wait_for(kTestLimit), std::future_status::ready);
  Stop();
  EXPECT_FALSE(earlier_has_run);
}

TEST_F(PipelineTest, DeliveryTasksPassBothKindsOnUntilTheStopAndLogTheirEnds) {
  QueueBothKinds(5);
  pipeline_.Start();
  pipeline_.AddDeliveryTasks();
  EXPECT_TRUE(player_.WaitFor(
      [](const auto& record) { return record.video.size() == 1 && record.audio.size() == 1; }));
  const std::string console = Stop();
  player_.Close();
  QueueBothKinds(6);
  EXPECT_THAT(console,
              AllOf(StartsWith("flv EndDownload...\n"), HasSubstr("flv video thread stop.\n"),
                    HasSubstr("flv audio thread stop.\n"),
                    EndsWith("flv video clear.\nflv audio clear.\n")));
  EXPECT_THAT(player_.Snapshot().messages, IsEmpty());
}

TEST_F(PipelineTest, EachKindHasItsOwnFilter) {
  for (const std::uint64_t pts : {1U, 2U}) QueueBothKinds(pts);
  const auto only = [](std::uint64_t pts) {
    return [pts](const FrameRecord& frame) { return frame.pts == pts; };
  };
  pipeline_.Start();
  pipeline_.AddDeliveryTasks({only(1), only(2)});
  EXPECT_TRUE(player_.WaitFor(
      [](const auto& record) { return record.video.size() == 1 && record.audio.size() == 1; }));
  Stop();
  EXPECT_EQ(player_.Snapshot().video.front().pts, 1U);
  EXPECT_EQ(player_.Snapshot().audio.front().pts, 2U);
}

TEST_F(PipelineTest, EndsOfTheDeliveryTasksAreSentToThePlayerIfTheFormatAsksForIt) {
  Pipeline pipeline({"m3u8", "M3U8", true}, PlayerPort(&player_), running_, pool_);
  pipeline.Start();
  pipeline.AddDeliveryTasks();
  QueueBothKinds(1);
  EXPECT_TRUE(player_.WaitFor(
      [](const auto& record) { return record.video.size() == 1 && record.audio.size() == 1; }));
  pipeline.Stop([] {});
  EXPECT_THAT(player_.Snapshot().messages,
              UnorderedElementsAre("m3u8 video thread stop.", "m3u8 audio thread stop."));
}

TEST_F(PipelineTest, SameAddressIsReported) {
  EXPECT_TRUE(pipeline_.ReportIfSameAddress("http://host/a.flv", "http://host/a.flv"));
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV RE:http://host/a.flv"));
}

TEST_F(PipelineTest, OtherAddressIsNotReported) {
  EXPECT_FALSE(pipeline_.ReportIfSameAddress("http://host/b.flv", "http://host/a.flv"));
  EXPECT_FALSE(pipeline_.ReportIfSameAddress("http://host/b.flv", ""));
  EXPECT_THAT(player_.Snapshot().messages, IsEmpty());
}

TEST_F(PipelineTest, StartPositionIsStoredBeforeItIsReported) {
  bool is_reported = true;
  pipeline_.MoveStart(3725.5F, [&] { is_reported = !player_.Snapshot().messages.empty(); });
  EXPECT_FALSE(is_reported);
  EXPECT_THAT(player_.Snapshot().messages,
              ElementsAre(StartsWith("PLAY FLV StartPostion:01:02:05.500 Q:")));
}

TEST_F(PipelineTest, StartPositionIsReportedWithTheProcessorTimeOfStoringIt) {
  pipeline_.MoveStart(1, [] {
    const std::clock_t before = std::clock();
    while (std::clock() == before) continue;
  });
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre(Not(EndsWith(" Q:0.000000s"))));
}

TEST_F(PipelineTest, OutcomeIsAMessageAndThenAPlayResult) {
  OutcomePlayer player;
  ReportOutcome(PlayerPort(&player), "FLV CACHE_NO OK", "http://host/a.flv");
  EXPECT_THAT(player.lines, ElementsAre("message PLAY FLV CACHE_NO OK:http://host/a.flv",
                                        "result PLAY:FLV CACHE_NO OK:http://host/a.flv"));
}

TEST_F(PipelineTest, DestructorJoinsARunningTask) {
  std::atomic<bool> has_ended{false};
  std::promise<void> begun;
  {
    Pipeline pipeline({"flv", "FLV"}, PlayerPort(), running_, pool_);
    pipeline.Start();
    pipeline.AddTask([&] {
      begun.set_value();
      for (int i = 0; i < 1000; ++i) std::this_thread::yield();  // the destructor waits for this
      has_ended = true;
    });
    begun.get_future().wait();
  }
  EXPECT_TRUE(has_ended.load());
}

}  // namespace
}  // namespace stream
