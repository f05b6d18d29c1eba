#pragma once

#include <thread>
#include <vector>

namespace tavlen {

/// Calls `work` with each number below `count`, each call on a thread of its own, and waits for
/// all.
template <class Work>
void inThreads(int count, const Work& work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back([&work, i] { work(i); });
  for (std::thread& thread : threads) thread.join();
}

}  // namespace tavlen
