// SPDX-License-Identifier: MIT
//
// The layout of single and double numbers, for bit patterns in an integer of their width or of 64
// bits. The programs around the library and its tests carry elements as patterns, since a
// signalling NaN that is passed by value on the x87 stack comes out quiet.
#ifndef LUX_CATALOG_NUMBER_FORMAT_H
#define LUX_CATALOG_NUMBER_FORMAT_H

#include <bit>
#include <cstdint>
#include <cstring>

struct NumberFormat {
  int width, mantissa, bias;  // bytes, bits of the fraction, and of the exponent

  constexpr uint64_t sign() const { return uint64_t(1) << (8 * width - 1); }
  constexpr uint64_t digits() const { return least_normal() - 1; }
  constexpr uint64_t least_normal() const { return uint64_t(1) << mantissa; }
  constexpr uint64_t one() const { return uint64_t(bias) << mantissa; }
  constexpr uint64_t infinity() const { return uint64_t(2 * bias + 1) << mantissa; }
  constexpr uint64_t quiet() const { return uint64_t(1) << (mantissa - 1); }
  constexpr int least_exponent() const { return 1 - bias; }

  constexpr uint64_t magnitude(uint64_t x) const { return x & ~sign(); }
  constexpr bool is_nan(uint64_t x) const { return magnitude(x) > infinity(); }
  constexpr bool is_quiet_nan(uint64_t x) const { return is_nan(x) && (x & quiet()); }
  constexpr bool is_infinite(uint64_t x) const { return magnitude(x) == infinity(); }
  constexpr bool is_finite(uint64_t x) const { return magnitude(x) < infinity(); }
  // Finite numbers and infinities on a line: neighbours differ by one, -0 and +0 are both 0.
  constexpr int64_t position(uint64_t x) const {
    const int64_t distance = int64_t(magnitude(x));
    return x & sign() ? -distance : distance;
  }
  constexpr uint64_t at_position(int64_t position) const {
    return position < 0 ? uint64_t(-position) | sign() : uint64_t(position);
  }
};

constexpr NumberFormat kSingleFormat{4, 23, 127}, kDoubleFormat{8, 52, 1023};

// Of the numbers with that many bytes.
constexpr const NumberFormat& number_format(int width) {
  return width == 4 ? kSingleFormat : kDoubleFormat;
}

inline uint64_t load_bits(const void* from, int width) {
  uint64_t bits = 0;
  memcpy(&bits, from, size_t(width));  // little-endian: the low bytes come first
  return bits;
}
inline void store_bits(void* to, uint64_t bits, int width) { memcpy(to, &bits, size_t(width)); }

inline double as_double(uint64_t bits, int width) {
  return width == 4 ? double(std::bit_cast<float>(uint32_t(bits))) : std::bit_cast<double>(bits);
}

#endif
