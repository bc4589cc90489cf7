// SPDX-License-Identifier: MIT
#include "bench/arguments.h"

#include "catalog/number_format.h"

#include <math.h>
#include <string.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace bench {
namespace {

constexpr size_t kPageBytes = 4096;

void put(char* to, const ElementType& type, double value) {
  const float narrow = float(value);
  if (type.width == 8)
    memcpy(to, &value, 8);
  else
    memcpy(to, &narrow, 4);
}

}  // namespace

double draw(const Interval& interval, Random& random) {
  if (interval.spread == UNIFORM)
    return interval.low + (interval.high - interval.low) * random.unit();
  const double magnitude = interval.low * pow(interval.high / interval.low, random.unit());
  return interval.spread == SIGNED && random.unit() < 0.5 ? -magnitude : magnitude;
}

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
  Random random{20};
  for (int source = 0; source < 2; ++source) {
    const bool both = filling.elements;
    const Share share = both || input.special_source == source + 1 ? filling.special : Share{};
    size_t next = 0;
    const Interval& interval =
        filling.large && source == 0 ? *large_interval(function) : input.source[source];
    char* to = place(size_t(source));
    for (int32_t i = 0; i < filling.n; ++i) {
      const bool special = share.holds(i);
      const Element* const element =
          both && special ? &(*filling.elements)[next++ % filling.elements->size()] : nullptr;
      for (int part = 0; part < type.parts; ++part, to += type.width)
        if (element)
          store_bits(to, element->operand[source][size_t(part)], type.width);
        else
          put(to, type, special ? input.special : draw(interval, random));
    }
  }
  arrays = {{place(0), place(1)}, {place(2), count == 4 ? place(3) : nullptr}, place(1)};
}

}  // namespace bench
