// SPDX-License-Identifier: MIT
#include "tool/process/Background.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <cstddef>

namespace {

class SecondThread : public testing::Test {
 protected:
  SecondThread() { ::sched_getaffinity(0, sizeof all_, &all_); }
  ~SecondThread() override { ::sched_setaffinity(0, sizeof all_, &all_); }

  /// Confines this process to so many of its processors. Returns false if it has fewer.
  bool confineTo(int count) {
    ::cpu_set_t some;
    CPU_ZERO(&some);
    for (std::size_t i = 0; i < CPU_SETSIZE && CPU_COUNT(&some) < count; ++i) {
      if (CPU_ISSET(i, &all_)) CPU_SET(i, &some);
    }
    return CPU_COUNT(&some) == count && ::sched_setaffinity(0, sizeof some, &some) == 0;
  }

 private:
  ::cpu_set_t all_;
};

TEST_F(SecondThread, IsNotUsedIfTheProcessMayUseOneProcessorOnly) {
  ASSERT_TRUE(confineTo(1));

  EXPECT_FALSE(tool::process::secondThread());
}

TEST_F(SecondThread, IsUsedIfThereIsAProcessorForIt) {
  if (!confineTo(2)) GTEST_SKIP() << "needs two processors";

  EXPECT_TRUE(tool::process::secondThread());
}

}  // namespace
