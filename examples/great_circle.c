/* SPDX-License-Identifier: MIT
 *
 * Distances in kilometres from one place to 100,000 others, along great circles.
 */
#define _POSIX_C_SOURCE 199309L
#include <luxvmk3.h>

#include "beside_libm.h"

/* A place has two coordinates, three intermediate numbers and a distance here, 48 bytes. 1024 places
 * take 48 KB, which stay in the second-level cache from one call to the next, while arrays of 800 KB
 * would come from memory in every call. In much shorter chunks, starting the calls would take longer
 * than the arithmetic. */
enum { kChunk = 1024 };

static const double kRadius = 6371, kLatitude = 0.898, kLongitude = 0.002; /* radians */

static double latitude[kElements], longitude[kElements], ours[kElements], theirs[kElements];

/* With h = sin^2 of half the difference in latitude + cos cos sin^2 of half that in longitude, the
 * distance is 2 r asin(sqrt(h)). */
static void by_luxvm(void) {
  static double up[kChunk], across[kChunk], cosine[kChunk];
  double here;
  luxsCos_64f_A53(&kLatitude, &here, 1);
  for (int first = 0; first < kElements; first += kChunk) {
    const double *lat = latitude + first, *lon = longitude + first;
    const int n = kElements - first < kChunk ? kElements - first : kChunk;
    for (int i = 0; i < n; ++i) {
      up[i] = 0.5 * (lat[i] - kLatitude);
      across[i] = 0.5 * (lon[i] - kLongitude);
    }
    luxsSin_64f_A53(up, up, n);
    luxsSin_64f_A53(across, across, n);
    luxsCos_64f_A53(lat, cosine, n);
    for (int i = 0; i < n; ++i) up[i] = up[i] * up[i] + here * cosine[i] * across[i] * across[i];
    luxsSqrt_64f_A53(up, up, n);
    luxsAsin_64f_A53(up, up, n);
    for (int i = 0; i < n; ++i) ours[first + i] = 2 * kRadius * up[i];
  }
}

static void by_libm(void) {
  const double here = cos(kLatitude);
  for (int i = 0; i < kElements; ++i) {
    const double up = sin(0.5 * (latitude[i] - kLatitude));
    const double across = sin(0.5 * (longitude[i] - kLongitude));
    theirs[i] = 2 * kRadius * asin(sqrt(up * up + here * cos(latitude[i]) * across * across));
  }
}

int main(void) {
  for (int i = 0; i < kElements; ++i) {
    latitude[i] = spread(i, 0.75487766624669276, -1.5707, 1.5707);
    longitude[i] = spread(i, 0.56984029099805327, -3.1415, 3.1415);
  }
  const double time = shortest(by_luxvm), libm_time = shortest(by_libm);
  double largest = 0;
  for (int i = 0; i < kElements; ++i) largest = further(largest, ours[i], theirs[i]);
  /* Next to the antipode the arc sine is steep: a last place of h becomes micrometres. */
  return report("great circles, km (C)", time, libm_time, largest, 1e-8);
}
