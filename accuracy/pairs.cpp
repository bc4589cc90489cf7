// SPDX-License-Identifier: MIT
#include "accuracy/pairs.h"
#include "accuracy/workers.h"
#include "catalog/random.h"

#include <math.h>

#include <algorithm>
#include <bit>
#include <mutex>

namespace bench {
namespace {

using Wide = long double;

constexpr uint32_t kBlock = 1024;  // of which a scalar is the same throughout

struct Pair {
  float x, y;
};

float any_single(Random& random) { return std::bit_cast<float>(uint32_t(random.next())); }

// Of a positive number: one in four as near to 1 as any exponent.
float any_base(Random& random) {
  const uint64_t bits = random.next();
  if (bits & 3) return std::bit_cast<float>(uint32_t(1 + random.below(0x7F7FFFFF)));
  const uint32_t distance = uint32_t(bits >> 8) & ((2u << (bits >> 40) % 24) - 1);
  return std::bit_cast<float>(bits & 4 ? 0x3F800000 - distance : 0x3F800000 + distance);
}

// A power's logarithm, from beyond one end of the range to beyond the other.
double any_logarithm(Random& random) { return random.unit() * 280 - 151; }

// Multiples of 1/8, with bases that have roots: short powers are among theirs.
Pair short_operands(Random& random) {
  const uint64_t bits = random.next();
  const uint32_t root = 1 + uint32_t(bits >> 8) % 64, power = 1u << (bits & 3);
  float x = float(ldexp(1 + double(bits >> 32 & 4095), int(bits >> 44 & 63) - 32));
  if (bits & 16) x = float(pow(root, power));
  return {x, float(int(bits >> 50 & 255) - 64) / 8};
}

Pair for_power(Random& random) {
  const uint32_t kind = uint32_t(random.next() >> 32) % 16;
  if (kind == 0) return {any_single(random), any_single(random)};
  if (kind == 1) return short_operands(random);
  const float x = any_base(random), y = float(any_logarithm(random) / log2(double(x)));
  return kind < 4 ? Pair{-x, rintf(y)} : Pair{x, y};
}

// With the exponent of the pair before, if it has one.
Pair for_power_with(const Pair& before, bool first, Random& random) {
  if (first) {
    constexpr float kDirect[] = {1, 2, 3, 4, 0.5, -0.5, -1, -2};
    const uint64_t bits = random.next();
    if (bits % 4 == 0) return {1, kDirect[bits >> 8 & 7]};
    if (bits % 4 == 1) return {1, rintf(float(random.unit() * 200 - 100))};
    return {1, bits % 4 == 2 ? float(random.unit() * 20 - 10) : for_power(random).y};
  }
  const uint32_t kind = uint32_t(random.next() >> 32) % 16;
  if (kind == 0) return {any_single(random), before.y};
  if (kind == 1) return {short_operands(random).x, before.y};
  const float x = float(exp2(any_logarithm(random) / double(before.y)));
  return {kind < 4 ? -x : x, before.y};
}

// Exponents not far apart.
Pair of_like_size(Random& random) {
  const uint64_t bits = random.next();
  const float x = any_single(random);
  if (bits % 16 == 0) return {x, any_single(random)};
  const int apart = int(bits >> 8 & 63) - 32;
  const int exponent = std::clamp(ilogbf(x), -256, 256) + apart;  // of 0 and NaNs it is INT_MIN
  return {x, float(copysign(ldexp(1 + random.unit(), exponent), bits & 16 ? -1 : 1))};
}

Pair any_pair(Random& random) { return {any_single(random), any_single(random)}; }

template <Pair (*kDraw)(Random&)>
void draw_each(Pair* pairs, Random& random) {
  for (uint32_t i = 0; i < kBlock; ++i) pairs[i] = kDraw(random);
}

void draw_powx(Pair* pairs, Random& random) {
  pairs[0] = for_power_with({}, true, random);
  for (uint32_t i = 1; i < kBlock; ++i) pairs[i] = for_power_with(pairs[i - 1], false, random);
}

// The C library's value, the relative error that it is taken to have at most, and the draw.
struct Row {
  std::string_view family;
  Wide (*expected)(Wide x, Wide y);
  Wide margin;
  void (*draw)(Pair* pairs, Random& random);
};

Wide expected_power(Wide x, Wide y) { return pow(double(x), double(y)); }
Wide quotient(Wide x, Wide y) { return x / y; }
// Of an infinity and a NaN the library's is a NaN.
Wide hypotenuse(Wide x, Wide y) { return isnan(x + y) ? x + y : hypotl(x, y); }

constexpr Row kRows[] = {
    {"Div", quotient, 0x1p-60L, draw_each<any_pair>},
    {"Hypot", hypotenuse, 0x1p-58L, draw_each<of_like_size>},
    {"Atan2", atan2l, 0x1p-58L, draw_each<of_like_size>},
    {"Pow", expected_power, 0x1p-48L, draw_each<for_power>},
    {"Powx", expected_power, 0x1p-48L, draw_powx},
};

const Row* row_of(const Function& function) {
  if (function.type.name != "32f") return nullptr;
  const auto found = std::find_if(std::begin(kRows), std::end(kRows),
                                  [&](const Row& row) { return row.family == function.family; });
  return found == std::end(kRows) ? nullptr : found;
}

uint32_t rounded(Wide x) {
  volatile float single = float(x);
  return std::bit_cast<uint32_t>(float(single));
}

class Trier {
 public:
  explicit Trier(const Function& function)
      : function_(function), row_(*row_of(function)), oracle_(function) {}

  void try_block(Random random, PairCount& count) {
    row_.draw(pairs_, random);
    for (uint32_t i = 0; i < kBlock; ++i) {
      x_[i] = std::bit_cast<uint32_t>(pairs_[i].x);
      y_[i] = std::bit_cast<uint32_t>(pairs_[i].y);
    }
    function_.call({{x_, y_}, {got_, nullptr}, y_}, kBlock);
    for (uint32_t i = 0; i < kBlock; ++i) {
      const Wide value = row_.expected(pairs_[i].x, pairs_[i].y), error = value * row_.margin;
      uint32_t nearest = rounded(value - error);
      const bool is_nan = value != value;
      if (!is_nan && nearest != rounded(value + error)) {
        oracle_.evaluate({x_[i], y_[i]});
        nearest = uint32_t(bench::nearest(oracle_.exact(0), 4));
        ++count.by_mpfr;
      }
      if (is_nan ? number_format(4).is_nan(got_[i]) : got_[i] == nearest) continue;
      ++count.not_nearest;
      if (count.wrong.size() < kWorst) count.wrong.push_back({{x_[i], y_[i]}, got_[i], 0, 0});
    }
    count.tried += kBlock;
  }

 private:
  const Function& function_;
  const Row& row_;
  Oracle oracle_;
  Pair pairs_[kBlock];
  uint32_t x_[kBlock], y_[kBlock], got_[kBlock];
};

}  // namespace

bool has_pairs(const Function& function) { return row_of(function) != nullptr; }

PairCount try_pairs(const Function& function, uint64_t pairs, uint64_t seed, int threads,
                    const Advance& advance, const std::atomic<bool>& stop) {
  const uint64_t blocks = (pairs + kBlock - 1) / kBlock;
  std::atomic<uint64_t> next{0};
  PairCount all;
  std::mutex mutex;
  on_threads(threads, [&](const std::atomic<bool>& failed) {
    const auto trier = std::make_unique<Trier>(function);
    PairCount own;
    // Each block has random numbers of its own, whichever thread tries it.
    for (uint64_t block; !stop && !failed && (block = next++) < blocks;) {
      trier->try_block({Random{seed * 0x100000001B3u + block}.next()}, own);
      if (block % 256 != 0) continue;
      const std::lock_guard lock(mutex);
      if (advance) advance(block * kBlock, pairs);
    }
    const std::lock_guard lock(mutex);
    all.tried += own.tried;
    all.by_mpfr += own.by_mpfr;
    all.not_nearest += own.not_nearest;
    all.wrong.insert(all.wrong.end(), own.wrong.begin(), own.wrong.end());
  });
  all.wrong.resize(std::min<size_t>(all.wrong.size(), kWorst));
  return all;
}

}  // namespace bench
