// SPDX-License-Identifier: MIT
//
// Which exception flags a call leaves on either unit, over arguments of every class: a call raises
// what its arguments and results account for and nothing more, whatever the caller's directions,
// and keeps the flags that the caller had.
#include <gtest/gtest.h>
#include <setjmp.h>
#include <signal.h>

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "tests/exceptions.h"

using Bytes = std::vector<unsigned char>;

struct Flags {
  uint16_t x87, sse;
  bool operator==(const Flags&) const = default;
};

static Flags flags() { return {x87_flags(), uint16_t(environment().mxcsr & kAllFlags)}; }

// ---- Arguments

// The magnitudes to try: classes, powers of two from the smallest to the largest, and the numbers
// next to bounds that many kernels have.
static std::vector<double> magnitudes(int width) {
  std::vector<double> all = {0,   0x1p-149, 0x1.8p-130, 1,    0.9999999, 1.0000001, 1.5,  2,
                             2.5, 3,        10,         100,  1e4,       1e6,       0.3,  0.7,
                             88,  89,       104,        1e25, 1e30,      3e38,      1e-5, 5.3};
  for (int e = -126; e < 128; e += 7) all.push_back(std::ldexp(1.25, e));
  if (width == 8) {
    all.insert(all.end(), {0x1p-1074, 0x1.8p-1030, 709, 710, 745, 1e200, 1e300, 1.7e308});
    for (int e = -1022; e < 1024; e += 53) all.push_back(std::ldexp(1.25, e));
  }
  return all;
}

static void put(unsigned char* to, int width, double value) {
  const volatile float narrow = float(value);
  const float single = narrow;
  if (width == 4)
    memcpy(to, &single, 4);
  else
    memcpy(to, &value, 8);
}

template <class U>
static void put_pattern(unsigned char* to, U pattern) {
  memcpy(to, &pattern, sizeof pattern);
}

static void put_quiet_nan(unsigned char* to, int width) {
  if (width == 4)
    put_pattern(to, uint32_t(0x7FC12345));
  else
    put_pattern(to, uint64_t(0x7FF8000012345678));
}

// Real numbers of the two sources and the scalar in turn.
struct Element {
  Bytes source[2], scalar;
};

// ---- One call

// The address sanitizer's build copies by the x87 unit a double that is an argument, and the parts of a
// complex logarithm on their way out of its routine.
static uint16_t flags_of_passing([[maybe_unused]] const Function& f) {
#ifdef __SANITIZE_ADDRESS__
  const bool logarithm = f.type.name == "64fc" && (f.family == "Ln" || f.family == "Log10");
  if ((f.shape.scalar && f.type.width == 8) || logarithm) return kInvalid | kDenormal | kUnderflow;
#endif
  return 0;
}

struct Call {
  const Function& f;
  int len;
  std::array<Bytes, 2> source, destination;
  Bytes scalar;

  Call(const Function& f, int len, const Element& around) : f(f), len(len), scalar(around.scalar) {
    for (int k = 0; k < 2; ++k) {
      for (int i = 0; i < len; ++i)
        source[k].insert(source[k].end(), around.source[k].begin(), around.source[k].end());
      destination[k].resize(source[k].size());
    }
  }
  void put_at(int i, const Element& e) {
    for (int k = 0; k < 2; ++k)
      memcpy(&source[k][i * f.type.bytes()], e.source[k].data(), f.type.bytes());
    scalar = e.scalar;
  }
  Arrays arrays() {
    return {{source[0].data(), source[1].data()},
            {destination[0].data(), destination[1].data()},
            scalar.data()};
  }
  Status run() { return f.call(arrays(), len); }
  Status run_in(const Environment& e, Flags& raised) {
    set(e);
    const Status status = run();
    __asm__ volatile("fwait");  // or the last instruction's trap is lost
    raised = flags();
    set({});
    return status;
  }
};

static sigjmp_buf before_trap;
static void trapped(int) {
  set({});
  siglongjmp(before_trap, 1);
}

class Exceptions : public testing::TestWithParam<Function> {
 protected:
  const Function& f = GetParam();
  int complaints = 0;

  void SetUp() override { signal(SIGFPE, trapped); }

  void complain(const Call& c, int at, const std::string& what) {
    if (++complaints > 6) return;
    std::string arguments;
    const auto add = [&](const unsigned char* from) {
      for (int k = f.type.width - 1; k >= 0; --k) {
        char digits[3];
        snprintf(digits, sizeof digits, "%02X", from[k]);
        arguments += digits;
      }
      arguments += ' ';
    };
    for (int part = 0; part < f.type.parts; ++part) {
      const size_t offset = at * f.type.bytes() + part * f.type.width;
      for (int k = 0; k < f.shape.sources; ++k) add(&c.source[k][offset]);
      if (f.shape.scalar) add(&c.scalar[part * f.type.width]);
    }
    ADD_FAILURE() << f.name << " of " << arguments << "at " << at << " of " << c.len << ": "
                  << what;
  }

  // The scalar is that of element `at`.
  void try_one(const std::vector<Element>& elements, int at) {
    Call c(f, int(elements.size()), elements[0]);
    uint16_t may = flags_of_passing(f);
    for (int i = 0; i < c.len; ++i) {
      c.put_at(i, elements[i]);
      Call alone(f, 1, elements[i]);
      alone.scalar = elements[at].scalar;
      const Status status = alone.run();
      may |= accounted_for(f, alone.arrays(), status);
    }
    c.scalar = elements[at].scalar;
    Flags first;
    c.run_in({}, first);
    const uint16_t extra = (first.x87 | first.sse) & ~may;
    if (extra)
      return complain(c, at, "raises" + names(extra) + (first.sse & extra ? " (MXCSR)" : ""));

    // Flags in MXCSR are the same under every direction; none of the caller's is lost.
    for (const uint32_t sse : {0x2000u, 0x4000u, 0x6000u, 0x8000u}) {
      Flags now;
      const uint16_t x87 = f.counts ? 0 : sse >> 3 & 0xC00;
      c.run_in({uint16_t(kDefaultControl | x87), kDefaultMxcsr | sse}, now);
      if (now.sse != first.sse)
        return complain(c, at,
                        "leaves" + names(now.sse) + " in MXCSR instead of" + names(first.sse));
      if (now.x87 & ~may) return complain(c, at, "raises" + names(now.x87 & ~may));
      const uint32_t raised = kDefaultMxcsr | sse | kAllFlags;
      c.run_in({uint16_t(kDefaultControl | x87), raised}, now);
      if (now.sse != kAllFlags) return complain(c, at, "loses flags of MXCSR");
    }

    // What may not be raised may not trap either.
    const uint16_t masks = may | kInexact | kDenormal;
    Flags now;
    if (sigsetjmp(before_trap, 1) == 0)
      c.run_in({uint16_t(0x340 | masks), uint32_t(masks) << 7}, now);
    else
      complain(c, at, "traps");
  }
};
static std::string test_name(const testing::TestParamInfo<Function>& info) {
  return std::string(info.param.name.substr(4));
}
INSTANTIATE_TEST_SUITE_P(All, Exceptions, testing::ValuesIn(kFunctions), test_name);

TEST_P(Exceptions, AreThoseOfTheArgumentsAndResults) {
  Random random{7};
  const std::vector<double> values = magnitudes(f.type.width);
  const auto [low, high] = ordinary_interval(f);
  const auto element = [&](auto put_number) {
    Element e;
    for (Bytes* bytes : {&e.source[0], &e.source[1], &e.scalar}) {
      bytes->resize(f.type.bytes());
      for (int part = 0; part < f.type.parts; ++part) put_number(&(*bytes)[part * f.type.width]);
    }
    return e;
  };
  const Element ordinary = element(
      [&](unsigned char* to) { put(to, f.type.width, low + (high - low) * random.unit()); });
  // How many numbers an element has decides how many elements are tried.
  const int numbers = f.type.parts * (f.shape.sources + f.shape.scalar);
  const int tries = int(values.size()) * (numbers == 1 ? 6 : numbers == 2 ? 30 : 60);
  for (int k = 0; k < tries; ++k) {
    const Element e = element([&](unsigned char* to) {
      const uint64_t choice = random.next() % 32;
      if (choice == 0) return put_quiet_nan(to, f.type.width);
      double value = choice == 1 ? HUGE_VAL
                     : choice <= 3
                         ? low + (high - low) * random.unit()
                         : values[numbers == 1 ? k % values.size() : random.next() % values.size()];
      if (random.next() & 1) value = -value;
      put(to, f.type.width, value);
    });
    constexpr int kLengths[] = {1, 3, 4, 5, 8, 11, 16, 19, 35};
    const int len = kLengths[random.next() % std::size(kLengths)];
    const int at = int(random.next() % len);
    std::vector<Element> elements(len, random.next() & 1 ? e : ordinary);
    // Some beside numbers of any exponent, each different, zeros and infinities among them.
    if (random.next() % 4 == 0)
      for (Element& other : elements)
        other = element([&](unsigned char* to) {
          const int least = f.type.width == 4 ? -126 : -1022;
          const int exponent = least + int(random.next() % -(2 * least));
          const uint64_t choice = random.next() % 16;
          const double value = choice == 0   ? 0
                               : choice == 1 ? HUGE_VAL
                                             : std::ldexp(1 + random.unit(), exponent);
          put(to, f.type.width, random.next() & 1 ? value : -value);
        });
    elements[at] = e;
    try_one(elements, at);
    if (complaints > 6) break;
  }
}

// Also where it is exact, and so raises nothing by itself.
TEST_P(Exceptions, SubnormalPartsOfComplexSinglesUnderflow) {
  if (f.type.parts != 2 || f.type.width != 4 || f.shape.sources + f.shape.scalar != 1) return;
  const float z[2] = {0x1p-140f, 0};
  Call c(f, 1, {{Bytes(8), Bytes(8)}, Bytes(8)});
  memcpy(c.source[0].data(), z, sizeof z);
  Flags raised;
  c.run_in({}, raised);
  float part[2];
  memcpy(part, c.destination[0].data(), sizeof part);
  for (const float x : part)
    EXPECT_TRUE(std::fpclassify(x) != FP_SUBNORMAL || raised.x87 & kUnderflow);
}

// Nothing has touched the numbers yet, the scalar among them.
TEST_P(Exceptions, AreNoneWhereTheCallIsRefused) {
  Element e;
  for (Bytes* bytes : {&e.source[0], &e.source[1], &e.scalar}) {
    bytes->resize(f.type.bytes());
    for (int part = 0; part < f.type.parts; ++part)
      if (f.type.width == 4)
        put_pattern(&(*bytes)[part * 4], uint32_t(0x7FA00001));  // signalling
      else
        put_pattern(&(*bytes)[part * 8], uint64_t(0x7FF4000000000001));
  }
  Call c(f, 1, e);
  Arrays arrays = c.arrays();
  set({});
  f.call(arrays, 0);
  const uint16_t others = uint16_t(~flags_of_passing(f));
  EXPECT_EQ(names((flags().x87 | flags().sse) & others), "") << "length 0";
  if (f.counts) return;
  arrays.destination[0] = nullptr;
  f.call(arrays, 1);
  EXPECT_EQ(names((flags().x87 | flags().sse) & others), "") << "null pointer";
}
