// SPDX-License-Identifier: MIT
//
// Single-precision sine, cosine and tangent, bit for bit against literal models of their steps in
// MPFR, each operation rounded to the precision it is done at; and which elements go through the
// handlers of large arguments, under which name.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "tests/catalog.h"
#include "tests/mpfr_number.h"
#include "tests/reports.h"

struct Results {
  uint32_t first, second;  // the same where there is one
  bool operator==(const Results&) const = default;
};

// P: precision of the polynomial and of t. R: precision of the reduction.
template <class P, class R>
struct Model {
  static constexpr double kInvPi = 0.3183098861837907, kPiOver2 = 1.5707963267948966;
  static constexpr double kTwoOverPi = 0.6366197723675814;
  // pi/2 in two parts; twice as much is the pi of the sine.
  static constexpr double kHigh = 1.5707963267923333, kLow = 2.563344151594519e-12;

  static P argument(uint32_t x) {
    P value;
    set_exact(value.value, x);
    return value;
  }
  static long nearest(const P& t) { return mpfr_get_si(t.value, MPFR_RNDN); }
  static P reduced(uint32_t x, double half_turns) {
    R value;
    set_exact(value.value, x);
    const R r = value - R(half_turns) * R(kHigh) - R(half_turns) * R(kLow);
    P rounded;
    mpfr_set(rounded.value, r.value, MPFR_RNDN);
    return rounded;
  }
  static uint32_t signed_single(const P& y, bool negate) {
    return stored<uint32_t>(y.value) ^ (negate ? kSign<uint32_t> : 0);
  }
  static P odd_polynomial(const P& r) {
    const P r2 = r * r;
    const auto c = [](uint64_t pattern) { return P(std::bit_cast<double>(pattern)); };
    P sum = r2 * c(0x3EC5E0A329A17541);
    for (const uint64_t next : {0xBF29F75E2C166F94u, 0x3F8110EE64CD0933u, 0xBFC55554AE8BA1BDu})
      sum = r2 * (c(next) + sum);
    return r * (c(0x3FF000000089705F) + sum);
  }

  static Results sine(uint32_t x) {
    const long n = nearest(argument(x) * P(kInvPi));
    const uint32_t y = signed_single(odd_polynomial(reduced(x, 2 * n)), n & 1);
    return {y, y};
  }
  static Results cosine(uint32_t x) {
    const long n = nearest((argument(x) + P(kPiOver2)) * P(kInvPi));
    const uint32_t y = signed_single(odd_polynomial(reduced(x, 2 * n - 1)), n & 1);
    return {y, y};
  }
  static Results both(uint32_t x) {
    const long n = nearest(argument(x) * P(kTwoOverPi));
    const P r = reduced(x, n), r2 = r * r;
    const P s = P(0.008332160761521766) + r2 * P(-0.00019515283190447318);
    const P sine = r + r * r2 * (P(-0.16666654612881793) + r2 * s);
    const P c = P(-0.0013887316254360454) + r2 * P(2.443315705834904e-05);
    const P cosine = P(1) - P(0.5) * r2 + r2 * r2 * (P(0.04166664568297557) + r2 * c);
    // Quadrants 0 to 3: s c, c -s, -s -c, -c s.
    const int quadrant = int(n & 3);
    const bool odd = quadrant & 1;
    return {signed_single(odd ? cosine : sine, quadrant >= 2),
            signed_single(odd ? sine : cosine, quadrant == 1 || quadrant == 2)};
  }
  static Results tangent(uint32_t x) {
    const long n = nearest(argument(x) * P(kTwoOverPi));
    const P r = reduced(x, n), r2 = r * r, one(1);
    const P u1(-0.429135777), u2(0.00971685835);
    const P numerator = r + P(-0.0958017723) * r * r2;
    const bool nested = std::is_same_v<P, Number<53>>;
    const P denominator = nested ? one + r2 * (u1 + r2 * u2) : one + u1 * r2 + u2 * r2 * r2;
    const uint32_t y = n & 1 ? signed_single(denominator / numerator, true)
                             : stored<uint32_t>((numerator / denominator).value);
    return {y, y};
  }
};
using A24 = Model<Number<53>, Number<53>>;
using A21 = Model<Number<24>, Number<64>>;

using Handler = void (*)(int32_t, const float*, float*, float*, int32_t*);
template <auto one>
void with_one_result(int32_t i, const float* src, float* dst1, float* dst2, int32_t* status) {
  one(i, src, dst1, status);
  dst2[i] = dst1[i];
}

struct Family {
  std::string_view name;
  bool best;          // A24, or A21 and A11
  float bound;        // the largest magnitude that is not handed over
  float model_bound;  // and where the literal steps are left
  Results (*model)(uint32_t);
  Handler handler;
  double period;
  const char* report_name;
};
static const Family kFamilies[] = {
    {"Sin", true, 500000, 500000, A24::sine, with_one_result<noxsSin_SC_HA>, M_PI, "sSin_HA"},
    {"Sin", false, 1e6, 1e6, A21::sine, with_one_result<noxsSin_SC_LA>, M_PI, "sSin_LA"},
    {"Cos", true, 500000, 500000, A24::cosine, with_one_result<noxsCos_SC_HA>, M_PI, "sCos_HA"},
    {"Cos", false, 10048, 10048, A21::cosine, with_one_result<noxsCos_SC_LA>, M_PI, "sCos_LA"},
    {"SinCos", true, 1e6, 524288, A24::both, noxsSinCos_SC_HA, M_PI_2, "sSinCos_HA"},
    {"SinCos", false, 1e6, 1e6, A21::both, noxsSinCos_SC_LA, M_PI_2, "sSinCos_LA"},
    {"Tan", true, 128000, 128000, A24::tangent, with_one_result<noxsTan_SC_HA>, M_PI_2, "sTan_HA"},
    {"Tan", false, 500000, 500000, A21::tangent, with_one_result<noxsTan_SC_LA>, M_PI_2, "sTan_LA"},
};

static bool covers(const Family& family, const Function& f) {
  return f.is(family.name, "32f") && (f.grade == "A24") == family.best;
}
static std::vector<Results> run(const Function& f, const std::vector<uint32_t>& x, Status* status) {
  std::vector<uint32_t> y1(x.size()), y2(x.size());
  *status = f.call({{x.data()}, {y1.data(), y2.data()}, nullptr}, int32_t(x.size()));
  std::vector<Results> all;
  for (size_t i = 0; i < x.size(); ++i)
    all.push_back({y1[i], f.shape.destinations == 2 ? y2[i] : y1[i]});
  return all;
}
static void expect_equal(std::string_view name, const std::vector<uint32_t>& x,
                         const std::vector<Results>& got, const std::vector<Results>& want) {
  int failures = 0;
  for (size_t i = 0; i < x.size() && failures < 5; ++i)
    if (got[i] != want[i])
      ADD_FAILURE() << name << " element " << i << " of " << x.size() << " (0x" << std::hex << x[i]
                    << "): got 0x" << got[i].first << " 0x" << got[i].second << ", wanted 0x"
                    << want[i].first << " 0x" << want[i].second << std::dec << " " << ++failures;
}

// Zeros are left out where they go to the handler.
static bool usable(const Family& family, uint32_t x) {
  if (family.name == "Tan") return (x & ~kSign<uint32_t>) != 0;
  return family.name != "SinCos" || x != kSign<uint32_t>;
}

// All magnitudes, ordinary ones, and the places where n turns and where r vanishes.
static std::vector<uint32_t> arguments(const Family& family, double bound, int count) {
  Random random{23};
  std::vector<uint32_t> all;
  const auto add = [&](double x, int nudge) {
    const volatile float narrow = float(x);
    const uint32_t pattern = bits(narrow) + uint32_t(nudge);
    if (std::fabs(std::bit_cast<float>(pattern)) <= bound && usable(family, pattern))
      all.push_back(pattern);
  };
  for (const double edge : {0.0, 0x1p-149, 0x1p-126, double(0.78539819f), 1.0, bound})
    for (const double sign : {1.0, -1.0}) add(sign * edge, 0);
  for (int k = 0; k < count; ++k) {
    const double sign = random.next() & 1 ? 1 : -1, range = random.next() & 1 ? 10 : bound;
    const int nudge = int(random.next() % 5) - 2;
    add(sign * range * random.unit(), 0);
    add(sign * std::ldexp(random.unit(), 20 - int(random.next() % 170)), 0);
    const double turn = std::floor(range * random.unit() / family.period) * family.period;
    add(sign * (turn + family.period / 2), nudge);
    add(sign * turn, nudge);
  }
  return all;
}

TEST(TrigModel, EveryStepRoundsAsInTheModel) {
  for (const Family& family : kFamilies) {
    const std::vector<uint32_t> x = arguments(family, family.model_bound, 12000);
    std::vector<Results> want;
    for (const uint32_t pattern : x) want.push_back(family.model(pattern));
    for (const Function& f : kFunctions)
      if (covers(family, f)) {
        Status status;
        expect_equal(f.name, x, run(f, x, &status), want);
        EXPECT_EQ(status, LUX_OK) << f.name;
      }
  }
}

// The last argument of the kernel's own range and the first of the handler's, each sign of zero,
// NaNs, and infinities, at every place of arrays whose blocks wait for each other.
TEST(TrigModel, OneSpecialElementSendsItsBlockToTheHandler) {
  constexpr uint32_t kNaN = kInfinity<uint32_t> + 5;
  for (const Family& family : kFamilies) {
    const uint32_t last = bits(family.bound), minus_zero = kSign<uint32_t>;
    const bool tangent = family.name == "Tan", both = family.name == "SinCos";
    const struct {
      uint32_t x;
      bool handed_over;
    } cases[] = {{last, false}, {last | minus_zero, false},   {last + 1, true},
                 {0, tangent},  {kInfinity<uint32_t>, true},  {(last + 1) | minus_zero, true},
                 {kNaN, true},  {minus_zero, tangent || both}};
    for (const Function& f : kFunctions) {
      if (!covers(family, f)) continue;
      for (const int len : {3, 8, 47, 150})
        for (const auto& [special, handed_over] : cases)
          for (int at = len % 4; at < len; at += len < 40 ? 1 : 7) {
            std::vector<uint32_t> x(len);
            for (int i = 0; i < len; ++i) x[i] = bits(0.37f * float(i + 1));
            x[at] = special;
            std::vector<Results> want;
            Status handler_status = LUX_OK, status;
            reports.clear();
            for (int i = 0; i < len; ++i) {
              const bool same_block = i / 4 == at / 4 && at / 4 < len / 4;
              if (handed_over && (i == at || same_block)) {
                std::vector<float> y1(len), y2(len);
                family.handler(i, reals(x.data()), y1.data(), y2.data(), &handler_status);
                want.push_back({bits(y1[i]), bits(y2[i])});
              } else {
                want.push_back(run(f, {x[i]}, &status)[0]);
              }
            }
            const bool reported = special == kInfinity<uint32_t>;
            EXPECT_EQ(handler_status, reported ? LUX_DOMAIN : LUX_OK);
            reports.clear();
            const std::vector<Results> got = run(f, x, &status);
            EXPECT_EQ(status, handler_status) << f.name;
            EXPECT_EQ(reports.size(), size_t(reported)) << f.name;
            EXPECT_TRUE(!reported || reports.at(0).is(LUX_DOMAIN, at, family.report_name));
            expect_equal(f.name, x, got, want);
          }
    }
  }
}
