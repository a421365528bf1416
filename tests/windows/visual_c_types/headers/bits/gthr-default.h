// The threads that libstdc++ is built upon, as declarations only. The POSIX threads are not
// included, because Visual C++ has no <pthread.h> and the component must not see its functions.
#pragma GCC system_header

#include <time.h>

// The same for the other features that libstdc++ takes from POSIX headers.
#undef _GLIBCXX_HAVE_POSIX_SEMAPHORE
#undef _GLIBCXX_USE_NANOSLEEP

#define __GTHREADS 1
#define __GTHREADS_CXX0X 1
#define __GTHREAD_HAS_COND 1
#define __GTHREAD_ONCE_INIT \
  {}
#define __GTHREAD_MUTEX_INIT \
  {}
#define __GTHREAD_RECURSIVE_MUTEX_INIT \
  {}
#define __GTHREAD_COND_INIT \
  {}

struct __gthread_once_t {
  void* state;
};
struct __gthread_mutex_t {
  void* state;
};
struct __gthread_recursive_mutex_t {
  void* state;
};
struct __gthread_cond_t {
  void* state;
};
using __gthread_t = unsigned long long;
using __gthread_key_t = unsigned;
using __gthread_time_t = timespec;

int __gthread_active_p();
int __gthread_create(__gthread_t*, void* (*)(void*), void*);
int __gthread_join(__gthread_t, void**);
int __gthread_detach(__gthread_t);
int __gthread_equal(__gthread_t, __gthread_t);
__gthread_t __gthread_self();
int __gthread_yield();
int __gthread_once(__gthread_once_t*, void (*)());
int __gthread_key_create(__gthread_key_t*, void (*)(void*));
int __gthread_key_delete(__gthread_key_t);
void* __gthread_getspecific(__gthread_key_t);
int __gthread_setspecific(__gthread_key_t, const void*);
int __gthread_mutex_destroy(__gthread_mutex_t*);
int __gthread_mutex_lock(__gthread_mutex_t*);
int __gthread_mutex_trylock(__gthread_mutex_t*);
int __gthread_mutex_timedlock(__gthread_mutex_t*, const __gthread_time_t*);
int __gthread_mutex_unlock(__gthread_mutex_t*);
int __gthread_recursive_mutex_destroy(__gthread_recursive_mutex_t*);
int __gthread_recursive_mutex_lock(__gthread_recursive_mutex_t*);
int __gthread_recursive_mutex_trylock(__gthread_recursive_mutex_t*);
int __gthread_recursive_mutex_timedlock(__gthread_recursive_mutex_t*, const __gthread_time_t*);
int __gthread_recursive_mutex_unlock(__gthread_recursive_mutex_t*);
int __gthread_cond_broadcast(__gthread_cond_t*);
int __gthread_cond_signal(__gthread_cond_t*);
int __gthread_cond_wait(__gthread_cond_t*, __gthread_mutex_t*);
int __gthread_cond_timedwait(__gthread_cond_t*, __gthread_mutex_t*, const __gthread_time_t*);
int __gthread_cond_wait_recursive(__gthread_cond_t*, __gthread_recursive_mutex_t*);
int __gthread_cond_destroy(__gthread_cond_t*);
