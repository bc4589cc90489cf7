// SPDX-License-Identifier: MIT
#include "bench/arguments.h"

#include "catalog/intervals.h"

#include <math.h>
#include <string.h>

#include <algorithm>
#include <limits>
#include <random>
#include <stdexcept>

namespace bench {
namespace {

constexpr size_t kPageBytes = 4096;

double draw(const Interval& interval, std::mt19937& random) {
  std::uniform_real_distribution<double> unit(0, 1);
  if (interval.spread == UNIFORM)
    return interval.low + (interval.high - interval.low) * unit(random);
  const double magnitude = interval.low * pow(interval.high / interval.low, unit(random));
  return interval.spread == SIGNED && unit(random) < 0.5 ? -magnitude : magnitude;
}

void put(char* to, const ElementType& type, double value) {
  const float narrow = float(value);
  if (type.width == 8)
    memcpy(to, &value, 8);
  else
    memcpy(to, &narrow, 4);
}

}  // namespace

bool has_large_arguments(const Function& function) { return large_interval(function) != nullptr; }

// The arrays stand a quarter of a page apart modulo a page: no load then waits for a store to an
// array whose address agrees in the low twelve bits.
Arguments::Arguments(const Function& function, const Filling& filling) {
  const ElementType& type = function.type;
  const size_t size = size_t(filling.n) * size_t(type.bytes());
  const size_t stride = (size / kPageBytes + 2) * kPageBytes + kPageBytes / 4;
  // The compared functions take the scalar, too, so there is always a second source.
  const size_t count = function.shape.destinations == 2 ? 4 : 3;
  bytes_.resize(count * stride + 2 * kPageBytes + size_t(filling.offset));
  char* base = bytes_.data();
  base += -reinterpret_cast<uintptr_t>(base) % kPageBytes;
  base += filling.offset;
  const auto place = [&](size_t array) { return base + array * stride; };

  const Typical& input = typical_of(function);
  std::mt19937 random(20);
  for (int source = 0; source < 2; ++source) {
    const Share share = input.special_source == source + 1 ? filling.special : Share{};
    const Interval& interval =
        filling.large && source == 0 ? *large_interval(function) : input.source[source];
    char* to = place(size_t(source));
    for (int32_t i = 0; i < filling.n; ++i)
      for (int part = 0; part < type.parts; ++part, to += type.width)
        put(to, type, share.holds(i) ? input.special : draw(interval, random));
  }
  arrays = {{place(0), place(1)}, {place(2), count == 4 ? place(3) : nullptr}, place(1)};
}

}  // namespace bench
