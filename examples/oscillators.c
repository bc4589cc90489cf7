/* SPDX-License-Identifier: MIT
 *
 * A bank of 100,000 oscillators in single precision, moved on by one step: the phase of each, and its
 * two outputs.
 */
#define _POSIX_C_SOURCE 199309L
#include <luxvmk3.h>

#include "beside_libm.h"

/* An oscillator has a phase, a step and two outputs here, 16 bytes. 2048 of them take 32 KB, which
 * stay in the second-level cache between the two loops and the call, while arrays of 400 KB would come
 * from memory in each. In much shorter chunks, starting the calls would take longer than the sines. */
enum { kChunk = 2048 };

static const float kTurn = 6.2831853f;

static float start[kElements], step[kElements], volume[kElements];
static float phase[kElements], ours[2][kElements], theirs[2][kElements];

/* A21 is enough for sound of 20 bits. */
static void by_luxvm(void) {
  for (int first = 0; first < kElements; first += kChunk) {
    const int last = first + kChunk < kElements ? first + kChunk : kElements;
    for (int i = first; i < last; ++i) {
      const float moved = start[i] + step[i];
      phase[i] = moved < kTurn ? moved : moved - kTurn;
    }
    luxsSinCos_32f_A21(phase + first, ours[0] + first, ours[1] + first, last - first);
    for (int i = first; i < last; ++i) {
      ours[0][i] *= volume[i];
      ours[1][i] *= volume[i];
    }
  }
}

static void by_libm(void) {
  for (int i = 0; i < kElements; ++i) {
    const float moved = start[i] + step[i];
    const float x = moved < kTurn ? moved : moved - kTurn;
    theirs[0][i] = volume[i] * sinf(x);
    theirs[1][i] = volume[i] * cosf(x);
  }
}

int main(void) {
  for (int i = 0; i < kElements; ++i) {
    start[i] = (float)spread(i, 0.61803398874989485, 0, 6.2831);
    step[i] = (float)spread(i, 0.75487766624669276, 0, 3.1415);
    volume[i] = (float)spread(i, 0.56984029099805327, 0, 1);
  }
  const double time = shortest(by_luxvm), libm_time = shortest(by_libm);
  double largest = 0;
  for (int output = 0; output < 2; ++output)
    for (int i = 0; i < kElements; ++i)
      largest = further(largest, ours[output][i], theirs[output][i]);
  /* 2^-21 of A21 and 2^-21 for phases up to 9.43, which one of the loops may leave unrounded in a
   * register; a unit of libm's sine, half of one for the product with the volume. */
  return report("oscillator bank (C)", time, libm_time, largest, 0x1p-20 + 1.5 * 0x1p-24);
}
