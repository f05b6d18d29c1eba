#include "tools/loader/base/ProcessorTime.h"

#include <ctime>

#ifdef __APPLE__
#include <mach/mach.h>
#endif

namespace tavlen::loader {

std::chrono::nanoseconds ProcessorTime::used() const {
  using namespace std::chrono;
#ifdef __APPLE__
  thread_basic_info info{};
  mach_msg_type_number_t count = THREAD_BASIC_INFO_COUNT;
  if (::thread_info(::pthread_mach_thread_np(thread_), THREAD_BASIC_INFO,
                    reinterpret_cast<thread_info_t>(&info), &count) != KERN_SUCCESS)
    return nanoseconds(0);
  return seconds(info.user_time.seconds + info.system_time.seconds) +
         microseconds(info.user_time.microseconds + info.system_time.microseconds);
#else
  clockid_t clock{};
  timespec time{};
  if (::pthread_getcpuclockid(thread_, &clock) != 0 || ::clock_gettime(clock, &time) != 0)
    return nanoseconds(0);
  return seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
#endif
}

}  // namespace tavlen::loader
