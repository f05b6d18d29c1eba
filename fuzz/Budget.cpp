#include "fuzz/Budget.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "bench/HeapUse.h"

namespace tavlen::fuzz {

namespace {

double processorSeconds() {
  timespec now{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void require(double used, double allowed, const char* what, std::size_t size) {
  if (used <= allowed) return;
  static_cast<void>(std::fprintf(stderr, "%g %s for an input of %zu bytes, of %g allowed\n", used,
                                 what, size, allowed));
  std::abort();
}

}  // namespace

void requireWithin(const Budget& budget, std::size_t size, FunctionRef<void()> work) {
  const auto count = static_cast<double>(size);
  const std::size_t before = bench::HeapUse::current();
  bench::HeapUse::resetPeak();
  const double start = processorSeconds();
  work();
  const double seconds = processorSeconds() - start;
  const auto bytes = static_cast<double>(bench::HeapUse::peak() - before);
  require(bytes, budget.bytes + budget.bytesPerByte * count, "bytes", size);
  require(seconds, budget.seconds + budget.secondsPerByte * count, "seconds", size);
}

}  // namespace tavlen::fuzz
