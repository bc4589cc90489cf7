// SPDX-License-Identifier: MIT
//
// The fixed arguments of the published hashes: that they reach what a kernel distinguishes and do
// not depend on the machine's settings.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

#include "conformance/result_hash.h"
#include "tests/support.h"

static Function listed(std::string_view name) {
  return *std::find_if(std::begin(kFunctions), std::end(kFunctions),
                       [&](const Function& f) { return f.name == name; });
}

// The calls that a function receives.
template <class U>
struct Call {
  std::vector<U> source[2], scalar;
};
template <class U>
static std::vector<Call<U>> calls;

template <class U>
static std::vector<Call<U>> received(std::string_view name) {
  static Shape shape;
  static int parts;
  Function f = listed(name);
  shape = f.shape;
  parts = f.type.parts;
  f.call = [](const Arrays& a, int32_t len) -> Status {
    Call<U> call;
    const auto copy = [](const void* from, int count) {
      std::vector<U> to(count);
      memcpy(to.data(), from, count * sizeof(U));
      return to;
    };
    for (int k = 0; k < shape.sources; ++k) call.source[k] = copy(a.source[k], len * parts);
    if (shape.scalar) call.scalar = copy(a.scalar, parts);
    calls<U>.push_back(std::move(call));
    for (int k = 0; k < shape.destinations; ++k)
      memset(a.destination[k], 0, len * parts * sizeof(U));
    return 0;
  };
  calls<U>.clear();
  bench::fixed_results(f);
  return std::move(calls<U>);
}

template <class U>
static void expect_every_exponent(std::string_view name) {
  std::set<U> seen;
  size_t nans = 0, infinities = 0, zeros = 0;
  for (const Call<U>& call : received<U>(name))
    for (const U x : call.source[0]) {
      seen.insert(x >> Format<U>::mantissa);
      nans += is_nan(x);
      infinities += (x & ~kSign<U>) == kInfinity<U>;
      zeros += (x & ~kSign<U>) == 0;
    }
  EXPECT_EQ(seen.size(), size_t(4 * (Format<U>::bias + 1))) << name;
  EXPECT_GT(std::min({nans, infinities, zeros}), 3u) << name;
}

TEST(FixedArguments, HaveEveryExponentBothSignsAndEverySpecialKind) {
  expect_every_exponent<uint32_t>("luxsExp_32f_A24");
  expect_every_exponent<uint64_t>("luxsExp_64f_A53");
  expect_every_exponent<uint32_t>("luxsPow_32fc_A24");
  expect_every_exponent<uint64_t>("luxsPowx_64f_A53");
}

TEST(FixedArguments, LieInTheTypicalInterval) {
  const auto cosines = received<uint64_t>("luxsAcos_64f_A53")[0].source[0];
  EXPECT_GT(cosines.size(), 4000u);
  size_t with_last_bit = 0;
  for (const uint64_t x : cosines) {
    EXPECT_LE(x & ~kSign<uint64_t>, kOne<uint64_t>);
    with_last_bit += x & 1;
  }
  // All digits are in use: a kernel may lose the last ones.
  EXPECT_NEAR(double(with_last_bit), cosines.size() / 2.0, 200);
  const auto above_one = received<uint32_t>("luxsAcosh_32f_A24")[0].source[0];
  EXPECT_GE(*std::min_element(above_one.begin(), above_one.end()), kOne<uint32_t>);
  EXPECT_EQ(received<uint64_t>("luxsPowx_64f_A53")[0].scalar[0], bits(2.5));
  EXPECT_EQ(received<uint32_t>("luxsPowx_32fc_A24")[0].scalar,
            std::vector<uint32_t>({bits(1.5f), bits(1.5f)}));
}

TEST(FixedArguments, DoNotFollowTheCallersSettings) {
  const auto usual = received<uint32_t>("luxsInv_32f_A24");
  set({0x0B7F & ~0x300, 0x5F80});  // single precision, rounding up
  const auto other = received<uint32_t>("luxsInv_32f_A24");
  set({});
  ASSERT_EQ(usual.size(), other.size());
  for (size_t i = 0; i < usual.size(); ++i)
    EXPECT_EQ(usual[i].source[0], other[i].source[0]) << "call " << i;
}

template <class U>
static uint64_t hash_of_nans(std::string_view name, U nan) {
  static U result;
  result = nan;
  Function f = listed(name);
  f.call = [](const Arrays& a, int32_t len) -> Status {
    std::fill_n(static_cast<U*>(a.destination[0]), len, result);
    return 0;
  };
  return bench::fixed_results(f).hash();
}

TEST(Hash, SeesPayloadsOnlyWhereOneNaNCanMeet) {
  constexpr uint32_t a = 0x7FC00001, b = 0xFFC00002;
  EXPECT_NE(hash_of_nans("luxsInv_32f_A24", a), hash_of_nans("luxsInv_32f_A24", b));
  EXPECT_EQ(hash_of_nans("luxsDiv_32f_A24", a), hash_of_nans("luxsDiv_32f_A24", b));
  EXPECT_EQ(hash_of_nans("luxsPowx_32f_A24", a), hash_of_nans("luxsPowx_32f_A24", b));
  EXPECT_NE(hash_of_nans("luxsDiv_32f_A24", a), hash_of_nans("luxsDiv_32f_A24", 0x7F800000u));
}

TEST(Hash, IsTheWellKnownOne) {
  EXPECT_EQ(bench::FixedResults{"a"}.hash(), 0xAF63DC4C8601EC8Cu);
  EXPECT_EQ(bench::FixedResults{"foobar"}.hash(), 0x85944171F73967E8u);
}
