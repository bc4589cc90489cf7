/* SPDX-License-Identifier: MIT
 *
 * The public headers in C99 and in every C++ standard, and the version record. Built as a program
 * once, and compiled without linking for every other language standard; also with what X11's Xlib.h
 * defines, before (by the command line) and after the headers. A second program has C's own complex
 * numbers in the place of structures.
 */
#include <stdio.h>
#include <string.h>

#include "luxcore.h"
#include "luxvmk3.h"
#include "luxvmk3_scalar.h"

#ifdef XLIB_AFTER
#define Bool int
#define Status int
#define True 1
#define None 0L
#endif
extern Status a_function_of_xlib(void);

typedef char complex_single_is_two_floats[sizeof(Lux32fc) == 8 ? 1 : -1];
typedef char complex_double_is_two_doubles[sizeof(Lux64fc) == 16 ? 1 : -1];
typedef char version_is_one_type[sizeof(LuxLibraryVersion) == sizeof(LibraryVersion) ? 1 : -1];
typedef char version_is_32_bytes[sizeof(LibraryVersion) == 32 ? 1 : -1];

/* "Nov  1 2026": the day right-aligned in two places. */
static int is_date(const char* text) {
  static const char months[] = "JanFebMarAprMayJunJulAugSepOctNovDec";
  char month[4], rest[16];
  int day, year;
  if (strlen(text) != 11 || sscanf(text, "%3s %d %d", month, &day, &year) != 3) return 0;
  sprintf(rest, "%2d %04d", day % 100, year % 10000);
  return strstr(months, month) != NULL && strcmp(text + 4, rest) == 0;
}

/* Every status has a text of its own; any other even number is the exponential's. */
static int texts_differ(void) {
  static const LuxStatus all[] = {LUX_OK,
                                  LUX_BAD_LENGTH,
                                  LUX_NULL_POINTER,
                                  LUX_OVERFLOW,
                                  LUX_UNDERFLOW,
                                  LUX_POLE,
                                  LUX_DOMAIN,
                                  62,
                                  64};
  unsigned i, j;
  for (i = 0; i < sizeof all / sizeof *all; ++i)
    for (j = 0; j < i; ++j)
      if (strcmp(luxvm_status_text(all[i]), luxvm_status_text(all[j])) == 0) return 0;
  return strcmp(luxvm_status_text(2), luxvm_status_text(62)) == 0;
}

#ifdef LUXVM_USE_C_COMPLEX
#include <complex.h>
/* By address, by value and as a result. */
static int c_complex_works(void) {
  const double complex z[2] = {1 + 2 * I, I};
  double complex w[2], one;
  float complex s[1] = {2 * I};
  if (luxsExp_64fc_A53(z, w, 2) != LUX_OK || cabs(w[0] - cexp(z[0])) > 1e-15) return 0;
  one = noxcexp_scalar(z[0]);
  if (creal(one) != creal(w[0]) || cimag(one) != cimag(w[0])) return 0;
  if (luxsPowx_64fc_A53(z, 2 + 0 * I, w, 2) != LUX_OK || w[1] != -1) return 0;
  return luxsPowx_32fc_A24(s, 2.0f, s, 1) == LUX_OK && crealf(s[0]) == -4;
}
#else
static int c_complex_works(void) {
  const Lux64fc z = {0, 0};
  return noxcexp_scalar(z).re == 1;
}
#endif

int main(void) {
  const LibraryVersion* v = luxvmGetLibVersion();
  LuxStatus (*function)(const float*, float*, int32_t) = luxsExp_32f_A24;
  Status status;
  float one = 1, out = 0;
#ifdef LUX_RELEASE
  const int numbers[4] = {LUX_VERSION_NUMBERS};
  char text[32];
  if (v->major != numbers[0] || v->minor != numbers[1]) return 1;
  if (v->major_build != numbers[2] || v->build != numbers[3]) return 1;
  if (LUXVM_VERSION_MAJOR != numbers[0] || LUXVM_VERSION_MINOR != numbers[1]) return 8;
  if (LUXVM_VERSION_MAJOR_BUILD != numbers[2] || LUXVM_VERSION_BUILD != numbers[3]) return 8;
  sprintf(text, LUX_RELEASE ".%d", LUXVM_VERSION_PATCH);
  if (strcmp(text, LUXVM_VERSION_STRING) != 0 || strcmp(text, LUX_PACKAGE_VERSION) != 0) return 8;
  if (strcmp(v->name, "libluxvmk3.so." LUX_RELEASE) != 0) return 3;
  if (strcmp(v->version, LUX_RELEASE) != 0) return 3;
#endif
  if (memcmp(v->target_code, "k3\0", 4) != 0) return 2;
  if (!is_date(v->build_date)) return 4;
  status = function(&one, &out, 1);
  if (status != LUX_OK || out != 2.71828175f) return 5;
  if (luxvmGetLibVersion() != v || luxcoreGetNumThreads() < 1) return 6;
  if (noxfabsl_scalar(-2.0L) != 2.0L) return 7;
  if (!texts_differ()) return 8;
  if (!c_complex_works()) return 9;
  return 0;
}
