// SPDX-License-Identifier: MIT
//
// What every export has in common, over all of them: argument checks, memory it may touch, the
// caller's floating-point state and stack.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "tests/catalog.h"
#include "tests/support.h"

using Bytes = std::vector<unsigned char>;

constexpr unsigned char kCanary = 0xA5;
constexpr int kLengths[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 31, 64, 130};

static const char* running = "";
static void say_who(int) {
  for (const char* text : {"bad memory access in ", running, "\n"})
    if (write(STDERR_FILENO, text, strlen(text)) < 0) break;
  _exit(1);
}

enum Kind { kOrdinary, kWild };

static Bytes values(const Function& f, int count, Kind kind, uint64_t seed) {
  Bytes all(count * f.type.bytes());
  Random random{seed};
  const auto [low, high] = ordinary_interval(f);
  for (size_t at = 0; at < all.size(); at += f.type.width) {
    const volatile double ordinary = low + (high - low) * random.unit();
    if (f.type.width == 4) {
      const volatile float narrow = float(ordinary);
      const uint32_t x = kind == kWild ? any_pattern<uint32_t>(random) : bits(float(narrow));
      memcpy(&all[at], &x, 4);
    } else {
      const uint64_t x = kind == kWild ? any_pattern<uint64_t>(random) : bits(double(ordinary));
      memcpy(&all[at], &x, 8);
    }
  }
  return all;
}

// The arrays of one call: sources and scalar filled, destinations full of canaries.
struct Case {
  const Function& f;
  int len;
  std::array<Bytes, 2> src, dst;
  Bytes scalar;

  Case(const Function& f, int len, Kind kind, uint64_t seed = 1) : f(f), len(len) {
    for (int k = 0; k < 2; ++k) {
      src[k] = values(f, len, kind, seed + 10 * k);
      dst[k].assign(len * f.type.bytes(), kCanary);
    }
    scalar = values(f, 1, kOrdinary, seed + 5);
  }
  Arrays arguments() {
    return {{src[0].data(), src[1].data()}, {dst[0].data(), dst[1].data()}, scalar.data()};
  }
  Status run() { return f.call(arguments(), len); }
};

template <class U>
static bool same_part(const unsigned char* a, const unsigned char* b, uint64_t steps) {
  U x, y;
  memcpy(&x, a, sizeof(U));
  memcpy(&y, b, sizeof(U));
  return same(x, y) || (!is_nan(x) && !is_nan(y) && steps_apart(x, y) <= steps);
}

static void expect_same(const Function& f, const unsigned char* got, const unsigned char* want,
                        int len, const std::string& what, uint64_t steps = 0) {
  for (int at = 0; at < len * f.type.bytes(); at += f.type.width)
    if (!(f.type.width == 4 ? same_part<uint32_t>(got + at, want + at, steps)
                            : same_part<uint64_t>(got + at, want + at, steps))) {
      uint64_t g = 0, w = 0;
      memcpy(&g, got + at, f.type.width);
      memcpy(&w, want + at, f.type.width);
      ADD_FAILURE() << f.name << " " << what << ", length " << len << ", byte " << at << std::hex
                    << ": got " << g << ", wanted " << w;
      return;
    }
}

static void expect_same(const Case& got, const Case& want, const std::string& what,
                        uint64_t steps = 0) {
  for (int k = 0; k < got.f.shape.destinations; ++k)
    expect_same(got.f, got.dst[k].data(), want.dst[k].data(), got.len, what, steps);
}

static bool all_canaries(const unsigned char* begin, const unsigned char* end) {
  return std::all_of(begin, end, [](unsigned char c) { return c == kCanary; });
}

class Frame : public testing::TestWithParam<Function> {
 protected:
  void SetUp() override {
    running = GetParam().name.data();
    signal(SIGSEGV, say_who);
  }
};
static std::string test_name(const testing::TestParamInfo<Function>& info) {
  return std::string(info.param.name.substr(4));
}
INSTANTIATE_TEST_SUITE_P(All, Frame, testing::ValuesIn(kFunctions), test_name);

TEST_P(Frame, ChecksLengthThenPointersAndWritesNothing) {
  const Function& f = GetParam();
  Case c(f, 8, kWild);
  const Arrays good = c.arguments();
  for (const int32_t len : {0, -1, INT32_MIN}) {
    EXPECT_EQ(f.call(good, len), f.counts ? 0 : LUX_BAD_LENGTH);
    EXPECT_EQ(f.call({{}, {}, c.scalar.data()}, len), f.counts ? 0 : LUX_BAD_LENGTH);
  }
  for (int k = 0; k < f.shape.sources + f.shape.destinations && !f.counts; ++k) {
    Arrays bad = good;
    if (k < f.shape.sources)
      bad.source[k] = nullptr;
    else
      bad.destination[k - f.shape.sources] = nullptr;
    EXPECT_EQ(f.call(bad, 8), LUX_NULL_POINTER) << "pointer " << k;
  }
  for (const Bytes& d : c.dst) EXPECT_TRUE(all_canaries(d.data(), d.data() + d.size()));
}

TEST_P(Frame, EveryLengthGivesTheElementsOneByOne) {
  const Function& f = GetParam();
  for (const int len : kLengths) {
    Case whole(f, len, kWild, len), single(f, len, kWild, len);
    const Status status = whole.run();
    Status last = 0;
    for (int i = 0; i < len; ++i) {
      Arrays a = single.arguments();
      for (int k = 0; k < 2; ++k) {
        a.source[k] = single.src[k].data() + i * f.type.bytes();
        a.destination[k] = single.dst[k].data() + i * f.type.bytes();
      }
      const Status one = f.call(a, 1);
      if (one != 0) last = one;
    }
    if (has_special_blocks(f))
      EXPECT_EQ(status != 0, last != 0) << "length " << len;
    else
      EXPECT_EQ(status, f.counts ? len : last) << "length " << len;
    for (int k = 0; k < f.shape.destinations; ++k)
      expect_same(f, whole.dst[k].data(), single.dst[k].data(), len, "against single elements",
                  has_special_blocks(f) ? 1 : neighbours_matter(f));
  }
}

TEST_P(Frame, StaysWithinItsArrays) {
  const Function& f = GetParam();
  std::array<Guarded, 4> pages;
  for (const int len : kLengths)
    for (const bool at_end : {false, true}) {
      Case plain(f, len, kWild, len);
      plain.run();
      const size_t size = len * f.type.bytes();
      unsigned char* place[4];
      for (int k = 0; k < 4; ++k) place[k] = at_end ? pages[k].end() - size : pages[k].start();
      for (int k = 0; k < 2; ++k) memcpy(place[k], plain.src[k].data(), size);
      f.call({{place[0], place[1]}, {place[2], place[3]}, plain.scalar.data()}, len);
      for (int k = 0; k < f.shape.destinations; ++k)
        expect_same(f, place[2 + k], plain.dst[k].data(), len, "beside a guard page");
    }
}

TEST_P(Frame, TakesAnyByteAddress) {
  const Function& f = GetParam();
  for (const int len : {1, 4, 5, 9, 31})
    for (int offset = 0; offset < 16; ++offset) {
      Case plain(f, len, kWild, len);
      plain.run();
      const size_t size = len * f.type.bytes();
      std::array<Bytes, 4> room;
      unsigned char* place[4];
      for (int k = 0; k < 4; ++k) {
        room[k].assign(size + 64, kCanary);
        place[k] = room[k].data() + 16 + (offset + 3 * k) % 16;  // the arrays differ in alignment
      }
      for (int k = 0; k < 2; ++k) memcpy(place[k], plain.src[k].data(), size);
      f.call({{place[0], place[1]}, {place[2], place[3]}, plain.scalar.data()}, len);
      for (int k = 0; k < f.shape.destinations; ++k) {
        expect_same(f, place[2 + k], plain.dst[k].data(), len,
                    "at offset " + std::to_string(offset));
        EXPECT_TRUE(all_canaries(room[2 + k].data(), place[2 + k]) &&
                    all_canaries(place[2 + k] + size, room[2 + k].data() + size + 64))
            << "writes beside the destination";
      }
    }
}

TEST_P(Frame, WorksInPlace) {
  const Function& f = GetParam();
  for (const int len : kLengths)
    for (int d = 0; d < f.shape.destinations; ++d)
      for (int s = 0; s < f.shape.sources; ++s) {
        Case plain(f, len, kWild, len), placed(f, len, kWild, len);
        const Status status = plain.run();
        Arrays a = placed.arguments();
        a.destination[d] = placed.src[s].data();
        EXPECT_EQ(f.call(a, len), status);
        std::swap(placed.dst[d], placed.src[s]);
        expect_same(placed, plain, "in place");
      }
}

// ---- The caller's state

static Status run_in(const Environment& e, Case& c, Environment& after, bool& stack_empty) {
  const Arrays a = c.arguments();
  set(e);
  const Status status = c.f.call(a, c.len);
  stack_empty = x87_stack_empty();
  after = environment();
  set({});
  return status;
}

static void expect_kept(const Environment& e, Case& c, const Case& want, const std::string& what) {
  Environment after;
  bool empty;
  run_in(e, c, after, empty);
  EXPECT_TRUE(empty) << what << ": values left on the x87 stack";
  EXPECT_EQ(after.control, e.control) << what << ": x87 control word";
  EXPECT_EQ(after.mxcsr & ~kAllFlags, e.mxcsr & ~kAllFlags) << what << ": MXCSR";
  expect_same(c, want, what, has_special_blocks(c.f) ? 2 : 0);  // two roundings of the x87 unit
}

constexpr uint16_t kDirections[] = {0x000, 0x400, 0x800, 0xC00};
constexpr uint16_t kPrecisions[] = {0x000, 0x200, 0x300};

TEST_P(Frame, KeepsTheCallersStateAndIsNotMovedByIt) {
  const Function& f = GetParam();
  for (const int len : {1, 7, 64})
    for (const uint16_t direction : kDirections) {
      Case want(f, len, kWild);
      Environment after;
      bool empty;
      // Rint and NearbyInt follow the direction of the x87 unit and nothing else.
      run_in({uint16_t(0x37F | (f.counts ? direction : 0)), kDefaultMxcsr}, want, after, empty);
      for (const uint16_t precision : kPrecisions)
        for (const uint32_t sse : {0x0000u, 0x2000u, 0x4000u, 0x6000u, 0x8000u, 0xE000u}) {
          Case c(f, len, kWild);
          expect_kept({uint16_t(0x7F | direction | precision), kDefaultMxcsr | sse}, c, want,
                      "direction " + std::to_string(direction >> 10) + ", precision " +
                          std::to_string(precision >> 8) + ", MXCSR bits " + std::to_string(sse));
        }
    }
}

TEST_P(Frame, RaisesNothingButInexactOnOrdinaryArrays) {
  const Function& f = GetParam();
  for (const int len : {3, 4, 64}) {
    Case want(f, len, kOrdinary);
    want.run();
    for (const uint16_t direction : kDirections) {
      Case c(f, len, kOrdinary);
      if (f.counts && direction) continue;
      // Everything but inexact would trap.
      expect_kept({uint16_t(0x340 | kInexact | direction), uint32_t(kInexact) << 7}, c, want,
                  "unmasked, direction " + std::to_string(direction >> 10));
    }
  }
}

// int32_t call_shifted(run, arguments, len, shift): calls run(arguments, len) with the stack moved
// down by `shift` bytes from its 16-byte boundary.
extern "C" Status call_shifted(Status (*run)(const Arrays&, int32_t), const Arrays& a, int32_t len,
                               int32_t shift);
__asm__(R"(
  .text
  .globl call_shifted
  .type call_shifted, @function
call_shifted:
  push %ebp
  mov %esp, %ebp
  and $-16, %esp
  sub 20(%ebp), %esp
  push 16(%ebp)
  push 12(%ebp)
  call *8(%ebp)
  leave
  ret
  .size call_shifted, .-call_shifted
)");

TEST_P(Frame, NeedsAStackAlignedToFourBytesOnly) {
  const Function& f = GetParam();
  for (const int len : {3, 9, 64}) {
    Case want(f, len, kWild);
    const Status status = want.run();
    for (const int shift : {0, 4, 8, 12}) {
      Case c(f, len, kWild);
      EXPECT_EQ(call_shifted(f.call, c.arguments(), len, shift), status);
      expect_same(c, want, "stack shifted by " + std::to_string(shift));
    }
  }
}

// Without this the tests above could pass by never changing the direction at all.
TEST(Direction, DecidesWhatRintGives) {
  for (const Function& f : kFunctions) {
    if (!f.counts) continue;
    const float x = 2.5f, wants[] = {2, 2, 3, 2}, minus[] = {-2, -3, -2, -2};
    for (int k = 0; k < 4; ++k)
      for (const float sign : {1.0f, -1.0f}) {
        const float want = sign > 0 ? wants[k] : minus[k], narrow = sign * x;
        const double wide = narrow;
        float got = 0;
        double got_wide = 0;
        const bool single = f.type.width == 4;
        const Arrays a = {
            {single ? (const void*)&narrow : &wide}, {single ? (void*)&got : &got_wide}, nullptr};
        set({uint16_t(0x37F | kDirections[k])});
        const Status status = f.call(a, 1);
        set({});
        EXPECT_EQ(status, 1);
        EXPECT_EQ(single ? double(got) : got_wide, double(want)) << f.name << " direction " << k;
      }
  }
}
