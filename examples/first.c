/* SPDX-License-Identifier: MIT */
#include <luxvmk3.h>
#include <stdio.h>

int main(void) {
  const double x[4] = {0.0, 1.0, -1.0, 10.0};
  double y[4];
  const LuxStatus status = luxsExp_64f_A53(x, y, 4);
  for (int i = 0; i < 4; ++i) printf("exp(%g) = %.17g\n", x[i], y[i]);
  return status;
}
