// SPDX-License-Identifier: MIT
//
// The thread count of the core library.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include "luxcore.h"

TEST(ThreadCount, StartsAtTheProcessorsOfTheProcess) {
  cpu_set_t mask;
  ASSERT_EQ(sched_getaffinity(0, sizeof mask, &mask), 0);
  EXPECT_EQ(luxcoreGetNumThreads(), CPU_COUNT(&mask));
  EXPECT_EQ(threads_omp_of_n_lux, CPU_COUNT(&mask));
}

TEST(ThreadCount, FollowsTheAffinityMask) {
  const pid_t child = fork();
  if (child == 0) {
    cpu_set_t mask, one;
    sched_getaffinity(0, sizeof mask, &mask);
    CPU_ZERO(&one);
    for (int k = 0; k < CPU_SETSIZE && !CPU_COUNT(&one); ++k)
      if (CPU_ISSET(k, &mask)) CPU_SET(k, &one);
    sched_setaffinity(0, sizeof one, &one);
    execl("/proc/self/exe", "luxcore_test", "--exit-with-thread-count", nullptr);
    _exit(100);
  }
  int status;
  waitpid(child, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), 1);
}

TEST(ThreadCount, IsSetReadAndRefused) {
  for (const int32_t good : {1, 7, INT32_MAX}) {
    EXPECT_EQ(luxcoreSetNumThreads(good), LUXCORE_OK);
    EXPECT_EQ(luxcoreGetNumThreads(), good);
    EXPECT_EQ(threads_omp_of_n_lux, good);
  }
  for (const int32_t bad : {0, -1, INT32_MIN}) {
    EXPECT_EQ(luxcoreSetNumThreads(bad), LUXCORE_BAD_COUNT);
    EXPECT_EQ(luxcoreGetNumThreads(), INT32_MAX);
  }
}

int main(int argc, char** argv) {
  if (argc == 2 && std::string(argv[1]) == "--exit-with-thread-count")
    return luxcoreGetNumThreads();
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
