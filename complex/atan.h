// SPDX-License-Identifier: MIT
//
// Complex arc tangent: atan z = -i atanh(iz).
#ifndef LUX_COMPLEX_ATAN_H
#define LUX_COMPLEX_ATAN_H

#include "complex/atanh.h"

__attribute__((always_inline)) static inline Complex64 complex_atan(const Complex64& z) {
  AtanhParts parts;
  if (!atanh_parts(&z.im, &z.re, &parts)) return turned_back(complex_atanh_special(turned(z)));
  return rounded(parts.turn, parts.size);
}

#endif
