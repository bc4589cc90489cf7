// SPDX-License-Identifier: MIT
//
// The rounding functions against a plain computation: every single (slow, in sixteen shards), and a
// sample of singles and doubles that holds every exponent (fast).
#include <gtest/gtest.h>

#include <vector>

#include "luxvmk3.h"
#include "tests/rounding_reference.h"

struct Direction {
  uint16_t control;
  Rounding mode;
};
constexpr Direction kDirections[] = {{0x37F, Rounding::kNearestEven},
                                     {0x77F, Rounding::kDown},
                                     {0xB7F, Rounding::kUp},
                                     {0xF7F, Rounding::kTowardZero}};

template <class U>
using Function = Status (*)(const typename Format<U>::Real*, typename Format<U>::Real*, int32_t);
template <class U>
struct Fixed {
  const char* name;
  Function<U> function;
  Rounding mode;
};
template <class U>
struct Family;
template <>
struct Family<uint32_t> {
  static constexpr Fixed<uint32_t> fixed[] = {{"Floor", luxsFloor_32f, Rounding::kDown},
                                              {"Ceil", luxsCeil_32f, Rounding::kUp},
                                              {"Trunc", luxsTrunc_32f, Rounding::kTowardZero},
                                              {"Round", luxsRound_32f, Rounding::kNearestAway}};
  static constexpr Function<uint32_t> current[] = {luxsRint_32f, luxsNearbyInt_32f};
  static constexpr auto modf = luxsModf_32f;
};
template <>
struct Family<uint64_t> {
  static constexpr Fixed<uint64_t> fixed[] = {{"Floor", luxsFloor_64f, Rounding::kDown},
                                              {"Ceil", luxsCeil_64f, Rounding::kUp},
                                              {"Trunc", luxsTrunc_64f, Rounding::kTowardZero},
                                              {"Round", luxsRound_64f, Rounding::kNearestAway}};
  static constexpr Function<uint64_t> current[] = {luxsRint_64f, luxsNearbyInt_64f};
  static constexpr auto modf = luxsModf_64f;
};

template <class U, class Reference>
static bool agree(const char* name, const std::vector<U>& in, const std::vector<U>& out,
                  Reference reference) {
  for (size_t i = 0; i < in.size(); ++i)
    if (const U want = reference(in[i]); out[i] != want) {
      ADD_FAILURE() << name << (sizeof(U) == 4 ? "_32f(" : "_64f(") << std::hex << in[i]
                    << "): got " << out[i] << ", wanted " << want;
      return false;
    }
  return true;
}

template <class U>
static bool check(const std::vector<U>& in) {
  std::vector<U> out(in.size()), fraction(in.size());
  const int32_t n = int32_t(in.size());
  bool good = true;
  for (const auto& [name, function, mode] : Family<U>::fixed) {
    function(reals(in.data()), reals(out.data()), n);
    good &= agree(name, in, out, [mode](U x) { return rounded(x, mode); });
  }
  for (const auto& [control, mode] : kDirections)
    for (const Function<U> function : Family<U>::current) {
      set({control});
      function(reals(in.data()), reals(out.data()), n);
      set({});
      good &= agree("Rint or NearbyInt", in, out, [mode](U x) { return rounded(x, mode); });
    }
  Family<U>::modf(reals(in.data()), reals(out.data()), reals(fraction.data()), n);
  good &= agree("Modf whole", in, out, [](U x) { return rounded(x, Rounding::kTowardZero); });
  return good & agree("Modf fraction", in, fraction, [](U x) { return fraction_of(x); });
}

class EverySingle : public testing::TestWithParam<uint32_t> {};
INSTANTIATE_TEST_SUITE_P(Shard, EverySingle, testing::Range(0u, 16u));

TEST_P(EverySingle, IsRoundedRight) {
  constexpr uint32_t kChunk = 1 << 14;
  std::vector<uint32_t> in(kChunk);
  for (uint32_t chunk = 0; chunk < (1u << 28) / kChunk; ++chunk) {
    for (uint32_t i = 0; i < kChunk; ++i) in[i] = (GetParam() << 28) + chunk * kChunk + i;
    if (!check(in)) return;
  }
}

// At every exponent, with both signs: random mantissas, mantissas with few or many low bits set,
// and the neighbours of every half.
template <class U>
static void check_sample(int mantissas) {
  constexpr int m = Format<U>::mantissa;
  constexpr U digits = (U(1) << m) - 1;
  Random random{7};
  for (U exponent = 0; exponent < U(2 * Format<U>::bias + 2); ++exponent) {
    std::vector<U> in;
    const auto add = [&](U mantissa) {
      for (const U sign : {U(0), kSign<U>})
        in.push_back(sign | exponent << m | (mantissa & digits));
    };
    for (int bit = 0; bit <= m; ++bit)
      for (const int step : {-1, 0, 1}) {
        const U one = U(1) << bit;
        add(one + U(step));
        add(digits - one + U(step));
        add((U(random.next()) & ~(one - 1)) + U(step));  // random above, an integer or half below
      }
    for (int k = 0; k < mantissas; ++k) add(U(random.next()));
    if (!check(in)) return;
  }
}
TEST(Sample, SinglesAreRoundedRight) { check_sample<uint32_t>(3000); }
TEST(Sample, DoublesAreRoundedRight) { check_sample<uint64_t>(300); }
