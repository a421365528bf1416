#include "common/pipeline.h"

#include <ctime>
#include <utility>

#include "common/console.h"
#include "common/frame_queue.h"
#include "common/start_position.h"

namespace stream {

Pipeline::Pipeline(PipelineTexts texts, const PlayerPort& player, std::atomic<bool>& running,
                   CThreadPool& pool)
    : texts_(std::move(texts)), player_(player), running_(running), pool_(pool) {}

Pipeline::~Pipeline() { pool_.Stop(); }

void Pipeline::Start() {
  running_ = true;
  pool_.Start();
}

void Pipeline::AddTask(CThreadPool::Task task) { pool_.AddTask(gate_.Admit(std::move(task))); }

void Pipeline::AddDeliveryTasks(const FrameFilters& wanted) {
  AddDeliveryTask(DeliverVideoFrames, wanted.video, " video thread stop.");
  AddDeliveryTask(DeliverAudioFrames, wanted.audio, " audio thread stop.");
}

void Pipeline::AddDeliveryTask(DeliverFunction deliver, const FrameFilter& wanted,
                               const char* end) {
  AddTask([this, deliver, loop = DeliveryLoop{running_, player_, wanted, texts_.console + end}] {
    deliver(loop);
    if (texts_.sends_delivery_ends) player_.Message(loop.stop_line);
  });
}

bool Pipeline::ReportIfSameAddress(const std::string& url, const std::string& last_url) const {
  if (url != last_url) return false;
  player_.Message("PLAY " + texts_.status + " RE:" + url);
  return true;
}

void Pipeline::MoveStart(float seconds, const std::function<void()>& accept) const {
  const std::clock_t before = std::clock();
  accept();
  const std::clock_t elapsed = std::clock() - before;
  player_.Message(StartPositionLine(texts_.status.c_str(), seconds, elapsed));
}

void Pipeline::ReportStart(float seconds) const {
  player_.Message(StartPositionLine(texts_.status.c_str(), seconds));
}

bool Pipeline::Stop(const std::function<void()>& wake) {
  if (!running_.load()) {
    JoinTasks(wake);
    return false;
  }
  ConsoleLine(texts_.console + " EndDownload...");
  running_.store(false);
  JoinTasks(wake);
  ClearVideoQueue();
  ConsoleLine(texts_.console + " video clear.");
  ClearAudioQueue();
  ConsoleLine(texts_.console + " audio clear.");
  return true;
}

void Pipeline::JoinTasks(const std::function<void()>& wake) {
  gate_.Close();
  wake();
  pool_.Stop();
}

void ReportOutcome(const PlayerPort& player, const std::string& outcome, const std::string& url) {
  player.Message("PLAY " + outcome + ":" + url);
  player.PlayResult("PLAY:" + outcome + ":" + url);
}

}  // namespace stream
