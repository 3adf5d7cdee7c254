#pragma once

#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

// Takes a right of root (CAP_...) from this thread, and from what it starts, for a while: without CAP_DAC_OVERRIDE
// the rights of files hold for root as for anybody else. Nobody else has such a right, so nothing is changed for
// him.
class WithoutRight {
 public:
  explicit WithoutRight(int capability) {
    EXPECT_EQ(syscall(SYS_capget, &mHeader, mBefore), 0);
    __user_cap_data_struct without[2] = {mBefore[0], mBefore[1]};
    without[CAP_TO_INDEX(capability)].effective &= ~CAP_TO_MASK(capability);
    EXPECT_EQ(syscall(SYS_capset, &mHeader, without), 0);
  }
  ~WithoutRight() { EXPECT_EQ(syscall(SYS_capset, &mHeader, mBefore), 0); }
  WithoutRight(const WithoutRight&) = delete;
  WithoutRight& operator=(const WithoutRight&) = delete;

 private:
  __user_cap_header_struct mHeader{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct mBefore[2] = {};
};
