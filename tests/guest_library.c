/* SPDX-License-Identifier: MIT
 *
 * A library of a guest's that uses the functions without saying that it needs their library: its
 * constructor may run before theirs.
 */
#include "luxvmk3.h"

float early_results[5];

__attribute__((constructor(101))) static void start(void) {
  const float numbers[5] = {1, 2, 4, 8, 0};
  luxsInv_32f_A21(numbers, early_results, 5);
}
