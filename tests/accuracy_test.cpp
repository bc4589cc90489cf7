// SPDX-License-Identifier: MIT
//
// Errors of the graded functions in units of the last place of the exact result, computed with MPFR
// at 200 bits.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tests/catalog.h"
#include "tests/mpfr_number.h"

constexpr int kBits = 200;

struct Span {
  double low, high;
  int count;
};
// What a function is measured against: the exact function, the worst error that its documentation
// states (normal results, subnormal results), the intervals that deserve a close look.
struct Measure {
  std::string_view family, type;
  void (*exact)(mpfr_t result, const mpfr_t x, const mpfr_t y);
  double ulps, subnormal_ulps;
  int per_exponent;  // random arguments for every exponent of each source
  std::vector<Span> spans;
  std::vector<double> steps;  // points where the method changes: both neighbours are tried
};

static void inv(mpfr_t r, const mpfr_t x, const mpfr_t) { mpfr_ui_div(r, 1, x, MPFR_RNDN); }
static void div(mpfr_t r, const mpfr_t x, const mpfr_t y) { mpfr_div(r, x, y, MPFR_RNDN); }
static void exp(mpfr_t r, const mpfr_t x, const mpfr_t) { mpfr_exp(r, x, MPFR_RNDN); }

static const Measure kMeasures[] = {
    {"Inv", "32f", inv, 0.5, 0.5, 400, {{1, 2, 40000}}, {0x1p-126, 0x1p-128, 0x1p126}},
    {"Div", "32f", div, 0.5, 0.5, 400, {{1, 2, 40000}}, {0x1p-126, 0x1p126}},
    {"Inv", "64f", inv, 0.502, 0.502, 60, {{1, 2, 60000}, {0.5, 4, 60000}}, {0x1p-1022, 0x1p1022}},
    {"Div", "64f", div, 0.502, 0.502, 60, {{1, 2, 60000}, {0.5, 4, 60000}}, {0x1p-1022, 0x1p1022}},
    {"Exp",
     "32f",
     exp,
     0.612,
     0.612,
     60,
     {{-1, 1, 60000}, {-104, 89, 100000}, {-104, -87, 20000}, {-0.02, 0.02, 20000}},
     {0, 88.72283935546875, -88.72283935546875, -103.97207641601562, -0x1.5d589ep+6}},
    {"Exp",
     "64f",
     exp,
     0.80,
     0.66,
     20,
     {{-1, 1, 60000}, {-745.2, 709.8, 100000}, {-745.2, -708.39, 20000}, {-1e-4, 1e-4, 20000}},
     {0, 708.39599609375, -708.39599609375, 709.7827128933841, -708.3964185322642,
      -745.1332191019412}},
};

// The full distance of what was computed from the exact value, which may be out of range.
template <class U>
static double ulps_off(U got, const mpfr_t exact) {
  constexpr int p = Format<U>::mantissa + 1, least = 2 - Format<U>::bias;
  if (mpfr_nan_p(exact) || is_nan(got)) return mpfr_nan_p(exact) && is_nan(got) ? 0 : INFINITY;
  mpfr_t g, unit;
  mpfr_inits2(kBits, g, unit, nullptr);
  if ((got & ~kSign<U>) == kInfinity<U>) {  // stands for the first value beyond the range
    mpfr_set_si_2exp(g, got & kSign<U> ? -1 : 1, Format<U>::bias + 1, MPFR_RNDN);
    if (mpfr_inf_p(exact)) mpfr_set(g, exact, MPFR_RNDN);
  } else {
    set_exact(g, got);
  }
  double off = 0;
  if (mpfr_equal_p(g, exact)) {
    off = mpfr_zero_p(exact) && bool(mpfr_signbit(exact)) != bool(got & kSign<U>) ? INFINITY : 0;
  } else if (mpfr_inf_p(exact)) {
    off = INFINITY;
  } else if (!mpfr_zero_p(exact) && mpfr_get_exp(exact) > Format<U>::bias + 1) {
    off = (got & ~kSign<U>) == kInfinity<U> ? 0 : INFINITY;
  } else {
    const int exponent = mpfr_zero_p(exact) ? least : std::max<int>(mpfr_get_exp(exact), least);
    mpfr_set_ui_2exp(unit, 1, exponent - p, MPFR_RNDN);
    mpfr_sub(g, g, exact, MPFR_RNDN);
    mpfr_div(g, g, unit, MPFR_RNDA);
    off = std::fabs(mpfr_get_d(g, MPFR_RNDA));
  }
  mpfr_clears(g, unit, nullptr);
  return off;
}

template <class U>
static U pattern_of(double x) {
  if constexpr (sizeof(U) == 8) return bits(x);
  const volatile float narrow = float(x);
  return U(bits(float(narrow)));
}

template <class U>
static std::vector<U> arguments(const Measure& m, uint64_t seed) {
  Random random{seed};
  std::vector<U> all;
  for (int k = 0; k < m.per_exponent; ++k)
    for (U e = 0; e < U(2 * Format<U>::bias + 1); ++e) {
      constexpr int bits = Format<U>::mantissa;
      all.push_back((U(random.next()) & (kSign<U> | ((U(1) << bits) - 1))) | e << bits);
    }
  for (const Span& span : m.spans)
    for (int k = 0; k < span.count; ++k)
      all.push_back(pattern_of<U>(span.low + (span.high - span.low) * random.unit()));
  for (const double step : m.steps)
    for (int k = -8; k <= 8; ++k) all.push_back(pattern_of<U>(step) + U(k));
  for (size_t i = all.size(); i-- > 1;) std::swap(all[i], all[random.next() % (i + 1)]);
  return all;
}

template <class U>
static void measure(const Function& f, const Measure& m) {
  const std::vector<U> x = arguments<U>(m, 1), y = arguments<U>(m, 2);
  std::vector<U> out(x.size());
  f.call({{x.data(), y.data()}, {out.data()}, nullptr}, int32_t(x.size()));
  mpfr_t a, b, exact;
  mpfr_inits2(kBits, a, b, exact, nullptr);
  double worst = 0;
  size_t worst_at = 0;
  int failures = 0;
  for (size_t i = 0; i < x.size() && failures < 10; ++i) {
    set_exact(a, x[i]);
    set_exact(b, y[i]);
    m.exact(exact, a, b);
    const bool subnormal = mpfr_regular_p(exact) && mpfr_get_exp(exact) < 2 - Format<U>::bias;
    const double off = ulps_off(out[i], exact);
    if (off > worst) worst = off, worst_at = i;
    if (off <= (subnormal ? m.subnormal_ulps : m.ulps)) continue;
    ++failures;
    ADD_FAILURE() << f.name << "(0x" << std::hex << x[i] << (f.shape.sources > 1 ? ", 0x" : "")
                  << (f.shape.sources > 1 ? testing::PrintToString(y[i]) : "") << "): got 0x"
                  << out[i] << ", wanted 0x" << stored<U>(exact) << ", " << off << " ulp off";
  }
  printf("%-20s worst error %.4f ulp at 0x%llx (%zu arguments)\n", f.name.data(), worst,
         (unsigned long long)x[worst_at], x.size());
  mpfr_clears(a, b, exact, nullptr);
}

class Accuracy : public testing::TestWithParam<Function> {};
static std::vector<Function> graded_reals() {
  std::vector<Function> all;
  for (const Function& f : kCatalog)
    if (f.graded() && f.type.width == f.type.bytes()) all.push_back(f);
  return all;
}
INSTANTIATE_TEST_SUITE_P(All, Accuracy, testing::ValuesIn(graded_reals()),
                         [](const auto& info) { return std::string(info.param.name.substr(4)); });

TEST_P(Accuracy, StaysWithinItsBound) {
  const Function& f = GetParam();
  for (const Measure& m : kMeasures)
    if (f.is(m.family, m.type))
      return f.type.width == 4 ? measure<uint32_t>(f, m) : measure<uint64_t>(f, m);
  ADD_FAILURE() << f.name << " has no measure";
}
