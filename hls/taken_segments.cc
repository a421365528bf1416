#include "hls/taken_segments.h"

bool TakenSegments::Take(const std::string& uri, std::size_t limit) {
  if (const auto place = places_.find(uri); place != places_.end()) {
    order_.splice(order_.end(), order_, place->second);
    return false;
  }
  while (places_.size() > limit) {
    places_.erase(order_.front());
    order_.pop_front();
  }
  places_.emplace(uri, order_.insert(order_.end(), uri));
  return true;
}

void TakenSegments::Forget() {
  places_.clear();
  order_.clear();
}
