// SPDX-License-Identifier: MIT
//
// Distances in kilometres from one place to 100,000 others, along great circles.
#include <luxvm.hpp>

#include <algorithm>
#include <array>
#include <vector>

#include "beside_libm.h"

// A place has two coordinates, three intermediate numbers and a distance here, 48 bytes. 1024 places
// take 48 KB, which stay in the second-level cache from one call to the next, while arrays of 800 KB
// would come from memory in every call. In much shorter chunks, starting the calls would take longer
// than the arithmetic.
constexpr size_t kChunk = 1024;

constexpr double kRadius = 6371, kLatitude = 0.898, kLongitude = 0.002;  // radians

using Numbers = std::vector<double>;
static Numbers latitude(kElements), longitude(kElements), ours(kElements), theirs(kElements);

// With h = sin^2 of half the difference in latitude + cos cos sin^2 of half that in longitude, the
// distance is 2 r asin(sqrt(h)).
static void by_luxvm() {
  static std::array<double, kChunk> scratch[3];
  const double here = std::cos(kLatitude);
  for (size_t first = 0; first < kElements; first += kChunk) {
    const size_t n = std::min(kChunk, kElements - first);
    const auto part = [=](Numbers& all) { return std::span(all).subspan(first, n); };
    const auto lat = part(latitude), lon = part(longitude), distance = part(ours);
    const auto up = std::span(scratch[0]).first(n), across = std::span(scratch[1]).first(n);
    const auto cosine = std::span(scratch[2]).first(n);
    for (size_t i = 0; i < n; ++i) {
      up[i] = 0.5 * (lat[i] - kLatitude);
      across[i] = 0.5 * (lon[i] - kLongitude);
    }
    lux::sin(up, up);
    lux::sin(across, across);
    lux::cos(lat, cosine);
    for (size_t i = 0; i < n; ++i) up[i] = up[i] * up[i] + here * cosine[i] * across[i] * across[i];
    lux::sqrt(up, up);
    lux::asin(up, up).or_throw();  // above 1 the place would be none on the globe
    for (size_t i = 0; i < n; ++i) distance[i] = 2 * kRadius * up[i];
  }
}

static void by_libm() {
  const double here = std::cos(kLatitude);
  for (size_t i = 0; i < kElements; ++i) {
    const double up = std::sin(0.5 * (latitude[i] - kLatitude));
    const double across = std::sin(0.5 * (longitude[i] - kLongitude));
    const double h = up * up + here * std::cos(latitude[i]) * across * across;
    theirs[i] = 2 * kRadius * std::asin(std::sqrt(h));
  }
}

int main() {
  for (int i = 0; i < kElements; ++i) {
    latitude[i] = spread(i, 0.75487766624669276, -1.5707, 1.5707);
    longitude[i] = spread(i, 0.56984029099805327, -3.1415, 3.1415);
  }
  const double time = shortest(by_luxvm), libm_time = shortest(by_libm);
  double largest = 0;
  for (size_t i = 0; i < kElements; ++i) largest = further(largest, ours[i], theirs[i]);
  // Next to the antipode the arc sine is steep: a last place of h becomes micrometres.
  return report("great circles, km (C++)", time, libm_time, largest, 1e-8);
}
