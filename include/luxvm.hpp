// SPDX-License-Identifier: MIT
//
// luxvm from C++20: every vector function of luxvmk3.h, by its family's name in small letters, over
// std::vector, std::array, std::span, C arrays and whatever else is contiguous.
//
//   std::vector<double> x(1000, 0.5), y(1000), z(1000);
//   lux::exp(x, y);                        // y[i] = exp(x[i]), in the most accurate grade
//   lux::exp(x, y, lux::a50);              // in another one
//   lux::pow(x, y, z);                     // two arguments
//   lux::powx(x, 2.5, y);                  // one exponent for all
//   lux::sincos(x, y, z);                  // two results
//   lux::exp(x, y).or_throw();             // lux::error where an element was reported
//   if (lux::ln(x, y, lux::every).pole())  // whether any element was a pole
//
// elements  float and double; most functions take std::complex of them, too. All arrays of a call
//           have one element type, and a scalar is converted to it.
// grades    a11, a21, a24 of float, a50, a53 of double, complex or not: the correct bits of a
//           result. The best one is taken where none stands. Another type's grade does not compile.
// sizes     arrays of different sizes throw std::length_error before anything is written; where the
//           sizes are part of the types, they do not compile. Empty arrays are no error.
// in place  a destination may be exactly one of the sources, lux::exp(x, x). Arrays that overlap in
//           part give undefined results, which nothing detects.
// reports   elements outside the domain, poles, overflows and underflows have their results like all
//           others, and are reported; after each function below stands what it may report of float
//           and double. Complex functions report nothing. The lux::result of a call knows the last
//           element reported, lux::every sees all of them, by the exception flags.
// threads   as the functions called: any number of threads may call them at once.
// cost      that of the call: the sizes are compared, and one of them with 0, unless they are part of
//           the types. lux::every adds tens of cycles, hundreds where a flag was set before.
//
// Everything else, special values and errors found among it, stands in luxvmk3.h.
#ifndef LUXVM_HPP
#define LUXVM_HPP

#include <cfenv>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <stdexcept>
#include <type_traits>

#include "luxvmk3.h"

#define LUX_CPP_INLINE [[gnu::always_inline]] inline

namespace lux {

// ---- Grades

/** The correct bits of a result. */
template <int kBits>
struct grade {};

inline constexpr grade<11> a11;
inline constexpr grade<21> a21;
inline constexpr grade<24> a24;
inline constexpr grade<50> a50;
inline constexpr grade<53> a53;

// ---- What a call reports

/** Thrown by or_throw(). */
class error : public std::runtime_error {
 public:
  explicit error(LuxStatus status)
      : std::runtime_error(luxvm_status_text(status)), status_(status) {}
  /** A code of luxvmk3.h. */
  LuxStatus status() const noexcept { return status_; }

 private:
  LuxStatus status_;
};

namespace detail {

// Out of line, so that calls stay short. Without exceptions the program ends.
[[noreturn, gnu::cold, gnu::noinline]] inline void fail(LuxStatus status) {
#ifdef __cpp_exceptions
  throw error(status);
#else
  (void)status;
  std::abort();
#endif
}

[[noreturn, gnu::cold, gnu::noinline]] inline void sizes_differ() {
#ifdef __cpp_exceptions
  throw std::length_error("luxvm: arrays of different sizes");
#else
  std::abort();
#endif
}

}  // namespace detail

/** What a call returned: the code of the last element reported, and no word of those before it.
 *  Where threads shared the work, it is the last one of any slice. exp of double reports subnormal
 *  results under an even number from 0 to 62: 0 is not to be told from no report, nor 12 from an
 *  overflow, and 18 is no pole there. */
class result {
 public:
  constexpr result() = default;
  constexpr explicit result(LuxStatus status) : status_(status) {}

  /** A code of luxvmk3.h. */
  constexpr LuxStatus status() const { return status_; }
  /** No element was reported. */
  constexpr bool ok() const { return status_ == LUX_OK; }
  const char* text() const { return luxvm_status_text(status_); }
  /** Throws lux::error unless ok(). The elements have their results nevertheless. */
  LUX_CPP_INLINE const result& or_throw() const {
    if (!ok()) detail::fail(status_);
    return *this;
  }

 private:
  LuxStatus status_ = LUX_OK;
};

/** What a call with lux::every returned: which kinds were reported, of any element, in any slice. It is
 *  read from the exception flags of both units, which show a little more than the reports: a subnormal
 *  result may count as an underflow, an infinite one as an overflow although it went without a code, a
 *  signalling NaN as a domain error. exp of double may show overflow or pole with a subnormal result. Flags that were set before the call stay so and do not count. A
 *  program that defines noxsError and noxdError itself keeps the reports from raising flags. */
class reports {
 public:
  constexpr reports() = default;
  constexpr explicit reports(LuxStatus status, int flags) : status_(status), flags_(flags) {}

  constexpr bool domain() const { return flags_ & FE_INVALID; }
  constexpr bool pole() const { return flags_ & FE_DIVBYZERO; }
  constexpr bool overflow() const { return flags_ & FE_OVERFLOW; }
  constexpr bool underflow() const { return flags_ & FE_UNDERFLOW; }
  /** As of a result: the code of the last element reported. */
  constexpr LuxStatus status() const { return status_; }
  /** No kind and no code. */
  constexpr bool ok() const { return flags_ == 0 && status_ == LUX_OK; }
  /** To gather those of several calls; of two codes the later one stays. */
  constexpr reports& operator|=(const reports& later) {
    flags_ |= later.flags_;
    if (later.status_ != LUX_OK) status_ = later.status_;
    return *this;
  }
  /** Throws lux::error unless ok(), with the first kind in the order of the functions above. */
  const reports& or_throw() const {
    if (!ok()) {
      const LuxStatus gravest = status_ < 0   ? status_
                                : domain()    ? LUX_DOMAIN
                                : pole()      ? LUX_POLE
                                : overflow()  ? LUX_OVERFLOW
                                : underflow() ? LUX_UNDERFLOW
                                              : status_;
      detail::fail(gravest);
    }
    return *this;
  }

 private:
  LuxStatus status_ = LUX_OK;
  int flags_ = 0;
};

/** Behind the arrays and the grade: the call returns lux::reports. */
struct every_t {};
inline constexpr every_t every;

// ---- How a call is made up

namespace detail {

struct exact {};  // the grade of the rounding functions

template <class E>
inline constexpr bool is_single =
    std::is_same_v<E, float> || std::is_same_v<E, std::complex<float>>;

// What stands behind the arrays.
template <class Option>
inline constexpr bool is_grade = false;
template <int kBits>
inline constexpr bool is_grade<grade<kBits>> = true;

template <class Best, class...>
struct grade_among {
  using type = Best;
};
template <class Best, class Option, class... Others>
struct grade_among<Best, Option, Others...>
    : std::conditional_t<is_grade<Option>, std::type_identity<Option>,
                         grade_among<Best, Others...>> {};

// The elements as the C functions take them. std::complex is laid out as its two parts.
template <class E>
LUX_CPP_INLINE E* plain(E* p) {
  return p;
}
LUX_CPP_INLINE const Lux32fc* plain(const std::complex<float>* p) {
  return reinterpret_cast<const Lux32fc*>(p);
}
LUX_CPP_INLINE Lux32fc* plain(std::complex<float>* p) { return reinterpret_cast<Lux32fc*>(p); }
LUX_CPP_INLINE const Lux64fc* plain(const std::complex<double>* p) {
  return reinterpret_cast<const Lux64fc*>(p);
}
LUX_CPP_INLINE Lux64fc* plain(std::complex<double>* p) { return reinterpret_cast<Lux64fc*>(p); }
LUX_CPP_INLINE float plain(float x) { return x; }
LUX_CPP_INLINE double plain(double x) { return x; }
LUX_CPP_INLINE Lux32fc plain(std::complex<float> z) { return {z.real(), z.imag()}; }
LUX_CPP_INLINE Lux64fc plain(std::complex<double> z) { return {z.real(), z.imag()}; }

template <class Span>
using element = std::remove_const_t<typename Span::element_type>;

// The size that all have.
template <class First, class... Others>
LUX_CPP_INLINE int32_t common_size(First first, Others... others) {
  static_assert(((First::extent == std::dynamic_extent || Others::extent == std::dynamic_extent ||
                  First::extent == Others::extent) &&
                 ...),
                "luxvm: arrays of different sizes");
  if (((others.size() != first.size()) || ...)) [[unlikely]]
    sizes_differ();
  return static_cast<int32_t>(first.size());
}

// The flags that a call raises. Putting flags aside takes hundreds of cycles, looking at them tens.
class flags_of_a_call {
 public:
  flags_of_a_call() {
    if (set_before_ == 0) return;
    std::fegetexceptflag(&before_, kKinds);
    std::feclearexcept(kKinds);
  }
  ~flags_of_a_call() {
    if (set_before_ != 0) std::fesetexceptflag(&before_, set_before_);
  }
  flags_of_a_call(const flags_of_a_call&) = delete;
  flags_of_a_call& operator=(const flags_of_a_call&) = delete;
  int raised() const { return std::fetestexcept(kKinds); }

 private:
  static constexpr int kKinds = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW | FE_UNDERFLOW;
  const int set_before_ = std::fetestexcept(kKinds);
  std::fexcept_t before_ = {};
};

template <class Exports, class E, class... Options, class... Arguments>
LUX_CPP_INLINE auto call(int32_t len, Arguments... arguments) {
  using Best = std::conditional_t<Exports::kExact, exact, grade<is_single<E> ? 24 : 53>>;
  using Grade = typename grade_among<Best, Options...>::type;
  constexpr bool has_type = requires { Exports::at(static_cast<E*>(nullptr), Best{}); };
  constexpr bool has_grade = requires { Exports::at(static_cast<E*>(nullptr), Grade{}); };
  static_assert(((is_grade<Options> || std::is_same_v<Options, every_t>)&&...),
                "luxvm: behind the arrays stand a grade, lux::every or both");
  static_assert(has_type,
                "luxvm: the elements are float, double or, where the function has them, "
                "std::complex of these");
  static_assert(!has_type || has_grade || !Exports::kExact,
                "luxvm: this function is exact and has no grades");
  static_assert(!has_type || has_grade || Exports::kExact || !is_single<E>,
                "luxvm: the grades of float are lux::a11, lux::a21 and lux::a24");
  static_assert(!has_type || has_grade || Exports::kExact || is_single<E>,
                "luxvm: the grades of double are lux::a50 and lux::a53");
  if constexpr (has_type && has_grade) {
    constexpr auto function = Exports::at(static_cast<E*>(nullptr), Grade{});
    // What is left out below was refused by an assertion already.
    if constexpr (std::is_invocable_v<decltype(function), Arguments..., int32_t>) {
      const auto status = [&]() __attribute__((always_inline))->LuxStatus {
        if (len == 0) return LUX_OK;
        const LuxStatus returned = function(arguments..., len);
        return Exports::kCounts ? LuxStatus{LUX_OK} : returned;
      };
      if constexpr ((std::is_same_v<Options, every_t> || ...)) {
        const flags_of_a_call flags;
        const LuxStatus returned = status();
        return reports(returned, flags.raised());
      } else {
        return result(status());
      }
    }
  }
}

// What an array is: whatever a std::span can be made of. A source may be a temporary.
template <class A>
using source = decltype(std::span(std::declval<const A&>()));
template <class A>
using destination = decltype(std::span(std::declval<A>()));

template <class First, class... Others>
constexpr void check_elements() {
  static_assert((std::is_same_v<element<First>, element<Others>> && ...),
                "luxvm: the arrays of a call have one type of elements");
}
template <class... Destinations>
constexpr void check_writable() {
  static_assert((!std::is_const_v<typename Destinations::element_type> && ...),
                "luxvm: a destination holds constants");
}

// The shapes of calls. A function is a constant of one of these types.
template <class Exports>
struct one_to_one {
  template <class Src, class Dst, class... Options, class X = source<Src>,
            class Y = destination<Dst>>
  LUX_CPP_INLINE auto operator()(const Src& src, Dst&& dst, Options...) const {
    check_elements<X, Y>();
    check_writable<Y>();
    const X x(src);
    const Y y(dst);
    return call<Exports, element<X>, Options...>(common_size(x, y), plain(x.data()),
                                                 plain(y.data()));
  }
};

template <class Exports>
struct two_to_one {
  template <class Src1, class Src2, class Dst, class... Options, class X1 = source<Src1>,
            class X2 = source<Src2>, class Y = destination<Dst>>
  LUX_CPP_INLINE auto operator()(const Src1& src1, const Src2& src2, Dst&& dst, Options...) const {
    check_elements<X1, X2, Y>();
    check_writable<Y>();
    const X1 x1(src1);
    const X2 x2(src2);
    const Y y(dst);
    return call<Exports, element<X1>, Options...>(common_size(x1, x2, y), plain(x1.data()),
                                                  plain(x2.data()), plain(y.data()));
  }
};

template <class Exports>
struct one_to_two {
  template <class Src, class Dst1, class Dst2, class... Options, class X = source<Src>,
            class Y1 = destination<Dst1>, class Y2 = destination<Dst2>>
  LUX_CPP_INLINE auto operator()(const Src& src, Dst1&& dst1, Dst2&& dst2, Options...) const {
    check_elements<X, Y1, Y2>();
    check_writable<Y1, Y2>();
    const X x(src);
    const Y1 y1(dst1);
    const Y2 y2(dst2);
    return call<Exports, element<X>, Options...>(common_size(x, y1, y2), plain(x.data()),
                                                 plain(y1.data()), plain(y2.data()));
  }
};

template <class Exports>
struct one_and_scalar {
  template <class Src, class Dst, class... Options, class X = source<Src>,
            class Y = destination<Dst>>
  LUX_CPP_INLINE auto operator()(const Src& src, element<X> scalar, Dst&& dst, Options...) const {
    check_elements<X, Y>();
    check_writable<Y>();
    const X x(src);
    const Y y(dst);
    return call<Exports, element<X>, Options...>(common_size(x, y), plain(x.data()), plain(scalar),
                                                 plain(y.data()));
  }
};

// The exports of each family.
#define LUX_CPP_EXPORT(E, Grade, name) \
  static constexpr auto at(E*, Grade) { return &name; }
#define LUX_CPP_SINGLE(Family, E, type)                     \
  LUX_CPP_EXPORT(E, grade<11>, luxs##Family##_##type##_A11) \
  LUX_CPP_EXPORT(E, grade<21>, luxs##Family##_##type##_A21) \
  LUX_CPP_EXPORT(E, grade<24>, luxs##Family##_##type##_A24)
#define LUX_CPP_DOUBLE(Family, E, type)                     \
  LUX_CPP_EXPORT(E, grade<50>, luxs##Family##_##type##_A50) \
  LUX_CPP_EXPORT(E, grade<53>, luxs##Family##_##type##_A53)
#define LUX_CPP_FAMILY(Family, is_exact, counts, exports)      \
  struct Family {                                              \
    static constexpr bool kExact = is_exact, kCounts = counts; \
    exports                                                    \
  };
#define LUX_CPP_REALS(Family) LUX_CPP_SINGLE(Family, float, 32f) LUX_CPP_DOUBLE(Family, double, 64f)
#define LUX_CPP_REAL(Family) LUX_CPP_FAMILY(Family, false, false, LUX_CPP_REALS(Family))
#define LUX_CPP_COMPLEX(Family)                                                          \
  LUX_CPP_FAMILY(Family, false, false,                                                   \
                 LUX_CPP_REALS(Family) LUX_CPP_SINGLE(Family, std::complex<float>, 32fc) \
                     LUX_CPP_DOUBLE(Family, std::complex<double>, 64fc))
#define LUX_CPP_EXACT(Family, counts)                             \
  LUX_CPP_FAMILY(Family, true, counts,                            \
                 LUX_CPP_EXPORT(float, exact, luxs##Family##_32f) \
                     LUX_CPP_EXPORT(double, exact, luxs##Family##_64f))

LUX_CPP_COMPLEX(Sqrt)
LUX_CPP_COMPLEX(Pow)
LUX_CPP_COMPLEX(Powx)
LUX_CPP_COMPLEX(Exp)
LUX_CPP_COMPLEX(Ln)
LUX_CPP_COMPLEX(Log10)
LUX_CPP_COMPLEX(Cos)
LUX_CPP_COMPLEX(Sin)
LUX_CPP_COMPLEX(Tan)
LUX_CPP_COMPLEX(Acos)
LUX_CPP_COMPLEX(Asin)
LUX_CPP_COMPLEX(Atan)
LUX_CPP_COMPLEX(Cosh)
LUX_CPP_COMPLEX(Sinh)
LUX_CPP_COMPLEX(Tanh)
LUX_CPP_COMPLEX(Acosh)
LUX_CPP_COMPLEX(Asinh)
LUX_CPP_COMPLEX(Atanh)
LUX_CPP_REAL(Inv)
LUX_CPP_REAL(Div)
LUX_CPP_REAL(InvSqrt)
LUX_CPP_REAL(Cbrt)
LUX_CPP_REAL(InvCbrt)
LUX_CPP_REAL(Hypot)
LUX_CPP_REAL(SinCos)
LUX_CPP_REAL(Atan2)
LUX_CPP_REAL(Erf)
LUX_CPP_REAL(Erfc)
LUX_CPP_REAL(ErfInv)
LUX_CPP_EXACT(Floor, false)
LUX_CPP_EXACT(Ceil, false)
LUX_CPP_EXACT(Trunc, false)
LUX_CPP_EXACT(Round, false)
LUX_CPP_EXACT(Modf, false)
LUX_CPP_EXACT(NearbyInt, true)  // these two return the length
LUX_CPP_EXACT(Rint, true)

#undef LUX_CPP_EXPORT
#undef LUX_CPP_SINGLE
#undef LUX_CPP_DOUBLE
#undef LUX_CPP_FAMILY
#undef LUX_CPP_REALS
#undef LUX_CPP_REAL
#undef LUX_CPP_COMPLEX
#undef LUX_CPP_EXACT

}  // namespace detail

// ---- The functions
//
// Called as f(x, y, grade, lux::every), the last two if wanted. What may be reported stands at the end.

// Of float, double and std::complex:

/** The square root. Domain. */
inline constexpr detail::one_to_one<detail::Sqrt> sqrt;
/** pow(x, y, z): x to the power y. Domain, pole, overflow, underflow. */
inline constexpr detail::two_to_one<detail::Pow> pow;
/** powx(x, c, y): x to the power c, one number for all. Domain, pole, overflow, underflow. */
inline constexpr detail::one_and_scalar<detail::Powx> powx;
/** e to the power x. Overflow, underflow. */
inline constexpr detail::one_to_one<detail::Exp> exp;
/** The natural logarithm. Domain, pole. */
inline constexpr detail::one_to_one<detail::Ln> ln;
/** The decimal logarithm. Domain, pole. */
inline constexpr detail::one_to_one<detail::Log10> log10;
/** The cosine. Domain, of infinities. */
inline constexpr detail::one_to_one<detail::Cos> cos;
/** The sine. Domain, of infinities. */
inline constexpr detail::one_to_one<detail::Sin> sin;
/** The tangent. Domain, of infinities. */
inline constexpr detail::one_to_one<detail::Tan> tan;
/** The angle in [0, pi] with that cosine. Domain. */
inline constexpr detail::one_to_one<detail::Acos> acos;
/** The angle in [-pi/2, pi/2] with that sine. Domain. */
inline constexpr detail::one_to_one<detail::Asin> asin;
/** The angle in [-pi/2, pi/2] with that tangent. */
inline constexpr detail::one_to_one<detail::Atan> atan;
/** The hyperbolic cosine. Overflow. */
inline constexpr detail::one_to_one<detail::Cosh> cosh;
/** The hyperbolic sine. Overflow. */
inline constexpr detail::one_to_one<detail::Sinh> sinh;
/** The hyperbolic tangent. */
inline constexpr detail::one_to_one<detail::Tanh> tanh;
/** The number from 0 on with that hyperbolic cosine. Domain. */
inline constexpr detail::one_to_one<detail::Acosh> acosh;
/** The number with that hyperbolic sine. */
inline constexpr detail::one_to_one<detail::Asinh> asinh;
/** The number with that hyperbolic tangent. Domain, pole. */
inline constexpr detail::one_to_one<detail::Atanh> atanh;

// Of float and double:

/** 1 / x. Pole. */
inline constexpr detail::one_to_one<detail::Inv> inv;
/** div(x, y, z): x / y. Pole. */
inline constexpr detail::two_to_one<detail::Div> div;
/** 1 over the square root. Domain, pole. */
inline constexpr detail::one_to_one<detail::InvSqrt> invsqrt;
/** The cube root. */
inline constexpr detail::one_to_one<detail::Cbrt> cbrt;
/** 1 over the cube root. Pole. */
inline constexpr detail::one_to_one<detail::InvCbrt> invcbrt;
/** hypot(x, y, z): the square root of x^2 + y^2; double wants a sum in the normal range. */
inline constexpr detail::two_to_one<detail::Hypot> hypot;
/** sincos(x, s, c): the sine and the cosine. Domain, of infinities. */
inline constexpr detail::one_to_two<detail::SinCos> sincos;
/** atan2(y, x, z): the angle of the point (x, y), in [-pi, pi]. */
inline constexpr detail::two_to_one<detail::Atan2> atan2;
/** The error function. */
inline constexpr detail::one_to_one<detail::Erf> erf;
/** 1 less the error function. Underflow. */
inline constexpr detail::one_to_one<detail::Erfc> erfc;
/** The number with that error function. Domain, pole. */
inline constexpr detail::one_to_one<detail::ErfInv> erfinv;

// Of float and double, exact, without grades and reports:

/** The largest integer not above x. */
inline constexpr detail::one_to_one<detail::Floor> floor;
/** The smallest integer not below x. */
inline constexpr detail::one_to_one<detail::Ceil> ceil;
/** x without its fraction. */
inline constexpr detail::one_to_one<detail::Trunc> trunc;
/** The nearest integer, halves away from zero. */
inline constexpr detail::one_to_one<detail::Round> round;
/** An integer in the rounding direction of the x87 unit. */
inline constexpr detail::one_to_one<detail::NearbyInt> nearbyint;
/** The same as nearbyint. */
inline constexpr detail::one_to_one<detail::Rint> rint;
/** modf(x, i, f): the integer part and the fraction, both with the sign of x. */
inline constexpr detail::one_to_two<detail::Modf> modf;

}  // namespace lux

#undef LUX_CPP_INLINE

#endif
