// SPDX-License-Identifier: MIT
//
// Powers, bit for bit against literal models of the methods computed with MPFR at the precision of
// each step; and where infinities and zeros begin, against exact powers.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/catalog.h"
#include "tests/mpfr_number.h"

namespace singles {
#include "kernels/explog/generated/pow_32f_table.h"
}
namespace doubles {
#include "kernels/explog/generated/pow_64f_table.h"
}

template <class To, class From>
static To to(const From& x) {
  To result;
  mpfr_set(result.value, x.value, MPFR_RNDN);
  return result;
}
template <class N>
static int32_t integer(const N& x) {
  return int32_t(mpfr_get_si(x.value, MPFR_RNDN));
}
template <class N>
static bool exceeds(const N& x, double bound) {
  return std::fabs(mpfr_get_d(x.value, MPFR_RNDN)) >= bound;
}

// x = 2^e m, 1 <= m < 2, of any positive number.
template <class N>
struct Parts {
  N m;
  int32_t e;
  explicit Parts(const N& x) : m(x) {
    e = int32_t(mpfr_get_exp(x.value)) - 1;
    mpfr_mul_2si(m.value, m.value, -e, MPFR_RNDN);
  }
  // round(n (m - 1))
  int cell(int n) const {
    const double offset = (mpfr_get_d(m.value, MPFR_RNDZ) - 1) * n;
    return int(std::floor(offset + 0.5));
  }
};

template <class U, class N>
static U scaled(const N& value, int32_t exponent) {
  N result = value;
  mpfr_mul_2si(result.value, result.value, exponent, MPFR_RNDN);
  return stored<U>(result.value);
}

// ---- Doubles, and singles at the edges of the range

template <bool kLong>
static Extended entry(const doubles::Pair& pair) {
  return kLong ? Extended(pair.high) + Extended(pair.low) : Extended(pair.high);
}

// x to the power y, to be multiplied by 2^n.
struct Power {
  Extended value;
  int32_t n;
  bool ordinary;  // A50 does not leave its path
};

template <bool kLong>
static Power power(const Extended& base, double y) {
  const auto& table = doubles::extended_table;
  const Extended exponent(y);
  const Parts<Extended> parts(base);
  const auto& cell = table.cell[parts.cell(512)];
  const Extended z = parts.m * Extended(cell.reciprocal) - Extended(1);
  const Extended whole = Extended(parts.e) + Extended(cell.high), c0(table.c0_high);
  const Extended shifter(table.shifter);
  Extended sum(table.c[0]);
  for (int i = 1; i < 5; ++i) sum = sum * z + Extended(table.c[i]);
  sum = sum * z + Extended(table.c1_high);

  Double grid, r;
  if (kLong) {
    const Extended z_high = to<Extended>(to<Single>(z)), head = z_high * c0;
    const Extended log_high = to<Extended>(to<Single>(whole + head));
    const Extended left = ((whole - log_high) + head) + (z - z_high) * c0;
    const Extended log_low =
        left +
        (((sum + Extended(table.c1_low)) * z + Extended(table.c0_low)) * z + Extended(cell.low));
    Extended y_high;
    set_exact(y_high.value, bits(y) & 0xFFFFFFFF00000000);
    const Extended high = y_high * log_high;
    const Extended rest = (exponent - y_high) * log_high + exponent * log_low;
    if (exceeds(high, 1500)) return {Extended(1), mpfr_sgn(high.value) * 1500, true};
    grid = to<Double>((high + rest) + shifter);
    r = to<Double>((high - (to<Extended>(grid) - shifter)) + rest);
  } else {
    const Extended log = ((sum * z + Extended(table.c0_low)) + c0) * z + Extended(cell.low) + whole;
    const Extended t = log * exponent;
    if (exceeds(t, 1500)) return {Extended(1), 0, false};
    grid = to<Double>(t + shifter);
    r = to<Double>(t - (to<Extended>(grid) - shifter));
  }
  const int32_t k = integer((to<Extended>(grid) - shifter) * Extended(8192));
  const Extended product =
      entry<kLong>(table.coarse[k >> 7 & 63]) * entry<kLong>(table.fine[k & 127]);
  const Extended fraction = to<Extended>(r);
  const Extended factor =
      (Extended(table.e[0]) * fraction + Extended(table.e[1])) * fraction + Extended(table.e[2]);
  return {factor * fraction * product + product, k >> 13, -1021 * 8192 <= k && k < 1021 * 8192};
}

template <class U>
static U extended_pow(U x, U y) {
  typename Format<U>::Real exponent;
  memcpy(&exponent, &y, sizeof y);
  Extended base;
  set_exact(base.value, x);
  const Power p = power<true>(base, double(exponent));
  return scaled<U>(p.value, p.n);
}

static uint64_t pow_A50(uint64_t x, uint64_t y) {
  Extended base;
  set_exact(base.value, x);
  const Power p = power<false>(base, std::bit_cast<double>(y));
  const bool ordinary = p.ordinary && x >= 0x0010000000000000;
  return ordinary ? scaled<uint64_t>(p.value, p.n) : extended_pow(x, y);
}

// ---- Singles

static uint32_t pow_A24(uint32_t x, uint32_t y) {
  const auto& table = singles::static_const_table;
  if (x < 0x00800000) return extended_pow(x, y);
  Double base, exponent;
  set_exact(base.value, x);
  set_exact(exponent.value, y);
  const Parts<Double> parts(base);
  const auto& cell = table.cell[parts.cell(256)];
  const Double z = parts.m * Double(cell.reciprocal) - Double(1);
  Double log = Double(table.q[3]);
  for (int i = 2; i >= 0; --i) log = log * z + Double(table.q[i]);
  log = log * z + (Double(cell.log2) + Double(parts.e));
  const Double t = log * exponent;
  if (exceeds(t, 126)) return extended_pow(x, y);
  const Double grid = (t + Double(table.shifter)) - Double(table.shifter), r = t - grid;
  const int32_t k = integer(grid * Double(256));
  const Double value =
      ((r + Double(table.d1)) * r + Double(table.d0)) * Double(table.power[k & 255]);
  return scaled<uint32_t>(value, k >> 8);
}

static Single leading(const Single& x) {
  Single result;
  mpfr_t rounded;
  mpfr_init2(rounded, 12);
  mpfr_set(rounded, x.value, MPFR_RNDZ);
  mpfr_set(result.value, rounded, MPFR_RNDN);
  mpfr_clear(rounded);
  return result;
}
template <int kTerms>
static Single polynomial(const float (&c)[kTerms], const Single& x) {
  Single sum(c[kTerms - 1]);
  for (int i = kTerms - 2; i >= 0; --i) sum = sum * x + Single(c[i]);
  return sum;
}

template <bool kLong>
static uint32_t pow_packed(uint32_t x, uint32_t y) {
  if (x < 0x00800000) return extended_pow(x, y);
  Single base, exponent;
  set_exact(base.value, x);
  set_exact(exponent.value, y);
  Parts<Single> parts(base);
  if (mpfr_cmp_d(parts.m.value, 0x1.6a09e6p+0) > 0) {
    parts.m = parts.m * Single(0.5);
    ++parts.e;
  }
  const Single e(parts.e), z = parts.m - Single(1), d = z + Single(2);
  Single t, rest;  // t + rest less its integer is r
  if (kLong) {
    const Single inverse = Single(1) / d, high = leading(z * inverse), z_high = leading(z);
    const Single remainder = ((z - (high + high)) - high * z_high) - high * (z - z_high);
    const Single low = remainder * inverse, s = high + low, s2 = s * s;
    const Single tail = low * Single(singles::kLogHigh) +
                        s * (s2 * polynomial(singles::kLogTail, s2) + Single(singles::kLogLow));
    const Single head = high * Single(singles::kLogHigh), sum = e + head;
    const Single lost = head - (sum - e), log_high = leading(sum);
    const Single log_low = (sum - log_high) + (lost + tail), y_high = leading(exponent);
    t = y_high * log_high;
    rest = (exponent - y_high) * log_high + exponent * log_low;
  } else {
    const Single s = z / d;
    t = exponent * (e + s * polynomial(singles::kShortLog, s * s));
    rest = Single(0);
  }
  const Single whole = t + rest;
  if (exceeds(whole, 125)) return extended_pow(x, y);
  const Single shifter(0x1.8p23), k = (whole + shifter) - shifter, r = (t - k) + rest;
  const Single fraction =
      kLong ? polynomial(singles::kLongExp, r) : polynomial(singles::kShortExp, r);
  return scaled<uint32_t>(fraction * r + Single(1), integer(k));
}

// ---- Arguments: positive finite bases, finite exponents

template <class U>
struct Pairs {
  std::vector<U> x, y;
};

template <class U>
static U pattern(double value) {
  const volatile typename Format<U>::Real narrow = typename Format<U>::Real(value);
  return bits(typename Format<U>::Real(narrow));
}

// Bases of every exponent, next to 1 and next to the bounds of cells; the power anywhere between
// underflow and overflow, just beyond them, or next to 1.
template <class U>
static Pairs<U> arguments(int count) {
  using F = Format<U>;
  Random random{17};
  Pairs<U> pairs;
  const double top = F::bias + 1, bottom = -(F::bias + F::mantissa);
  for (int i = 0; i < count; ++i) {
    U x = U(random.next()) % kInfinity<U>;
    if (i % 5 == 1) x = kOne<U> + U(int64_t(random.next() % 81) - 40);
    if (i % 5 == 2) x = pattern<U>(1 + std::ldexp(random.unit() - 0.5, -int(random.next() % 20)));
    if (i % 5 == 3)
      x = pattern<U>(1 + (double(random.next() % 512) + 0.5) / 512) + U(random.next() % 5) - 2;
    if (i % 97 == 0) x = U(random.next() >> (64 - F::mantissa));
    if (x == 0) x = 1;
    typename F::Real base;
    memcpy(&base, &x, sizeof base);
    const double log = std::log2(double(base));
    double t = bottom + (top - bottom) * random.unit();
    if (i % 7 == 1) t = std::ldexp(random.unit() - 0.5, -int(random.next() % 60));
    if (i % 7 == 2) t = (random.next() % 2 ? top : bottom) + 4 * random.unit() - 2;
    if (i % 7 == 3) t = double(int(random.next() % 500) - 250) / 512;
    if (i % 7 == 4) t = -(F::bias - 1) + std::ldexp(random.unit() - 0.5, -int(random.next() % 50));
    U y = pattern<U>(log == 0 ? t : t / log);
    if ((y & ~kSign<U>) >= kInfinity<U>) y = pattern<U>(2);
    pairs.x.push_back(x);
    pairs.y.push_back(y);
  }
  return pairs;
}

template <class U>
static void expect_model(std::string_view grade, int count, U (*model)(U, U)) {
  const Pairs<U> pairs = arguments<U>(count);
  std::vector<U> got(pairs.x.size());
  for (const Function& f : kFunctions) {
    if (f.family != "Pow" || f.type.complex() || f.grade != grade) continue;
    f.call({{pairs.x.data(), pairs.y.data()}, {got.data()}, nullptr}, count);
    int failures = 0;
    for (size_t i = 0; i < got.size() && failures < 10; ++i)
      if (const U want = model(pairs.x[i], pairs.y[i]); got[i] != want)
        ADD_FAILURE() << f.name << "(0x" << std::hex << pairs.x[i] << ", 0x" << pairs.y[i]
                      << "): got 0x" << got[i] << ", wanted 0x" << want << " " << ++failures;
  }
}

TEST(Model, PowA24) { expect_model<uint32_t>("A24", 60000, pow_A24); }
TEST(Model, PowA21) { expect_model<uint32_t>("A21", 60000, pow_packed<true>); }
TEST(Model, PowA11) { expect_model<uint32_t>("A11", 60000, pow_packed<false>); }
TEST(Model, PowA53) { expect_model<uint64_t>("A53", 40000, extended_pow<uint64_t>); }
TEST(Model, PowA50) { expect_model<uint64_t>("A50", 40000, pow_A50); }

// ---- Where infinity and zero begin

// For a random base, the exponents on both sides of the one at which the power is `edge`: the
// results beyond must be the infinity or the zero of the exact power, and no others.
template <class U>
static void expect_edges(double edge, int count) {
  using Real = typename Format<U>::Real;
  Random random{23};
  Pairs<U> pairs;
  for (int i = 0; i < count; ++i) {
    U x = U(random.next()) % kInfinity<U>;
    if (i % 3 == 1) x = kOne<U> + U(random.next() % 4096) - 2048;
    if (x == 0 || x == kOne<U>) continue;
    Number<200> log;
    set_exact(log.value, x);
    mpfr_log2(log.value, log.value, MPFR_RNDN);
    const Number<200> y = Number<200>(edge) / log;
    const U nearest = stored<U>(y.value);
    if ((nearest & ~kSign<U>) >= kInfinity<U> - 4) continue;
    for (int step = -2; step <= 2; ++step) {
      pairs.x.push_back(x);
      pairs.y.push_back(nearest + U(step));
    }
  }
  std::vector<U> got(pairs.x.size());
  for (const Function& f : kFunctions) {
    if (f.family != "Pow" || f.type.complex() || f.type.width != sizeof(Real)) continue;
    f.call({{pairs.x.data(), pairs.y.data()}, {got.data()}, nullptr}, int32_t(got.size()));
    int failures = 0;
    for (size_t i = 0; i < got.size() && failures < 10; ++i) {
      Number<200> x, y;
      set_exact(x.value, pairs.x[i]);
      set_exact(y.value, pairs.y[i]);
      mpfr_pow(x.value, x.value, y.value, MPFR_RNDN);
      const U want = stored<U>(x.value), beyond = edge > 0 ? kInfinity<U> : 0;
      if ((got[i] == beyond) != (want == beyond))
        ADD_FAILURE() << f.name << "(0x" << std::hex << pairs.x[i] << ", 0x" << pairs.y[i]
                      << "): got 0x" << got[i] << ", wanted 0x" << want << " " << ++failures;
    }
  }
}

TEST(Edges, PowOverflows) {
  expect_edges<uint32_t>(128 - 0x1.715476p-25, 4000);  // half an ulp below 2^128
  expect_edges<uint64_t>(1024, 1000);
}
TEST(Edges, PowUnderflows) {
  expect_edges<uint32_t>(-150, 4000);
  expect_edges<uint64_t>(-1075, 1000);
}
