// SPDX-License-Identifier: MIT
//
// compare_libm FUNCTION TYPE ARGUMENTS RESULTS: what luxvm computed, beside what the C library
// makes of the same arguments. Both files hold one number a line; a few rows and the largest
// difference are shown.
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

struct Single {
  using Real = float;
  using Bits = int32_t;
  static float parse(const char* text, char** end) { return strtof(text, end); }
  static constexpr int kDigits = 9;
};

struct Double {
  using Real = double;
  using Bits = int64_t;
  static double parse(const char* text, char** end) { return strtod(text, end); }
  static constexpr int kDigits = 17;
};

// Overloads: expf and floorf for singles. The division is done in the type itself.
template <class Real>
static bool libm(const char* function, Real x, Real& y) {
  volatile Real rounded;  // x87 registers hold more than the type does
  if (strcmp(function, "exp") == 0)
    rounded = std::exp(x);
  else if (strcmp(function, "inv") == 0)
    rounded = Real(1) / x;
  else if (strcmp(function, "floor") == 0)
    rounded = std::floor(x);
  else
    return false;
  y = rounded;
  return true;
}

// Numbers in order of value, so that neighbours differ by 1.
template <class Type>
static typename Type::Bits place(typename Type::Real x) {
  const auto bits = std::bit_cast<typename Type::Bits>(x);
  return bits < 0 ? std::numeric_limits<typename Type::Bits>::min() - bits : bits;
}

template <class Type>
static long long ulps_apart(typename Type::Real a, typename Type::Real b) {
  if (a != a || b != b) return a != a && b != b ? 0 : 0x7FFFFFFFFFFFFFFF;
  return std::llabs(static_cast<long long>(place<Type>(a)) - place<Type>(b));
}

template <class Type>
static bool read(const char* path, std::vector<typename Type::Real>& numbers) {
  std::ifstream file(path);
  std::string line;
  while (std::getline(file, line)) {
    char* end;
    numbers.push_back(Type::parse(line.c_str(), &end));
    if (end == line.c_str())
      return fprintf(stderr, "%s: %s is no number\n", path, line.c_str()), false;
  }
  return !numbers.empty();
}

template <class Type>
static int compare(const char* function, const char* arguments, const char* results) {
  constexpr size_t kShown = 6;
  std::vector<typename Type::Real> x, ours;
  if (!read<Type>(arguments, x) || !read<Type>(results, ours) || x.size() != ours.size()) {
    fprintf(stderr, "compare_libm: %s and %s do not hold the same number of numbers\n", arguments,
            results);
    return 1;
  }
  size_t worst = 0, different = 0;
  long long largest = 0;
  printf("  %-14s %-24s %-24s %s\n", "argument", "luxvm", "libm", "ulps apart");
  const auto show = [&](size_t i, typename Type::Real theirs, long long apart) {
    printf("  %-14.8g %-24.*g %-24.*g %lld\n", double(x[i]), Type::kDigits, double(ours[i]),
           Type::kDigits, double(theirs), apart);
  };
  typename Type::Real theirs{};
  for (size_t i = 0; i < x.size(); ++i) {
    if (!libm(function, x[i], theirs)) {
      fprintf(stderr, "compare_libm: no function %s\n", function);
      return 1;
    }
    const long long apart = ulps_apart<Type>(ours[i], theirs);
    different += apart != 0;
    if (apart > largest) largest = apart, worst = i;
    if (i % (x.size() / kShown + 1) == 0) show(i, theirs, apart);
  }
  printf("  %zu of %zu results differ from libm's; largest difference %lld ulp%s\n", different,
         x.size(), largest, largest == 1 ? "" : "s");
  if (largest == 0) return 0;
  printf("  first such row:\n");
  libm(function, x[worst], theirs);
  show(worst, theirs, largest);
  return 0;
}

int main(int count, char** arguments) {
  const std::string type = count == 5 ? arguments[2] : "";
  if (type == "32f") return compare<Single>(arguments[1], arguments[3], arguments[4]);
  if (type == "64f") return compare<Double>(arguments[1], arguments[3], arguments[4]);
  fprintf(stderr, "usage: compare_libm exp|inv|floor 32f|64f ARGUMENTS RESULTS\n");
  return 2;
}
