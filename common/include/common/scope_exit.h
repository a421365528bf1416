// ScopeExit: runs an action at the end of its scope, also when an exception leaves the scope.
#ifndef COMMON_SCOPE_EXIT_H_
#define COMMON_SCOPE_EXIT_H_

#include <utility>

namespace stream {

// The action must not throw.
template <typename Action>
class ScopeExit {
 public:
  explicit ScopeExit(Action action) : action_(std::move(action)) {}
  ~ScopeExit() { action_(); }
  ScopeExit(const ScopeExit&) = delete;
  ScopeExit& operator=(const ScopeExit&) = delete;

 private:
  const Action action_;
};

}  // namespace stream

#endif  // COMMON_SCOPE_EXIT_H_
