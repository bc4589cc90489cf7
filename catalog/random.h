// SPDX-License-Identifier: MIT
//
// Random numbers that are the same on every machine: splitmix64.
#ifndef LUX_CATALOG_RANDOM_H
#define LUX_CATALOG_RANDOM_H

#include <cstdint>

struct Random {
  uint64_t state;
  uint64_t next() {
    uint64_t z = state += 0x9E3779B97F4A7C15u;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
  }
  uint64_t below(uint64_t bound) { return bound ? next() % bound : 0; }
  double unit() { return double(next() >> 12) * 0x1p-52; }
};

#endif
