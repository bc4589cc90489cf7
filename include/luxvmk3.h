/* SPDX-License-Identifier: MIT
 *
 * luxvm: element-wise math functions over arrays, for 32-bit x86 Linux.
 *
 *   luxs<Function>_<type>_A<bits>(sources, destinations, length)
 *
 * types    32f float, 64f double, 32fc and 64fc complex (real part first)
 * bits     correct significand bits that the name guarantees: A11, A21, A24 for the single types,
 *          A50, A53 for the double ones. The rounding functions are exact and carry no grade.
 * arrays   `len` elements each, any byte alignment. A destination may be exactly one of the
 *          sources; arrays that overlap in part give undefined results.
 * returns  a LuxStatus. When it is negative nothing was written. Positive codes are warnings: every
 *          element has its result, and the code is that of the last element reported.
 * state    the caller's x87 control word and MXCSR come back as they were, exception masks are
 *          never changed, and results do not depend on the caller's rounding or precision settings
 *          but where a family says so. Denormals-are-zero is left as the caller set it.
 * threads  long arrays are cut into slices that run in OpenMP threads (see the README); the graded
 *          functions may be called from any number of threads at once.
 */
#ifndef LUXVMK3_H
#define LUXVMK3_H

#include <stdint.h>

/** The version of this header: the release, whose first two numbers are those of the libraries' file
 *  names, and the numbers of its build. luxvmGetLibVersion tells those of the library that runs. */
#define LUXVM_VERSION_MAJOR 5
#define LUXVM_VERSION_MINOR 2
#define LUXVM_VERSION_PATCH 0
#define LUXVM_VERSION_MAJOR_BUILD 108
#define LUXVM_VERSION_BUILD 348
#define LUXVM_VERSION_STRING "5.2.0"

#if defined(__GNUC__)
#define LUX_API __attribute__((visibility("default")))
#else
#define LUX_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Result of every vector function. */
typedef int32_t LuxStatus;

enum {
  LUX_OK = 0,            /**< success, nothing to report */
  LUX_BAD_LENGTH = -6,   /**< length below 1; nothing was written */
  LUX_NULL_POINTER = -8, /**< a required pointer is null; nothing was written */
  LUX_OVERFLOW = 12,     /**< a finite argument gave an infinity that is no pole */
  LUX_UNDERFLOW = 17,    /**< a result that is not zero was rounded to zero */
  LUX_POLE = 18,         /**< infinite result of a finite argument: division by zero, log of zero */
  LUX_DOMAIN = 19        /**< argument outside the domain; the result is a NaN */
};

/** One complex single and one complex double: real part, imaginary part. A C program that defines
 *  LUXVM_USE_C_COMPLEX before it includes this header has C's own complex numbers for them, which
 *  lie in memory and are passed in the same way. */
#if defined(LUXVM_USE_C_COMPLEX) && !defined(__cplusplus)
typedef float _Complex Lux32fc;
typedef double _Complex Lux64fc;
#else
typedef struct {
  float re, im;
} Lux32fc;
typedef struct {
  double re, im;
} Lux64fc;
#endif

/** The library's version record. */
typedef struct {
  int32_t major;
  int32_t minor;
  int32_t major_build;
  int32_t build;
  char target_code[4];    /**< two characters and two zero bytes */
  const char* name;       /**< the library's file name */
  const char* version;    /**< "major.minor" */
  const char* build_date; /**< month, day, year: "Nov 21 2026" */
} LuxLibraryVersion;

/* The same without the prefix, unless another header has a macro of that name, as X11's Xlib.h has,
 * or the program wants the names for itself and defines LUX_NO_SHORT_NAMES. */
#ifndef LUX_NO_SHORT_NAMES
#ifndef Status
typedef LuxStatus Status;
#endif
#ifndef LibraryVersion
typedef LuxLibraryVersion LibraryVersion;
#endif
#endif

/** The version record: static, owned by the library, never null. */
LUX_API const LuxLibraryVersion* luxvmGetLibVersion(void);

/** What a status means, in a few words: a static text for every value. */
static inline const char* luxvm_status_text(LuxStatus status) {
  switch (status) {
    case LUX_OK:
      return "nothing to report";
    case LUX_BAD_LENGTH:
      return "length below 1, nothing was written";
    case LUX_NULL_POINTER:
      return "null pointer, nothing was written";
    case LUX_OVERFLOW:
      return "overflow";
    case LUX_UNDERFLOW:
      return "underflow to zero";
    case LUX_POLE:
      return "infinite result at a pole";
    case LUX_DOMAIN:
      return "argument outside the domain";
    default: /* of luxsExp_64f_A50 and luxsExp_64f_A53 */
      return status > 0 && status <= 62 && status % 2 == 0 ? "subnormal exponential"
                                                           : "no status of this library";
  }
}

/* ---- Reciprocal and division ----------------------------------------------------------------- */

/** dst[i] = 1 / src[i].
 *
 *  Accuracy: 32f correctly rounded, 0.5 ulp (largest found 0.5000); 64f at most 1 ulp (largest
 *  found 0.5005).
 *  All grades of 32f are one computation.
 *  A zero gives the infinity of its sign, code LUX_POLE; infinities give signed zeros; a NaN comes
 *  out quiet. Overflow of 1/x for a tiny subnormal gives infinity without a code.
 *  64f shares one division among four elements when their product fits the single range, so the
 *  last bit of a result may depend on its three neighbours.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or LUX_POLE. */
LUX_API LuxStatus luxsInv_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsInv_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsInv_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsInv_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsInv_64f_A53(const double* src, double* dst, int32_t len);

/** dst[i] = src1[i] / src2[i].
 *
 *  Accuracy: 32f correctly rounded, 0.5 ulp (largest found 0.5000); 64f at most 1 ulp (largest
 *  found 0.5006).
 *  32f is correctly rounded, and all grades are one computation.
 *  A zero divisor is reported with LUX_POLE: in 32f unless the dividend is a NaN, in 64f always;
 *  the stored value is the IEEE quotient (infinity, or a NaN for 0/0). Infinities, NaNs, overflow
 *  and underflow give the IEEE quotient and no code.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or LUX_POLE. */
LUX_API LuxStatus luxsDiv_32f_A11(const float* src1, const float* src2, float* dst, int32_t len);
LUX_API LuxStatus luxsDiv_32f_A21(const float* src1, const float* src2, float* dst, int32_t len);
LUX_API LuxStatus luxsDiv_32f_A24(const float* src1, const float* src2, float* dst, int32_t len);
LUX_API LuxStatus luxsDiv_64f_A50(const double* src1, const double* src2, double* dst, int32_t len);
LUX_API LuxStatus luxsDiv_64f_A53(const double* src1, const double* src2, double* dst, int32_t len);

/* ---- Square root and its reciprocal ---------------------------------------------------------- */

/** dst[i] = the square root of src[i].
 *
 *  Accuracy: 32f at most 0.99 ulp (largest found 0.8890); 64f at most 1 ulp (largest found 0.7034).
 *  It starts from the processor's own estimate, so in 32f last bits and largest error differ
 *  between processors; the bound holds on any. Squares of integers give the integer. All grades of a
 *  type are one computation.
 *  A zero gives itself, sign kept; +infinity itself; a NaN comes out quiet: no code. A negative
 *  number or -infinity gives a NaN, 0xFFC00000 in 32f and 0x7FF8A5A55A5A5A5A in 64f, with
 *  LUX_DOMAIN. Where denormals-are-zero is set, 32f promises results of normal arguments only.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or LUX_DOMAIN. */
LUX_API LuxStatus luxsSqrt_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsSqrt_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsSqrt_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsSqrt_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsSqrt_64f_A53(const double* src, double* dst, int32_t len);

/** dst[i] = 1 over the square root of src[i].
 *
 *  Accuracy: 32f at most 0.995 ulp (largest found 0.9785); 64f at most 1 ulp (largest found
 *  0.7878). Other processors have other last bits in 32f, as for Sqrt: an Intel Xeon up to 0.9846.
 *  All grades of a type are one computation.
 *  A zero gives the infinity of its sign with LUX_POLE; a negative number or -infinity a NaN,
 *  0xFFC00000 in 32f and 0x7FF8A5A55A5A5A5A in 64f, with LUX_DOMAIN; +infinity gives +0 and a NaN
 *  comes out quiet: no code.
 *  32f works in blocks of eight. A block that holds a zero, a subnormal, a negative number, an
 *  infinity or a NaN is computed on the x87 unit under the caller's precision and rounding, so the
 *  last bits of its ordinary results may differ: at most 1.0001 ulp, 2 ulp at 24 bits. All its
 *  zeros are reported before its negative numbers. Where denormals-are-zero is set, 32f promises
 *  results of normal arguments only.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or the code of the last element reported. */
LUX_API LuxStatus luxsInvSqrt_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsInvSqrt_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsInvSqrt_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsInvSqrt_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsInvSqrt_64f_A53(const double* src, double* dst, int32_t len);

/* ---- Cube root ------------------------------------------------------------------------------- */

/** dst[i] = cube root of src[i], with the sign of src[i].
 *
 *  Accuracy: 32f at most 1 ulp (largest found 0.6063); 64f at most 1 ulp (largest found 0.5011).
 *  All grades of a type are one computation.
 *  Zeros, infinities and their signs pass, a NaN comes out quiet; subnormals have their cube root.
 *  Nothing is reported. Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsCbrt_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsCbrt_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsCbrt_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsCbrt_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsCbrt_64f_A53(const double* src, double* dst, int32_t len);

/** dst[i] = 1 over the cube root of src[i], with the sign of src[i].
 *
 *  Accuracy: 32f A24 correctly rounded, 0.5 ulp (largest found 0.5000), A21 relative 2^-21 (largest
 *  found 2^-23.16), A11 relative 2^-11 (largest found 2^-14.93); 64f at most 1 ulp (largest found
 *  0.5025). Both grades of 64f are one computation.
 *  Special values:
 *    +0 and -0 give +infinity and -infinity with LUX_POLE;
 *    +infinity and -infinity give +0 and -0, a NaN comes out quiet: no code.
 *  Subnormals are computed like any number.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or the code of the last element reported. */
LUX_API LuxStatus luxsInvCbrt_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsInvCbrt_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsInvCbrt_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsInvCbrt_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsInvCbrt_64f_A53(const double* src, double* dst, int32_t len);

/* ---- Powers ---------------------------------------------------------------------------------- */

/** dst[i] = src1[i] to the power src2[i].
 *
 *  Accuracy: 32f A24 correctly rounded, 0.5 ulp (largest found 0.5000), A21 relative 2^-21 (largest
 *  found 2^-23.03), A11 relative 2^-11 (largest found 2^-15.31); 64f A53 at most 1 ulp (largest
 *  found 0.5011), A50 at most 4 ulp (largest found 2.1343). Subnormal results are rounded once, in
 *  A21 and A11 of 32f correctly.
 *  Special values are those of the C standard's Annex F; a NaN comes out quiet: no code, and 1 to
 *  any power and anything to the power 0 are 1. Reported are, with finite operands:
 *    a zero to a negative power: the infinity, negative for -0 to an odd integer, with LUX_POLE;
 *    a negative base with an exponent that is no integer: the default NaN with LUX_DOMAIN;
 *    a result that rounds to an infinity: that infinity with LUX_OVERFLOW;
 *    a result other than 0 that rounds to a zero: that zero with LUX_UNDERFLOW.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or the code of the last element reported. */
LUX_API LuxStatus luxsPow_32f_A11(const float* src1, const float* src2, float* dst, int32_t len);
LUX_API LuxStatus luxsPow_32f_A21(const float* src1, const float* src2, float* dst, int32_t len);
LUX_API LuxStatus luxsPow_32f_A24(const float* src1, const float* src2, float* dst, int32_t len);
LUX_API LuxStatus luxsPow_64f_A50(const double* src1, const double* src2, double* dst, int32_t len);
LUX_API LuxStatus luxsPow_64f_A53(const double* src1, const double* src2, double* dst, int32_t len);

/** dst[i] = src[i] to the power scalar: what Pow gives, with one exponent for all elements.
 *  Accuracy: 32f A24 correctly rounded, 0.5 ulp (largest found 0.5000), A21 relative 2^-21 (largest
 *  found 2^-23.11), A11 relative 2^-11 (largest found 2^-15.40); 64f A53 at most 1 ulp (largest
 *  found 0.5011), A50 at most 4 ulp (largest found 2.1343).
 *  Reports get the address of a copy of the exponent as the second source. */
LUX_API LuxStatus luxsPowx_32f_A11(const float* src, float scalar, float* dst, int32_t len);
LUX_API LuxStatus luxsPowx_32f_A21(const float* src, float scalar, float* dst, int32_t len);
LUX_API LuxStatus luxsPowx_32f_A24(const float* src, float scalar, float* dst, int32_t len);
LUX_API LuxStatus luxsPowx_64f_A50(const double* src, double scalar, double* dst, int32_t len);
LUX_API LuxStatus luxsPowx_64f_A53(const double* src, double scalar, double* dst, int32_t len);

/* ---- Exponential ----------------------------------------------------------------------------- */

/** dst[i] = e to the power src[i].
 *
 *  Accuracy: 32f at most 1 ulp (largest found 0.6109); 64f at most 1 ulp (largest found 0.7944).
 *  All grades of a type are one computation.
 *  e^0 is exactly 1. Special values:
 *    +infinity gives +infinity, -infinity gives +0, a NaN comes out quiet: no code;
 *    32f: from 88.72284 on +infinity with LUX_OVERFLOW, below -103.97208 +0 with LUX_UNDERFLOW;
 *    64f: from 709.78271289338409 on +infinity with LUX_OVERFLOW, from -745.1332191019412 down +0
 *    with LUX_UNDERFLOW. Subnormal 64f results, for arguments at and below -708.3964185322642, are
 *    reported under an even number from 0 to 62, twice the middle index of the table lookup; that
 *    number may happen to be 0, 12 or 18.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or the code of the last element reported. */
LUX_API LuxStatus luxsExp_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsExp_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsExp_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsExp_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsExp_64f_A53(const double* src, double* dst, int32_t len);

/* ---- Logarithms ------------------------------------------------------------------------------ */

/** dst[i] = the natural logarithm of src[i].
 *
 *  Accuracy: 32f at most 1 ulp (largest found 0.7450); 64f at most 1 ulp (largest found 0.6738).
 *  All grades of a type are one computation.
 *  ln 1 is +0. Special values:
 *    +0 and -0 give -infinity with LUX_POLE;
 *    negative values, also -infinity, give the default NaN with LUX_DOMAIN;
 *    +infinity gives +infinity, a NaN comes out quiet: no code. 64f: a NaN whose upper word is
 *    exactly 0xFFF00000 counts as negative and gives the default NaN with LUX_DOMAIN.
 *  Subnormals are computed like any positive value. In 32f a normal element of a pair (elements 0
 *  and 1, 2 and 3, ...) whose other one is zero, subnormal, negative, infinite or a NaN is computed
 *  by other means, which may change its last bit.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or the code of the last element reported. */
LUX_API LuxStatus luxsLn_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsLn_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsLn_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsLn_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsLn_64f_A53(const double* src, double* dst, int32_t len);

/** dst[i] = the decimal logarithm of src[i].
 *
 *  Accuracy: 32f at most 1 ulp (largest found 0.7110); 64f at most 1 ulp (largest found 0.9338).
 *  Everything else as for Ln. */
LUX_API LuxStatus luxsLog10_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsLog10_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsLog10_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsLog10_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsLog10_64f_A53(const double* src, double* dst, int32_t len);

/* ---- Sine, cosine, tangent ------------------------------------------------------------------- */

/** dst[i] = the sine of src[i], which is in radians and may have any size.
 *
 *  Accuracy: 32f A24 at most 1 ulp (largest found 0.8011), A21 and A11 relative 2^-21 (largest
 *  found 2^-22.03); 64f at most 1 ulp (largest found 0.5278). A21 and A11 are one computation, and
 *  so are both grades of 64f.
 *  32f beyond 500000 in magnitude (A24), 1000000 (A21, A11): 0.501 ulp, 64f from 128000 on: 0.52
 *  ulp, and then so are the other elements of the same block of four. sin(-x) is exactly -sin(x)
 *  and zeros keep their sign. An infinity gives the default NaN, code LUX_DOMAIN. A NaN comes out
 *  quiet in 32f; in 64f it gives the default NaN, without a code unless its upper word is
 *  0x7FF00000 without the sign.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or LUX_DOMAIN. */
LUX_API LuxStatus luxsSin_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsSin_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsSin_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsSin_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsSin_64f_A53(const double* src, double* dst, int32_t len);

/** dst[i] = the cosine of src[i], which is in radians and may have any size.
 *
 *  Accuracy: 32f A24 at most 1 ulp (largest found 0.8011), A21 and A11 relative 2^-21 (largest
 *  found 2^-22.46); 64f at most 1 ulp (largest found 0.5285). A21 and A11 are one computation, and
 *  so are both grades of 64f.
 *  32f beyond 500000 in magnitude (A24), 10048 (A21, A11): 0.501 ulp, 64f from 128000 on: 0.52 ulp,
 *  and then so are the other elements of the same block of four.
 *  The cosine of 0 is 1 in 64f and A24, and 1.0000001 in A21 and A11. Infinities and NaNs as for
 *  Sin.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or LUX_DOMAIN. */
LUX_API LuxStatus luxsCos_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsCos_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsCos_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsCos_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsCos_64f_A53(const double* src, double* dst, int32_t len);

/** dst1[i] = the sine and dst2[i] = the cosine of src[i], which is in radians and may have any
 *  size.
 *
 *  Accuracy: 32f A24 at most 1 ulp (largest found 0.5630), A21 and A11 relative 2^-21 (largest
 *  found 2^-22.66); 64f A53 at most 1 ulp (largest found 0.5008), A50 at most 4 ulp (largest found
 *  3.0510). A21 and A11 are one computation. 32f beyond 1000000 in magnitude: 0.501 ulp, 64f from
 *  128000 on: 0.52 ulp, and then so are the other elements of the same block of four. The last bit
 *  may differ from what Sin and Cos give. Zeros give (that zero, 1). Infinities and NaNs as for
 *  Sin, in both. Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or LUX_DOMAIN. */
LUX_API LuxStatus luxsSinCos_32f_A11(const float* src, float* dst1, float* dst2, int32_t len);
LUX_API LuxStatus luxsSinCos_32f_A21(const float* src, float* dst1, float* dst2, int32_t len);
LUX_API LuxStatus luxsSinCos_32f_A24(const float* src, float* dst1, float* dst2, int32_t len);
LUX_API LuxStatus luxsSinCos_64f_A50(const double* src, double* dst1, double* dst2, int32_t len);
LUX_API LuxStatus luxsSinCos_64f_A53(const double* src, double* dst1, double* dst2, int32_t len);

/** dst[i] = the tangent of src[i], which is in radians and may have any size.
 *
 *  Accuracy: 32f A24 at most 1 ulp (largest found 0.9356), A21 and A11 relative 2^-21 (largest
 *  found 2^-21.97); 64f A53 at most 1 ulp (largest found 0.5012), A50 at most 4 ulp (largest found
 *  1.6506). A21 and A11 are one computation.
 *  32f beyond 128000 in magnitude (A24), 500000 (A21, A11): 0.501 ulp, and then so are the other
 *  elements of the same block of four.
 *  Zeros keep their sign; no result overflows. An infinity gives the default NaN, code LUX_DOMAIN.
 *  A NaN comes out quiet in 32f; in 64f it gives the default NaN, without a code unless its upper
 *  word is 0x7FF00000 without the sign.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or LUX_DOMAIN. */
LUX_API LuxStatus luxsTan_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsTan_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsTan_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsTan_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsTan_64f_A53(const double* src, double* dst, int32_t len);

/* ---- Inverse trigonometric functions --------------------------------------------------------- */

/** dst[i] = the angle in [0, pi] whose cosine is src[i].
 *
 *  Accuracy: 32f A24 correctly rounded, 0.5 ulp (largest found 0.5000), A21 relative 2^-21 (largest
 *  found 2^-22.73), A11 relative 2^-11 (largest found 2^-14.69); 64f at most 1 ulp (largest found
 *  0.5006). A50 is the same computation as A53.
 *  acos(1) is +0. A magnitude above 1, infinities included, gives the default NaN with LUX_DOMAIN;
 *  a NaN comes out quiet.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or LUX_DOMAIN. */
LUX_API LuxStatus luxsAcos_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAcos_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAcos_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAcos_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsAcos_64f_A53(const double* src, double* dst, int32_t len);

/** dst[i] = the angle in [-pi/2, pi/2] whose sine is src[i].
 *
 *  Accuracy: 32f A24 correctly rounded, 0.5 ulp (largest found 0.5000), A21 relative 2^-21 (largest
 *  found 2^-21.80), A11 relative 2^-11 (largest found 2^-13.69); 64f at most 1 ulp (largest found
 *  0.5008).
 *  Zeros keep their sign, and subnormals pass as they are. Everything else as for Acos. */
LUX_API LuxStatus luxsAsin_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAsin_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAsin_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAsin_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsAsin_64f_A53(const double* src, double* dst, int32_t len);

/** dst[i] = the angle in [-pi/2, pi/2] whose tangent is src[i].
 *
 *  Accuracy: 32f A24 correctly rounded, 0.5 ulp (largest found 0.5000), A21 relative 2^-21 (largest
 *  found 2^-22.54), A11 relative 2^-11 (largest found 2^-14.79); 64f at most 1 ulp (largest found
 *  0.5003). A50 is the same computation as A53.
 *  Zeros keep their sign, subnormals pass as they are, infinities give pi/2 with their sign, a NaN
 *  comes out quiet. Nothing is reported. Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsAtan_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAtan_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAtan_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAtan_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsAtan_64f_A53(const double* src, double* dst, int32_t len);

/** dst[i] = the angle of the point x = src2[i], y = src1[i], in [-pi, pi], signed as src1[i].
 *
 *  Accuracy: 32f A24 correctly rounded, 0.5 ulp (largest found 0.5000), A21 relative 2^-21 (largest
 *  found 2^-22.66), A11 relative 2^-11 (largest found 2^-14.79); 64f at most 1 ulp (largest found
 *  0.5005). Of 32f A21 and A11 and of 64f, an angle too small for a normal number is off by at most
 *  one unit of the smallest subnormal. Special values, with the sign of src1[i]:
 *    y zero: 0 for a positive x, +0 included; pi for a negative one, -0 included;
 *    y infinite: pi/4 for x = +infinity, 3 pi/4 for x = -infinity, else pi/2;
 *    x zero: pi/2;  x = +infinity: 0;  x = -infinity: pi.
 *  A NaN in either source gives it quiet, the first of two.
 *  Nothing is reported, underflow included. Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsAtan2_32f_A11(const float* src1, const float* src2, float* dst, int32_t len);
LUX_API LuxStatus luxsAtan2_32f_A21(const float* src1, const float* src2, float* dst, int32_t len);
LUX_API LuxStatus luxsAtan2_32f_A24(const float* src1, const float* src2, float* dst, int32_t len);
LUX_API LuxStatus luxsAtan2_64f_A50(const double* src1, const double* src2, double* dst,
                                    int32_t len);
LUX_API LuxStatus luxsAtan2_64f_A53(const double* src1, const double* src2, double* dst,
                                    int32_t len);

/* ---- Hyperbolic functions -------------------------------------------------------------------- */

/** dst[i] = hyperbolic cosine of src[i].
 *
 *  Accuracy: 32f A24 correctly rounded, 0.5 ulp (largest found 0.5000), A21 relative 2^-21 (largest
 *  found 2^-23.01), A11 relative 2^-11 (largest found 2^-12.98); 64f A53 at most 1 ulp (largest
 *  found 0.5037), A50 at most 4 ulp (largest found 0.9162).
 *  Zeros and subnormals give 1, infinities +infinity without a code; a NaN comes out quiet.
 *  From 89.41599 (0x42B2D4FD) on in magnitude, in 64f from 710.47586 (0x408633CE8FB9F87E) on, a
 *  finite argument gives +infinity with LUX_OVERFLOW.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or LUX_OVERFLOW. */
LUX_API LuxStatus luxsCosh_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsCosh_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsCosh_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsCosh_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsCosh_64f_A53(const double* src, double* dst, int32_t len);

/** dst[i] = hyperbolic sine of src[i].
 *
 *  Accuracy: 32f A24 correctly rounded, 0.5 ulp (largest found 0.5000), A21 relative 2^-21 (largest
 *  found 2^-22.18), A11 relative 2^-11 (largest found 2^-12.26); 64f A53 at most 1 ulp (largest
 *  found 0.5005), A50 at most 4 ulp (largest found 1.8196). Zeros, subnormals and infinities come
 *  out as they are, a NaN quiet.
 *  Where Cosh overflows it is an infinity with the sign of src[i] and LUX_OVERFLOW.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or LUX_OVERFLOW. */
LUX_API LuxStatus luxsSinh_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsSinh_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsSinh_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsSinh_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsSinh_64f_A53(const double* src, double* dst, int32_t len);

/** dst[i] = hyperbolic tangent of src[i].
 *
 *  Accuracy: 32f at most 1 ulp (largest found 0.7612); 64f at most 1 ulp (largest found 0.5033).
 *  All grades of a type are one computation. Zeros and subnormals come out as they are; from 10 on
 *  in magnitude, in 64f from 19.061546 on, infinities among them, the result is 1 with the sign of
 *  src[i]; a NaN comes out quiet. Nothing is reported.
 *  Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsTanh_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsTanh_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsTanh_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsTanh_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsTanh_64f_A53(const double* src, double* dst, int32_t len);

/* ---- Inverse hyperbolic functions ------------------------------------------------------------ */

/** dst[i] = the number from 0 on whose hyperbolic cosine is src[i].
 *
 *  Accuracy: 32f A24 correctly rounded, 0.5 ulp (largest found 0.5000), A21 relative 2^-21 (largest
 *  found 2^-21.97), A11 relative 2^-11 (largest found 2^-13.46); 64f at most 1 ulp (largest found
 *  0.5007). A50 is the same computation as A53.
 *  1 gives +0, +infinity itself, a NaN comes out quiet.
 *  Below 1, zeros and -infinity among them: the default NaN, reported with LUX_DOMAIN.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or LUX_DOMAIN. */
LUX_API LuxStatus luxsAcosh_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAcosh_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAcosh_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAcosh_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsAcosh_64f_A53(const double* src, double* dst, int32_t len);

/** dst[i] = the number whose hyperbolic sine is src[i].
 *
 *  Accuracy: 32f A24 correctly rounded, 0.5 ulp (largest found 0.5000), A21 relative 2^-21 (largest
 *  found 2^-22.04), A11 relative 2^-11 (largest found 2^-13.46); 64f at most 1 ulp (largest found
 *  0.5007). Zeros keep their sign, subnormals pass as they are, infinities give themselves, a NaN
 *  comes out quiet.
 *  Nothing is reported. Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsAsinh_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAsinh_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAsinh_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAsinh_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsAsinh_64f_A53(const double* src, double* dst, int32_t len);

/** dst[i] = the number whose hyperbolic tangent is src[i].
 *
 *  Accuracy: 32f A24 correctly rounded, 0.5 ulp (largest found 0.5000), A21 relative 2^-21 (largest
 *  found 2^-22.12), A11 relative 2^-11 (largest found 2^-13.46); 64f at most 1 ulp (largest found
 *  0.5006). Zeros keep their sign, subnormals pass as they are, a NaN comes out quiet. 1 and -1
 *  give infinity with their sign, reported with LUX_POLE; beyond, infinities among them, the
 *  default NaN, reported with LUX_DOMAIN.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER, LUX_POLE or LUX_DOMAIN. */
LUX_API LuxStatus luxsAtanh_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAtanh_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAtanh_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsAtanh_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsAtanh_64f_A53(const double* src, double* dst, int32_t len);

/* ---- Error functions ------------------------------------------------------------------------- */

/** dst[i] = error function of src[i].
 *
 *  Accuracy: 32f A24 correctly rounded, 0.5 ulp (largest found 0.5000), A21 relative 2^-21 (largest
 *  found 2^-22.47), A11 relative 2^-11 (largest found 2^-13.58); 64f at most 1 ulp (largest found
 *  0.5047). A50 is the same computation as A53.
 *  Zeros keep their sign, subnormals give 2/sqrt(pi) times them, infinities give 1 with their
 *  sign; a NaN comes out quiet. Nothing is reported.
 *  Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsErf_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsErf_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsErf_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsErf_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsErf_64f_A53(const double* src, double* dst, int32_t len);

/** dst[i] = 1 less the error function of src[i], without cancellation.
 *
 *  Accuracy: 32f A24 correctly rounded, 0.5 ulp (largest found 0.5000), A21 relative 2^-21 (largest
 *  found 2^-21.77), A11 relative 2^-11 (largest found 2^-11.99); 64f A53 at most 1 ulp (largest
 *  found 0.5081), A50 at most 4 ulp (largest found 1.8584). A subnormal result is off by at most
 *  one unit of the smallest subnormal, under A24 and A53 by half of one.
 *  Special values and codes:
 *    -infinity gives 2, +infinity +0
 *    finite, from 10.0541954 (32f) or 27.226017111108366 (64f) on: +0, LUX_UNDERFLOW
 *    a NaN comes out quiet.
 *  A subnormal result is not reported. Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER or
 *  LUX_UNDERFLOW. */
LUX_API LuxStatus luxsErfc_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsErfc_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsErfc_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsErfc_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsErfc_64f_A53(const double* src, double* dst, int32_t len);

/* ---- Inverse error function ------------------------------------------------------------------ */

/** dst[i] = the number whose error function is src[i].
 *
 *  Accuracy: 32f A24 correctly rounded, 0.5 ulp (largest found 0.5000), A21 relative 2^-21 (largest
 *  found 2^-21.42), A11 relative 2^-11 (largest found 2^-12.60); 64f at most 1 ulp (largest found
 *  0.5012). A50 is the same computation as A53.
 *  1 and -1 give an infinity of their sign with LUX_POLE. A magnitude above 1, infinities included,
 *  gives the default NaN with LUX_DOMAIN. Zeros keep their sign, and a NaN comes out quiet.
 *  Returns LUX_OK, LUX_BAD_LENGTH, LUX_NULL_POINTER, LUX_POLE or LUX_DOMAIN. */
LUX_API LuxStatus luxsErfInv_32f_A11(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsErfInv_32f_A21(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsErfInv_32f_A24(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsErfInv_64f_A50(const double* src, double* dst, int32_t len);
LUX_API LuxStatus luxsErfInv_64f_A53(const double* src, double* dst, int32_t len);

/* ---- Hypotenuse ------------------------------------------------------------------------------ */

/** dst[i] = the square root of src1[i]^2 + src2[i]^2.
 *
 *  Accuracy: 32f at most 1 ulp (largest found 0.5000); 64f at most 1.23 ulp (largest found 1.2169).
 *  That of 64f holds while the sum of the squares is a normal double, and it stands for A53 too:
 *  the sum is rounded to a double before its root is taken.
 *  hypot(0, 0) is +0. A NaN in either source gives a quiet NaN, also beside an infinity; an
 *  infinity beside a number or an infinity gives +infinity. 64f: a sum at or above 2^1024 gives
 *  2^512, so hypot(1e300, 0) is 1.34e154. Two arguments that are both below 2^-523 are scaled up
 *  first; a larger one whose sum of squares is below 2^-1022 gives a wrong result: hypot(2^-523, 0)
 *  is 1.05e-154. Nothing is reported.
 *  Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsHypot_32f_A11(const float* src1, const float* src2, float* dst, int32_t len);
LUX_API LuxStatus luxsHypot_32f_A21(const float* src1, const float* src2, float* dst, int32_t len);
LUX_API LuxStatus luxsHypot_32f_A24(const float* src1, const float* src2, float* dst, int32_t len);
LUX_API LuxStatus luxsHypot_64f_A50(const double* src1, const double* src2, double* dst,
                                    int32_t len);
LUX_API LuxStatus luxsHypot_64f_A53(const double* src1, const double* src2, double* dst,
                                    int32_t len);

/* ---- Complex square root --------------------------------------------------------------------- */

/** dst[i] = the principal square root of src[i]: its real part is at least 0.
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 1 ulp (largest found
 *  0.5001), A21 and A11 relative 2^-21 (largest found 2^-22.72); 64fc at most 1 ulp (largest found
 *  0.5006) in each part. Zeros, infinities and NaNs as in C; on the negative real axis the result
 *  has a positive imaginary part, whatever the sign of the argument's zero: sqrt(-4 -+ 0i) = -+0 +
 *  2i. Nothing is reported.
 *  Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsSqrt_32fc_A11(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsSqrt_32fc_A21(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsSqrt_32fc_A24(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsSqrt_64fc_A50(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsSqrt_64fc_A53(const Lux64fc* src, Lux64fc* dst, int32_t len);

/* ---- Complex powers -------------------------------------------------------------------------- */

/** Pow: dst[i] = src1[i] to the power src2[i]. Powx: dst[i] = src[i] to the power c. The principal
 *  value, exp(w log z) with the angle of z in [-pi, pi].
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 2^-23.9 of the magnitude
 *  (largest found 2^-24.00), A21 and A11 at most 2^-21 of the magnitude (largest found 2^-22.12);
 *  64fc at most 2^-52 of the magnitude (largest found 2^-52.99), for every z and w with |w log z| <
 *  2^60; each part alone 2 ulp while it is above 2^-60 |w log z| of the magnitude.
 *  Bases on the axes give exact directions: i^2 = -1 + 0i. z^0 is 1 for every z, NaNs included; 0^w
 *  is 0 where Re w > 0; infinities and NaNs go through w log z as the reference tells. Nothing is
 *  reported. Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsPow_32fc_A11(const Lux32fc* src1, const Lux32fc* src2, Lux32fc* dst,
                                   int32_t len);
LUX_API LuxStatus luxsPow_32fc_A21(const Lux32fc* src1, const Lux32fc* src2, Lux32fc* dst,
                                   int32_t len);
LUX_API LuxStatus luxsPow_32fc_A24(const Lux32fc* src1, const Lux32fc* src2, Lux32fc* dst,
                                   int32_t len);
LUX_API LuxStatus luxsPow_64fc_A50(const Lux64fc* src1, const Lux64fc* src2, Lux64fc* dst,
                                   int32_t len);
LUX_API LuxStatus luxsPow_64fc_A53(const Lux64fc* src1, const Lux64fc* src2, Lux64fc* dst,
                                   int32_t len);
LUX_API LuxStatus luxsPowx_32fc_A11(const Lux32fc* src, Lux32fc c, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsPowx_32fc_A21(const Lux32fc* src, Lux32fc c, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsPowx_32fc_A24(const Lux32fc* src, Lux32fc c, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsPowx_64fc_A50(const Lux64fc* src, Lux64fc c, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsPowx_64fc_A53(const Lux64fc* src, Lux64fc c, Lux64fc* dst, int32_t len);

/* ---- Complex exponential --------------------------------------------------------------------- */

/** dst[i] = e^src[i] = e^x (cos y + i sin y).
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 1 ulp (largest found
 *  0.5001), A21 and A11 relative 2^-21 (largest found 2^-22.13); 64fc at most 1 ulp (largest found
 *  0.5009) in each part; a part overflows or underflows only where its exact value does. Zeros,
 *  infinities and NaNs as in C.
 *  Nothing is reported. Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsExp_32fc_A11(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsExp_32fc_A21(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsExp_32fc_A24(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsExp_64fc_A50(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsExp_64fc_A53(const Lux64fc* src, Lux64fc* dst, int32_t len);

/* ---- Complex natural logarithm --------------------------------------------------------------- */

/** dst[i] = the principal logarithm of src[i]: log|z| + i angle, the angle in [-pi, pi].
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 1 ulp (largest found
 *  0.5000), A21 and A11 relative 2^-21 (largest found 2^-22.31); 64fc at most 1 ulp (largest found
 *  0.5020) in each part, also of the real part where |z| is next to 1. On the negative real axis
 *  the imaginary part has the sign of the argument's zero. Zeros, infinities and NaNs as in C: a
 *  zero gives the real part -infinity.
 *  Nothing is reported.
 *  Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsLn_32fc_A11(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsLn_32fc_A21(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsLn_32fc_A24(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsLn_64fc_A50(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsLn_64fc_A53(const Lux64fc* src, Lux64fc* dst, int32_t len);

/* ---- Complex decimal logarithm --------------------------------------------------------------- */

/** dst[i] = the principal logarithm of src[i] to the base 10: log10|z| + i angle / log(10).
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 1 ulp (largest found
 *  0.5000), A21 and A11 relative 2^-21 (largest found 2^-21.97); 64fc at most 1 ulp (largest found
 *  0.5024) in each part, also of the real part where |z| is next to 1; powers of ten on the axes
 *  have exact real parts. Special arguments as of the natural logarithm. Nothing is reported.
 *  Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsLog10_32fc_A11(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsLog10_32fc_A21(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsLog10_32fc_A24(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsLog10_64fc_A50(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsLog10_64fc_A53(const Lux64fc* src, Lux64fc* dst, int32_t len);

/* ---- Complex cosine -------------------------------------------------------------------------- */

/** dst[i] = the cosine of src[i]: cos x cosh y - i sin x sinh y.
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 1 ulp (largest found
 *  0.5001), A21 and A11 relative 2^-21 (largest found 2^-22.11); 64fc at most 1 ulp (largest found
 *  0.5010) in each part, for real parts of any size. Zeros, infinities and NaNs as in C, by the
 *  hyperbolic cosine of -y + ix.
 *  Nothing is reported. Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsCos_32fc_A11(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsCos_32fc_A21(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsCos_32fc_A24(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsCos_64fc_A50(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsCos_64fc_A53(const Lux64fc* src, Lux64fc* dst, int32_t len);

/* ---- Complex sine ---------------------------------------------------------------------------- */

/** dst[i] = the sine of src[i]: sin x cosh y + i cos x sinh y.
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 1 ulp (largest found
 *  0.5000), A21 and A11 relative 2^-21 (largest found 2^-21.99); 64fc at most 1 ulp (largest found
 *  0.5008) in each part, for real parts of any size. Zeros, infinities and NaNs as in C, by the
 *  hyperbolic sine of -y + ix.
 *  Nothing is reported. Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsSin_32fc_A11(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsSin_32fc_A21(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsSin_32fc_A24(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsSin_64fc_A50(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsSin_64fc_A53(const Lux64fc* src, Lux64fc* dst, int32_t len);

/* ---- Complex tangent ------------------------------------------------------------------------- */

/** dst[i] = the tangent of src[i]: (sin x cos x + i sinh y cosh y) / (cos^2 x + sinh^2 y).
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 1 ulp (largest found
 *  0.5001), A21 and A11 relative 2^-21 (largest found 2^-21.24); 64fc at most 1 ulp (largest found
 *  0.5021) in each part, also next to the poles. Zeros, infinities and NaNs as in C, by the
 *  hyperbolic tangent of -y + ix. Nothing is reported. Returns LUX_OK, LUX_BAD_LENGTH or
 *  LUX_NULL_POINTER. */
LUX_API LuxStatus luxsTan_32fc_A11(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsTan_32fc_A21(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsTan_32fc_A24(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsTan_64fc_A50(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsTan_64fc_A53(const Lux64fc* src, Lux64fc* dst, int32_t len);

/* ---- Complex arc cosine ---------------------------------------------------------------------- */

/** dst[i] = the arc cosine of src[i]: its real part is in [0, pi].
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 1 ulp (largest found
 *  0.5000), A21 and A11 relative 2^-21 (largest found 2^-21.46); 64fc at most 1 ulp (largest found
 *  0.5009) in each part. Cut along the real axis outside [-1, 1], where the sign of the argument's
 *  zero chooses the side; zeros, infinities and NaNs as in C.
 *  Nothing is reported.
 *  Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsAcos_32fc_A11(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAcos_32fc_A21(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAcos_32fc_A24(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAcos_64fc_A50(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsAcos_64fc_A53(const Lux64fc* src, Lux64fc* dst, int32_t len);

/* ---- Complex arc sine ------------------------------------------------------------------------ */

/** dst[i] = the arc sine of src[i]: its real part is in [-pi/2, pi/2].
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 1 ulp (largest found
 *  0.5000), A21 and A11 relative 2^-21 (largest found 2^-21.56); 64fc at most 1 ulp (largest found
 *  0.5013) in each part. Cut along the real axis outside [-1, 1], where the sign of the argument's
 *  zero chooses the side; zeros, infinities and NaNs follow from the inverse hyperbolic sine's.
 *  Nothing is reported.
 *  Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsAsin_32fc_A11(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAsin_32fc_A21(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAsin_32fc_A24(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAsin_64fc_A50(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsAsin_64fc_A53(const Lux64fc* src, Lux64fc* dst, int32_t len);

/* ---- Complex arc tangent --------------------------------------------------------------------- */

/** dst[i] = the arc tangent of src[i], its real part in [-pi/2, pi/2], cut along the imaginary axis
 *  outside [-i, i].
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 1 ulp (largest found
 *  0.5000), A21 and A11 relative 2^-21 (largest found 2^-22.24); 64fc at most 1 ulp (largest found
 *  0.5010) in each part, also next to the poles +-i. Zeros, infinities and NaNs as in C, by the
 *  inverse hyperbolic tangent of -y + ix. Nothing is reported.
 *  Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsAtan_32fc_A11(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAtan_32fc_A21(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAtan_32fc_A24(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAtan_64fc_A50(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsAtan_64fc_A53(const Lux64fc* src, Lux64fc* dst, int32_t len);

/* ---- Complex hyperbolic cosine --------------------------------------------------------------- */

/** dst[i] = the hyperbolic cosine of src[i]: cosh x cos y + i sinh x sin y.
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 1 ulp (largest found
 *  0.5000), A21 and A11 relative 2^-21 (largest found 2^-22.06); 64fc at most 1 ulp (largest found
 *  0.5009) in each part, for imaginary parts of any size. Zeros, infinities and NaNs as in C.
 *  Nothing is reported.
 *  Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsCosh_32fc_A11(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsCosh_32fc_A21(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsCosh_32fc_A24(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsCosh_64fc_A50(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsCosh_64fc_A53(const Lux64fc* src, Lux64fc* dst, int32_t len);

/* ---- Complex hyperbolic sine ----------------------------------------------------------------- */

/** dst[i] = the hyperbolic sine of src[i]: sinh x cos y + i cosh x sin y.
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 1 ulp (largest found
 *  0.5000), A21 and A11 relative 2^-21 (largest found 2^-22.02); 64fc at most 1 ulp (largest found
 *  0.5008) in each part, for imaginary parts of any size. Zeros, infinities and NaNs as in C.
 *  Nothing is reported.
 *  Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsSinh_32fc_A11(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsSinh_32fc_A21(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsSinh_32fc_A24(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsSinh_64fc_A50(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsSinh_64fc_A53(const Lux64fc* src, Lux64fc* dst, int32_t len);

/* ---- Complex hyperbolic tangent -------------------------------------------------------------- */

/** dst[i] = the hyperbolic tangent of src[i]: (sinh x cosh x + i sin y cos y) /
 *  (sinh^2 x + cos^2 y).
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 1 ulp (largest found
 *  0.5001), A21 and A11 relative 2^-21 (largest found 2^-21.18); 64fc at most 1 ulp (largest found
 *  0.5018) in each part, also next to the poles. Zeros, infinities and NaNs as in C. Nothing is
 *  reported. Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsTanh_32fc_A11(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsTanh_32fc_A21(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsTanh_32fc_A24(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsTanh_64fc_A50(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsTanh_64fc_A53(const Lux64fc* src, Lux64fc* dst, int32_t len);

/* ---- Complex inverse hyperbolic cosine ------------------------------------------------------- */

/** dst[i] = the inverse hyperbolic cosine of src[i]: its real part is at least 0, its
 *  imaginary part in [-pi, pi].
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 1 ulp (largest found
 *  0.5000), A21 and A11 relative 2^-21 (largest found 2^-21.46); 64fc at most 1 ulp (largest found
 *  0.5009) in each part. Cut along the real axis below 1, where the sign of the argument's zero
 *  chooses the side; zeros, infinities and NaNs as in C. Nothing is reported.
 *  Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsAcosh_32fc_A11(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAcosh_32fc_A21(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAcosh_32fc_A24(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAcosh_64fc_A50(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsAcosh_64fc_A53(const Lux64fc* src, Lux64fc* dst, int32_t len);

/* ---- Complex inverse hyperbolic sine --------------------------------------------------------- */

/** dst[i] = the inverse hyperbolic sine of src[i]: its imaginary part is in
 *  [-pi/2, pi/2].
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 1 ulp (largest found
 *  0.5000), A21 and A11 relative 2^-21 (largest found 2^-21.63); 64fc at most 1 ulp (largest found
 *  0.5010) in each part. Cut along the imaginary axis outside [-i, i], where the sign of the
 *  argument's zero chooses the side; zeros, infinities and NaNs as in C. Nothing is reported.
 *  Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsAsinh_32fc_A11(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAsinh_32fc_A21(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAsinh_32fc_A24(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAsinh_64fc_A50(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsAsinh_64fc_A53(const Lux64fc* src, Lux64fc* dst, int32_t len);

/* ---- Complex inverse hyperbolic tangent ------------------------------------------------------ */

/** dst[i] = the inverse hyperbolic tangent of src[i], its imaginary part in [-pi/2, pi/2], cut
 *  along the real axis outside [-1, 1]; on the cut the imaginary part has the sign of the
 *  argument's.
 *
 *  All grades of 64fc share one computation. Accuracy: 32fc A24 at most 1 ulp (largest found
 *  0.5000), A21 and A11 relative 2^-21 (largest found 2^-22.29); 64fc at most 1 ulp (largest found
 *  0.5007) in each part, also next to the poles +-1, which give the infinity of their sign. Zeros,
 *  infinities and NaNs as in C.
 *  Nothing is reported.
 *  Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsAtanh_32fc_A11(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAtanh_32fc_A21(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAtanh_32fc_A24(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus luxsAtanh_64fc_A50(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus luxsAtanh_64fc_A53(const Lux64fc* src, Lux64fc* dst, int32_t len);

/* ---- Rounding to integers: exact, no grade, never threaded, nothing reported ----------------- */

/** dst[i] = the largest integer not above src[i]. Zeros keep their sign, infinities pass, a NaN
 *  comes out quiet.
 *  Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER; so do Ceil, Trunc and Round. */
LUX_API LuxStatus luxsFloor_32f(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsFloor_64f(const double* src, double* dst, int32_t len);

/** dst[i] = the smallest integer not below src[i]; -1 < x < 0 gives -0. */
LUX_API LuxStatus luxsCeil_32f(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsCeil_64f(const double* src, double* dst, int32_t len);

/** dst[i] = src[i] without its fraction; the sign stays, also on zeros. */
LUX_API LuxStatus luxsTrunc_32f(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsTrunc_64f(const double* src, double* dst, int32_t len);

/** dst[i] = src[i] rounded to the nearest integer, halves away from zero; the sign stays. */
LUX_API LuxStatus luxsRound_32f(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsRound_64f(const double* src, double* dst, int32_t len);

/** dst[i] = src[i] rounded to an integer in the rounding direction of the caller's x87 control
 *  word, ties to even when that is to-nearest; the sign stays. Checks nothing: returns 0 when `len`
 *  is below 1 and otherwise `len`, and null pointers are not tested. */
LUX_API LuxStatus luxsNearbyInt_32f(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsNearbyInt_64f(const double* src, double* dst, int32_t len);

/** The same function as NearbyInt, under its other name. */
LUX_API LuxStatus luxsRint_32f(const float* src, float* dst, int32_t len);
LUX_API LuxStatus luxsRint_64f(const double* src, double* dst, int32_t len);

/** dst1[i] = the integer part of src[i], dst2[i] = its fractional part, both with the sign of
 *  src[i]. An infinity gives (infinity, signed zero), a NaN a quiet NaN in both.
 *  Returns LUX_OK, LUX_BAD_LENGTH or LUX_NULL_POINTER. */
LUX_API LuxStatus luxsModf_32f(const float* src, float* dst1, float* dst2, int32_t len);
LUX_API LuxStatus luxsModf_64f(const double* src, double* dst1, double* dst2, int32_t len);

/* ---- Reports --------------------------------------------------------------------------------- */

/** Receives every reported element: its code, its index relative to the slice that was computed,
 *  the first elements of the arrays (for one source or one destination the second pointer repeats
 *  the first) and a name, which is empty for most kernels. The library's own version raises the
 *  matching exception flag of the x87 unit; a program that defines these functions itself sees the
 *  reports instead. The result is not used by the library: it is the code. Called from several
 *  threads at once when a call is threaded. */
LUX_API int32_t noxsError(int32_t code, int32_t index, const float* argument1,
                          const float* argument2, const float* result1, const float* result2,
                          const char* name);
LUX_API int32_t noxdError(int32_t code, int32_t index, const double* argument1,
                          const double* argument2, const double* result1, const double* result2,
                          const char* name);

/* ---- Large arguments of sine, cosine and tangent --------------------------------------------- */

/** One element of a trigonometric function, of any size: what the vector functions call for
 *  elements beyond their own reduction. The function of src[index] goes to dst[index]; a null or
 *  wrong pointer is not noticed. An infinity gives the default NaN and is reported to noxsError or
 *  noxdError with LUX_DOMAIN and the name of the handler, such as "sSin_HA"; *status then becomes
 *  LUX_DOMAIN and is otherwise left alone. A single NaN comes out quiet; a double NaN gives the
 *  default NaN, and is reported like an infinity when its upper word is 0x7FF00000 without the
 *  sign. HA, LA and A11 differ in the reported name only. */
LUX_API void noxsSin_SC_HA(int32_t index, const float* src, float* dst, int32_t* status);
LUX_API void noxsSin_SC_LA(int32_t index, const float* src, float* dst, int32_t* status);
LUX_API void noxsSin_SC_A11(int32_t index, const float* src, float* dst, int32_t* status);
LUX_API void noxsCos_SC_HA(int32_t index, const float* src, float* dst, int32_t* status);
LUX_API void noxsCos_SC_LA(int32_t index, const float* src, float* dst, int32_t* status);
LUX_API void noxsCos_SC_A11(int32_t index, const float* src, float* dst, int32_t* status);
LUX_API void noxsSinCos_SC_HA(int32_t index, const float* src, float* dst_sin, float* dst_cos,
                              int32_t* status);
LUX_API void noxsSinCos_SC_LA(int32_t index, const float* src, float* dst_sin, float* dst_cos,
                              int32_t* status);
LUX_API void noxsSinCos_SC_A11(int32_t index, const float* src, float* dst_sin, float* dst_cos,
                               int32_t* status);
LUX_API void noxsTan_SC_HA(int32_t index, const float* src, float* dst, int32_t* status);
LUX_API void noxsTan_SC_LA(int32_t index, const float* src, float* dst, int32_t* status);
LUX_API void noxsTan_SC_A11(int32_t index, const float* src, float* dst, int32_t* status);
LUX_API void noxdSin_SC_HA(int32_t index, const double* src, double* dst, int32_t* status);
LUX_API void noxdSin_SC_LA(int32_t index, const double* src, double* dst, int32_t* status);
LUX_API void noxdSin_SC_A11(int32_t index, const double* src, double* dst, int32_t* status);
LUX_API void noxdCos_SC_HA(int32_t index, const double* src, double* dst, int32_t* status);
LUX_API void noxdCos_SC_LA(int32_t index, const double* src, double* dst, int32_t* status);
LUX_API void noxdCos_SC_A11(int32_t index, const double* src, double* dst, int32_t* status);
LUX_API void noxdSinCos_SC_HA(int32_t index, const double* src, double* dst_sin, double* dst_cos,
                              int32_t* status);
LUX_API void noxdSinCos_SC_LA(int32_t index, const double* src, double* dst_sin, double* dst_cos,
                              int32_t* status);
LUX_API void noxdSinCos_SC_A11(int32_t index, const double* src, double* dst_sin, double* dst_cos,
                               int32_t* status);
LUX_API void noxdTan_SC_HA(int32_t index, const double* src, double* dst, int32_t* status);
LUX_API void noxdTan_SC_LA(int32_t index, const double* src, double* dst, int32_t* status);
LUX_API void noxdTan_SC_A11(int32_t index, const double* src, double* dst, int32_t* status);

/** The finite x less the multiple of pi/2 nearest to it, or one of the two nearest where they are
 *  about equally far: reduced[0] + reduced[1], at most a little over pi/4 in magnitude. Returns the
 *  multiple modulo 4. Wants the x87 unit to round to nearest with 53 bits or more. */
LUX_API int32_t noxreduce_pio2d(double x, double* reduced);

/* ---- Threading ------------------------------------------------------------------------------- */

/** Number of elements above which a call is worth splitting over `threads` threads, 0x7FFFFFFF for
 *  never. `row` names the function (29 rows for s and d, 18 for c and z), `variant` the grade: 0
 *  for A24 and A53, 1 for A21 and A50, 2 for A11. A row that does not exist gives 0x7FFFFFFF. */
LUX_API int32_t noxsMinN(int32_t row, int32_t variant, int32_t threads);
LUX_API int32_t noxdMinN(int32_t row, int32_t variant, int32_t threads);
LUX_API int32_t noxcMinN(int32_t row, int32_t variant, int32_t threads);
LUX_API int32_t noxzMinN(int32_t row, int32_t variant, int32_t threads);

/** Run `kernel` over `threads` slices of the arrays in an OpenMP region: slices of len / threads
 *  elements, rounded down to a multiple of 4, the last one takes the rest. With fewer than four
 *  elements a slice, or `threads` below 1, the kernel runs once over the whole range. Returns
 *  LUX_NULL_POINTER, or the non-zero status that a slice stored last, or 0. The name says the
 *  shape: sources _ destinations, 2_1_1 for source, scalar, destination. */
typedef LuxStatus (*LuxKernel_32f_1_1)(const float* src, float* dst, int32_t len);
LUX_API LuxStatus noxsThreading_1_1(LuxKernel_32f_1_1 kernel, int32_t threads, const float* src,
                                    float* dst, int32_t len);
typedef LuxStatus (*LuxKernel_32f_2_1)(const float* src1, const float* src2, float* dst,
                                       int32_t len);
LUX_API LuxStatus noxsThreading_2_1(LuxKernel_32f_2_1 kernel, int32_t threads, const float* src1,
                                    const float* src2, float* dst, int32_t len);
typedef LuxStatus (*LuxKernel_32f_1_2)(const float* src, float* dst1, float* dst2, int32_t len);
LUX_API LuxStatus noxsThreading_1_2(LuxKernel_32f_1_2 kernel, int32_t threads, const float* src,
                                    float* dst1, float* dst2, int32_t len);
typedef LuxStatus (*LuxKernel_32f_2_1_1)(const float* src, float scalar, float* dst, int32_t len);
LUX_API LuxStatus noxsThreading_2_1_1(LuxKernel_32f_2_1_1 kernel, int32_t threads, const float* src,
                                      float scalar, float* dst, int32_t len);
typedef LuxStatus (*LuxKernel_64f_1_1)(const double* src, double* dst, int32_t len);
LUX_API LuxStatus noxdThreading_1_1(LuxKernel_64f_1_1 kernel, int32_t threads, const double* src,
                                    double* dst, int32_t len);
typedef LuxStatus (*LuxKernel_64f_2_1)(const double* src1, const double* src2, double* dst,
                                       int32_t len);
LUX_API LuxStatus noxdThreading_2_1(LuxKernel_64f_2_1 kernel, int32_t threads, const double* src1,
                                    const double* src2, double* dst, int32_t len);
typedef LuxStatus (*LuxKernel_64f_1_2)(const double* src, double* dst1, double* dst2, int32_t len);
LUX_API LuxStatus noxdThreading_1_2(LuxKernel_64f_1_2 kernel, int32_t threads, const double* src,
                                    double* dst1, double* dst2, int32_t len);
typedef LuxStatus (*LuxKernel_64f_2_1_1)(const double* src, double scalar, double* dst,
                                         int32_t len);
LUX_API LuxStatus noxdThreading_2_1_1(LuxKernel_64f_2_1_1 kernel, int32_t threads,
                                      const double* src, double scalar, double* dst, int32_t len);
typedef LuxStatus (*LuxKernel_32fc_1_1)(const Lux32fc* src, Lux32fc* dst, int32_t len);
LUX_API LuxStatus noxcThreading_1_1(LuxKernel_32fc_1_1 kernel, int32_t threads, const Lux32fc* src,
                                    Lux32fc* dst, int32_t len);
typedef LuxStatus (*LuxKernel_32fc_2_1)(const Lux32fc* src1, const Lux32fc* src2, Lux32fc* dst,
                                        int32_t len);
LUX_API LuxStatus noxcThreading_2_1(LuxKernel_32fc_2_1 kernel, int32_t threads, const Lux32fc* src1,
                                    const Lux32fc* src2, Lux32fc* dst, int32_t len);
typedef LuxStatus (*LuxKernel_32fc_1_2)(const Lux32fc* src, Lux32fc* dst1, Lux32fc* dst2,
                                        int32_t len);
LUX_API LuxStatus noxcThreading_1_2(LuxKernel_32fc_1_2 kernel, int32_t threads, const Lux32fc* src,
                                    Lux32fc* dst1, Lux32fc* dst2, int32_t len);
typedef LuxStatus (*LuxKernel_32fc_2_1_1)(const Lux32fc* src, Lux32fc scalar, Lux32fc* dst,
                                          int32_t len);
LUX_API LuxStatus noxcThreading_2_1_1(LuxKernel_32fc_2_1_1 kernel, int32_t threads,
                                      const Lux32fc* src, Lux32fc scalar, Lux32fc* dst,
                                      int32_t len);
typedef LuxStatus (*LuxKernel_64fc_1_1)(const Lux64fc* src, Lux64fc* dst, int32_t len);
LUX_API LuxStatus noxzThreading_1_1(LuxKernel_64fc_1_1 kernel, int32_t threads, const Lux64fc* src,
                                    Lux64fc* dst, int32_t len);
typedef LuxStatus (*LuxKernel_64fc_2_1)(const Lux64fc* src1, const Lux64fc* src2, Lux64fc* dst,
                                        int32_t len);
LUX_API LuxStatus noxzThreading_2_1(LuxKernel_64fc_2_1 kernel, int32_t threads, const Lux64fc* src1,
                                    const Lux64fc* src2, Lux64fc* dst, int32_t len);
typedef LuxStatus (*LuxKernel_64fc_1_2)(const Lux64fc* src, Lux64fc* dst1, Lux64fc* dst2,
                                        int32_t len);
LUX_API LuxStatus noxzThreading_1_2(LuxKernel_64fc_1_2 kernel, int32_t threads, const Lux64fc* src,
                                    Lux64fc* dst1, Lux64fc* dst2, int32_t len);
typedef LuxStatus (*LuxKernel_64fc_2_1_1)(const Lux64fc* src, Lux64fc scalar, Lux64fc* dst,
                                          int32_t len);
LUX_API LuxStatus noxzThreading_2_1_1(LuxKernel_64fc_2_1_1 kernel, int32_t threads,
                                      const Lux64fc* src, Lux64fc scalar, Lux64fc* dst,
                                      int32_t len);

#ifdef __cplusplus
}
#endif

#endif
