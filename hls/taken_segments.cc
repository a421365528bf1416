#include "hls/taken_segments.h"

bool TakenSegments::Take(const std::string& key, std::size_t limit) {
  if (const auto place = places_.find(key); place != places_.end()) {
    order_.splice(order_.end(), order_, place->second);
    return false;
  }
  while (places_.size() > limit) {
    places_.erase(order_.front());
    order_.pop_front();
  }
  places_.emplace(key, order_.insert(order_.end(), key));
  return true;
}

void TakenSegments::Forget() {
  places_.clear();
  order_.clear();
}
