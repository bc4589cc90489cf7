// SPDX-License-Identifier: MIT
#include <luxvm.hpp>

#include <cstdio>
#include <vector>

int main() {
  const std::vector<double> x{0.0, 1.0, -1.0, 10.0};
  std::vector<double> y(x.size());
  lux::exp(x, y).or_throw();
  for (size_t i = 0; i < x.size(); ++i) std::printf("exp(%g) = %.17g\n", x[i], y[i]);
}
