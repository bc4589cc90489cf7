#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Arcsine of single-precision arrays: quadratics for the best grade, polynomials for the others.

The packed polynomials were fitted with Sollya (remez in z = u^2, weighted for the relative error,
then rounded to singles); their errors are measured here.
"""
import mpmath
import quadratics
import tablegen

POLYNOMIALS = {
    "kAsin21": ["0x1.596d28p-5", "0x1.8c283cp-6", "0x1.747e4ap-5", "0x1.3301e4p-4", "0x1.5555c8p-3"],
    "kAsin11": ["0x1.823f56p-4", "0x1.5209cep-3"],
}
body = "\n".join(
    quadratics.table(mpmath.asin, mpmath.mpf(1) / 6, 512, 256, "asin")
    + quadratics.polynomials(POLYNOMIALS, mpmath.asin, "asin", "1/2", mpmath.mpf(1) / 2))
tablegen.main("kernels/trig/generated/asin_32f_table.h", __file__, body)
