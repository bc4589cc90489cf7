// SPDX-License-Identifier: MIT
//
// What the tests share: bit patterns, the floating-point environment, guarded memory.
#ifndef LUX_TESTS_SUPPORT_H
#define LUX_TESTS_SUPPORT_H

#include "catalog/number_format.h"
#include "catalog/random.h"

#include <sys/mman.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

// ---- Bit patterns

template <class U>
struct Format {
  static constexpr NumberFormat kFormat = number_format(sizeof(U));
  using Real = std::conditional_t<sizeof(U) == 4, float, double>;
  static constexpr int mantissa = kFormat.mantissa, bias = kFormat.bias;
};

template <class U>
constexpr U kSign = U(Format<U>::kFormat.sign());
template <class U>
constexpr U kInfinity = U(Format<U>::kFormat.infinity());
template <class U>
constexpr U kQuiet = U(Format<U>::kFormat.quiet());
template <class U>
constexpr U kOne = U(Format<U>::kFormat.one());

template <class U>
constexpr bool is_nan(U x) {
  return (x & ~kSign<U>) > kInfinity<U>;
}
template <class U>
constexpr bool is_quiet_nan(U x) {
  return is_nan(x) && (x & kQuiet<U>);
}
// Distance in units of the last place; infinities are next to the largest finite value.
template <class U>
constexpr uint64_t steps_apart(U a, U b) {
  const int64_t p = Format<U>::kFormat.position(a), q = Format<U>::kFormat.position(b);
  return p > q ? uint64_t(p) - uint64_t(q) : uint64_t(q) - uint64_t(p);
}
// Same bits, or quiet NaNs: which payload survives an operation on two NaNs is left open.
template <class U>
constexpr bool same(U a, U b) {
  return a == b || (is_quiet_nan(a) && is_quiet_nan(b));
}

inline uint32_t bits(float x) { return std::bit_cast<uint32_t>(x); }
inline uint64_t bits(double x) { return std::bit_cast<uint64_t>(x); }
template <class U>
const typename Format<U>::Real* reals(const U* p) {
  return reinterpret_cast<const typename Format<U>::Real*>(p);
}
template <class U>
typename Format<U>::Real* reals(U* p) {
  return reinterpret_cast<typename Format<U>::Real*>(p);
}

// Any pattern: every exponent is as likely, and every fourth is a value on the edge of a class.
template <class U>
U any_pattern(Random& random) {
  constexpr int m = Format<U>::mantissa;
  constexpr U edges[] = {0,
                         1,
                         kQuiet<U>,
                         (U(1) << m) - 1,
                         U(1) << m,
                         kOne<U> - 1,
                         kOne<U>,
                         kOne<U> + 1,
                         kOne<U> + (U(m) << m),
                         kInfinity<U> - 1,
                         kInfinity<U>,
                         kInfinity<U> + 1,
                         kInfinity<U> + kQuiet<U>};
  const U value = U(random.next() ^ (random.next() << 32));
  if (random.next() % 4) return value;
  return edges[random.next() % std::size(edges)] | (value & kSign<U>);
}

// ---- The floating-point environment

constexpr uint16_t kDefaultControl = 0x037F;  // extended precision, to nearest, all masked
constexpr uint32_t kDefaultMxcsr = 0x1F80;
constexpr uint16_t kInvalid = 0x01, kDenormal = 0x02, kZeroDivide = 0x04, kOverflow = 0x08,
                   kUnderflow = 0x10, kInexact = 0x20, kAllFlags = 0x3F;

struct Environment {
  uint16_t control = kDefaultControl;
  uint32_t mxcsr = kDefaultMxcsr;
};
inline void set(const Environment& e) {
  __asm__ volatile("fnclex\n\tfldcw %0\n\tldmxcsr %1" : : "m"(e.control), "m"(e.mxcsr) : "memory");
}
inline Environment environment() {
  Environment e;
  __asm__ volatile("fnstcw %0\n\tstmxcsr %1" : "=m"(e.control), "=m"(e.mxcsr) : : "memory");
  return e;
}
inline uint16_t x87_flags() {
  uint16_t status;
  __asm__ volatile("fnstsw %0" : "=m"(status) : : "memory");
  return status & kAllFlags;
}
inline bool x87_stack_empty() {
  uint16_t state[14];
  __asm__ volatile("fnstenv %0\n\tfldenv %0" : "+m"(state) : : "memory");
  return state[4] == 0xFFFF;
}

// ---- Memory between two inaccessible pages

class Guarded {
 public:
  static constexpr size_t kPage = 4096;
  explicit Guarded(size_t pages = 1) : size_(pages * kPage) {
    void* whole = mmap(nullptr, size_ + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (whole == MAP_FAILED) abort();
    start_ = static_cast<unsigned char*>(whole) + kPage;
    if (mprotect(start_, size_, PROT_READ | PROT_WRITE)) abort();
  }
  ~Guarded() { munmap(start_ - kPage, size_ + 2 * kPage); }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;
  unsigned char* start() const { return start_; }
  unsigned char* end() const { return start_ + size_; }

 private:
  size_t size_;
  unsigned char* start_;
};

#endif
