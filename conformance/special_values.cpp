// SPDX-License-Identifier: MIT
#include "conformance/special_values.h"
#include "catalog/number_format.h"

#include "conformance/complex_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

namespace bench {
namespace {

// One line of the table. A line without a shape heads the rows after it.
struct Line {
  int number;
  std::string_view family, type, grades, shape;
  Number argument[2], result[2];
  int code;
};

constexpr uint64_t D(double x) { return std::bit_cast<uint64_t>(x); }
constexpr uint64_t F(float x) { return std::bit_cast<uint32_t>(x); }

#define ANY Match::kAny
#define ANY_NAN Match::kNaN
#define ANY_ZERO Match::kZero
#define OF(family, type, grades) {__LINE__, #family, #type, #grades, "", {}, {}, 0},
#define ROW(shape, x1, x2, y1, y2, code) {__LINE__, "", "", "", #shape, {x1, x2}, {y1, y2}, code},
#define ROW_1_1(x, y, code) ROW(1_1, x, 0, y, 0, code)
#define ROW_2_1(x1, x2, y, code) ROW(2_1, x1, x2, y, 0, code)
#define ROW_2_1_1(x, scalar, y, code) ROW(2_1_1, x, scalar, y, 0, code)
#define ROW_1_2(x, y1, y2, code) ROW(1_2, x, 0, y1, y2, code)
#define ROUNDED(family, type, x, y) OF(family, type, ALL) ROW_1_1(x, y, 0)
#define ROUNDING(type, x, floor, ceil, trunc, round, nearest) \
  ROUNDED(Floor, type, x, floor)                              \
  ROUNDED(Ceil, type, x, ceil)                                \
  ROUNDED(Trunc, type, x, trunc)                              \
  ROUNDED(Round, type, x, round)                              \
  ROUNDED(NearbyInt, type, x, nearest) ROUNDED(Rint, type, x, nearest)

constexpr Line kLines[] = {
#include "conformance/special_values.def"
};

constexpr bool applies(const Line& heading, const Function& f) {
  return f.is(heading.family, heading.type) &&
         (heading.grades == "ALL" ||
          (f.graded() && heading.grades.find(f.grade) != std::string_view::npos));
}

constexpr bool fits(const Number& number, int width) {
  return width == 8 || (number.re.bits >> 32 == 0 && number.im.bits >> 32 == 0);
}

// A row of another shape than its functions have, a pattern too long for them, a heading that
// stands for no function: the number of the first such line, 0 when there is none.
constexpr int first_wrong_line() {
  constexpr int kNone = int(std::size(kFunctions));
  int at = kNone;
  for (const Line& line : kLines) {
    if (line.shape.empty()) {
      for (at = 0; at < kNone && !applies(line, kFunctions[at]);) ++at;
      if (at == kNone) return line.number;
      continue;
    }
    if (at == kNone || line.shape != kFunctions[at].shape.name) return line.number;
    for (int k = 0; k < 2; ++k)
      if (!fits(line.argument[k], kFunctions[at].type.width) ||
          !fits(line.result[k], kFunctions[at].type.width))
        return line.number;
  }
  return 0;
}
static_assert(first_wrong_line() == 0, "the number is the line of conformance/special_values.def");

}  // namespace

std::vector<SpecialRow> special_rows(const Function& function) {
  std::vector<SpecialRow> rows = complex_rows(function);
  bool applicable = false;
  for (const Line& line : kLines)
    if (line.shape.empty()) {
      applicable = applies(line, function);
    } else if (applicable) {
      rows.push_back({"special_values.def",
                      line.number,
                      {line.argument[0], line.argument[1]},
                      {line.result[0], line.result[1]},
                      line.code});
    }
  return rows;
}

namespace {

constexpr int kLongest = 12, kPlaces = kLongest * (kLongest + 1) / 2;
constexpr int kLargestElement = 16;

struct Trial {
  alignas(16) unsigned char source[2][kLongest * kLargestElement];
  alignas(16) unsigned char destination[2][kLongest * kLargestElement];
  alignas(16) unsigned char scalar[kLargestElement];
  Status status;
};

void run(const Function& f, Trial& trial, int len) {
  memset(trial.destination, 0xA5, sizeof trial.destination);
  trial.status = f.call({{trial.source[0], trial.source[1]},
                         {trial.destination[0], trial.destination[1]},
                         trial.scalar},
                        len);
}

void put(const ElementType& type, unsigned char* array, int at, const Number& number) {
  unsigned char* const to = array + at * type.bytes();
  store_bits(to, number.re.bits, type.width);
  if (type.complex()) store_bits(to + type.width, number.im.bits, type.width);
}

uint64_t part(const ElementType& type, const unsigned char* array, int index) {
  return load_bits(array + index * type.width, type.width);
}

// Nothing special for any family, with either sign of rounding.
Number plain_value(const Function& f) {
  const double x = f.family == "Acosh" ? 1.5 : 0.75;
  const uint64_t bits = f.type.width == 4 ? F(float(x)) : D(x);
  return Number(bits, bits);
}

bool matches(const Part& want, uint64_t got, int width) {
  const NumberFormat& format = number_format(width);
  switch (want.match) {
    case Match::kAny:
      return true;
    case Match::kNaN:
      return format.is_quiet_nan(got);
    case Match::kZero:
      return format.magnitude(got) == 0;
    default:
      return got == want.bits;
  }
}

std::string text(const Part& part, int width) {
  switch (part.match) {
    case Match::kAny:
      return "anything";
    case Match::kNaN:
      return "a quiet NaN";
    case Match::kZero:
      return "a zero";
    default:
      return fmt::format("0x{:0{}X}", part.bits, 2 * width);
  }
}
std::string text(const Number& number, const ElementType& type) {
  return text(number.re, type.width) +
         (type.complex() ? " + i " + text(number.im, type.width) : "");
}

std::string arguments_text(const Function& f, const SpecialRow& row) {
  const bool two = f.shape.sources == 2 || f.shape.scalar;
  return text(row.argument[0], f.type) + (two ? ", " + text(row.argument[1], f.type) : "");
}

// What is wrong with the results at `at`, empty if nothing is.
std::string wrong_result(const Function& f, const SpecialRow& row, const Trial& trial, int at) {
  for (int k = 0; k < f.shape.destinations; ++k)
    for (int p = 0; p < f.type.parts; ++p) {
      const Part& want = p ? row.result[k].im : row.result[k].re;
      const uint64_t got = part(f.type, trial.destination[k], at * f.type.parts + p);
      if (!matches(want, got, f.type.width))
        return fmt::format("the result{} is {}, not {}",
                           f.type.complex() ? (p ? " (im)" : " (re)") : "",
                           text(Part(got), f.type.width), text(want, f.type.width));
    }
  return "";
}

std::string wrong_neighbour(const Function& f, const Trial& trial, const Trial& plain, int at,
                            int len) {
  const uint64_t tolerance = neighbours_matter(f);
  for (int k = 0; k < f.shape.destinations; ++k)
    for (int i = 0; i < len * f.type.parts; ++i) {
      if (i / f.type.parts == at) continue;
      const uint64_t got = part(f.type, trial.destination[k], i);
      const uint64_t want = part(f.type, plain.destination[k], i);
      if (got - want + tolerance > 2 * tolerance)
        return fmt::format("its neighbour at {} is {}, not {}", i / f.type.parts,
                           text(Part(got), f.type.width), text(Part(want), f.type.width));
    }
  return "";
}

// The status is the code of the last element reported. With an unusual scalar plain values are
// reported, too.
Status expected_status(const Function& f, int code, Status plain, int at, int len) {
  if (f.counts) return len;
  const Status others = len > 1 ? plain : 0;
  const bool last = at == len - 1;
  return last ? (code ? code : others) : (others ? others : code);
}

std::string what_is_wrong(const Function& f, const SpecialRow& row, const Trial& trial,
                          const Trial& plain, int at, int len) {
  const Status status = expected_status(f, row.code, plain.status, at, len);
  if (trial.status != status) return fmt::format("the status is {}, not {}", trial.status, status);
  std::string wrong = wrong_result(f, row, trial, at);
  return wrong.empty() ? wrong_neighbour(f, trial, plain, at, len) : wrong;
}

// One row at all places.
void check_row(const Function& f, const SpecialRow& row, SpecialOutcome& outcome) {
  std::string first;
  int failed = 0;
  for (int len = 1; len <= kLongest; ++len) {
    Trial plain;
    for (int at = 0; at < len; ++at)
      for (auto& source : plain.source) put(f.type, source, at, plain_value(f));
    put(f.type, plain.scalar, 0, row.argument[1]);
    Trial trial = plain;
    run(f, plain, len);
    for (int at = 0; at < len; ++at) {
      for (int k = 0; k < f.shape.sources; ++k) {
        memcpy(trial.source[k], plain.source[k], sizeof plain.source[k]);
        put(f.type, trial.source[k], at, row.argument[k]);
      }
      run(f, trial, len);
      const std::string wrong = what_is_wrong(f, row, trial, plain, at, len);
      if (wrong.empty()) continue;
      ++failed;
      if (first.empty()) first = fmt::format("at {} of {} {}", at, len, wrong);
    }
  }
  outcome.cases += kPlaces;
  if (failed)
    outcome.failures.push_back(fmt::format("{}({}): {} ({} of {} places; {} line {})", f.name,
                                           arguments_text(f, row), first, failed, kPlaces, row.file,
                                           row.line));
}

}  // namespace

SpecialOutcome check_special_values(const Function& function) {
  SpecialOutcome outcome;
  for (const SpecialRow& row : special_rows(function)) {
    ++outcome.rows;
    check_row(function, row, outcome);
  }
  return outcome;
}

}  // namespace bench
