// TakenSegments: the segments that the segment thread has taken, so that one that is queued again
// is not played again. Bounded: what was not met for longest is forgotten.
#ifndef HLS_TAKEN_SEGMENTS_H_
#define HLS_TAKEN_SEGMENTS_H_

#include <cstddef>
#include <list>
#include <map>
#include <string>

class TakenSegments {
 public:
  // Takes a segment by what tells it from others; false when it was taken before. One more than
  // `limit` of them are kept at most.
  bool Take(const std::string& key, std::size_t limit);

  void Forget();
  std::size_t Size() const { return places_.size(); }

 private:
  using Order = std::list<std::string>;  // the one met last at the end

  Order order_;
  std::map<std::string, Order::iterator> places_;
};

#endif  // HLS_TAKEN_SEGMENTS_H_
