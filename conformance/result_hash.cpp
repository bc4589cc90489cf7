// SPDX-License-Identifier: MIT
#include "conformance/result_hash.h"

#include "catalog/intervals.h"
#include "catalog/number_format.h"
#include "catalog/random.h"
#include "catalog/thread_count.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>
#include <vector>

namespace bench {
namespace {

// ---- What stands in lists

struct Kernels {
  std::string_view family, type;
};
constexpr Kernels kProcessorDependent[] = {
#define PROCESSOR_DEPENDENT(family, type) {#family, #type},
#include "conformance/processor_dependent.def"
};

struct Published {
  std::string_view name;
  uint64_t hash;
};
constexpr Published kPublished[] = {
#define RESULT_HASH(name, hash) {#name, hash},
#include "conformance/result_hashes.def"
    {}};

// ---- Numbers, by integer arithmetic alone

constexpr int kFraction = 32;  // bits of a fixed-point number below 1

// A fixed-point number; the digits that it lacks come from `more`.
uint64_t from_fixed(const NumberFormat& format, int64_t fixed, uint64_t more) {
  if (fixed == 0) return 0;
  const uint64_t magnitude = fixed < 0 ? 0 - uint64_t(fixed) : uint64_t(fixed);
  const int shift = std::countl_zero(magnitude);
  const uint64_t top = magnitude << shift | (shift ? more >> (64 - shift) : 0);
  const uint64_t exponent = uint64_t(format.bias + 63 - shift - kFraction) << format.mantissa;
  return (fixed < 0 ? format.sign() : 0) | exponent |
         (top >> (63 - format.mantissa) & format.digits());
}

uint64_t pattern(const NumberFormat& format, double x) {
  return format.width == 8 ? std::bit_cast<uint64_t>(x) : std::bit_cast<uint32_t>(float(x));
}

uint64_t draw(const NumberFormat& format, const Interval& interval, Random& random) {
  if (interval.spread == UNIFORM) {
    const auto fixed = [](double x) { return int64_t(x * (int64_t(1) << kFraction)); };
    const int64_t low = fixed(interval.low), span = fixed(interval.high) - low;
    const int64_t value = low + int64_t(random.below(uint64_t(span)));
    return from_fixed(format, value, span ? random.next() : 0);
  }
  const uint64_t low = pattern(format, interval.low);
  const uint64_t x = low + random.below(pattern(format, interval.high) - low);
  return interval.spread == SIGNED && random.next() % 2 ? x | format.sign() : x;
}

uint64_t special(const NumberFormat& f, Random& random) {
  const uint64_t one = f.one();
  const uint64_t magnitudes[] = {0,
                                 1,
                                 f.digits(),
                                 f.least_normal(),
                                 one - 1,
                                 one,
                                 one + 1,
                                 one + (uint64_t(f.mantissa) << f.mantissa),
                                 f.infinity() - 1,
                                 f.infinity(),
                                 f.infinity() + 1 + random.below(f.quiet() - 1),
                                 f.infinity() + f.quiet() + random.below(f.quiet())};
  return magnitudes[random.below(std::size(magnitudes))] | (random.next() % 2 ? f.sign() : 0);
}

// ---- The arguments of a function

using Numbers = std::vector<uint64_t>;  // real ones, two for a complex element

struct Batch {
  Numbers source[2], scalar;
  int32_t len;
};

constexpr int32_t kTypicalLen = 4096, kSpecialLen = 1024, kScalars = 24, kScalarLen = 64;
constexpr int32_t kRun = 8;             // elements of one exponent, half of them negative
constexpr uint64_t kSpecialEvery = 11;  // so that specials meet every lane
constexpr int32_t kShort = 12;
constexpr int32_t kLongest = 1 << 20;  // to see whether threads change anything

class Arguments {
 public:
  explicit Arguments(const Function& f)
      : f(f), format(number_format(f.type.width)), typical_(typical_of(f)) {}

  Batch typical(int32_t len) {
    Batch batch;
    batch.len = len;
    for (int k = 0; k < 2; ++k)
      for (int32_t i = 0; i < len * f.type.parts; ++i) batch.source[k].push_back(ordinary(k));
    for (int part = 0; part < f.type.parts; ++part) batch.scalar.push_back(ordinary(1));
    return batch;
  }

  // The first source takes every exponent; the second one and imaginary parts any or a moderate
  // one.
  Batch every_exponent() {
    const int32_t exponents = 2 * format.bias + 1;
    Batch batch = typical(exponents * kRun);
    for (int32_t e = 0; e < exponents; ++e)
      for (int part = 0; part < 2 * f.type.parts; ++part) {
        const uint64_t exponent = part ? any_exponent() : uint64_t(e);
        Numbers& numbers = batch.source[part / f.type.parts];
        for (int32_t i = 0; i < kRun; ++i)
          numbers[(e * kRun + i) * f.type.parts + part % f.type.parts] =
              exponent << format.mantissa | (random.next() & format.digits()) |
              (i < kRun / 2 ? 0 : format.sign());
      }
    return batch;
  }

  Batch with_specials() {
    Batch batch = typical(kSpecialLen);
    for (Numbers& numbers : batch.source)
      for (uint64_t& x : numbers)
        if (random.below(kSpecialEvery) == 0) x = special(format, random);
    return batch;
  }

  Batch special_scalar() {
    Batch batch = typical(kScalarLen);
    for (uint64_t& x : batch.scalar) x = special(format, random);
    return batch;
  }

  std::vector<Batch> all() {
    std::vector<Batch> batches = {typical(kTypicalLen), every_exponent(), with_specials()};
    for (int i = 0; f.shape.scalar && i < kScalars; ++i) batches.push_back(special_scalar());
    for (int32_t len = 1; len <= kShort; ++len) batches.push_back(typical(len));
    return batches;
  }

 private:
  uint64_t ordinary(int source) { return draw(format, typical_.source[source], random); }
  uint64_t any_exponent() {
    return random.next() % 2 ? random.below(uint64_t(2 * format.bias + 1))
                             : uint64_t(format.bias - 4) + random.below(8);
  }

  const Function& f;
  const NumberFormat format;
  const Typical& typical_;
  Random random{2026};
};

// ---- Calls

constexpr uintptr_t kAlignment = 64;

class Array {
 public:
  Array(size_t size, int offset) : memory(size + 2 * kAlignment), size(size) {
    start = memory.data() + -reinterpret_cast<uintptr_t>(memory.data()) % kAlignment + offset;
  }
  Array(const Numbers& numbers, int width, int offset)
      : Array(numbers.size() * size_t(width), offset) {
    char* to = start;
    for (const uint64_t x : numbers) {
      memcpy(to, &x, size_t(width));
      to += width;
    }
  }
  Array(const Array&) = delete;
  std::string bytes() const { return {start, size}; }

  char* start;

 private:
  std::vector<char> memory;
  size_t size;
};

Conditions controls() {
  Conditions c;
  asm volatile("fnstcw %0\n\tstmxcsr %1" : "=m"(c.x87_control), "=m"(c.mxcsr) : : "memory");
  return c;
}
// The control words of the conditions until the end of the block.
class Imposed {
 public:
  explicit Imposed(const Conditions& c) { set(c); }
  ~Imposed() { set(before); }
  Imposed(const Imposed&) = delete;

 private:
  static void set(const Conditions& c) {
    asm volatile("fldcw %0\n\tldmxcsr %1" : : "m"(c.x87_control), "m"(c.mxcsr) : "memory");
  }
  const Conditions before = controls();
};

// NaNs become the default one where several could have met.
void settle_nans(const Function& f, std::string& results) {
  if (f.shape.sources * f.type.parts == 1 && !f.shape.scalar) return;
  const NumberFormat format = number_format(f.type.width);
  const uint64_t settled = format.infinity() + format.quiet();
  for (size_t at = 0; at < results.size(); at += size_t(format.width)) {
    if (format.is_nan(load_bits(&results[at], format.width)))
      store_bits(&results[at], settled, format.width);
  }
}

struct Outcome {
  std::string results;  // of one destination behind the other
  Status status;
};

Outcome call(const Function& f, const Batch& batch, const Conditions& conditions) {
  const int width = f.type.width, offset = conditions.offset;
  const size_t size = size_t(batch.len) * size_t(f.type.bytes());
  // Each array has another alignment when the offset is odd.
  const Array first(batch.source[0], width, offset), second(batch.source[1], width, 2 * offset),
      scalar(batch.scalar, width, 0);
  Array destination(size, 3 * offset), other(size, 4 * offset);
  Outcome outcome;
  {
    const Imposed imposed(conditions);
    outcome.status = f.call(
        {{first.start, second.start}, {destination.start, other.start}, scalar.start}, batch.len);
  }
  outcome.results = destination.bytes();
  if (f.shape.destinations == 2) outcome.results += other.bytes();
  settle_nans(f, outcome.results);
  return outcome;
}

// The batch over and over.
Batch repeated(const Batch& batch, int32_t times) {
  Batch longer{{}, batch.scalar, batch.len * times};
  for (int k = 0; k < 2; ++k)
    for (int32_t i = 0; i < times; ++i)
      longer.source[k].insert(longer.source[k].end(), batch.source[k].begin(),
                              batch.source[k].end());
  return longer;
}

class ThreadCount {
 public:
  explicit ThreadCount(int32_t threads) : before(thread_count()) { set_thread_count(threads); }
  ~ThreadCount() { set_thread_count(before); }
  ThreadCount(const ThreadCount&) = delete;

 private:
  int32_t before;
};

}  // namespace

uint64_t FixedResults::hash() const {
  uint64_t hash = 0xCBF29CE484222325u;
  for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3u;
  return hash;
}

FixedResults fixed_results(const Function& function, const Conditions& conditions) {
  const ThreadCount one(1);
  const Imposed usual({});  // the arguments, too, must not follow the caller's settings
  FixedResults all;
  for (const Batch& batch : Arguments(function).all()) {
    const Outcome outcome = call(function, batch, conditions);
    all.bytes += outcome.results;
    all.bytes.append(reinterpret_cast<const char*>(&outcome.status), sizeof outcome.status);
    all.elements += batch.len;
  }
  return all;
}

std::optional<bool> same_over_threads(const Function& function, int32_t threads,
                                      int32_t threshold) {
  if (threshold > kLongest) return {};
  const Batch batch = Arguments(function).typical(kTypicalLen);
  const int32_t times = std::max(threshold, 100 * threads) / batch.len + 1;
  const auto run = [&](int32_t count) {
    const ThreadCount many(count);
    return call(function, repeated(batch, times), {}).results;
  };
  return run(threads) == run(1);
}

std::optional<uint64_t> published_hash(const Function& function) {
  for (const Published& published : kPublished)
    if (published.name == function.name) return published.hash;
  return {};
}

bool processor_dependent(const Function& function) {
  return std::any_of(std::begin(kProcessorDependent), std::end(kProcessorDependent),
                     [&](const Kernels& k) { return function.is(k.family, k.type); });
}

}  // namespace bench
