#pragma once

#include <thread>
#include <vector>

namespace tavlen {

/// Calls `work` with 0, 1 and so on up to below `count`, each on a thread of its own, and waits.
template <class Work>
void inThreads(int count, const Work& work) {
  std::vector<std::jthread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back([&work, i] { work(i); });
}

}  // namespace tavlen
