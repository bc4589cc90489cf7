#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Arctangent of single-precision arrays: quadratics for the best grade, polynomials for the others.

The packed polynomials were fitted with Sollya (remez in z = u^2, weighted for the relative error,
then rounded to singles); their errors are measured here.
"""
import mpmath
import quadratics
import tablegen

POLYNOMIALS = {
    "kAtan21": ["0x1.7ed232p-9", "-0x1.0c2c14p-6", "0x1.61fddap-5", "-0x1.3556b6p-4",
                "0x1.b4e12ap-4", "-0x1.230adcp-3", "0x1.9978f4p-3", "-0x1.5554dcp-2"],
    "kAtan11": ["0x1.96fbb6p-6", "-0x1.816cdap-4", "0x1.7e986ep-3", "-0x1.541a14p-2"],
}
body = "\n".join(
    quadratics.table(mpmath.atan, -mpmath.mpf(1) / 3, 512, 512, "atan")
    + quadratics.polynomials(POLYNOMIALS, mpmath.atan, "atan", "1", mpmath.mpf(1)))
tablegen.main("kernels/trig/generated/atan_32f_table.h", __file__, body)
