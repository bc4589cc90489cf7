/* SPDX-License-Identifier: MIT
 *
 * A program that defines noxsError and noxdError itself sees every element that the library
 * reports, and no exception flag is raised. Link with -rdynamic, so that the library finds these
 * functions.
 */
#include <luxvmk3.h>
#include <stdio.h>

/* A threaded call reports from several threads at once; one printf is one whole line. */
int32_t noxsError(int32_t code, int32_t index, const float* argument1, const float* argument2,
                  const float* result1, const float* result2, const char* name) {
  (void)argument1, (void)argument2, (void)result1, (void)result2, (void)name;
  printf("  single: code %d (%s) at index %d\n", (int)code, luxvm_status_text(code), (int)index);
  return code;
}

/* The pointers are those of the arrays, so argument1[index] is the reported element. */
int32_t noxdError(int32_t code, int32_t index, const double* argument1, const double* argument2,
                  const double* result1, const double* result2, const char* name) {
  (void)argument2, (void)result1, (void)result2, (void)name;
  printf("  double: code %d (%s) at index %d, argument %g\n", (int)code, luxvm_status_text(code),
         (int)index, argument1[index]);
  return code;
}

int main(void) {
  const double x[8] = {0.0, 1.0, 710.0, -2.0, -746.0, 3.0, 4.0, 5.0};
  const float z[4] = {2.0f, 0.0f, 4.0f, -0.0f};
  double y[8];
  float w[4];
  Status status;

  printf("luxsExp_64f_A53\n");
  status = luxsExp_64f_A53(x, y, 8);
  printf("  status %d\n", (int)status);

  printf("luxsInv_64f_A53\n");
  status = luxsInv_64f_A53(x, y, 8);
  printf("  status %d\n", (int)status);

  printf("luxsInv_32f_A24\n");
  status = luxsInv_32f_A24(z, w, 4);
  printf("  status %d\n", (int)status);
  return 0;
}
