// What a host does in a call of the component, which must not meet an exception.
#ifndef HOST_SHARED_GUARDED_CALL_H_
#define HOST_SHARED_GUARDED_CALL_H_

namespace host {

// Tells the exception that is being handled in one line on standard error; later ones are not told.
void TellFailureOnce() noexcept;

// Has the next exception reported even if one was before. For tests.
void ReportNextFailure() noexcept;

// Runs `call`; false when it threw, which is told once. Safe from any thread.
template <typename Call>
bool GuardedCall(const Call& call) noexcept {
  try {
    call();
    return true;
  } catch (...) {
    TellFailureOnce();
    return false;
  }
}

}  // namespace host

#endif  // HOST_SHARED_GUARDED_CALL_H_
