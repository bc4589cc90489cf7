// SPDX-License-Identifier: MIT
//
// Prices of 100,000 call options by the formula of Black and Scholes.
#include <luxvm.hpp>

#include <algorithm>
#include <array>
#include <vector>

#include "beside_libm.h"

// An option has three arguments, four intermediate numbers and a price here, 64 bytes. 1024 options
// take 64 KB, which stay in the second-level cache from one call to the next. Over all options at
// once, every call would fetch 800 KB from memory and write as much back; in much shorter chunks,
// starting the calls would take longer than the arithmetic.
constexpr size_t kChunk = 1024;

constexpr double kRate = 0.03, kVolatility = 0.2, kRootHalf = 0.70710678118654752;

using Numbers = std::vector<double>;
static Numbers spot(kElements), strike(kElements), years(kElements);
static Numbers ours(kElements), theirs(kElements);

// The normal distribution of d is erfc(-d / sqrt(2)) / 2.
static void by_luxvm() {
  static std::array<double, kChunk> scratch[4];
  for (size_t first = 0; first < kElements; first += kChunk) {
    const size_t n = std::min(kChunk, kElements - first);
    const auto part = [=](Numbers& all) { return std::span(all).subspan(first, n); };
    const auto s = part(spot), k = part(strike), t = part(years), price = part(ours);
    const auto n1 = std::span(scratch[0]).first(n), n2 = std::span(scratch[1]).first(n);
    const auto root = std::span(scratch[2]).first(n), discount = std::span(scratch[3]).first(n);
    lux::div(s, k, n1);
    lux::ln(n1, n1);
    lux::sqrt(t, root);
    for (size_t i = 0; i < n; ++i) {
      const double deviation = kVolatility * root[i];
      const double d1 = (n1[i] + kRate * t[i]) / deviation + 0.5 * deviation;
      n1[i] = -kRootHalf * d1;
      n2[i] = -kRootHalf * (d1 - deviation);
      discount[i] = -kRate * t[i];
    }
    lux::erfc(n1, n1);
    lux::erfc(n2, n2);
    lux::exp(discount, discount).or_throw();
    for (size_t i = 0; i < n; ++i) price[i] = 0.5 * (s[i] * n1[i] - k[i] * discount[i] * n2[i]);
  }
}

static void by_libm() {
  for (size_t i = 0; i < kElements; ++i) {
    const double deviation = kVolatility * std::sqrt(years[i]);
    const double d1 =
        (std::log(spot[i] / strike[i]) + kRate * years[i]) / deviation + 0.5 * deviation;
    const double n1 = std::erfc(-kRootHalf * d1), n2 = std::erfc(-kRootHalf * (d1 - deviation));
    theirs[i] = 0.5 * (spot[i] * n1 - strike[i] * std::exp(-kRate * years[i]) * n2);
  }
}

int main() {
  for (int i = 0; i < kElements; ++i) {
    spot[i] = spread(i, 0.61803398874989485, 50, 150);
    strike[i] = spread(i, 0.75487766624669276, 50, 150);
    years[i] = spread(i, 0.56984029099805327, 0.1, 5);
  }
  const double time = shortest(by_luxvm), libm_time = shortest(by_libm);
  double largest = 0;
  for (size_t i = 0; i < kElements; ++i) largest = further(largest, ours[i], theirs[i]);
  return report("option prices (C++)", time, libm_time, largest, 1e-12);
}
