// SPDX-License-Identifier: MIT
//
// Bit patterns of the floating-point formats, and stores that really round.
#ifndef LUX_CORE_BITS_H
#define LUX_CORE_BITS_H

#include <stddef.h>
#include <stdint.h>

// Elements of a caller's arrays, which may stand at any byte address.
typedef float __attribute__((aligned(1))) FloatInMemory;
typedef double __attribute__((aligned(1))) DoubleInMemory;

// Unsigned pattern of an element type, the type of one in memory, and the constants of its layout.
template <class E>
struct Format;

template <>
struct Format<float> {
  using Bits = uint32_t;
  using InMemory = FloatInMemory;
  static constexpr int kFractionBits = 23;
  static constexpr int kBias = 127;
  static constexpr Bits kSign = 0x80000000u;
  static constexpr Bits kInf = 0x7F800000u;
  static constexpr Bits kOne = 0x3F800000u;
  static constexpr Bits kQuiet = 0x00400000u;
  static constexpr Bits kDefaultNaN = 0xFFC00000u;
  static constexpr Bits kFraction = 0x007FFFFFu;
  static constexpr Bits kSmallestNormal = 0x00800000u;  // 2^-126
};

template <>
struct Format<double> {
  using Bits = uint64_t;
  using InMemory = DoubleInMemory;
  static constexpr int kFractionBits = 52;
  static constexpr int kBias = 1023;
  static constexpr Bits kSign = 0x8000000000000000u;
  static constexpr Bits kInf = 0x7FF0000000000000u;
  static constexpr Bits kOne = 0x3FF0000000000000u;
  static constexpr Bits kQuiet = 0x0008000000000000u;
  static constexpr Bits kDefaultNaN = 0xFFF8000000000000u;
  static constexpr Bits kFraction = 0x000FFFFFFFFFFFFFu;
  static constexpr Bits kSmallestNormal = 0x0010000000000000u;  // 2^-1022
};

// The element at an address, to read or to write. A template argument would lose the alignment, so
// templates too have plain pointers. Assembly takes any address as it is.
template <class E>
__attribute__((always_inline)) static inline typename Format<E>::InMemory& in_memory(E* element) {
  return *static_cast<typename Format<E>::InMemory*>(element);
}

template <class E>
__attribute__((always_inline)) static inline const typename Format<E>::InMemory& in_memory(
    const E* element) {
  return *static_cast<const typename Format<E>::InMemory*>(element);
}

// Patterns travel between memory and integer registers only: a signalling NaN that passes through
// the x87 unit comes out quiet and raises invalid.
template <class E>
static inline typename Format<E>::Bits load_bits(const E* from) {
  typename Format<E>::Bits pattern;
  __builtin_memcpy(&pattern, from, sizeof pattern);
  return pattern;
}

template <class E>
static inline void store_bits(E* to, typename Format<E>::Bits pattern) {
  __builtin_memcpy(to, &pattern, sizeof pattern);
}

template <class E>
static inline typename Format<E>::Bits magnitude(typename Format<E>::Bits pattern) {
  return pattern & ~Format<E>::kSign;
}

template <class E>
static inline bool is_zero(typename Format<E>::Bits pattern) {
  return magnitude<E>(pattern) == 0;
}

// A NaN quieted, its sign and payload kept; everything else as it is.
template <class E>
static inline typename Format<E>::Bits quieted(typename Format<E>::Bits pattern) {
  return magnitude<E>(pattern) > Format<E>::kInf ? pattern | Format<E>::kQuiet : pattern;
}

// The two words of a 64-bit pattern, moved one by one.
struct Words {
  uint32_t lower, upper;
};

typedef uint32_t __attribute__((may_alias, aligned(1))) WordInMemory;

static inline Words load_words(const void* from) {
  const WordInMemory* const words = static_cast<const WordInMemory*>(from);
  return {words[0], words[1]};
}

static inline void store_words(void* to, Words words) {
  static_cast<WordInMemory*>(to)[0] = words.lower;
  static_cast<WordInMemory*>(to)[1] = words.upper;
}

static inline Words add_words(Words a, Words b) {
  asm("addl %2, %0\n\tadcl %3, %1"
      : "+&r"(a.lower), "+r"(a.upper)
      : "g"(b.lower), "g"(b.upper)
      : "cc");
  return a;
}

// The 32 bits of an element that hold sign and exponent.
template <class E>
static inline uint32_t upper_word(const E* from) {
  return reinterpret_cast<const WordInMemory*>(from)[sizeof(E) / 4 - 1];
}

// Of a pattern.
template <class E>
static constexpr uint32_t upper_of(typename Format<E>::Bits pattern) {
  return uint32_t(pattern >> (8 * sizeof(pattern) - 32));
}

constexpr uint32_t kSignUpper = 0x80000000;  // of either type

template <class E>
struct Upper {
  static constexpr uint32_t kInf = upper_of<E>(Format<E>::kInf);
  static constexpr uint32_t kOne = upper_of<E>(Format<E>::kOne);
  static constexpr uint32_t kFraction = upper_of<E>(Format<E>::kFraction);
  static constexpr uint32_t kSmallestNormal = upper_of<E>(Format<E>::kSmallestNormal);
};

template <class E>
static inline uint32_t upper_magnitude(const E* x) {
  return upper_word(x) & ~kSignUpper;
}

template <class E>
static inline void set_upper_bits(E* to, uint32_t bits) {
  reinterpret_cast<WordInMemory*>(to)[sizeof(E) / 4 - 1] |= bits;
}

// An exponent is added in place to multiply a stored normal number by a power of two.
template <class E>
static inline void add_to_upper_word(E* to, uint32_t addend) {
  reinterpret_cast<WordInMemory*>(to)[sizeof(E) / 4 - 1] += addend;
}

// A load from this address and no other: compilers like to load a copy made word by word, which
// stalls.
static inline long double load_extended(const float* from) {
  long double value;
  asm("flds %1" : "=t"(value) : "m"(*from));
  return value;
}

static inline long double load_extended(const double* from) {
  long double value;
  asm("fldl %1" : "=t"(value) : "m"(*from));
  return value;
}

template <class E>
static inline long double magnitude_of(const E* x) {
  return __builtin_fabsl(load_extended(x));
}

// A bare store: the compiler must neither round in passing nor keep a copy that is not rounded.
static inline void put(float* to, long double value) {
  asm("fstps %0" : "=m"(*to) : "t"(value) : "st");
}

static inline void put(double* to, long double value) {
  asm("fstpl %0" : "=m"(*to) : "t"(value) : "st");
}

// The same; the value stays on the stack.
static inline void put_copy(float* to, long double value) {
  asm("fsts %0" : "=m"(*to) : "t"(value));
}

static inline void put_copy(double* to, long double value) {
  asm("fstl %0" : "=m"(*to) : "t"(value));
}

// The nearest integer, in the rounding direction of the control word.
static inline void put(int32_t* to, long double value) {
  asm("fistpl %0" : "=m"(*to) : "t"(value) : "st");
}

static inline int32_t nearest_integer(long double value) {
  int32_t n;
  put(&n, value);
  return n;
}

// An x87 register holds more than its C++ type says. Passing through memory rounds to the type.
static inline float store_f32(float value) {
  asm volatile("" : "+m"(value));
  return value;
}

static inline double store_f64(double value) {
  asm volatile("" : "+m"(value));
  return value;
}

// 2^exponent for -16382 <= exponent <= 16383.
static inline long double power_of_two(int32_t exponent) {
  union {
    struct {
      uint64_t significand;
      uint16_t exponent;
    } parts;
    long double value;
  } x = {{0x8000000000000000u, uint16_t(exponent + 16383)}};
  return x.value;
}

// ---- Tables

// A table by a pointer that the compiler takes for a new one. It would keep constants that several
// expressions share in a register, and spill them as extended numbers, whose loads cost more than
// those of the doubles.
template <class Table>
static inline const Table& anew(const Table& table) {
  const Table* pointer = &table;
  asm("" : "+r"(pointer));
  return *pointer;
}

#endif
