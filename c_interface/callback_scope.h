// CallbackScope: marks that the calling thread is inside one of the host's callbacks, where a stop
// would wait for itself.
#ifndef C_INTERFACE_CALLBACK_SCOPE_H_
#define C_INTERFACE_CALLBACK_SCOPE_H_

// Exists while a callback runs. Scopes may be nested: a callback may use the C++ interface in ways
// that call another callback.
class CallbackScope {
 public:
  CallbackScope();
  ~CallbackScope();
  CallbackScope(const CallbackScope&) = delete;
  CallbackScope& operator=(const CallbackScope&) = delete;

  // Returns whether a scope exists on the calling thread.
  static bool IsInside();
};

#endif  // C_INTERFACE_CALLBACK_SCOPE_H_
