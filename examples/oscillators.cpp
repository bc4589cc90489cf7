// SPDX-License-Identifier: MIT
//
// A bank of 100,000 oscillators in single precision, moved on by one step: the phase of each, and its
// two outputs.
#include <luxvm.hpp>

#include <algorithm>
#include <vector>

#include "beside_libm.h"

// An oscillator has a phase, a step and two outputs here, 16 bytes. 2048 of them take 32 KB, which
// stay in the second-level cache between the two loops and the call, while arrays of 400 KB would come
// from memory in each. In much shorter chunks, starting the calls would take longer than the sines.
constexpr size_t kChunk = 2048;

constexpr float kTurn = 6.2831853f;

using Numbers = std::vector<float>;
static Numbers start(kElements), step(kElements), volume(kElements), phase(kElements);
static Numbers our_sine(kElements), our_cosine(kElements), sine(kElements), cosine(kElements);

// a21 is enough for sound of 20 bits.
static void by_luxvm() {
  for (size_t first = 0; first < kElements; first += kChunk) {
    const size_t last = std::min(first + kChunk, size_t(kElements));
    const auto part = [=](Numbers& all) { return std::span(all).subspan(first, last - first); };
    for (size_t i = first; i < last; ++i) {
      const float moved = start[i] + step[i];
      phase[i] = moved < kTurn ? moved : moved - kTurn;
    }
    lux::sincos(part(phase), part(our_sine), part(our_cosine), lux::a21);
    for (size_t i = first; i < last; ++i) {
      our_sine[i] *= volume[i];
      our_cosine[i] *= volume[i];
    }
  }
}

static void by_libm() {
  for (size_t i = 0; i < kElements; ++i) {
    const float moved = start[i] + step[i];
    const float x = moved < kTurn ? moved : moved - kTurn;
    sine[i] = volume[i] * std::sin(x);
    cosine[i] = volume[i] * std::cos(x);
  }
}

int main() {
  for (int i = 0; i < kElements; ++i) {
    start[i] = float(spread(i, 0.61803398874989485, 0, 6.2831));
    step[i] = float(spread(i, 0.75487766624669276, 0, 3.1415));
    volume[i] = float(spread(i, 0.56984029099805327, 0, 1));
  }
  const double time = shortest(by_luxvm), libm_time = shortest(by_libm);
  double largest = 0;
  for (size_t i = 0; i < kElements; ++i)
    largest = further(further(largest, our_sine[i], sine[i]), our_cosine[i], cosine[i]);
  // 2^-21 of a21 and 2^-21 for phases up to 9.43, which one of the loops may leave unrounded in a
  // register; a unit of libm's sine, half of one for the product with the volume.
  return report("oscillator bank (C++)", time, libm_time, largest, 0x1p-20 + 1.5 * 0x1p-24);
}
