// SPDX-License-Identifier: MIT
#include "conformance/complex_values.h"

#include <math.h>
#include <string.h>

#include <iterator>

namespace bench {
namespace {

// A part of a number as the table has it, exact for an argument, to be rounded for a result.
struct Value {
  enum Kind { kNumber, kNaN, kSignalling, kZero };
  long double number = 0;
  Kind kind = kNumber;
  constexpr Value(long double number) : number(number) {}
  constexpr Value(Kind kind) : kind(kind) {}

  constexpr Value operator-() const { return kind == kNumber ? Value(-number) : *this; }
  constexpr bool is_nan() const { return kind == kNaN || kind == kSignalling; }
};

struct Point {
  Value re, im;
};

// What a function makes of the numbers mirrored at the axes.
enum Symmetry {
  kNone,
  kConjugate,  // f(x - iy) is the conjugate of f(x + iy)
  kOdd,        // so it is, and f(-z) = -f(z)
  kEven,       // so it is, and f(-z) = f(z)
};

// How another function's values follow from those at the same place of the table.
enum Relation {
  kSame,
  kTurned,    // from f to -i f(iz): the parts change places in argument and result
  kTurnedIn,  // from f to f(iz): so they do in the argument, and the result is the conjugate
  kArea,      // from acos to acosh: the parts of the result, neither of them below 0 at im >= 0
  kDecimal,   // from log to log10
};

struct Heading {
  std::string_view family;
  Symmetry symmetry;
  std::string_view relative;
  Relation relation;
};

// A line without a heading is a row under the last one. Only some functions have two arguments.
struct Line {
  int number;
  Heading heading;
  Symmetry symmetry;  // kNone: of this row, whatever that of the function
  Point argument[2], result;

  constexpr bool is_heading() const { return !heading.family.empty(); }
};

constexpr Symmetry kOfFunction = kEven;  // any but kNone
constexpr long double Inf = __builtin_infl(), Pi = 3.14159265358979323846L;
constexpr Value::Kind NaN = Value::kNaN, SNaN = Value::kSignalling, Zero = Value::kZero;
constexpr long double SingleMin = 0x1p-149L, SingleMax = 0x1.fffffep127L;
constexpr long double DoubleMin = 0x1p-1074L, DoubleMax = 0x1.fffffffffffffp1023L;

#define Z(re, im) Point({re}, {im})
#define FUNCTIONS(family, symmetry, relative, relation) \
  {__LINE__, {#family, symmetry, #relative, relation}, kNone, {Z(0, 0), Z(0, 0)}, Z(0, 0)},
#define FUNCTION(family, symmetry) FUNCTIONS(family, symmetry, family, kSame)
#define ROW(symmetry, z, w, result) {__LINE__, {"", kNone, "", kSame}, symmetry, {z, w}, result},
#define AT(x, y, result) ROW(kOfFunction, Z(x, y), Z(0, 0), result)
#define ALONE(x, y, result) ROW(kNone, Z(x, y), Z(0, 0), result)
#define POWER(base, exponent, result) ROW(kOfFunction, base, exponent, result)
#define ACROSS(x, y, at_zero, at_y, at_infinity, at_nan) \
  AT(x, 0, at_zero) AT(x, y, at_y) AT(x, Inf, at_infinity) AT(x, NaN, at_nan)

constexpr Line kLines[] = {
#include "conformance/complex_values.def"
};

// The first line that heads rows of no complex function or has an argument that is no double.
constexpr int first_wrong_line() {
  const auto known = [](std::string_view family) {
    for (const Function& f : kFunctions)
      if (f.is(family, "64fc")) return true;
    return false;
  };
  const auto exact = [](const Value& x) { return x.kind || double(x.number) == x.number; };
  for (const Line& line : kLines) {
    if (line.is_heading() && !(known(line.heading.family) && known(line.heading.relative)))
      return line.number;
    for (const Point& z : line.argument)
      if (!exact(z.re) || !exact(z.im)) return line.number;
  }
  return 0;
}
static_assert(first_wrong_line() == 0, "the number is the line of conformance/complex_values.def");

// Through memory, since a cast alone need not round on the x87 unit.
template <class E>
E rounded(long double number) {
  volatile E in_memory = E(number);
  return in_memory;
}

bool is_single(const Value& x) { return x.kind || x.number == rounded<float>(x.number); }
bool is_single(const Point& z) { return is_single(z.re) && is_single(z.im); }

template <class E>
uint64_t pattern(long double number) {
  const E element = rounded<E>(number);
  uint64_t bits = 0;
  memcpy(&bits, &element, sizeof element);
  return bits;
}

// The signalling NaN has its payload in the low word only.
uint64_t argument_bits(const Value& x, int width) {
  if (x.kind == Value::kNaN) return width == 4 ? 0x7FC00000 : 0x7FF8000000000000;
  if (x.kind == Value::kSignalling) return width == 4 ? 0x7F812345 : 0x7FF0000000012345;
  return width == 4 ? pattern<float>(x.number) : pattern<double>(x.number);
}
Number argument(const Point& z, int width) {
  return Number(argument_bits(z.re, width), argument_bits(z.im, width));
}

Part result_part(const Value& x, int width, Match match) {
  if (x.kind == Value::kZero) return Match::kZero;
  if (x.is_nan()) return Match::kNaN;
  return Part(argument_bits(x, width), match);
}
Number result(const Point& z, int width, Match match) {
  return Number(result_part(z.re, width, match), result_part(z.im, width, match));
}

bool is_ordinary(const Value& x) { return !x.kind && x.number != 0 && isfinite(x.number); }

void relate(Relation relation, Point& z, Point& f) {
  const auto times = [](const Value& x, long double factor) {
    return x.kind ? x : Value(x.number * factor);
  };
  const auto magnitude = [](const Value& x) { return x.kind ? x : Value(fabsl(x.number)); };
  switch (relation) {
    case kSame:
      break;
    case kTurned:
      z = {z.im, z.re};
      f = {f.im, f.re};
      break;
    case kTurnedIn:
      z = {z.im, z.re};
      f = {f.re, -f.im};
      break;
    case kArea:
      f = {magnitude(f.im), !z.im.is_nan() && signbit(z.im.number) ? -f.re : f.re};
      break;
    case kDecimal:
      constexpr long double kLog10E = 0.434294481903251827651L;
      f = {times(f.re, kLog10E), times(f.im, kLog10E)};
  }
}

}  // namespace

std::vector<SpecialRow> complex_rows(const Function& function) {
  std::vector<SpecialRow> rows;
  if (!function.type.complex()) return rows;
  const int width = function.type.width;
  const Heading* heading = nullptr;
  for (const Line& line : kLines) {
    if (line.is_heading()) heading = &line.heading;
    if (line.is_heading()) continue;
    const bool itself = function.family == heading->family;
    if (!itself && function.family != heading->relative) continue;
    const Symmetry symmetry = line.symmetry == kNone ? kNone : heading->symmetry;
    if (width == 4 && !(is_single(line.argument[0]) && is_single(line.argument[1]))) continue;
    // A NaN is not mirrored.
    const bool left = symmetry > kConjugate && !line.argument[0].re.is_nan();
    const bool below = symmetry >= kConjugate && !line.argument[0].im.is_nan();
    for (int at = 0; at < 4; ++at) {
      const bool mirror_x = at & 1, mirror_y = at & 2;
      if ((mirror_x && !left) || (mirror_y && !below)) continue;
      Point z = line.argument[0], f = line.result;
      if (mirror_x) {
        z.re = -z.re;
        (symmetry == kOdd ? f.re : f.im) = symmetry == kOdd ? -f.re : -f.im;
      }
      if (mirror_y) {
        z.im = -z.im;
        f.im = -f.im;
      }
      if (!itself) relate(heading->relation, z, f);
      // The lower grades need not round ordinary results correctly.
      const bool near = (function.grade == "A21" || function.grade == "A11") && is_ordinary(z.re) &&
                        is_ordinary(z.im);
      rows.push_back({"complex_values.def",
                      line.number,
                      {argument(z, width), argument(line.argument[1], width)},
                      {result(f, width, near ? Match::kNear : Match::kBits), Number()},
                      0});
    }
  }
  return rows;
}

}  // namespace bench
