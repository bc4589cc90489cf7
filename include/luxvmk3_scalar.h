/* SPDX-License-Identifier: MIT
 *
 * luxvm: one number at a time. The roots and magnitudes, the functions in extended precision and
 * the complex functions in double precision on which the library's complex arrays rest.
 *
 * control   all but noxssqrt_scalar and noxdsqrt_scalar take the x87 unit at 64-bit precision,
 *           rounding to nearest, which is how Linux starts a program, and do not set it.
 * reports   none: special values follow the annexes F and G of the C standard; exceptions show as
 *           results and in the flags of the x87 status word, where inexact may be missing or raised
 *           without need.
 * accuracy  of extended results in units of the 64-bit significand's last place, as stated; of
 *           complex results per part, in units of the double's.
 * state     none; any number of threads may call them.
 */
#ifndef LUXVMK3_SCALAR_H
#define LUXVMK3_SCALAR_H

#include "luxvmk3.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Roots and magnitudes -------------------------------------------------------------------- */

/** The correctly rounded square root, under any precision and rounding of the caller's x87 control
 *  word, which comes back as it was. A zero and +infinity give themselves, a NaN comes out quiet; a
 *  negative number gives a NaN, 0xFFC00000 and 0x7FF8A5A55A5A5A5A, and raises the x87 unit's
 *  invalid flag. */
LUX_API float noxssqrt_scalar(float x);
LUX_API double noxdsqrt_scalar(double x);

/** The square root of an extended number, at most 0.502 ulp. A zero and +infinity give themselves,
 *  a NaN comes out quiet; a negative number gives the default NaN and raises the invalid flag. */
LUX_API long double noxsqrtl_scalar(long double x);

/** The magnitude: the sign cleared, also of zeros, infinities and NaNs. The extended one multiplies
 *  by 1 or -1, so it rounds to the x87 unit's precision. */
LUX_API float nox_sabs_scalar(float x);
LUX_API double nox_dabs_scalar(double x);
LUX_API long double noxfabsl_scalar(long double x);

/* ---- Exponentials, logarithms, powers -------------------------------------------------------- */

/** e to the x. At most 1 ulp. Overflows to +infinity and underflows to +0; -infinity gives +0. */
LUX_API long double noxexpl_scalar(long double x);

/** The natural logarithm. At most 1 ulp. 1 gives +0, a zero -infinity (divide-by-zero flag), a
 *  negative number a NaN (invalid flag). */
LUX_API long double noxlogl_scalar(long double x);

/** log(1 + x) without rounding the sum. At most 2 ulp. A zero gives itself, -1 gives -infinity
 *  (divide-by-zero flag), a number below -1 a NaN (invalid flag). */
LUX_API long double noxlog1pl_scalar(long double x);

/** x to the power y, with the special values of C's powl. At most 2 ulp. */
LUX_API long double noxpowl_scalar(long double x, long double y);

/* ---- Trigonometric functions --------------------------------------------------------------------
 *
 * The argument is in radians and of any magnitude; it is reduced exactly. An infinity gives a NaN
 * and raises the invalid flag; odd functions give a zero back as it is.
 */

/** Sine and cosine. At most 1 ulp. */
LUX_API long double noxsinl_scalar(long double x);
LUX_API long double noxcosl_scalar(long double x);
LUX_API void noxsincosl_scalar(long double x, long double* sine, long double* cosine);

/** Tangent. At most 2 ulp. */
LUX_API long double noxtanl_scalar(long double x);

/** Sine and cosine of x degrees. At most 2 ulp; multiples of 90 and the sine of 30, the cosine of
 *  60 degrees and their images are exact. */
LUX_API long double noxsindl_scalar(long double x);
LUX_API long double noxcosdl_scalar(long double x);

/** The finite x less a multiple of pi/4, as r[0] + r[1]: at most pi/4 in magnitude but for what the
 *  last place hides, r[1] below half a unit of r[0]'s last place. Returns the octant: the multiple
 *  taken, modulo 8, always even: x = octant * pi/4 + r[0] + r[1] modulo 2 pi. */
LUX_API int noxreduce_pi04l(long double x, long double r[2]);

/* ---- Inverse trigonometric functions --------------------------------------------------------- */

/** Arc sine, in [-pi/2, pi/2], and arc cosine, in [0, pi]. At most 1 ulp. A magnitude above 1 gives
 *  a NaN (invalid flag); acos(1) is +0. */
LUX_API long double noxasinl_scalar(long double x);
LUX_API long double noxacosl_scalar(long double x);

/** Arc tangent, in [-pi/2, pi/2]. At most 1 ulp. */
LUX_API long double noxatanl_scalar(long double x);

/** The angle of the point (x, y), in [-pi, pi], with the zeros and infinities of C's atan2l. At
 *  most 1 ulp. The second one gives degrees, at most 2 ulp, exact at multiples of 45. */
LUX_API long double noxatan2l_scalar(long double y, long double x);
LUX_API long double noxatan2dl_scalar(long double y, long double x);

/* ---- Hyperbolic and inverse hyperbolic functions ------------------------------------------------
 *
 * At most 2 ulp. Odd functions give a zero back as it is.
 */

/** Hyperbolic sine and cosine; they overflow only where the result does. */
LUX_API long double noxsinhl_scalar(long double x);
LUX_API long double noxcoshl_scalar(long double x);
LUX_API void noxsinhcoshl_scalar(long double x, long double* sine, long double* cosine);

/** Hyperbolic tangent. */
LUX_API long double noxtanhl_scalar(long double x);

/** Inverse hyperbolic sine. */
LUX_API long double noxasinhl_scalar(long double x);

/** Inverse hyperbolic cosine; 1 gives +0, a number below 1 a NaN (invalid flag). */
LUX_API long double noxacoshl_scalar(long double x);

/** Inverse hyperbolic tangent; +-1 give infinities (divide-by-zero flag), beyond a NaN (invalid
 *  flag). */
LUX_API long double noxatanhl_scalar(long double x);

/* ---- Complex functions --------------------------------------------------------------------------
 *
 * By value, in the i386 convention for structures: the result's address comes first and the callee
 * pops it. The single-precision arrays round these results once more.
 */

/** The principal square root: real part at least 0, at most 0.51 ulp. On the negative real axis a
 *  finite result has a positive imaginary part whatever the sign of the zero. */
LUX_API Lux64fc noxcsqrt_scalar(Lux64fc z);

/** Exponential, sine, cosine and their hyperbolic partners: at most 0.52 ulp. */
LUX_API Lux64fc noxcexp_scalar(Lux64fc z);
LUX_API Lux64fc noxcsin_scalar(Lux64fc z);
LUX_API Lux64fc noxccos_scalar(Lux64fc z);
LUX_API Lux64fc noxcsinh_scalar(Lux64fc z);
LUX_API Lux64fc noxccosh_scalar(Lux64fc z);

/** Tangent and hyperbolic tangent: at most 0.55 ulp. */
LUX_API Lux64fc noxctan_scalar(Lux64fc z);
LUX_API Lux64fc noxctanh_scalar(Lux64fc z);

/** Natural and decimal logarithm, cut along the negative real axis: at most 0.55 ulp. */
LUX_API Lux64fc noxclog_scalar(Lux64fc z);
LUX_API Lux64fc noxclog10_scalar(Lux64fc z);

/** Arc tangent and inverse hyperbolic tangent: at most 0.6 ulp. */
LUX_API Lux64fc noxcatan_scalar(Lux64fc z);
LUX_API Lux64fc noxcatanh_scalar(Lux64fc z);

/** Arc sine, arc cosine and their hyperbolic partners: at most 0.51 ulp. */
LUX_API Lux64fc noxcasin_scalar(Lux64fc z);
LUX_API Lux64fc noxcacos_scalar(Lux64fc z);
LUX_API Lux64fc noxcasinh_scalar(Lux64fc z);
LUX_API Lux64fc noxcacosh_scalar(Lux64fc z);

/** base to the power exponent, the principal value: at most 2^-52 of the result's magnitude in the
 *  plane while |exponent log base| < 2^60. The power 0 gives 1 for every base, a zero base 0 where
 *  the exponent's real part is positive. */
LUX_API Lux64fc noxcpow_scalar(Lux64fc base, Lux64fc exponent);

#ifdef __cplusplus
}
#endif

#endif
