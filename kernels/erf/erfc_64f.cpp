// SPDX-License-Identifier: MIT
//
// erfc of double-precision arrays, on the x87 unit at 64-bit precision, from a = |x|; 2 - erfc(a)
// for negative x, where nothing cancels.
//
//   cell of a from the leading bits of 1 + a, r = a - p, p the middle of the cell,
//   w = r (a + p): a^2 = p^2 + w, so that no square needs more than 64 bits,
//   v = w - j/128, j = round(128 w),
//   erfc(a) = erfc(p) e^-(j/128) (1 + E(v)) (1 + D(r)), D a polynomial of degree seven by cell, E
//   of degree five for e^-v - 1.
//
//   |x| < 14.96875       blocks of four; 64 cells to a binade of 1 + a
//   up to 27.2260...     one by one; 256 cells to a binade. erfc(p) is stored 2^600 times too
//                        large, so that subnormal results are rounded once
//   beyond               +0; 2 for x <= -14.96875
//
// A53 takes erfc(p) and the power from the table in two parts each, A50 rounded to doubles.
//
// D is off by at most 2^-58.5 of the result (2^-60 below 6.9), E by 2^-60.5, w by 2^-64, and the
// roundings of the last steps come to 2^-61.5: 0.02 ulp together beside the last rounding.
//
// Worst errors found: A53 0.5081 ulp at 0x401CF607F3CFC48A, A50 1.91 ulp (sampled against 200
// bits).
#include "kernels/frame.h"
#include "kernels/erf/generated/erfc_64f_table.h"  // kCell, kPower, kExponential
#include "kernels/grid.h"
#include "kernels/screens.h"

constexpr uint32_t kNearBound = 0x402DF000;          // upper word of 14.96875
constexpr uint64_t kUnderflow = 0x403B39DC41E48BFD;  // 27.226017111108366
constexpr uint32_t kFarBits = 0x41800000;            // 16.0, of 1 + a

// By the sign.
struct Side {
  float factor, constant;
};
static const Side kSides[2] = {{1, 0}, {-1, 2}};

// In two parts, or rounded.
template <bool kLong, class Entry>
static inline long double entry(const Entry& e) {
  return kLong ? (long double)e.head + e.tail : (long double)e.head;
}

// r and w of |x| and a cell.
struct Rest {
  long double r, w;
};

static inline Rest rest_of(long double a, const Cell& c) {
  const long double r = a - c.point;
  return {r, r * (a + c.point)};
}

static inline const Power& power_of(const Rest& at) {
  return kPower[int32_t(Grid<128>::index(at.w)) + kPowerZero];
}

template <bool kLong>
static inline long double erfc_of(const Rest& at, const Cell& c, const Power& p) {
  const long double r = at.r, v = at.w - p.point;
  const auto& e = kExponential;
  const long double power = ((((e[0] * v + e[1]) * v + e[2]) * v + e[3]) * v - 1.0f) * v;
  const long double rest =
      ((((((c.d7 * r + c.d6) * r + c.d5) * r + c.d4) * r + c.d3) * r + c.d2) * r + c.d1) * r;
  const long double scale = entry<kLong>(c) * entry<kLong>(p);
  return scale + scale * (power + rest + power * rest);
}

// Bits of 1 + a as a single.
static inline uint32_t one_more(long double a) {
  const float sum = store_f32(float(a + 1.0f));
  return load_bits(&sum);
}

// Up to kNearBound in magnitude. The entries of all elements are looked up first, for one element is
// a chain longer than the processor looks ahead; r and w are cheaper computed twice than kept.
template <bool kLong, int kCount>
static inline void elements(const double* x, double* y) {
  const Cell* cell[kCount];
  const Power* power[kCount];
#pragma GCC unroll 4
  for (int lane = 0; lane < kCount; ++lane) {
    const long double a = magnitude_of(x + lane);
    cell[lane] = kCell + ((one_more(a) - Format<float>::kOne) >> 17);
    power[lane] = &power_of(rest_of(a, *cell[lane]));
  }
#pragma GCC unroll 4
  for (int lane = 0; lane < kCount; ++lane) {
    const Side& side = kSides[upper_word(x + lane) >> 31];
    const Rest at = rest_of(magnitude_of(x + lane), *cell[lane]);
    in_memory(y + lane) =
        double(erfc_of<kLong>(at, *cell[lane], *power[lane]) * side.factor + side.constant);
  }
}

// Not negative, up to kUnderflow.
template <bool kLong>
static void any_element(const double* x, double* y) {
  const uint32_t bits = one_more(load_extended(x));
  if (bits < kFarBits) return elements<kLong, 1>(x, y);
  const Cell& c = kCell[((bits - kFarBits) >> 15) + kFarCell];
  const Rest at = rest_of(load_extended(x), c);
  in_memory(y) = double(erfc_of<kLong>(at, c, power_of(at)) * power_of_two(-kFarScale));
}

template <bool kLong>
static Status erfc_64f(const double* src, double* dst, int32_t len) {
  const Arrays<double> arrays = {src, src, dst, dst};
  return run_kernel<X87Nearest<X87_EXTENDED>, 2>(
      arrays, len,
      [=](int32_t i, int32_t last) {
        return blocks_below<4, 2>(src, dst, kNearBound, i, last, elements<kLong, 4>,
                                  elements<kLong, 2>);
      },
      [&](int32_t i, Status* status) {
        constexpr uint64_t kTwo = 0x4000000000000000;
        const uint64_t x = load_bits(src + i), a = magnitude<double>(x);
        if (upper_magnitude(src + i) < kNearBound) {
          elements<kLong, 1>(src + i, dst + i);
        } else if (a > Format<double>::kInf) {
          store_bits(dst + i, quieted<double>(x));
        } else if (x != a) {
          store_bits(dst + i, kTwo);
        } else if (a < kUnderflow) {
          any_element<kLong>(src + i, dst + i);
        } else {
          store_bits(dst + i, 0);
          if (a != Format<double>::kInf) _ErrorCall(arrays, LUX_UNDERFLOW, i, status);
        }
      });
}

LUX_KERNEL(Erfc, 64f, A53, 1_1) { return erfc_64f<true>(src, dst, len); }
LUX_KERNEL(Erfc, 64f, A50, 1_1) { return erfc_64f<false>(src, dst, len); }
