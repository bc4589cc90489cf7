// SPDX-License-Identifier: MIT
//
// What the library's own report functions do to the x87 unit. Linked with the library's objects,
// because the handler is hidden.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/error.h"
#include "tests/support.h"

struct Code {
  int32_t code;
  uint16_t flags;
  uint16_t trap;  // the exception that an unmasked caller gets
};
constexpr Code kCodes[] = {{LUX_OVERFLOW, kOverflow | kInexact, kOverflow},
                           {LUX_UNDERFLOW, kUnderflow | kInexact, kUnderflow},
                           {LUX_POLE, kZeroDivide, kZeroDivide},
                           {LUX_DOMAIN, kInvalid, kInvalid},
                           {0, 0, 0},
                           {8, 0, 0},
                           {62, 0, 0},
                           {-6, 0, 0},
                           {13, 0, 0},
                           {INT32_MAX, 0, 0}};

static const float kSingles[] = {2, 3, 4, 5};
static const double kDoubles[] = {2, 3, 4, 5};

enum Way { kSingle, kDouble, kHandler };
static int32_t report(Way way, int32_t code) {
  if (way == kSingle)
    return noxsError(code, 5, kSingles, kSingles + 1, kSingles + 2, kSingles + 3, "sCos_HA");
  if (way == kDouble)
    return noxdError(code, 5, kDoubles, kDoubles + 1, kDoubles + 2, kDoubles + 3, "");
  const ErrorRecord record = {code, 5, 2, 3, 4, 5, "s"};
  return _noxStdErrorHandlerExcept(&record);
}

TEST(Reports, RaiseExactlyTheirFlagInEveryPrecisionAndDirection) {
  for (const Way way : {kSingle, kDouble, kHandler})
    for (const auto& [code, flags, trap] : kCodes)
      for (const uint16_t precision : {0x000, 0x200, 0x300})
        for (const uint16_t direction : {0x000, 0x400, 0x800, 0xC00}) {
          const Environment e = {uint16_t(0x7F | precision | direction)};
          set(e);
          const int32_t returned = report(way, code);
          const uint16_t raised = x87_flags();
          const bool empty = x87_stack_empty();
          const Environment after = environment();
          set({});
          EXPECT_EQ(returned, code);
          EXPECT_EQ(raised, flags) << "code " << code << " control " << std::hex << e.control;
          EXPECT_TRUE(empty);
          EXPECT_EQ(after.control, e.control);
        }
}

// The exit status of a child that reports with some exceptions unmasked: 42 for a trap.
static int in_child(Way way, int32_t code, uint16_t unmasked) {
  const pid_t child = fork();
  if (child == 0) {
    signal(SIGFPE, [](int) { _exit(42); });
    set({uint16_t(kDefaultControl & ~unmasked)});
    report(way, code);
    __asm__ volatile("fwait");
    _exit(0);
  }
  int status;
  waitpid(child, &status, 0);
  return WEXITSTATUS(status);
}

TEST(Reports, TrapWhereTheCallerUnmaskedTheException) {
  for (const Way way : {kSingle, kDouble})
    for (const auto& [code, flags, trap] : kCodes) {
      EXPECT_EQ(in_child(way, code, trap), trap ? 42 : 0) << code;
      EXPECT_EQ(in_child(way, code, kAllFlags & ~flags), 0) << code;
    }
}

TEST(Reports, ReadTheValuesWithoutTheIndex) {
  Guarded page;
  float* const last = reinterpret_cast<float*>(page.end()) - 1;
  double* const last_wide = reinterpret_cast<double*>(page.end()) - 1;
  char* const name = reinterpret_cast<char*>(page.start());  // no zero needed behind it
  EXPECT_EQ(noxsError(LUX_POLE, 1000000, last, last, last, last, name), LUX_POLE);
  EXPECT_EQ(noxdError(LUX_POLE, 1000000, last_wide, last_wide, last_wide, last_wide, name),
            LUX_POLE);
}

// A kernel's report reaches the flags although single precision is computed elsewhere.
TEST(Reports, OfKernelsReachTheFlags) {
  const float zero = 0, large = 100, small = -110;
  const double zero_wide = 0, large_wide = 710, small_wide = -750;
  float out;
  double out_wide;
  const auto raised = [](auto call) {
    set({});
    const Status status = call();
    const uint16_t flags = x87_flags();
    set({});
    return std::pair(status, flags);
  };
  const auto expect = [](std::pair<Status, uint16_t> got, Status status, uint16_t flag) {
    EXPECT_EQ(got.first, status);
    EXPECT_EQ(got.second & flag, flag);
  };
  expect(raised([&] { return luxsInv_32f_A24(&zero, &out, 1); }), 18, kZeroDivide);
  expect(raised([&] { return luxsDiv_32f_A24(&large, &zero, &out, 1); }), 18, kZeroDivide);
  expect(raised([&] { return luxsExp_32f_A24(&large, &out, 1); }), 12, kOverflow);
  expect(raised([&] { return luxsExp_32f_A24(&small, &out, 1); }), 17, kUnderflow);
  expect(raised([&] { return luxsInv_64f_A53(&zero_wide, &out_wide, 1); }), 18, kZeroDivide);
  expect(raised([&] { return luxsExp_64f_A53(&large_wide, &out_wide, 1); }), 12, kOverflow);
  expect(raised([&] { return luxsExp_64f_A53(&small_wide, &out_wide, 1); }), 17, kUnderflow);
}
