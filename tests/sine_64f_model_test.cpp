// SPDX-License-Identifier: MIT
//
// Sine and cosine of doubles: how blocks of four, single elements and the handlers of large
// arguments share an array.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/catalog.h"
#include "tests/support.h"

static double real(uint64_t pattern) { return std::bit_cast<double>(pattern); }

// In range: all sizes, places where n or the row turns, zeros of both functions and beside them.
static std::vector<double> arguments(int count) {
  constexpr double kHalfPi = 1.5707963267948966;
  constexpr double kLast = 127999.99999999999;
  Random random{7};
  std::vector<double> all = {0, -0.0, kLast, -kLast, 0x1p-1074, -0x1p-1022};
  while (int(all.size()) < count) {
    const double wide = (2 * random.unit() - 1) * kLast, narrow = wide * 0x1p-14;
    const double turn = std::rint(narrow * 40) * kHalfPi / 127;
    const double zero = std::rint(wide / kHalfPi) * kHalfPi;
    for (const double x : {wide, narrow, std::ldexp(narrow, -int(random.next() % 70)), turn, zero,
                           turn + std::rint(wide / kHalfPi) * kHalfPi}) {
      const double near = real(bits(double(x)) + random.next() % 5 - 2);
      all.push_back(std::fabs(near) <= kLast ? near : kLast);
    }
  }
  all.resize(count);
  return all;
}

struct Both {
  uint64_t first, second;
  bool operator==(const Both&) const = default;
};

static std::vector<Both> results(const Function& f, const double* x, int32_t len,
                                 Status* status = nullptr) {
  std::vector<double> y1(len), y2(len);
  const Status returned = f.call({{x}, {y1.data(), y2.data()}, nullptr}, len);
  if (status) *status = returned;
  std::vector<Both> all(len);
  for (int32_t i = 0; i < len; ++i) all[i] = {bits(y1[i]), bits(y2[i])};
  return all;
}

static Both single(const Function& f, double x) { return results(f, &x, 1)[0]; }

// What the handler gives, with the status it leaves.
static Both handled(const Function& f, const double* x, int32_t i, Status* status) {
  std::vector<double> y1(i + 1), y2(i + 1);
  if (f.family == "SinCos")
    noxdSinCos_SC_HA(i, x, y1.data(), y2.data(), status);
  else
    (f.family == "Sin" ? noxdSin_SC_HA : noxdCos_SC_HA)(i, x, y1.data(), status);
  return {bits(y1[i]), bits(y2[i])};
}

static std::vector<Function> functions() {
  std::vector<Function> all;
  for (const Function& f : kFunctions)
    if (f.is("Sin", "64f") || f.is("Cos", "64f") || f.is("SinCos", "64f")) all.push_back(f);
  return all;
}

TEST(Block, GivesWhatSingleElementsGive) {
  const std::vector<double> x = arguments(20000);
  for (const Function& f : functions()) {
    const auto y = results(f, x.data(), int32_t(x.size()));
    size_t i = 0;
    while (i < x.size() && y[i] == single(f, x[i])) ++i;
    EXPECT_EQ(i, x.size()) << f.name << " of 0x" << std::hex << bits(x[std::min(i, x.size() - 1)]);
  }
}

// Where both compute, results differ now and then, but for SinCos A53, which is as good as the
// handlers: that tells who did.
TEST(Block, GoesToTheHandlerAsAWhole) {
  const std::vector<double> pool = arguments(2200);
  for (const Function& f : functions()) {
    int told = 0;
    for (const uint64_t outside : std::initializer_list<uint64_t>{
             0x40FF400000000000, 0xC0FF400000000000, 0x7FEFFFFFFFFFFFFF, 0x7FF0000000000000,
             0xFFF0000000000000, 0x7FF8000000000000, 0x7FF0000000000001, 0x7FF0000100000000})
      for (size_t start = 0; start < pool.size(); start += 11) {
        const int place = int(start / 11 % 11);
        std::vector<double> x(pool.begin() + start, pool.begin() + start + 11);
        memcpy(&x[place], &outside, 8);
        Status status, want_status = 0;
        const auto y = results(f, x.data(), 11, &status);
        for (int i = 0; i < 11; ++i) {
          const bool along = place < 8 ? i / 4 == place / 4 : i == place;
          const Both alone = single(f, x[i]);
          const Both want = along ? handled(f, x.data(), i, &want_status) : alone;
          ASSERT_TRUE(y[i] == want) << f.name << ", 0x" << std::hex << outside << " at " << place
                                    << ", element " << i << " = 0x" << bits(x[i]);
          told += i != place && want != alone;
        }
        ASSERT_EQ(status, want_status) << f.name << ", 0x" << std::hex << outside;
      }
    EXPECT_TRUE(told > 0 || (f.family == "SinCos" && f.grade == "A53")) << f.name;
  }
}
