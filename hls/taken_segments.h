// TakenSegments: remembers which segments the segment thread has taken, so that a segment that is
// queued again is not played again. Limited in size: the least recently seen segments are
// forgotten.
#ifndef HLS_TAKEN_SEGMENTS_H_
#define HLS_TAKEN_SEGMENTS_H_

#include <cstddef>
#include <list>
#include <map>
#include <string>

class TakenSegments {
 public:
  // Records the identity of a segment. Returns false if it was recorded before. Keeps at most
  // `limit` + 1 identities.
  bool Take(const std::string& key, std::size_t limit);

  void Forget();
  std::size_t Size() const { return places_.size(); }

 private:
  using Order = std::list<std::string>;  // most recently seen last

  Order order_;
  std::map<std::string, Order::iterator> places_;
};

#endif  // HLS_TAKEN_SEGMENTS_H_
