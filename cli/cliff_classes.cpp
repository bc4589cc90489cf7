// SPDX-License-Identifier: MIT
#include "cli/cliff_classes.h"
#include "catalog/intervals.h"
#include "catalog/number_format.h"
#include "catalog/random.h"
#include "conformance/complex_values.h"
#include "conformance/special_values.h"

#include <cmath>
#include <functional>
#include <map>

using bench::Element;
using bench::Interval;

constexpr int kElements = 64;  // that a class repeats

// One part of an operand, the i-th of its class.
using Draw = std::function<uint64_t(int i)>;

struct Maker {
  const Function& function;
  const bench::Typical& typical = bench::typical_of(function);
  const NumberFormat& format = number_format(function.type.width);
  Random random{20};
  std::vector<CliffClass> classes = {};

  uint64_t bits(double value) const {
    return format.width == 4 ? std::bit_cast<uint32_t>(float(value))
                             : std::bit_cast<uint64_t>(value);
  }
  uint64_t negated(uint64_t value) const { return value ^ format.sign(); }
  bool takes_negative(int operand) const {
    const Interval& interval = typical.source[operand];
    return interval.spread == bench::SIGNED || interval.low < 0;
  }
  uint64_t ordinary(int operand) { return bits(bench::draw(typical.source[operand], random)); }

  // Patterns evenly spread from `first` to `last`, so magnitudes over all exponents between; of either
  // sign where the typical arguments are.
  Draw between(int operand, uint64_t first, uint64_t last) {
    return [=, this](int i) {
      const uint64_t value = first + random.below(last - first + 1);
      return i % 2 && takes_negative(operand) ? negated(value) : value;
    };
  }

  // `one` and `other` draw the operands; of a complex one `imaginary` the second part, if given.
  void add(const std::string& name, const Draw& one, const Draw& other, bool changes_scalar,
           const Draw& imaginary = {}) {
    CliffClass made{name, {}, changes_scalar};
    for (int i = 0; i < kElements; ++i) {
      Element element;
      for (int part = 0; part < function.type.parts; ++part) {
        element.operand[0][part] = part && imaginary ? imaginary(i) : one(i);
        element.operand[1][part] = other(i);
      }
      made.elements.push_back(element);
    }
    classes.push_back(made);
  }

  void add_values(int operand) {
    const std::string which = operand ? "second operand: " : "";
    const bool changes_scalar = operand && function.shape.scalar;
    const auto put = [&](const char* name, const Draw& draw) {
      const Draw rest = [&](int) { return ordinary(1 - operand); };
      add(which + name, operand ? rest : draw, operand ? draw : rest, changes_scalar);
    };
    const auto all = [](uint64_t value) { return [=](int) { return value; }; };
    const uint64_t infinity = format.infinity(), one = format.one();
    put("zeros", all(0));
    put("negative zeros", all(format.sign()));
    put("subnormals", between(operand, 1, format.digits()));
    put("tiny", between(operand, format.least_normal(), one / 2));
    put("huge", between(operand, one / 2 * 3, infinity - 1));
    put("infinities", [=, this](int i) { return i % 2 ? negated(infinity) : infinity; });
    put("NaNs", all(infinity | format.quiet() | 1));
    if (!takes_negative(operand)) put("negative", [&](int) { return negated(ordinary(operand)); });
  }

  void add_whole() {
    const auto first = [&](int) { return ordinary(0); };
    const auto opposite = [&](int) { return negated(ordinary(0)); };
    const auto whole = [&](int) {
      return bits(std::nearbyint(bench::draw(typical.source[1], random)));
    };
    add("whole second operand", first, whole, function.shape.scalar);
    if (!takes_negative(0))
      add("negative, whole second operand", opposite, whole, function.shape.scalar);
  }

  void add_axes() {
    const Draw some = [&](int) { return ordinary(0); }, zero = [](int) { return 0; };
    const Draw second = [&](int) { return ordinary(1); };
    add("real", some, second, false, zero);
    add("imaginary", zero, second, false, some);
  }

  // What the rows of special values report, or give a subnormal result for; of a scalar the one that
  // most rows of the class have.
  void add_rows() {
    std::map<std::string, std::map<uint64_t, std::vector<Element>>> found;
    for (const bench::SpecialRow& row : bench::special_rows(function)) {
      Element element;
      for (int k = 0; k < 2; ++k)
        element.operand[k] = {row.argument[k].re.bits, row.argument[k].im.bits};
      const auto put = [&](const char* name) {
        found[name][function.shape.scalar ? element.operand[1][0] : 0].push_back(element);
      };
      const uint64_t result = format.magnitude(row.result[0].re.bits);
      if (row.result[0].re.match == bench::Match::kBits && result > 0 &&
          result < format.least_normal())
        put("subnormal results");
      if (row.code == 12) put("overflow");
      if (row.code == 17) put("underflow");
      if (row.code == 18) put("poles");
      if (row.code == 19) put("outside the domain");
    }
    for (const auto& [name, by_scalar] : found) {
      const std::vector<Element>* most = &by_scalar.begin()->second;
      for (const auto& [scalar, elements] : by_scalar)
        if (elements.size() > most->size()) most = &elements;
      classes.push_back({name, *most, function.shape.scalar});
    }
  }
};

std::vector<CliffClass> cliff_classes(const Function& function) {
  Maker maker{function};
  maker.add_values(0);
  if (const Interval* large = bench::large_interval(function))
    maker.add(
        "beyond the fast reduction",
        [&](int) { return maker.bits(bench::draw(*large, maker.random)); }, [](int) { return 0; },
        false);
  if (function.shape.sources == 2 || function.shape.scalar) {
    maker.add_values(1);
    maker.add_whole();
  }
  if (function.type.complex()) maker.add_axes();
  maker.add_rows();
  return maker.classes;
}
