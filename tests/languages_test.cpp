// SPDX-License-Identifier: MIT
//
// Every export as another language reaches it: over fixed arguments, special elements and short
// arrays it gives bit for bit what the export gives. Built once for include/luxvm.hpp, and once with
// LUX_FORTRAN for include/luxvm.f90, where a procedure of tools/fortran_module.py stands before each.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "conformance/result_hash.h"

using Call = Status (*)(const Arrays& arrays, int32_t len);

// What counts checks nothing; elsewhere its success is no number of elements.
static Status counted(Status status, int32_t len) { return status == LUX_OK ? len : status; }

#ifdef LUX_FORTRAN

#define LUX_GRADED(F, type, grade, letter, shape, row, variant)                                \
  extern "C" Status fortran_luxs##F##_##type##_##grade(LUX_PARAMS_##shape(LUX_ELEMENT_##type), \
                                                       int32_t len);
#define LUX_EXACT(F, type, letter, shape, returns) \
  extern "C" Status fortran_luxs##F##_##type(LUX_PARAMS_##shape(LUX_ELEMENT_##type), int32_t len);
#include "core/functions.def"

static constexpr Call kCalls[] = {
#define CALL(name) catalog_detail::call(fortran_##name, a, len)
#define LUX_GRADED(F, type, grade, letter, shape, row, variant) \
  [](const Arrays& a, int32_t len) { return CALL(luxs##F##_##type##_##grade); },
#define COUNTED_STATUS(status) status
#define COUNTED_COUNT(status) counted(status, len)
#define LUX_EXACT(F, type, letter, shape, returns) \
  [](const Arrays& a, int32_t len) { return COUNTED_##returns(CALL(luxs##F##_##type)); },
#include "core/functions.def"
};

extern "C" int32_t fortran_checks();
extern "C" void fortran_stops();

TEST(Fortran, ChecksSizesAndPassesSectionsOn) { EXPECT_EQ(fortran_checks(), 0); }
TEST(FortranDeathTest, StopsWhereSizesDifferAndNoStatusIsWanted) {
  EXPECT_EXIT(fortran_stops(), testing::ExitedWithCode(1), "luxvm: arrays of different sizes");
}

#else

#include "luxvm.hpp"
#include "tests/cpp_names.h"  // CPP_Exp is lux::exp

using E_32f = float;
using E_64f = double;
using E_32fc = std::complex<float>;
using E_64fc = std::complex<double>;
static constexpr auto A11 = lux::a11;
static constexpr auto A21 = lux::a21;
static constexpr auto A50 = lux::a50;

template <class E>
static std::span<const E> x(const Arrays& a, int32_t len, int i = 0) {
  return {static_cast<const E*>(a.source[i]), size_t(len)};
}
template <class E>
static std::span<E> y(const Arrays& a, int32_t len, int i = 0) {
  return {static_cast<E*>(a.destination[i]), size_t(len)};
}

#define ARGUMENTS_1_1(E) x<E>(a, len), y<E>(a, len)
#define ARGUMENTS_2_1(E) x<E>(a, len), x<E>(a, len, 1), y<E>(a, len)
#define ARGUMENTS_1_2(E) x<E>(a, len), y<E>(a, len), y<E>(a, len, 1)
#define ARGUMENTS_2_1_1(E) x<E>(a, len), *static_cast<const E*>(a.scalar), y<E>(a, len)

#define GRADE_0(grade)  // the best one is taken where none stands
#define GRADE_1(grade) , grade
#define GRADE_2(grade) , grade
static constexpr Call kCalls[] = {
#define LUX_GRADED(F, type, grade, letter, shape, row, variant)                  \
  [](const Arrays& a, int32_t len) {                                             \
    return CPP_##F(ARGUMENTS_##shape(E_##type) GRADE_##variant(grade)).status(); \
  },
#define COUNTED_STATUS(status) status
#define COUNTED_COUNT(status) counted(status, len)
#define LUX_EXACT(F, type, letter, shape, returns)                           \
  [](const Arrays& a, int32_t len) {                                         \
    return COUNTED_##returns(CPP_##F(ARGUMENTS_##shape(E_##type)).status()); \
  },
#include "core/functions.def"
};

TEST(Cpp, SizesAreCheckedBeforeAnythingIsWritten) {
  std::vector<double> three(3, 1), four(4, 1), none;
  EXPECT_THROW(lux::exp(three, four), std::length_error);
  EXPECT_THROW(lux::hypot(three, four, three), std::length_error);
  EXPECT_THROW(lux::powx(four, 2, three), std::length_error);
  EXPECT_THROW(lux::sincos(three, three, four), std::length_error);
  EXPECT_THROW(lux::rint(none, three), std::length_error);
  EXPECT_EQ(three, std::vector<double>(3, 1));
  EXPECT_TRUE(lux::exp(none, none).ok());
  EXPECT_TRUE(lux::rint(none, none).ok());
  EXPECT_EQ(lux::exp(std::span<double>(static_cast<double*>(nullptr), 3), three).status(),
            LUX_NULL_POINTER);
}

TEST(Cpp, TakesArraysOfEveryKind) {
  const std::array<float, 2> array = {0, 1};
  float plain[2], other[2];
  lux::exp(array, plain, lux::a24);
  lux::exp(std::vector<float>{0, 1}, std::span(other).first(2));
  EXPECT_TRUE(plain[0] == 1 && plain[1] == other[1] && other[1] == 2.71828175f);
  std::complex<float> z[1] = {{0, 1}};
  lux::powx(z, 2, z);  // in place, and a real scalar
  EXPECT_EQ(z[0], std::complex<float>(-1, 0));
}

// The status is that of the last element; lux::every has all of them, and only those of its call.
TEST(Cpp, EveryReportIsSeen) {
  const double x[] = {0, -1, 2, 3, 4}, tiny[] = {-1000, 1};
  double y[5], z[2];
  std::feclearexcept(FE_ALL_EXCEPT);
  std::feraiseexcept(FE_OVERFLOW);
  lux::reports all = lux::ln(x, y, lux::every);
  EXPECT_EQ(all.status(), LUX_DOMAIN);
  EXPECT_TRUE(all.pole() && all.domain() && !all.overflow() && !all.underflow());
  EXPECT_TRUE(std::fetestexcept(FE_OVERFLOW) && std::fetestexcept(FE_DIVBYZERO));
  EXPECT_TRUE(lux::sqrt(tiny, z, lux::a50, lux::every).domain());
  EXPECT_TRUE(lux::ln(std::span(x).last(3), std::span(y).last(3), lux::every).ok());
  all |= lux::exp(tiny, z, lux::every);
  EXPECT_TRUE(all.pole() && all.underflow() && all.status() == LUX_UNDERFLOW);
  try {
    all.or_throw();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const lux::error& error) {
    EXPECT_EQ(error.status(), LUX_DOMAIN);
    EXPECT_STREQ(error.what(), luxvm_status_text(LUX_DOMAIN));
  }
  EXPECT_THROW(lux::exp(tiny, z).or_throw(), lux::error);
  EXPECT_NO_THROW(lux::exp(z, z).or_throw());
}

#endif

class Languages : public testing::TestWithParam<size_t> {};
INSTANTIATE_TEST_SUITE_P(All, Languages, testing::Range(size_t(0), std::size(kFunctions)),
                         [](const auto& info) { return std::string(kFunctions[info.param].name); });

TEST_P(Languages, GiveWhatTheExportGives) {
  static_assert(std::size(kCalls) == std::size(kFunctions));
  Function f = kFunctions[GetParam()];
  const bench::FixedResults direct = bench::fixed_results(f);
  f.call = kCalls[GetParam()];
  EXPECT_TRUE(bench::fixed_results(f).bytes == direct.bytes);
}
