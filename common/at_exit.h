// AtExit: runs an action at the end of its scope, also when an exception leaves the scope.
#ifndef COMMON_AT_EXIT_H_
#define COMMON_AT_EXIT_H_

#include <utility>

// The action must not throw.
template <typename Action>
class AtExit {
 public:
  explicit AtExit(Action action) : action_(std::move(action)) {}
  ~AtExit() { action_(); }
  AtExit(const AtExit&) = delete;
  AtExit& operator=(const AtExit&) = delete;

 private:
  const Action action_;
};

#endif  // COMMON_AT_EXIT_H_
