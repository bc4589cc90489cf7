// SPDX-License-Identifier: MIT
//
// Scalar routines: roots against MPFR and, where the last bits are promised, against a literal
// model of the steps; magnitudes and classes by rows.
#include <gtest/gtest.h>
#include <setjmp.h>
#include <signal.h>

#include <cmath>
#include <vector>

#include "complex/sqrt.h"
#include "tests/mpfr_number.h"

constexpr uint16_t kSinglePrecision = 0x007F, kDoublePrecision = 0x027F, kDownward = 0x0400;

// An extended number as significand, exponent and sign word.
struct Parts {
  uint64_t significand;
  uint16_t exponent;
};
static long double whole(Parts p) {
  long double x = 0;
  memcpy(&x, &p.significand, 8);
  memcpy(reinterpret_cast<char*>(&x) + 8, &p.exponent, 2);
  return x;
}
static Parts parts(long double x) {
  Parts p;
  memcpy(&p.significand, &x, 8);
  memcpy(&p.exponent, reinterpret_cast<char*>(&x) + 8, 2);
  return p;
}
static bool operator==(Parts a, Parts b) {
  return a.significand == b.significand && a.exponent == b.exponent;
}
static std::ostream& operator<<(std::ostream& out, Parts p) {
  return out << std::hex << p.exponent << ":" << p.significand << std::dec;
}

static Extended exact(long double x) {
  Extended e;
  mpfr_set_ld(e.value, x, MPFR_RNDN);
  return e;
}
static long double back(const Extended& x) { return mpfr_get_ld(x.value, MPFR_RNDN); }
// Distance to a precise value in units of the last place of 64 bits.
static double ulps(long double got, const Number<200>& want) {
  Number<200> difference;
  mpfr_set_ld(difference.value, got, MPFR_RNDN);
  mpfr_sub(difference.value, difference.value, want.value, MPFR_RNDN);
  mpfr_mul_2si(difference.value, difference.value, 64 - mpfr_get_exp(want.value), MPFR_RNDN);
  return std::fabs(mpfr_get_d(difference.value, MPFR_RNDN));
}

class CorrectRoot : public testing::TestWithParam<uint16_t> {
 protected:
  void TearDown() override { set({}); }
};
INSTANTIATE_TEST_SUITE_P(Controls, CorrectRoot,
                         testing::Values(kSinglePrecision, kDoublePrecision, kDefaultControl,
                                         kDefaultControl | kDownward,
                                         kSinglePrecision | 2 * kDownward,
                                         kDoublePrecision | 3 * kDownward));

// A root at the caller's own precision would be rounded twice, or in the caller's direction.
template <class U, int kPrecision>
static void expect_correct_roots(uint16_t control,
                                 typename Format<U>::Real (*root)(typename Format<U>::Real)) {
  Random random{3};
  for (int k = 0; k < 60000; ++k) {
    const U x = k % 4 ? kOne<U> + U(random.next() & ((U(1) << (Format<U>::mantissa + 1)) - 1))
                      : any_pattern<U>(random) & ~kSign<U>;
    if (x >= kInfinity<U>) continue;
    Number<kPrecision> want;
    set_exact(want.value, x);
    mpfr_sqrt(want.value, want.value, MPFR_RNDN);
    set({control, kDefaultMxcsr});
    const long double got = root(*reals(&x));  // whatever is on the stack, not rounded once more
    const Environment after = environment();
    set({});
    EXPECT_EQ(after.control, control);
    if (mpfr_cmp_ld(want.value, got) != 0) {
      ADD_FAILURE() << "root of 0x" << std::hex << x << " under control word " << control;
      return;
    }
  }
  EXPECT_TRUE(x87_stack_empty());
}
TEST_P(CorrectRoot, Single) { expect_correct_roots<uint32_t, 24>(GetParam(), noxssqrt_scalar); }
TEST_P(CorrectRoot, Double) { expect_correct_roots<uint64_t, 53>(GetParam(), noxdsqrt_scalar); }

template <class U>
struct Row {
  U in, out;
  bool invalid;
};
template <class U>
static void expect_rows(std::initializer_list<Row<U>> rows,
                        typename Format<U>::Real (*f)(typename Format<U>::Real)) {
  for (const auto& row : rows) {
    set({});
    typename Format<U>::Real y = f(*reals(&row.in));
    const uint16_t flags = x87_flags();
    U got;
    memcpy(&got, &y, sizeof got);
    EXPECT_EQ(got, row.out) << std::hex << "0x" << row.in;
    EXPECT_EQ(bool(flags & kInvalid), row.invalid) << std::hex << "0x" << row.in;
  }
}
TEST(Scalar, SpecialRoots) {
  expect_rows<uint32_t>({{0, 0, false},
                         {0x80000000, 0x80000000, false},
                         {0x7F800000, 0x7F800000, false},
                         {0x7FC00123, 0x7FC00123, false},
                         {0xFFC00123, 0xFFC00123, false},
                         {0x7F800123, 0x7FC00123, true},
                         {0xBF800000, 0xFFC00000, true},
                         {0x80000001, 0xFFC00000, true},
                         {0xFF800000, 0xFFC00000, true},
                         {0x00000001, 0x1A3504F3, false},
                         {0x40800000, 0x40000000, false}},
                        noxssqrt_scalar);
  expect_rows<uint64_t>({{0, 0, false},
                         {kSign<uint64_t>, kSign<uint64_t>, false},
                         {kInfinity<uint64_t>, kInfinity<uint64_t>, false},
                         {0x7FF8000000000123, 0x7FF8000000000123, false},
                         {0xFFF8000000000123, 0xFFF8000000000123, false},
                         {0x7FF0000000000123, 0x7FF8000000000123, true},
                         {0xBFF0000000000000, 0x7FF8A5A55A5A5A5A, true},
                         {0x8000000000000001, 0x7FF8A5A55A5A5A5A, true},
                         {0xFFF0000000000000, 0x7FF8A5A55A5A5A5A, true},
                         {0x0000000000000001, 0x1E60000000000000, false},
                         {0x4010000000000000, 0x4000000000000000, false}},
                        noxdsqrt_scalar);
}

TEST(Scalar, Magnitudes) {
  expect_rows<uint32_t>({{0x80000000, 0, false},
                         {0xFF800000, 0x7F800000, false},
                         {0xFFC00123, 0x7FC00123, false},
                         {0x80000001, 1, false},
                         {0x3F800001, 0x3F800001, false}},
                        nox_sabs_scalar);
  expect_rows<uint64_t>({{kSign<uint64_t>, 0, false},
                         {0xFFF0000000000000, 0x7FF0000000000000, false},
                         {0xFFF8000000000123, 0x7FF8000000000123, false},
                         {0x8000000000000001, 1, false},
                         {0x3FF0000000000001, 0x3FF0000000000001, false}},
                        nox_dabs_scalar);
  struct {
    Parts in, out;
  } const rows[] = {
      {{0, 0x8000}, {0, 0}},
      {{1, 0x8000}, {1, 0}},  // denormal
      {{1ull << 63, 0xFFFF}, {1ull << 63, 0x7FFF}},
      {{0xC000000000000123, 0xFFFF}, {0xC000000000000123, 0x7FFF}},
      {{0x8000000000000123, 0xFFFF}, {0xC000000000000123, 0x7FFF}},  // comes out quiet
      {{0x8000000000000123, 0x7FFF}, {0xC000000000000123, 0x7FFF}},
      {{0xFFFFFFFFFFFFFFFF, 0xFFFE}, {0xFFFFFFFFFFFFFFFF, 0x7FFE}},
      {{0x8000000000000001, 0x3FFF}, {0x8000000000000001, 0x3FFF}},
  };
  for (const auto& row : rows) EXPECT_EQ(parts(noxfabsl_scalar(whole(row.in))), row.out) << row.in;
}

// ---- The extended root

// Literal steps, every operation rounded to 64 bits.
static Extended model_root(const Extended& x) {
  Extended m = x;
  const int k = int(mpfr_get_exp(x.value)) - 1, p = k & 1;
  mpfr_set_exp(m.value, 1);
  const Extended y = scaled(m, p), t = Extended(4194305) * y, hi = t - (t - y), lo = y - hi;
  Number<30> nearest;
  mpfr_mul_2ui(nearest.value, m.value, 8, MPFR_RNDN);
  mpfr_rint(nearest.value, nearest.value, MPFR_RNDN);
  Number<200> seed;
  mpfr_div_2ui(seed.value, nearest.value, 8, MPFR_RNDN);
  mpfr_mul_2si(seed.value, seed.value, p, MPFR_RNDN);
  mpfr_rec_sqrt(seed.value, seed.value, MPFR_RNDN);
  mpfr_mul_2ui(seed.value, seed.value, 11, MPFR_RNDN);
  mpfr_rint(seed.value, seed.value, MPFR_RNDN);
  mpfr_div_2ui(seed.value, seed.value, 11, MPFR_RNDN);
  const Extended r = mpfr_get_d(seed.value, MPFR_RNDN);
  const Extended e = (hi * r * r - Extended(1)) + r * r * lo;
  Extended series = -429.0 / 2048;
  for (const double c : {231.0 / 1024, -63.0 / 256, 35.0 / 128, -5.0 / 16, 3.0 / 8, -1.0 / 2})
    series = series * e + Extended(c);
  const int n = (k - p) / 2;
  return scaled(y * (e * series * r) + lo * r, n) + scaled(hi * r, n);
}

// Uniform significands and exponents, and significands beside the halves between two seeds.
static std::vector<long double> extended_arguments(int count) {
  Random random{9};
  std::vector<long double> all = {1,
                                  2,
                                  4,
                                  0.5L,
                                  3,
                                  whole({1, 0}),
                                  whole({1ull << 62, 0}),
                                  whole({~0ull, 0x7FFE}),
                                  whole({1ull << 63, 1})};
  for (int k = 0; k < count; ++k) {
    const uint64_t half = (uint64_t(2 * (256 + random.next() % 256) + 1) << 54);
    const uint64_t digits =
        random.next() % 2 ? random.next() | 1ull << 63 : half + (random.next() % 5) - 2;
    all.push_back(whole({digits, uint16_t(random.next() % 4 ? 16382 + random.next() % 4
                                                            : 1 + random.next() % 0x7FFE)}));
    all.push_back(whole({random.next() >> (1 + random.next() % 63), 0}));
  }
  return all;
}

TEST(Scalar, ExtendedRootIsTheModel) {
  double worst = 0;
  for (const long double x : extended_arguments(40000)) {
    if (x == 0) continue;
    const long double got = noxsqrtl_scalar(x), want = back(model_root(exact(x)));
    ASSERT_EQ(parts(got), parts(want)) << parts(x);
    Number<200> root;
    mpfr_set_ld(root.value, x, MPFR_RNDN);
    mpfr_sqrt(root.value, root.value, MPFR_RNDN);
    worst = std::max(worst, ulps(got, root));
  }
  EXPECT_LE(worst, 0.502);
  RecordProperty("ulp", std::to_string(worst));
}

TEST(Scalar, SpecialExtendedRoots) {
  constexpr Parts kDefaultNan = {0xC000000000000000, 0xFFFF};
  struct {
    Parts in, out;
    bool invalid;
  } const rows[] = {
      {{0, 0}, {0, 0}, false},
      {{0, 0x8000}, {0, 0x8000}, false},
      {{1ull << 63, 0x7FFF}, {1ull << 63, 0x7FFF}, false},
      {{1ull << 63, 0xFFFF}, kDefaultNan, true},
      {{1, 0x8000}, kDefaultNan, true},  // a negative denormal
      {{1ull << 63, 0xBFFF}, kDefaultNan, true},
      {{0xC000000000000777, 0x7FFF}, {0xC000000000000777, 0x7FFF}, false},
      {{0x8000000000000777, 0xFFFF}, {0xC000000000000777, 0xFFFF}, true},
      {{2, 0}, {1ull << 63, 16383 - 8222}, false},  // 2^-16444
      {{1ull << 63, 16385}, {1ull << 63, 16384}, false},
  };
  for (const auto& row : rows) {
    const long double x = whole(row.in);
    set({});
    const long double y = noxsqrtl_scalar(x);
    const uint16_t flags = x87_flags();
    EXPECT_EQ(parts(y), row.out) << row.in;
    EXPECT_EQ(bool(flags & kInvalid), row.invalid) << row.in;
  }
  EXPECT_TRUE(x87_stack_empty());
}

// ---- Its reciprocal

static Extended model_inverse_root(Extended x) {
  const auto head = [](const Extended& v) {
    const Extended product = Extended(0x1.8p43) * v;
    return (product + v) - product;
  };
  const Extended y0 = model_root(Extended(1) / x), xh = head(x), xl = x - xh, yh = head(y0);
  const Extended yl = y0 - yh, xy = xh * yh;
  const Extended r = (xy * yh - Extended(1)) + yl * xy + (xl * y0 + xh * yl) * y0;
  return yh + (yl - Extended(0.5) * y0 * r);
}

TEST(Scalar, ExtendedInverseRootIsTheModelAndScalesItsOperand) {
  double worst = 0;
  auto arguments = extended_arguments(20000);
  for (const int exponent : {-8193, -8192, 8191, 8192})
    for (const uint64_t digits : {1ull << 63, 0x8000800000000000ull, 0x8001000000000000ull, ~0ull})
      arguments.push_back(whole({digits, uint16_t(16383 + exponent)}));
  for (const long double x : arguments) {
    if (x == 0) continue;
    // At and above 2^8192 the 16 leading bits decide.
    const int shift = x < 0x1p-8192L ? 8192 : x >= 0x1p8192L + 0x1p8177L ? -8192 : 0;
    const Extended moved = scaled(exact(x), shift);
    long double operand = x;
    const long double got = __invsqrtl(&operand);
    ASSERT_EQ(parts(operand), parts(back(moved))) << parts(x);
    ASSERT_EQ(parts(got), parts(back(scaled(model_inverse_root(moved), shift / 2)))) << parts(x);
    Number<200> root;
    mpfr_set_ld(root.value, x, MPFR_RNDN);
    mpfr_rec_sqrt(root.value, root.value, MPFR_RNDN);
    worst = std::max(worst, ulps(got, root));
  }
  EXPECT_LE(worst, 0.501);
  RecordProperty("ulp", std::to_string(worst));
}

// ---- Exception flags

static sigjmp_buf before_trap;

using Routine = long double (*)(long double);
static bool traps(Routine f, long double x, uint16_t masked) {
  if (sigsetjmp(before_trap, 1) == 0) {
    set({uint16_t(0x340 | masked), kDefaultMxcsr});
    f(x);
    __asm__ volatile("fwait");
    set({});
    return false;
  }
  __asm__ volatile("fninit");
  return true;
}

// Intermediates that leave the range, comparisons with a NaN: arguments of every exponent raise,
// and unmasked trap, what they and their results account for and nothing more.
TEST(Scalar, ExtendedRoutinesRaiseWhatArgumentsAndResultsAccountFor) {
  static long double other;
  const Routine routines[] = {
      noxfabsl_scalar,
      noxsqrtl_scalar,
      noxexpl_scalar,
      noxlogl_scalar,
      noxlog1pl_scalar,
      noxsinl_scalar,
      noxcosl_scalar,
      noxtanl_scalar,
      noxsindl_scalar,
      noxcosdl_scalar,
      noxasinl_scalar,
      noxacosl_scalar,
      noxatanl_scalar,
      noxsinhl_scalar,
      noxcoshl_scalar,
      noxtanhl_scalar,
      noxasinhl_scalar,
      noxacoshl_scalar,
      noxatanhl_scalar,
      [](long double x) { return noxpowl_scalar(x, other); },
      [](long double x) { return noxpowl_scalar(other, x); },
      [](long double x) { return noxatan2l_scalar(x, other); },
      [](long double x) { return noxatan2l_scalar(other, x); },
      [](long double x) { return noxatan2dl_scalar(x, other); },
      [](long double x) { return noxatan2dl_scalar(other, x); },
      [](long double x) {
        long double sine, cosine;
        noxsincosl_scalar(x, &sine, &cosine);
        return sine;
      },
  };
  Random random{17};
  std::vector<long double> all = {0, 0.5L, 1, 1.5L, 30, HUGE_VALL, __builtin_nanl("")};
  for (int exponent = 0; exponent < 0x7FFF; exponent += 1 + exponent % 7) {
    const uint64_t digits = exponent % 3 ? random.next() | 1ull << 63 : 1ull << 63;
    all.push_back(whole({exponent ? digits : digits >> 40, uint16_t(exponent)}));
  }
  signal(SIGFPE, [](int) { siglongjmp(before_trap, 1); });
  for (const Routine& f : routines)
    for (const long double size : all) {
      const long double x = random.next() & 1 ? size : -size;
      constexpr long double kOthers[] = {1, -1, 0.75L, -3, 0x1p-16445L, -0x1p16383L};
      other = kOthers[random.next() % std::size(kOthers)];
      set({});
      const long double y = f(x);
      const uint16_t raised = x87_flags();
      uint16_t may = kInexact | kDenormal;
      if (std::fpclassify(y) == FP_SUBNORMAL || y == 0) may |= kUnderflow;
      if (std::isinf(y) && !std::isinf(x)) may |= kOverflow | kZeroDivide;
      if (std::isnan(y) && !std::isnan(x)) may |= kInvalid;
      const auto at = [&] {
        return testing::Message() << "routine " << &f - routines << " of " << parts(x) << ", "
                                  << parts(other);
      };
      ASSERT_EQ(raised & ~may, 0) << at();
      ASSERT_FALSE(traps(f, x, may)) << at();
    }
  signal(SIGFPE, SIG_DFL);
}

// ---- Classes

TEST(Scalar, ClassesOfDoubles) {
  struct {
    uint64_t x;
    const char* classes;  // inf, -inf, +inf, nan, zero, -zero, non-zero finite
  } const rows[] = {
      {0x0000000000000000, "0000100"}, {0x8000000000000000, "0000110"},
      {0x0000000000000001, "0000001"}, {0x8000000100000000, "0000001"},
      {0x3FF0000000000000, "0000001"}, {0xFFEFFFFFFFFFFFFF, "0000001"},
      {0x7FF0000000000000, "1010000"}, {0xFFF0000000000000, "1100000"},
      {0x7FF0000000000001, "0001000"}, {0xFFF0000100000000, "0001000"},
      {0x7FF8000000000000, "0001000"},
  };
  for (const auto& row : rows) {
    set({});
    const double& x = *reals(&row.x);
    const int got[] = {_nox_internal_isinf(x),     _nox_internal_isninf(x),
                       _nox_internal_ispinf(x),    _nox_internal_isnan(x),
                       _nox_internal_iszero(x),    _nox_internal_isnegzero(x),
                       _nox_internal_isnzfinite(x)};
    const uint16_t flags = x87_flags();
    for (int k = 0; k < 7; ++k)
      EXPECT_EQ(got[k], row.classes[k] - '0') << std::hex << row.x << " class " << k;
    EXPECT_EQ(flags, 0) << std::hex << row.x;
  }
}

// ---- The complex root

TEST(Scalar, ComplexRootRows) {
  constexpr uint64_t kNan = 0x7FF8000000000000;
  struct {
    double re, im;
    uint64_t root_re, root_im;
  } const rows[] = {
      {4, 0.0, bits(2.0), 0},
      {4, -0.0, bits(2.0), bits(-0.0)},
      {-4, 0.0, 0, bits(2.0)},
      {-4, -0.0, bits(-0.0), bits(2.0)},
      {0, 2, bits(1.0), bits(1.0)},
      {0, -2, bits(1.0), bits(-1.0)},
      {-3, 4, bits(1.0), bits(2.0)},
      {-3, -4, bits(1.0), bits(-2.0)},
      {3, -4, bits(2.0), bits(-1.0)},
      {0x1p-1074, 0, bits(0x1p-537), 0},
      {-4, -0x1p-1074, 0, bits(-2.0)},  // the sign turns before the part vanishes
      {-4, 0x1p-1074, 0, bits(2.0)},
      {1, std::bit_cast<double>(kNan), kNan, kNan | kSign<uint64_t>},
  };
  for (const auto& row : rows) {
    const auto root = _nox_internal_csqrt(row.re, row.im);
    const auto exported = noxcsqrt_scalar({row.re, row.im});
    EXPECT_EQ(bits(root.re), row.root_re) << row.re << " " << row.im;
    EXPECT_EQ(bits(root.im), row.root_im) << row.re << " " << row.im;
    const bool unknown = row.re != row.re || row.im != row.im;  // whose signs are its own
    EXPECT_TRUE(unknown ? exported.re != exported.re : bits(exported.re) == row.root_re) << row.re;
    EXPECT_TRUE(unknown ? exported.im != exported.im : bits(exported.im) == row.root_im) << row.im;
  }
}

// Both components against 200 bits, over the whole range of doubles.
TEST(Scalar, ComplexRootIsAccurate) {
  Random random{21};
  double worst = 0;
  for (int k = 0; k < 20000; ++k) {
    const int exponent = int(random.next() % 2000) - 1000;
    const double re = std::ldexp(random.unit() - 0.5, exponent);
    const double im = std::ldexp(random.unit() - 0.5, exponent + int(random.next() % 40) - 20);
    if (re == 0 || im == 0) continue;
    const auto got = _nox_internal_csqrt(re, im);
    Number<400> m, half, other;
    mpfr_set_d(m.value, re, MPFR_RNDN);
    mpfr_set_d(other.value, im, MPFR_RNDN);
    mpfr_hypot(m.value, m.value, other.value, MPFR_RNDN);
    mpfr_set_d(half.value, std::fabs(re), MPFR_RNDN);
    mpfr_add(half.value, half.value, m.value, MPFR_RNDN);
    mpfr_div_2ui(half.value, half.value, 1, MPFR_RNDN);
    mpfr_sqrt(half.value, half.value, MPFR_RNDN);  // the larger component
    mpfr_div(other.value, other.value, half.value, MPFR_RNDN);
    mpfr_div_2ui(other.value, other.value, 1, MPFR_RNDN);
    mpfr_abs(other.value, other.value, MPFR_RNDN);
    EXPECT_GT(got.re, 0);
    EXPECT_EQ(std::signbit(got.im), std::signbit(im));
    for (const bool larger : {true, false}) {
      const double value = larger == (re > 0) ? got.re : std::fabs(got.im);
      const mpfr_t& want = larger ? half.value : other.value;
      if (mpfr_get_exp(want) < -1020) continue;
      mpfr_sub_d(m.value, want, value, MPFR_RNDN);
      mpfr_mul_2si(m.value, m.value, 53 - mpfr_get_exp(want), MPFR_RNDN);
      worst = std::max(worst, std::fabs(mpfr_get_d(m.value, MPFR_RNDN)));
    }
  }
  EXPECT_LE(worst, 0.501);
  RecordProperty("ulp", std::to_string(worst));
}

// Found by search: a part of the root is so close to the midpoint of two doubles that the processor's
// roots lead to the wrong one. Results by MPC.
TEST(Scalar, ComplexRootsNextToAMidpoint) {
  const Lux64fc rows[][2] = {
      {{-0x1.244d846e34dd8p+3, -0x1.0dea3be79a21p+0},
       {0x1.64a2f198bd873p-3, -0x1.837fdfc733941p+1}},
      {{-0x1.5c78b1214367cp+1, -0x1.4f59443e3409p+0},
       {0x1.8bc6696ecf9fdp-2, -0x1.b1d41ef2d4f1cp+0}},
      {{-0x1.c6cdb21f6911p+1, 0x1.9653ab4c5696p+2}, {0x1.5d3f5d4bb8da1p+0, 0x1.29d6e290d00b7p+1}},
      {{-0x1.1d5226e752bd8p+0, -0x1.8cef93ccf5216p+2},
       {0x1.9c44c82db9013p+0, -0x1.ecf5413c3b9c7p+0}},
  };
  for (const auto& [z, root] : rows) {
    Lux64fc got;
    EXPECT_EQ(luxsSqrt_64fc_A53(&z, &got, 1), LUX_OK);
    EXPECT_EQ(bits(got.re), bits(root.re)) << std::hexfloat << z.re << " " << z.im;
    EXPECT_EQ(bits(got.im), bits(root.im)) << std::hexfloat << z.re << " " << z.im;
  }
}

// The array routine takes the processor's roots where they cannot change a bit of those
// steps: typical points, any exponents, parts that differ widely, and squares of numbers next to
// the midpoint of two doubles.
TEST(Scalar, ComplexRootOfArraysHasTheBitsOfTheSteps) {
  // Others next to a midpoint, where the steps round to the further double.
  const Lux64fc found[] = {
      {0x1.94045c496b9ap+2, 0x1.e2cf0c0060874p+2},  {0x1.1b1c4dc09bbf2p+3, 0x1.cf2266fe448f8p+2},
      {-0x1.019876a57e07p+2, 0x1.0c7380532fefap+2}, {-0x1.232ffe0f0a0dp+1, 0x1.5b8638d11c14p+2},
      {-0x1.95e12c62417c9p+2, 0x1.7e80a5e84b53p+1}, {-0x1.84a8fa3d3f05p-1, 0x1.3aff9002bea64p+3}};
  Random random{33};
  const auto sign = [&] { return random.next() & 1 ? 1.0 : -1.0; };
  for (int k = 0; k < 200000; ++k) {
    Lux64fc z = {20 * random.unit() - 10, 20 * random.unit() - 10};
    switch (k % 4) {
      case 1:
        z = {std::ldexp(z.re, int(random.next() % 2090) - 1072),
             std::ldexp(z.im, int(random.next() % 2090) - 1072)};
        break;
      case 2:
        z.im = std::ldexp(z.im, -int(random.next() % 1080));
        break;
      case 3: {
        const long double middle = (long double)(1 + random.unit()) + 0x1p-53L;
        const double widths[] = {0.0, -0.0, std::ldexp(z.im, -int(random.next() % 60))};
        z = {double(middle * middle) * sign(), widths[random.next() % 3]};
        if (k % 16 == 3) z = {0 * sign(), double(middle * middle) * 2};
      }
    }
    if (k < int(std::size(found))) z = found[k];
    if (z.re == 0 && z.im == 0) continue;
    const auto got = complex_sqrt(in_memory(&z)), want = _nox_internal_csqrt(z.re, z.im);
    ASSERT_EQ(bits(got.re), bits(want.re)) << std::hexfloat << z.re << " " << z.im;
    ASSERT_EQ(bits(got.im), bits(want.im)) << std::hexfloat << z.re << " " << z.im;
  }
}
