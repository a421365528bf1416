// A queue between two threads of the host that holds a fixed number of items; the producer waits
// for space. Used for decoded data. Data not yet decoded is limited by stream time instead
// (frame_queue.h).
#ifndef HOST_PLAYER_BOUNDED_QUEUE_H_
#define HOST_PLAYER_BOUNDED_QUEUE_H_

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace player {

template <typename Item>
class BoundedQueue {
 public:
  explicit BoundedQueue(std::size_t capacity) : capacity_(capacity) {}

  // Waits for space. Returns false if the queue was closed; the item is then dropped.
  bool Push(Item item) {
    std::unique_lock lock(mutex_);
    space_available_.wait(lock, [this] { return closed_ || items_.size() < capacity_; });
    if (closed_) return false;
    items_.push_back(std::move(item));
    return true;
  }

  // Removes and returns the oldest item, if there is one.
  std::optional<Item> Pop() {
    const std::lock_guard lock(mutex_);
    if (items_.empty()) return std::nullopt;
    Item item = std::move(items_.front());
    items_.pop_front();
    space_available_.notify_one();
    return item;
  }

  // Returns the result of `look` for the item `index`, 0 being the oldest; nullopt if
  // there is no such item.
  template <typename Look>
  auto Peek(std::size_t index, Look look) const
      -> std::optional<decltype(look(std::declval<const Item&>()))> {
    const std::lock_guard lock(mutex_);
    if (index >= items_.size()) return std::nullopt;
    return look(items_[index]);
  }

  bool IsEmpty() const {
    const std::lock_guard lock(mutex_);
    return items_.empty();
  }

  // Releases a waiting producer, empties the queue and keeps it closed.
  void Close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    items_.clear();
    space_available_.notify_all();
  }

 private:
  const std::size_t capacity_;
  mutable std::mutex mutex_;
  std::condition_variable space_available_;
  std::deque<Item> items_;  // guarded by mutex_
  bool closed_ = false;     // guarded by mutex_
};

}  // namespace player

#endif  // HOST_PLAYER_BOUNDED_QUEUE_H_
