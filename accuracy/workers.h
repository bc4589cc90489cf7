// SPDX-License-Identifier: MIT
//
// Work that several threads take from one queue.
#ifndef LUX_ACCURACY_WORKERS_H
#define LUX_ACCURACY_WORKERS_H

#include <mpfr.h>

#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace bench {

// Calls work(failed) in that many threads, this one among them. What one of them throws is thrown here
// when all are done; `failed` tells the others to end.
template <class Work>
void on_threads(int threads, const Work& work) {
  std::atomic<bool> failed{false};
  std::mutex mutex;
  std::exception_ptr failure;
  const auto guarded = [&] {
    try {
      work(failed);
    } catch (...) {
      const std::lock_guard lock(mutex);
      failure = std::current_exception();
      failed = true;
    }
    mpfr_free_cache();
  };
  std::vector<std::thread> others;
  for (int i = 1; i < threads; ++i) others.emplace_back(guarded);
  guarded();
  for (std::thread& other : others) other.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace bench

#endif
