// SPDX-License-Identifier: MIT
//
// What the error functions tell the standard handler, which this program takes the place of: the
// whole record, made without raising anything.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/error.h"
#include "tests/support.h"

static ErrorRecord seen;
int32_t _noxStdErrorHandlerExcept(const ErrorRecord* record) {
  seen = *record;
  return 77;
}

template <class E>
static void expect_recorded(int32_t (*report)(int32_t, int32_t, const E*, const E*, const E*,
                                              const E*, const char*),
                            const E (&values)[4], const char* name, char first) {
  set({kDefaultControl & ~kAllFlags, 0});  // whatever is raised traps
  const int32_t returned = report(19, 5, &values[0], &values[1], &values[2], &values[3], name);
  const uint16_t raised = x87_flags();
  set({});
  EXPECT_EQ(returned, 77);
  EXPECT_EQ(raised, 0);
  EXPECT_EQ(seen.code, 19);
  EXPECT_EQ(seen.index, 5);
  const double fields[] = {seen.argument1, seen.argument2, seen.result1, seen.result2};
  for (int k = 0; k < 4; ++k)
    if (std::isnan(values[k]))
      EXPECT_TRUE(std::isnan(fields[k]));
    else
      EXPECT_EQ(bits(fields[k]), bits(double(values[k]))) << k;
  EXPECT_EQ(seen.name[0], first);
  EXPECT_EQ(seen.name[1], '\0');
}

TEST(Records, CarryCodeIndexFirstElementsAndOneLetter) {
  using Single = std::numeric_limits<float>;
  using Double = std::numeric_limits<double>;
  expect_recorded<float>(noxsError, {2, -0.0f, 1.5f, -3.25e7f}, "sCos_HA", 's');
  expect_recorded<float>(noxsError, {0x1p-149f, -0x1.8p-130f, Single::max(), -Single::infinity()},
                         "", '\0');
  expect_recorded<float>(noxsError, {0x1.fffffcp-127f, Single::min(), 0, Single::quiet_NaN()}, "x",
                         'x');
  expect_recorded<double>(noxdError, {2, -0.0, 0x1p-1074, -Double::infinity()}, "dTan", 'd');
  expect_recorded<double>(noxdError, {Double::max(), 1, Double::quiet_NaN(), 3}, "", '\0');

  float values[4];
  const uint32_t signalling = 0xFFA00001;
  for (float& value : values) memcpy(&value, &signalling, 4);
  expect_recorded<float>(noxsError, values, "", '\0');
  EXPECT_EQ(bits(seen.result2), 0xFFFC000020000000u);  // sign and payload kept, quiet
}
