// Wraps the player's operations: no exception may leave them.
#ifndef HOST_SHARED_GUARDED_CALL_H_
#define HOST_SHARED_GUARDED_CALL_H_

namespace host {

// Prints the exception being handled on standard error, as one line. Prints only the first one.
void ReportFailureOnce() noexcept;

// Lets the next exception be printed even if one was printed before. For tests.
void ReportNextFailure() noexcept;

// Runs `call`. Returns false if it threw; the first exception is printed. Safe from any thread.
template <typename Call>
bool GuardedCall(const Call& call) noexcept {
  try {
    call();
    return true;
  } catch (...) {
    ReportFailureOnce();
    return false;
  }
}

}  // namespace host

#endif  // HOST_SHARED_GUARDED_CALL_H_
