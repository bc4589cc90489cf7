// SPDX-License-Identifier: MIT
//
// The routines of one extended number against MPFR: strata of arguments, both sides of every step of
// their methods, symmetries, special arguments, exact results.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

#include "luxvmk3_scalar.h"
#include "tests/mpfr_number.h"

using Routine = long double (*)(long double);
using Arguments = std::vector<long double>;

#define INF __builtin_infl()
constexpr long double LEAST = 0x1p-16445L, LARGEST = 0xffffffffffffffffp16320L;
constexpr long double kPi = 0xc.90fdaa22168c235p-2L, kHalfPi = kPi / 2;
constexpr long double kThreeQuarters = 0x9.6cbe3f9990e91a8p-2L;  // of pi
constexpr long double kLn2 = 0xb17217f7d1cf79acp-64L;

// Distance to the exact value in units of the last place that the format has there. MPFR's
// exponents reach further than the format's, so the exact value was not rounded to a subnormal, zero
// or infinity. A result of the wrong class is infinitely far: a NaN, or an infinity where a finite
// number is nearer.
static double extended_ulps(long double got, mpfr_srcptr exact) {
  constexpr long kLeastExponent = -16381;  // mpfr_get_exp of 2^-16382
  if (mpfr_nan_p(exact) || std::isnan(got))
    return mpfr_nan_p(exact) && std::isnan(got) ? 0 : INFINITY;
  if (std::isinf(got)) {
    Extended rounded;
    mpfr_set(rounded.value, exact, MPFR_RNDN);
    const bool overflows = mpfr_inf_p(exact) || mpfr_get_exp(rounded.value) > 16384;
    return overflows && std::signbit(got) == !!mpfr_signbit(exact) ? 0 : INFINITY;
  }
  if (mpfr_inf_p(exact)) return INFINITY;
  if (mpfr_zero_p(exact)) return got == 0 ? 0 : INFINITY;
  Number<256> difference;
  mpfr_set_ld(difference.value, got, MPFR_RNDN);
  mpfr_sub(difference.value, difference.value, exact, MPFR_RNDN);
  const long exponent = std::max<long>(mpfr_get_exp(exact), kLeastExponent);
  mpfr_mul_2si(difference.value, difference.value, 64 - exponent, MPFR_RNDN);
  return std::fabs(mpfr_get_d(difference.value, MPFR_RNDN));
}
static bool identical(long double a, long double b) {
  return std::isnan(a) ? std::isnan(b) : a == b && std::signbit(a) == std::signbit(b);
}

// ---- Arguments

// A random number with its exponent in [least, most], of either sign.
static long double random_extended(Random& random, int least, int most) {
  const uint64_t significand = random.next() | 0x8000000000000000u;
  const int exponent = least + int(random.next() % uint64_t(most - least + 1));
  const long double magnitude = std::ldexp((long double)(significand), exponent - 63);
  return random.next() & 1 ? -magnitude : magnitude;
}

// The number and its neighbours, with either sign.
static void add_around(Arguments& all, long double x, int reach = 1) {
  long double y = x;
  for (int k = 0; k < reach; ++k) y = std::nextafter(y, -INF);
  for (int k = -reach; k <= reach; ++k, y = std::nextafter(y, INF))
    if (std::isfinite(y)) all.insert(all.end(), {y, -y});
}

static void add_magnitudes(Arguments& all, Random& random) {
  for (int exponent = -16382; exponent < 16384; exponent += 9)
    all.push_back(random_extended(random, exponent, exponent));
  for (const long double bound : {LEAST, 0x1p-16382L, 0x1p-33L, 0.5L, 1.0L, LARGEST})
    add_around(all, bound);
  for (int k = 0; k < 5000; ++k) {
    all.push_back(random_extended(random, -12, 2));
    all.push_back(std::ldexp((long double)(random.next() >> 1), -16508));  // subnormal
  }
}

// Every magnitude, both halves of the table's steps, the ends of the range.
static Arguments exponents() {
  Random random{1};
  Arguments all;
  add_magnitudes(all, random);
  for (int k = 0; k < 5000; ++k) {
    all.push_back(random_extended(random, 3, 13));
    add_around(all, (int(random.next() % 8192) - 4096 + 0.5L) * (kLn2 / 256));
  }
  for (const long double bound : {0x1p-4L, 24.0L, 11355.137111L, 11356.5234062941439494L,
                                  11357.2165534747038948L, 11399.4985314888605586L, 11600.0L})
    add_around(all, bound);
  return all;
}

// For an exponent e the 64-bit m for which m 2^e is nearest to a multiple of pi/2: a denominator of
// the continued fraction of 2^e 2/pi.
static long double nearest_to_multiple(int e) {
  constexpr int kPrecision = 16384 + 320;
  Number<kPrecision> ratio;
  mpfr_const_pi(ratio.value, MPFR_RNDN);
  mpfr_ui_div(ratio.value, 2, ratio.value, MPFR_RNDN);
  mpfr_mul_2si(ratio.value, ratio.value, e, MPFR_RNDN);
  mpfr_frac(ratio.value, ratio.value, MPFR_RNDN);
  Number<320> rest, whole;
  mpfr_set(rest.value, ratio.value, MPFR_RNDN);
  uint64_t before = 1, m = 0;
  while (!mpfr_zero_p(rest.value)) {
    mpfr_floor(whole.value, rest.value);
    uint64_t next;
    if (mpfr_cmp_d(whole.value, 0x1p63) >= 0 ||
        __builtin_mul_overflow(uint64_t(mpfr_get_d(whole.value, MPFR_RNDN)), m, &next) ||
        __builtin_add_overflow(next, before, &next))
      break;
    before = m;
    m = next;
    mpfr_sub(rest.value, rest.value, whole.value, MPFR_RNDN);
    mpfr_ui_div(rest.value, 1, rest.value, MPFR_RNDN);
  }
  return std::ldexp((long double)(m), e);
}

static const Arguments& hardest_angles() {
  static const Arguments all = [] {
    Arguments angles;
    for (int e = -64; e <= 16320; e += e < 64 ? 1 : 37) {
      const long double x = nearest_to_multiple(e);
      if (x > 0 && std::isfinite(x)) angles.insert(angles.end(), {x, -x});
    }
    return angles;
  }();
  return all;
}

// Every magnitude, both halves of the table's steps, the neighbourhood of multiples of pi/2.
static Arguments angles() {
  Random random{2};
  Arguments all = hardest_angles();
  add_magnitudes(all, random);
  for (int k = 0; k < 5000; ++k) {
    const int step = int(random.next() % 2048) - 1024;
    add_around(all, (step + 0.5L) * (kHalfPi / 64));
    add_around(all, step * (kHalfPi / 2));
  }
  return all;
}

static Arguments degrees() {
  Random random{3};
  Arguments all;
  add_magnitudes(all, random);
  for (int k = -100; k <= 100; ++k) add_around(all, k * 15);
  for (int k = 0; k < 4000; ++k) all.push_back(random_extended(random, 3, 70));
  return all;
}

// Every magnitude, more next to 1 and -1, and both sides of every bound between two cells, where the
// reduced argument is largest.
template <int cells, int cells_below_one>
static Arguments ratios() {
  Random random{5};
  Arguments all;
  add_magnitudes(all, random);
  for (int k = 0; k < 8000; ++k) {
    all.push_back(random_extended(random, -16382, 16383));
    all.push_back(random_extended(random, -70, 0));
    const long double next_to_one = 1 + random_extended(random, -63, -1);
    all.insert(all.end(), {next_to_one, -next_to_one});
  }
  for (int k = 0; k < 2 * cells; ++k) {
    const long double bound = (k + 0.5L) / cells;
    for (const long double x : {bound, (k + 0.5L) / cells_below_one, 1 / bound, bound - 1})
      add_around(all, x, 3);
  }
  return all;
}

// Every magnitude, more around the bounds of the methods, and more next to +-1, where acos and
// acosh are small and asin is steep.
static Arguments sines() {
  Random random{17};
  Arguments all;
  add_magnitudes(all, random);
  for (const long double bound : {1.5L, 0x1p33L, 0x1p120L, 0x1p16383L}) add_around(all, bound);
  for (int k = 0; k < 12000; ++k) {
    all.push_back(random_extended(random, -3, 2));
    const long double distance = random_extended(random, -63, -1);
    all.insert(all.end(), {1 + distance, distance - 1});
    all.push_back(random_extended(random, 30, 36));
  }
  return all;
}

// ---- One argument

static int sine_of_degrees(mpfr_ptr to, mpfr_srcptr x, mpfr_rnd_t round) {
  return mpfr_sinu(to, x, 360, round);
}
static int cosine_of_degrees(mpfr_ptr to, mpfr_srcptr x, mpfr_rnd_t round) {
  return mpfr_cosu(to, x, 360, round);
}

struct Function {
  const char* name;
  Routine routine;
  int (*exact)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
  Arguments (*arguments)();
  double bound;
  int reflected;  // f(-x) is this times f(x); 0 where it is neither
};
static std::ostream& operator<<(std::ostream& out, const Function& f) { return out << f.name; }
static const Function kFunctions[] = {
    {"exp", noxexpl_scalar, mpfr_exp, exponents, 0.65, 0},
    {"sinh", noxsinhl_scalar, mpfr_sinh, exponents, 0.65, -1},
    {"cosh", noxcoshl_scalar, mpfr_cosh, exponents, 0.65, 1},
    {"tanh", noxtanhl_scalar, mpfr_tanh, exponents, 0.65, -1},
    {"sin", noxsinl_scalar, mpfr_sin, angles, 0.65, -1},
    {"cos", noxcosl_scalar, mpfr_cos, angles, 0.65, 1},
    {"tan", noxtanl_scalar, mpfr_tan, angles, 0.65, -1},
    {"sind", noxsindl_scalar, sine_of_degrees, degrees, 0.65, -1},
    {"cosd", noxcosdl_scalar, cosine_of_degrees, degrees, 0.65, 1},
    {"log", noxlogl_scalar, mpfr_log, ratios<256, 512>, 0.53, 0},
    {"log1p", noxlog1pl_scalar, mpfr_log1p, ratios<256, 512>, 0.6, 0},
    {"atanh", noxatanhl_scalar, mpfr_atanh, ratios<256, 512>, 0.6, -1},
    {"atan", noxatanl_scalar, mpfr_atan, ratios<64, 64>, 0.53, -1},
    {"asin", noxasinl_scalar, mpfr_asin, sines, 0.65, -1},
    {"acos", noxacosl_scalar, mpfr_acos, sines, 0.65, 0},
    {"asinh", noxasinhl_scalar, mpfr_asinh, sines, 0.65, -1},
    {"acosh", noxacoshl_scalar, mpfr_acosh, sines, 0.65, 0},
};

class Routines : public testing::TestWithParam<Function> {};
INSTANTIATE_TEST_SUITE_P(Extended, Routines, testing::ValuesIn(kFunctions),
                         testing::PrintToStringParamName());

// Subnormal results may be rounded twice. Infinities at poles are special arguments.
TEST_P(Routines, AreAccurateAndSymmetricToTheLastBit) {
  const Function& f = GetParam();
  double worst = 0, worst_subnormal = 0;
  long double at = 0;
  Number<256> exact;
  for (const long double x : f.arguments()) {
    mpfr_set_ld(exact.value, x, MPFR_RNDN);
    f.exact(exact.value, exact.value, MPFR_RNDN);
    const long double y = f.routine(x);
    const double error = extended_ulps(y, exact.value);
    if (std::fabs(y) < 0x1p-16382L)
      worst_subnormal = std::max(worst_subnormal, error);
    else if (!(error <= worst))
      worst = error, at = x;
    if (f.reflected) {
      ASSERT_TRUE(identical(f.routine(-x), f.reflected * y)) << std::hexfloat << x;
    }
  }
  EXPECT_LE(worst, f.bound) << std::hexfloat << at;
  EXPECT_LE(worst_subnormal, 1.5);
  RecordProperty("ulp", std::to_string(worst));
  EXPECT_TRUE(x87_stack_empty());
}

TEST(Extended, PairsAreTheSingleFunctions) {
  long double sine, cosine;
  for (const long double x : exponents()) {
    noxsinhcoshl_scalar(x, &sine, &cosine);
    EXPECT_TRUE(identical(sine, noxsinhl_scalar(x)) && identical(cosine, noxcoshl_scalar(x)));
  }
  for (const long double x : angles()) {
    noxsincosl_scalar(x, &sine, &cosine);
    EXPECT_TRUE(identical(sine, noxsinl_scalar(x)) && identical(cosine, noxcosl_scalar(x)));
  }
}

// The exact remainder: in its octant, within half a unit of r[0]'s last place, and right to far
// beyond what a function needs.
TEST(Extended, ReductionLeavesTheExactRemainder) {
  constexpr int kPrecision = 16384 + 320;
  Number<kPrecision> half_pi, multiple, rest;
  mpfr_const_pi(half_pi.value, MPFR_RNDN);
  mpfr_div_ui(half_pi.value, half_pi.value, 2, MPFR_RNDN);
  Arguments all = hardest_angles();
  Random random{4};
  for (int e = -4; e < 16384; e += 11) all.push_back(random_extended(random, e, e));
  for (const long double bound : {kHalfPi / 2, kHalfPi, 1.5L * kHalfPi, LARGEST})
    add_around(all, bound);
  for (const long double x : all) {
    long double r[2];
    const int octant = noxreduce_pi04l(x, r);
    ASSERT_LE(std::fabs(r[0]), 0x1.922p-1L) << std::hexfloat << x;
    ASSERT_TRUE(identical(r[0] + r[1], r[0])) << std::hexfloat << x;
    mpfr_set_ld(rest.value, x, MPFR_RNDN);
    mpfr_div(multiple.value, rest.value, half_pi.value, MPFR_RNDN);
    mpfr_rint(multiple.value, multiple.value, MPFR_RNDN);
    mpfr_fms(rest.value, multiple.value, half_pi.value, rest.value, MPFR_RNDN);
    mpfr_fmod_ui(multiple.value, multiple.value, 4, MPFR_RNDN);
    const int quadrant = int(mpfr_get_si(multiple.value, MPFR_RNDN)) + 4;
    ASSERT_EQ(octant, 2 * (quadrant & 3)) << std::hexfloat << x;
    Extended parts[2];
    for (int i = 0; i < 2; ++i) {
      mpfr_set_ld(parts[i].value, r[i], MPFR_RNDN);
      mpfr_add(rest.value, rest.value, parts[i].value, MPFR_RNDN);
    }
    mpfr_div(rest.value, rest.value, parts[0].value, MPFR_RNDN);
    ASSERT_LE(std::fabs(mpfr_get_d(rest.value, MPFR_RNDN)), 0x1p-105) << std::hexfloat << x;
  }
}

// ---- Two arguments

// An exponent that takes x to about 2^t.
static long double exponent_for(long double x, long double t) { return t / std::log2(x); }
static long double positive(Random& random, int least, int most) {
  return std::fabs(random_extended(random, least, most));
}
static long double anything(Random& r) { return random_extended(r, -16382, 16383); }
static long double any_base(Random& r) { return positive(r, -16445, 16383); }
static long double any_power(Random& r) { return 16380 * (2 * (long double)r.unit() - 1); }

static int angle_in_degrees(mpfr_ptr to, mpfr_srcptr y, mpfr_srcptr x, mpfr_rnd_t round) {
  return mpfr_atan2u(to, y, x, 360, round);
}

struct Stratum {
  const char* name;
  double bound;
  std::function<std::pair<long double, long double>(Random&)> draw;
};
static const Stratum kPowers[] = {
    {"moderate", 0.52,
     [](Random& r) { return std::pair(positive(r, -4, 4), random_extended(r, -4, 5)); }},
    {"any base, power within range", 0.52,
     [](Random& r) {
       const long double x = any_base(r);
       return std::pair(x, exponent_for(x, any_power(r)));
     }},
    {"bases next to 1", 0.52,
     [](Random& r) {
       const long double x = 1 + random_extended(r, -63, -3);
       return std::pair(x, exponent_for(x, any_power(r)));
     }},
    {"tiny exponents", 0.52,
     [](Random& r) { return std::pair(any_base(r), random_extended(r, -90, -4)); }},
    {"exponents of one half", 0.52,
     [](Random& r) { return std::pair(any_base(r), r.next() % 2 ? 0.5L : -0.5L); }},
    {"negative bases", 0.52,
     [](Random& r) {
       return std::pair(-positive(r, -40, 40), (long double)(int(r.next() % 601) - 300));
     }},
    // Rounded once more to the subnormal.
    {"subnormal and overflowing powers", 0.76,
     [](Random& r) {
       const long double x = any_base(r), t = r.next() % 2 ? 16384 + 0.01L * (2 * r.unit() - 1)
                                                           : -16447 + 66 * r.unit();
       return std::pair(x, exponent_for(x, t));
     }},
    // Neighbours of the bases where a table cell ends, where no cell is used any more, and of the
    // exponents where the result leaves the range.
    {"steps", 0.52,
     [](Random& r) {
       constexpr long double kEnds[] = {2, 0.5L, 4, 0x1p-16382L, 0x1p16383L, LEAST, LARGEST};
       constexpr long double kPowersOfTwo[] = {1.5L, -100.25L, 16383.99L, -16381.99L, 16384.01L};
       const long double base =
           r.next() % 8 ? 1 + r.next() % 513 / 512.0L : kEnds[r.next() % std::size(kEnds)];
       const long double x = std::nextafter(base, r.next() % 2 ? 0 : LARGEST);
       return std::pair(x, exponent_for(x, kPowersOfTwo[r.next() % 5]));
     }},
};
// Any two exponents, similar ones, quotients that are subnormal and next to a bound between two
// cells.
static const Stratum kPoints[] = {
    {"any", 0, [](Random& r) { return std::pair(anything(r), anything(r)); }},
    {"similar", 0,
     [](Random& r) {
       const int e = int(r.next() % 32766) - 16382;
       const long double x = random_extended(r, e, e);
       return std::pair(random_extended(r, std::max(e - 9, -16382), std::min(e + 9, 16383)), x);
     }},
    {"subnormal", 0,
     [](Random& r) {
       return std::pair(std::ldexp((long double)(r.next() >> 1), -16508),
                        random_extended(r, -16382, -16300));
     }},
    {"subnormal quotients", 0,
     [](Random& r) {
       const int e = int(r.next() % 16383);
       const long double x = random_extended(r, e, e);
       return std::pair(
           random_extended(r, std::max(e - 16400, -16445), std::max(e - 16370, -16382)), x);
     }},
    {"bounds", 0,
     [](Random& r) {
       const long double d = std::ldexp(1 + r.unit(), int(r.next() % 40) - 20);
       const long double bound = d * ((r.next() % 65 + 0.5L) / 64);
       return r.next() % 2 ? std::pair(bound, d) : std::pair(-d, -bound);
     }},
};

template <class F>
static void expect_accurate(const char* name, const Stratum& stratum, F routine,
                            decltype(mpfr_pow)* exact_of, double bound) {
  Random random{31};
  Number<256> x, y, exact;
  for (int k = 0; k < 3000; ++k) {
    const auto [first, second] = stratum.draw(random);
    if (first == 0 || !std::isfinite(second)) continue;
    mpfr_set_ld(x.value, first, MPFR_RNDN);
    mpfr_set_ld(y.value, second, MPFR_RNDN);
    exact_of(exact.value, x.value, y.value, MPFR_RNDN);
    ASSERT_LE(extended_ulps(routine(first, second), exact.value), bound)
        << name << ", " << stratum.name << ": " << std::hexfloat << first << ", " << second;
  }
}
TEST(Extended, TwoArguments) {
  for (const Stratum& powers : kPowers)
    expect_accurate("pow", powers, noxpowl_scalar, mpfr_pow, powers.bound);
  for (const Stratum& points : kPoints) {
    expect_accurate("atan2", points, noxatan2l_scalar, mpfr_atan2, 0.53);
    expect_accurate("atan2 in degrees", points, noxatan2dl_scalar, angle_in_degrees, 1.1);
  }
}

// ---- Special arguments and exact results

TEST(Extended, SpecialArguments) {
  constexpr uint16_t QUIET = 0, INVALID = kInvalid, POLE = kZeroDivide;
  int row = 0;
  const auto expect = [&](const char* call, auto compute, long double want, uint16_t raised) {
    ++row;
    set({});
    const long double got = compute();
    const uint16_t flags = x87_flags();
    EXPECT_TRUE(identical(got, want)) << "row " << row << ", " << call << ": " << got;
    EXPECT_EQ(flags & (kInvalid | kZeroDivide), raised) << "row " << row << ", " << call;
    EXPECT_TRUE(std::isinf(got) || !(flags & kOverflow)) << "row " << row << ", " << call;
  };
#define ONE(f, x, y, raised) \
  expect(                    \
      #f "(" #x ")", [] { return nox##f##_scalar(x); }, y, raised);
#define TWO(f, x, y, z, raised) \
  expect(                       \
      #f "(" #x ", " #y ")", [] { return nox##f##_scalar(x, y); }, z, raised);
#include "tests/extended_values.def"
  EXPECT_TRUE(x87_stack_empty());
}

TEST(Extended, ExactPowersAreExact) {
  for (int base = 2; base < 60; ++base) {
    uint64_t power = unsigned(base);
    for (int k = 1;; ++k, power *= unsigned(base)) {
      const long double want = (long double)power;
      EXPECT_EQ(noxpowl_scalar(base, k), want) << base << " ^ " << k;
      EXPECT_EQ(noxpowl_scalar(-base, k), k % 2 ? -want : want) << base << " ^ " << k;
      if (k % 2 == 0) {
        EXPECT_EQ(noxpowl_scalar(want, 0.5L), noxpowl_scalar(base, k / 2));
      }
      if (power > ~uint64_t(0) / unsigned(base)) break;
    }
  }
}

// Twelve images of 30 degrees, also after many turns, where 360 2^k is exact; and the eight
// directions of 45.
TEST(Extended, DegreesAreExactWhereTheResultIs) {
  constexpr float kOpen = 2;
  const float sines[12] = {0, 0.5, kOpen, 1, kOpen, 0.5, 0, -0.5, kOpen, -1, kOpen, -0.5};
  for (int k = -24; k <= 24; ++k)
    for (const long double turns : {0.0L, 1.0L, -3.0L, 0x1p40L, -0x1p50L}) {
      const long double x = 30 * k + 360 * turns;
      const float sine = sines[(k + 24) % 12], cosine = sines[(k + 27) % 12];
      EXPECT_TRUE(sine == kOpen || noxsindl_scalar(x) == sine) << x;
      EXPECT_TRUE(cosine == kOpen || noxcosdl_scalar(x) == cosine) << x;
    }
  for (const long double scale : {0x1p61L, 0x1p64L, 0x1p65L, 0x1p77L, 0x1p16370L}) {
    EXPECT_EQ(noxsindl_scalar(360 * scale), 0);
    EXPECT_EQ(noxcosdl_scalar(360 * scale), 1);
  }
  Random random{7};
  for (int k = 0; k < 2000; ++k) {
    const long double a = std::fabs(anything(random));
    const long double points[][2] = {{0, a},  {a, a},   {a, 0},  {a, -a},
                                     {0, -a}, {-a, -a}, {-a, 0}, {-a, a}};
    for (int i = 0; i < 8; ++i)
      EXPECT_EQ(noxatan2dl_scalar(points[i][0], points[i][1]), i < 5 ? 45 * i : 45 * i - 360);
  }
}
