// CallbackScope: whether this thread is inside one of the host's callbacks, where a stop would wait
// for itself.
#ifndef C_INTERFACE_CALLBACK_SCOPE_H_
#define C_INTERFACE_CALLBACK_SCOPE_H_

// Exists while a callback runs. It may be nested: a callback may use the C++ interface in ways that
// call another one.
class CallbackScope {
 public:
  CallbackScope();
  ~CallbackScope();
  CallbackScope(const CallbackScope&) = delete;
  CallbackScope& operator=(const CallbackScope&) = delete;

  // Whether one exists on the calling thread.
  static bool IsInside();
};

#endif  // C_INTERFACE_CALLBACK_SCOPE_H_
