// SPDX-License-Identifier: MIT
//
// Square roots and their reciprocals of singles, bit for bit against literal models of the methods,
// also beside special elements; exact roots.
#include <gtest/gtest.h>

#include <vector>

#include "tests/catalog.h"
#include "tests/mpfr_number.h"

// ---- Singles

// The tests are compiled without SSE, so nobody else uses the register.
static float estimate(float x) {
  float y;
  asm("rsqrtss %1, %%xmm0\n\tmovss %%xmm0, %0" : "=m"(y) : "m"(x));
  return y;
}
static Single cut(uint32_t x) {
  Single y;
  set_exact(y.value, x & 0xFFFF8000);
  return y;
}
static Single series(const Single& e) {
  return (Single(-0.3125) * e + Single(0.375)) * e - Single(0.5);
}
static uint32_t sqrt_32f(uint32_t bits_of_x) {
  const bool subnormal = bits_of_x < 0x00800000;
  Single x;
  set_exact(x.value, bits_of_x);
  if (subnormal) mpfr_mul_2ui(x.value, x.value, 26, MPFR_RNDN);
  const float narrow = mpfr_get_flt(x.value, MPFR_RNDN);
  const Single y0 = cut(bits(estimate(narrow))), xh = cut(bits(float(narrow))), xl = x - xh;
  const Single s = xh * y0, e = (xh * y0 * y0 - Single(1)) + xl * y0 * y0;
  Single root = (x * y0 * e * series(e) + xl * y0) + s;
  if (subnormal) mpfr_mul_2si(root.value, root.value, -13, MPFR_RNDN);
  return stored<uint32_t>(root.value);
}
static uint32_t invsqrt_32f(uint32_t bits_of_x) {
  Single x;
  set_exact(x.value, bits_of_x);
  const Single y0 = cut(bits(estimate(*reals(&bits_of_x))));
  const Single e = x * (y0 * y0) - Single(1);
  return stored<uint32_t>((y0 + y0 * (e * series(e))).value);
}

template <class U>
static void expect_model(std::string_view family, const std::vector<U>& x, U (*model)(U)) {
  std::vector<U> want(x.size()), out(x.size());
  for (size_t i = 0; i < x.size(); ++i) want[i] = model(x[i]);
  for (const Function& f : kFunctions) {
    if (!f.is(family, sizeof(U) == 4 ? "32f" : "64f")) continue;
    EXPECT_EQ(f.call({{x.data()}, {out.data()}, nullptr}, int32_t(x.size())), LUX_OK);
    int failures = 0;
    for (size_t i = 0; i < x.size() && failures < 10; ++i)
      if (out[i] != want[i])
        ADD_FAILURE() << f.name << "(0x" << std::hex << x[i] << "): got 0x" << out[i]
                      << ", wanted 0x" << want[i] << " " << ++failures;
  }
}

// Every exponent, both ends of every table interval, and if asked subnormal numbers.
template <class U>
static std::vector<U> positive_numbers(int count, bool subnormal) {
  constexpr int m = Format<U>::mantissa;
  Random random{17};
  std::vector<U> all = {U(1) << m, kOne<U>, kOne<U> - 1, kInfinity<U> - 1};
  for (int k = 0; k < count; ++k) {
    const U exponent = 1 + U(random.next() % (kInfinity<U> >> m) % ((kInfinity<U> >> m) - 1));
    const U digits = U(random.next() >> 8) & ((U(1) << m) - 1);
    all.push_back(exponent << m | digits);
    all.push_back((exponent << m | digits >> (m - 7) << (m - 7)) + (U(1) << (m - 7)) - 1);
    all.push_back(exponent << m | digits >> (m - 7) << (m - 7));
    if (subnormal) all.push_back(std::max<U>(digits >> random.next() % m, 1));
  }
  return all;
}

TEST(Model, SqrtSingle) {
  expect_model("Sqrt", positive_numbers<uint32_t>(40000, false), sqrt_32f);
  expect_model("Sqrt", positive_numbers<uint32_t>(10000, true), sqrt_32f);
}
TEST(Model, InvSqrtSingle) {
  expect_model("InvSqrt", positive_numbers<uint32_t>(60000, false), invsqrt_32f);
}

// Exact results must come out exact.
template <class U, class Root>
static void expect_exact_squares(Root root) {
  using Real = typename Format<U>::Real;
  constexpr int kCount = sizeof(U) == 4 ? 4096 : 200000;
  std::vector<Real> squares(kCount), out(kCount);
  for (int k = 0; k < kCount; ++k) squares[k] = Real(k) * Real(k);
  EXPECT_EQ(root(squares.data(), out.data(), kCount), LUX_OK);
  for (int k = 0; k < kCount; ++k) ASSERT_EQ(out[k], Real(k));
}
TEST(Root, SquaresOfIntegers) {
  expect_exact_squares<uint32_t>(luxsSqrt_32f_A24);
  expect_exact_squares<uint64_t>(luxsSqrt_64f_A53);
}

// ---- Blocks with special elements

// Sixteens, eights and single elements give the same roots, whatever stands beside them.
TEST(Root, SpecialSinglesDoNotTouchTheirNeighbours) {
  constexpr int kLen = 45;
  const struct {
    uint32_t in, out;
  } rows[] = {{0, 0},
              {0x80000000, 0x80000000},
              {0x00000001, 0x1A3504F3},
              {0x7F800000, 0x7F800000},
              {0x7F800001, 0x7FC00001},
              {0xFFC00000, 0xFFC00000}};
  Random random{8};
  for (const auto& row : rows)
    for (int at = 0; at < kLen; ++at) {
      uint32_t x[kLen], y[kLen];
      for (uint32_t& element : x) element = 0x00800000 + random.next() % 0x7F000000;
      x[at] = row.in;
      if (at % 3 == 0) x[(at + 20) % kLen] = 0;
      EXPECT_EQ(luxsSqrt_32f_A24(reals(x), reals(y), kLen), LUX_OK);
      for (int i = 0; i < kLen; ++i)
        ASSERT_EQ(y[i], i == at     ? row.out
                        : x[i] == 0 ? 0
                                    : sqrt_32f(x[i]))
            << std::hex << "0x" << row.in << std::dec << " at " << at << ", element " << i;
    }
}

// 1 / sqrt(x) as the x87 unit computes it: two roundings to its precision, one to single.
template <int kPrecision>
static uint32_t x87_inverse_root(uint32_t x, mpfr_rnd_t direction) {
  Number<kPrecision> y;
  Number<24> narrow;
  set_exact(y.value, x);
  mpfr_sqrt(y.value, y.value, direction);
  mpfr_ui_div(y.value, 1, y.value, direction);
  mpfr_set(narrow.value, y.value, direction);
  return stored<uint32_t>(narrow.value);
}

TEST(Root, SpecialBlockOfInverseRootsUsesTheCallersControlWord) {
  struct {
    uint16_t control;
    uint32_t (*model)(uint32_t, mpfr_rnd_t);
    mpfr_rnd_t direction;
  } const rows[] = {
      {0x037F, x87_inverse_root<64>, MPFR_RNDN}, {0x027F, x87_inverse_root<53>, MPFR_RNDN},
      {0x007F, x87_inverse_root<24>, MPFR_RNDN}, {0x077F, x87_inverse_root<64>, MPFR_RNDD},
      {0x0A7F, x87_inverse_root<53>, MPFR_RNDU}, {0x0C7F, x87_inverse_root<24>, MPFR_RNDZ}};
  Random random{4};
  for (const auto& row : rows)
    for (int round = 0; round < 500; ++round) {
      uint32_t x[24], y[24];
      for (uint32_t& element : x) element = 0x00800000 + random.next() % 0x7F000000;
      const int special = int(random.next() % 24), block = special / 8;
      x[special] = round % 2 ? kInfinity<uint32_t> : 1 + random.next() % 0x007FFFFF;
      const bool tail = special >= 16;
      const int len = tail ? 23 : 24;
      if (tail && special == 23) continue;
      set({row.control, kDefaultMxcsr});
      const Status status = luxsInvSqrt_32f_A24(reals(x), reals(y), len);
      set({});
      EXPECT_EQ(status, LUX_OK);
      for (int i = 0; i < len; ++i) {
        const bool on_x87 = tail ? i == special : i / 8 == block;
        const uint32_t want = x[i] == kInfinity<uint32_t> ? 0
                              : on_x87                    ? row.model(x[i], row.direction)
                                                          : invsqrt_32f(x[i]);
        ASSERT_EQ(y[i], want) << std::hex << row.control << " 0x" << x[i];
      }
    }
}
