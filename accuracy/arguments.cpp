// SPDX-License-Identifier: MIT
#include "accuracy/arguments.h"

#include "catalog/intervals.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numeric>
#include <random>
#include <utility>

namespace bench {
namespace {

struct Step {
  enum Kind { kPoint, kGrid, kCells, kToOne, kDense } kind;
  std::string_view family, type;
  double a = 0, b = 0, c = 0;
};

constexpr Step kSteps[] = {
#define LUX_POINT(F, type, x) {Step::kPoint, #F, #type, x},
#define LUX_GRID(F, type, spacing, first, last) {Step::kGrid, #F, #type, spacing, first, last},
#define LUX_CELLS(F, type, bits) {Step::kCells, #F, #type, bits},
#define LUX_TO_ONE(F, type, bits) {Step::kToOne, #F, #type, bits},
#define LUX_DENSE(F, type, low, high) {Step::kDense, #F, #type, low, high},
#include "core/functions.def"
};

// What a result is, coarsely: arguments where this changes are edges.
int result_class(uint64_t bits, int width) {
  const NumberFormat& format = number_format(width);
  const uint64_t magnitude = format.magnitude(bits);
  const int size = format.is_nan(bits)                 ? 0
                   : magnitude == 0                    ? 1
                   : magnitude < format.least_normal() ? 2
                   : magnitude < format.one()          ? 3
                   : magnitude == format.one()         ? 4
                   : magnitude < format.infinity()     ? 5
                                                       : 6;
  return size ? size + 8 * bool(bits & format.sign()) : 0;
}

class Generator {
 public:
  Generator(const Function& function, const Sampling& sampling)
      : function_(function),
        sampling_(sampling),
        width_(function.type.width),
        parts_(Oracle::arguments(function)),
        low_(format_.position(nearest(std::max(sampling.low, -largest()), width_))),
        high_(format_.position(nearest(std::min(sampling.high, largest()), width_))),
        random_(sampling.seed),
        oracle_(function) {
    std::copy_n(typical_of(function).source, 2, typical_);
    for (const Step& step : kSteps)
      if (function.is(step.family, step.type))
        (step.kind == Step::kDense ? dense_ : steps_).push_back(step);
  }

  std::vector<Argument> make() {
    if (function_.shape.scalar)
      for (const Argument& scalar : scalars()) {
        fixed_ = scalar;
        const size_t start = all_.size();
        fill(std::max(16, sampling_.samples / kScalars));
        std::shuffle(all_.begin() + int64_t(start), all_.end(), random_);
      }
    else {
      fill(sampling_.samples);
      std::shuffle(all_.begin(), all_.end(), random_);
    }
    return std::move(all_);
  }

 private:
  static constexpr int kScalars = 64;
  static constexpr int kWindow = 4096;  // neighbours among which a result near a midpoint is sought

  double largest() const { return as_double(format_.infinity() - 1, width_); }
  double unit() { return double(random_() >> 11) * 0x1p-53; }
  size_t below(size_t n) { return size_t(random_() % n); }
  bool chance(double probability) { return unit() < probability; }
  uint64_t number(double x) const { return nearest(x, width_); }
  bool second(int part) const { return part >= function_.type.parts; }

  void fill(int count) {
    if (function_.type.complex())
      fill_complex(count);
    else if (parts_ == 2)
      fill_two(count);
    else
      fill_one(count);
  }

  void add(const Argument& argument) {
    const double first = as_double(argument[0], width_);
    if (first >= sampling_.low && first <= sampling_.high) all_.push_back(argument);
  }
  void add_neighbours(Argument argument, int part, int reach) {
    const int64_t centre = format_.position(argument[part]);
    for (int k = -reach; k <= reach; ++k) {
      argument[part] = format_.at_position(centre + k);
      if (format_.is_finite(argument[part])) add(argument);
    }
  }

  // ---- One number

  // Every exponent as likely, the significand random or (one in eight) all zeros or ones.
  uint64_t any_exponent(int least, int most) {
    const auto& [bytes, mantissa, bias] = format_;
    const uint64_t exponent =
        uint64_t(std::clamp(least + bias, 0, 2 * bias)) +
        below(size_t(std::clamp(most, -bias, bias) - std::max(least, -bias) + 1));
    const uint64_t ones = (uint64_t(1) << mantissa) - 1;
    uint64_t significand = random_() & ones;
    if (chance(0.125)) significand = chance(0.5) ? below(3) : ones - below(3);
    return (chance(0.5) ? format_.sign() : 0) | exponent << mantissa | significand;
  }
  // Number i of a sequence that visits every exponent with either sign in turn.
  uint64_t stratum(int i) {
    if (!sampling_.whole_line()) return any();
    const auto& [bytes, mantissa, bias] = format_;
    const uint64_t significand = any() & ((uint64_t(1) << mantissa) - 1);
    const int fields = 2 * bias + 1;
    return (i / fields % 2 ? format_.sign() : 0) | uint64_t(i % fields) << mantissa | significand;
  }
  uint64_t any(int part = 0) {
    if (part == 0 && !sampling_.whole_line())
      return format_.at_position(low_ + int64_t(random_() % uint64_t(high_ - low_ + 1)));
    return any_exponent(-format_.bias, format_.bias);
  }
  uint64_t dense(int part = 0) {
    if (part == 0 && !sampling_.whole_line())
      return number(std::clamp(sampling_.low, -largest(), largest()) * (1 - unit()) +
                    std::clamp(sampling_.high, -largest(), largest()) * unit());
    if ((part == 0 || function_.type.complex()) && !dense_.empty() && chance(0.5)) {
      const Step& step = dense_[below(dense_.size())];
      return number(step.a + (step.b - step.a) * unit());
    }
    const Interval& interval = typical_[second(part)];
    if (interval.spread == UNIFORM)
      return number(interval.low + (interval.high - interval.low) * unit());
    const double magnitude = interval.low * std::pow(interval.high / interval.low, unit());
    return number(interval.spread == SIGNED && chance(0.5) ? -magnitude : magnitude);
  }
  // A number on which powers have exact or simple results.
  uint64_t plain() {
    const double halves = double(below(41)) / 2 - 10;
    switch (below(4)) {
      case 0:
        return number(halves);
      case 1:
        return number(halves / 3);
      case 2:
        return number(std::ldexp(1, int(below(64)) - 32));
      default:
        return number(double(below(2'000'001)) - 1'000'000);
    }
  }
  uint64_t mixed(int part) { return chance(0.4) ? any(part) : chance(0.1) ? plain() : dense(part); }

  // ---- Any shape: where the class of the result changes along one part

  int class_of(const Argument& argument) {
    alignas(16) char source[2][16] = {}, destination[2][16] = {};
    const int parts = function_.type.parts;
    for (int i = 0; i < parts_; ++i)
      store_bits(source[i / parts] + width_ * (i % parts), argument[size_t(i)], width_);
    function_.call({{source[0], source[1]}, {destination[0], destination[1]}, source[1]}, 1);
    int result = result_class(load_bits(destination[0], width_), width_);
    if (parts == 2)
      result = 16 * result + result_class(load_bits(destination[0] + width_, width_), width_);
    return result;
  }

  void add_edge(Argument argument, int part) {
    int64_t a = format_.position(argument[part]), b = format_.position(any(part));
    const int from = class_of(argument);
    argument[part] = format_.at_position(b);
    if (class_of(argument) == from) return;
    while ((a < b ? uint64_t(b) - uint64_t(a) : uint64_t(a) - uint64_t(b)) > 1) {
      const int64_t middle = std::midpoint(a, b);
      argument[part] = format_.at_position(middle);
      (class_of(argument) == from ? a : b) = middle;
    }
    argument[part] = format_.at_position(a);
    add_neighbours(argument, part, 3);
  }

  // ---- Real functions: exact results next to a midpoint

  // The result along neighbours of the argument, as a quadratic in its own last places: the third
  // derivative moves it by far less than the search resolves.
  void add_near_midpoint(Argument argument) {
    const auto mantissa = format_.mantissa;
    const uint64_t start = argument[0] & ~uint64_t(kWindow - 1);
    long double places[3];  // modulo a large power of two
    Real scaled(int(mpfr_get_prec(oracle_.exact(0))));
    mpfr_exp_t exponent = 0;
    for (int i = 0; i < 3; ++i) {
      argument[0] = start + uint64_t(i) * (kWindow / 2);
      if (!format_.is_finite(argument[0])) return;
      oracle_.evaluate(argument);
      if (!mpfr_regular_p(oracle_.exact(0))) return;
      if (i == 0) exponent = mpfr_get_exp(oracle_.exact(0));
      if (exponent <= format_.least_exponent() || exponent > format_.bias) return;
      mpfr_mul_2si(scaled, oracle_.exact(0), mantissa + 1 - exponent, MPFR_RNDN);
      if (i == 0) {
        places[0] = 0;
        base_.assign(scaled);
      } else {
        mpfr_sub(scaled, scaled, base_.floor, MPFR_RNDN);
        places[i] = mpfr_get_ld(scaled, MPFR_RNDN);
      }
    }
    places[0] = base_.fraction;
    const long double h = kWindow / 2;
    const long double curve = (places[2] - 2 * places[1] + places[0]) / (2 * h * h);
    const long double slope = (places[1] - places[0]) / h - curve * h;
    long double nearest_distance = 1;
    int best = 0;
    for (int k = 0; k < kWindow; ++k) {
      const long double place = places[0] + (slope + curve * k) * k;
      const long double distance = std::fabs(place - std::floor(place) - 0.5L);
      if (distance < nearest_distance) nearest_distance = distance, best = k;
    }
    argument[0] = start + uint64_t(best);
    add(argument);
  }

  // ---- Shapes

  void add_steps() {
    std::vector<uint64_t> points;
    for (const Step& step : steps_) {
      if (step.kind == Step::kPoint) {
        points.push_back(number(step.a));
        points.push_back(number(-step.a));
      } else if (step.kind == Step::kGrid) {
        const double cells = step.c - step.b;
        const bool all = cells <= kMostCells;
        for (int i = 0; i < std::min(cells, double(kMostCells)); ++i) {
          const double bound = step.b + 0.5 + (all ? double(i) : std::floor(cells * unit()));
          points.push_back(number(bound * step.a));
          // Within the cell too: ties, and all that is next to them, may go to every other cell.
          if (all) add(with(number((bound + unit()) * step.a)));
        }
      } else if (step.kind == Step::kToOne) {
        const double cells = std::exp2(step.a);
        for (int exponent = 1; exponent <= format_.mantissa + 1; ++exponent)
          for (int cell = 0; cell < int(cells); ++cell)
            for (const double within : {0.0, unit()}) {
              const double x = 1 - std::ldexp(1 + (cell + within) / cells, -exponent);
              points.push_back(number(chance(0.5) ? x : -x));
            }
      } else {
        const int shift = format_.mantissa - int(step.a);
        for (uint64_t cell = 0; cell < uint64_t(1) << int(step.a); ++cell)
          for (const bool moderate : {true, false}) {
            const uint64_t x =
                moderate ? any_exponent(-2, 1) : any_exponent(-format_.bias + 1, format_.bias);
            points.push_back((x >> format_.mantissa << format_.mantissa) + (cell << shift));
          }
      }
    }
    for (const uint64_t point : points) add_neighbours(with(point), 0, 2);
  }

  Argument with(uint64_t first) const {
    Argument argument = fixed_;
    argument[0] = first;
    return argument;
  }

  void fill_one(int count) {
    const bool trigonometric = function_.family == "Sin" || function_.family == "Cos" ||
                               function_.family == "SinCos" || function_.family == "Tan";
    for (int i = 0; i < count * 7 / 20; ++i) add(with(stratum(i)));
    for (int i = 0; i < count * 11 / 20; ++i) add(with(dense()));
    for (int i = 0; i < count / 200; ++i) add_edge(with(mixed(0)), 0);
    for (int i = 0; i < count / 20; ++i) add_near_midpoint(with(mixed(0)));
    add_neighbours(with(0), 0, 3);
    add_steps();
    if (trigonometric)
      for (int exponent = 0; exponent <= format_.bias; ++exponent)
        for (const uint64_t x : nearest_to_pi_multiples(exponent, width_)) {
          add_neighbours(with(x), 0, 1);
          add(with(x | format_.sign()));
        }
  }

  void fill_two(int count) {
    const bool power = function_.family == "Pow" || function_.family == "Powx";
    const bool free = !function_.shape.scalar;
    const auto pair = [&](uint64_t x, uint64_t y) {
      return Argument{x, free ? y : fixed_[1], 0, 0};
    };
    for (int i = 0; i < count / 4; ++i) add(pair(any(0), any(1)));
    for (int i = 0; i < count * 7 / 20; ++i) add(pair(dense(0), dense(1)));
    for (int i = 0; i < count / 10; ++i) add(pair(mixed(0), mixed(1)));
    // y next to a multiple of x by a power of two.
    for (int i = 0; i < count / 10 && free; ++i) {
      const uint64_t x = mixed(0);
      const double scaled = std::ldexp(as_double(x, width_), int(below(9)) - 4);
      const int64_t y = format_.position(number(chance(0.5) ? scaled : -scaled));
      const uint64_t neighbour = format_.at_position(y + int64_t(below(9)) - 4);
      if (format_.is_finite(neighbour)) add(pair(x, neighbour));
    }
    // Bases next to 1, where the power varies slowly even with huge exponents.
    for (int i = 0; i < count / 10 && power; ++i) {
      const double near = 1 + (chance(0.5) ? 1 : -1) * std::exp2(-1 - (format_.mantissa) * unit());
      add(pair(number(near), any_exponent(-4, format_.mantissa + 14)));
      add(pair(mixed(0), plain()));
    }
    for (int i = 0; i < count / 70; ++i)
      add_edge(pair(mixed(0), mixed(1)), free && chance(0.8) ? 1 : 0);
    for (int i = 0; i < count / 20; ++i) add_near_midpoint(pair(mixed(0), mixed(1)));
    add_steps_of_pairs(pair);
  }
  template <class Pair>
  void add_steps_of_pairs(const Pair& pair) {
    for (const Step& step : steps_)
      if (step.kind == Step::kPoint)
        for (int i = 0; i < 8; ++i) {
          add_neighbours(pair(number(step.a), mixed(1)), 0, 2);
          if (!function_.shape.scalar) add_neighbours(pair(mixed(0), number(step.a)), 1, 2);
        }
  }

  std::vector<Argument> scalars() {
    std::vector<Argument> all;
    for (int i = 0; i < kScalars; ++i) {
      Argument scalar{};
      for (int part = function_.type.parts; part < parts_; ++part)
        scalar[size_t(part)] = i % 4 == 0   ? plain()
                               : i % 4 == 1 ? any_exponent(-30, 30)
                               : i == 2     ? any_exponent(-format_.bias, format_.bias)
                                            : number(typical_[1].low + 20 * unit() - 10);
      if (i < 8) {
        scalar[size_t(function_.type.parts)] =
            number(std::array{2.0, 3.0, 0.5, -1.0, 1.0, -0.5, 1.0 / 3, -2.0}[size_t(i)]);
        if (function_.type.complex()) scalar[3] = 0;
      }
      all.push_back(scalar);
    }
    return all;
  }

  // Next to where the method changes along one part.
  uint64_t near_step() {
    const Step& step = steps_[below(steps_.size())];
    const double x = step.kind == Step::kGrid
                         ? (std::floor(step.b + (step.c - step.b) * unit()) + 0.5) * step.a
                         : step.a;
    const int64_t place = format_.position(number(chance(0.5) ? x : -x));
    return format_.at_position(place + int64_t(below(5)) - 2);
  }
  // As close to a multiple of pi/2 as an exponent allows, with either sign.
  uint64_t near_multiple() {
    const auto nearest = nearest_to_pi_multiples(int(below(size_t(format_.bias))), width_);
    const uint64_t sign = chance(0.5) ? format_.sign() : 0;
    return nearest.empty() ? number(0) : nearest[below(nearest.size())] | sign;
  }

  // A point in the plane: typical, anywhere, or close to where something cancels.
  void draw_complex(Argument& z, int at) {
    uint64_t &re = z[size_t(at)], &im = z[size_t(at) + 1];
    const auto tiny = [&] { return (chance(0.5) ? 1 : -1) * std::exp2(-60 * unit()); };
    re = dense(at);
    im = dense(at + 1);
    switch (below(10)) {
      case 0:  // every exponent
        re = any(at);
        im = any(at + 1);
        break;
      case 1:
      case 2:  // moderate exponents
        re = any_exponent(-40, 9);
        im = any_exponent(-40, 9);
        break;
      case 3: {  // near the unit circle, every other time as near as the parts allow
        const double angle = 6.283185307179586 * unit(), radius = 1 + tiny();
        re = number(radius * std::cos(angle));
        im = number(radius * std::sin(angle));
        const double x = as_double(re, width_);
        if (std::fabs(x) < 1 && chance(0.5)) im = number(std::sqrt((1 - x) * (1 + x)));
        break;
      }
      case 4: {  // near 0, +-1, +-i
        const double centre = double(below(3)) - 1;
        const bool imaginary = chance(0.5);
        re = number((imaginary ? 0 : centre) + tiny());
        im = number((imaginary ? centre : 0) + tiny());
        break;
      }
      case 5: {  // near a multiple of pi/2, for the functions that have poles and zeros there
        const double multiple = 1.5707963267948966 * (double(below(41)) - 20);
        const bool real = chance(0.5);
        (real ? re : im) = chance(0.7) ? number(multiple) : near_multiple();
        (real ? im : re) = number(tiny());
        break;
      }
      case 6: {  // near an axis or on it
        uint64_t& small = chance(0.5) ? re : im;
        small = chance(0.25) ? (chance(0.5) ? format_.sign() : 0)
                             : number(tiny() * as_double(re, width_));
        break;
      }
      case 7:
        if (!steps_.empty()) (chance(0.5) ? re : im) = near_step();
        break;
      default:
        break;
    }
  }

  // An exponent with which the terms of w log z cancel to a power within range.
  void draw_cancelling(Argument& z) {
    const std::complex<double> log =
        std::log(std::complex(as_double(z[0], width_), as_double(z[1], width_)));
    const double largest = std::log(this->largest());
    const std::complex<double> product(largest * (2 * unit() - 1),
                                       (chance(0.5) ? 1 : -1) * std::exp2(45 * unit()));
    const std::complex<double> w = product / log;
    const uint64_t re = number(w.real()), im = number(w.imag());
    if (format_.is_finite(re) && format_.is_finite(im)) z[2] = re, z[3] = im;
  }

  void fill_complex(int count) {
    const bool free = !function_.shape.scalar;
    for (int i = 0; i < count; ++i) {
      Argument z = fixed_;
      draw_complex(z, 0);
      if (parts_ == 4 && free) draw_complex(z, 2);
      if (parts_ == 4 && free && i % 8 == 1) draw_cancelling(z);
      if (i % 32 == 0)
        add_edge(z, int(below(size_t(free ? parts_ : 2))));
      else
        add(z);
    }
  }

  struct Base {
    explicit Base(int precision) : floor(precision) {}
    void assign(mpfr_srcptr x) {
      Real rest(64);
      mpfr_floor(floor, x);
      mpfr_sub(rest, x, floor, MPFR_RNDN);
      fraction = mpfr_get_ld(rest, MPFR_RNDN);
    }
    Real floor;
    long double fraction = 0;
  };

  static constexpr int kMostCells = 20'000;

  const Function& function_;
  const Sampling& sampling_;
  int width_, parts_;
  const NumberFormat& format_ = number_format(width_);
  int64_t low_, high_;
  std::mt19937_64 random_;
  Oracle oracle_;
  Interval typical_[2] = {};
  std::vector<Step> steps_, dense_;
  Argument fixed_{};
  Base base_{160};
  std::vector<Argument> all_;
};

}  // namespace

std::vector<Argument> make_arguments(const Function& function, const Sampling& sampling) {
  return Generator(function, sampling).make();
}

// Writing x = m 2^q with an integer m below 2^p, the distance of x from the nearest multiple of
// pi/2 is that of m (2^q 2/pi) from the nearest integer: the denominators of the convergents of
// that number are where it is smallest, and multiples of them come next.
std::vector<uint64_t> nearest_to_pi_multiples(int exponent, int width) {
  const int p = number_format(width).mantissa + 1, q = exponent - p + 1;
  constexpr int kBits = 2400;
  Real ratio(kBits);
  mpfr_const_pi(ratio, MPFR_RNDN);
  mpfr_ui_div(ratio, 2, ratio, MPFR_RNDN);
  mpfr_mul_2si(ratio, ratio, q, MPFR_RNDN);

  std::vector<uint64_t> found;
  const uint64_t least = uint64_t(1) << (p - 1), beyond = uint64_t(1) << p;
  uint64_t before = 1, last = 0;  // denominators: k[n] = a[n] k[n-1] + k[n-2]
  Real whole(kBits);
  for (;;) {
    mpfr_floor(whole, ratio);
    const uint64_t quotient = uint64_t(std::min(mpfr_get_d(whole, MPFR_RNDN), double(beyond)));
    if (last > 0) {
      // Multiples of the convergent and the intermediate fraction that fall into the binade.
      for (uint64_t m = (least + last - 1) / last * last, i = 0; m < beyond && i < 2;
           m += last, ++i)
        found.push_back(m);
      const uint64_t between = before + (beyond - 1 - before) / last * last;
      if (between >= least) found.push_back(between);
      if (quotient > (beyond - before) / last) break;
    }
    before = std::exchange(last, quotient * last + before);
    mpfr_sub(ratio, ratio, whole, MPFR_RNDN);
    mpfr_ui_div(ratio, 1, ratio, MPFR_RNDN);
  }
  // The last ones are the closest.
  if (found.size() > 6) found.erase(found.begin(), found.end() - 6);
  std::vector<uint64_t> numbers;
  for (const uint64_t m : found) numbers.push_back(nearest(std::ldexp(double(m), q), width));
  return numbers;
}

}  // namespace bench
