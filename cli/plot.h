// SPDX-License-Identifier: MIT
//
// Pictures, drawn by gnuplot: as SVG or PNG, which the file's ending tells, or as text.
#ifndef LUX_CLI_PLOT_H
#define LUX_CLI_PLOT_H

#include "catalog/catalog.h"

#include <cmath>
#include <string>
#include <utility>
#include <vector>

// The colours of all pictures; they are told apart with every kind of colour vision.
namespace colour {
constexpr const char* kGrades[] = {"#0072b2", "#d55e00", "#009e73"};  // best, next, A11
constexpr const char kLibm[] = "#606060", kSleef[] = "#cc79a7";
}  // namespace colour

const char* colour_of(const Function& function);  // by its grade

struct Curve {
  std::string label, colour;                      // the label stands beside the curve's end
  std::vector<std::pair<double, double>> points;  // y that is no number: a gap
  int dash = 1;
  double width = 1.2;
  bool marked = false;  // its points are to be seen
};

// One coordinate system with its curves. Bounds that are no number are taken from the points.
struct Panel {
  std::string title, x_label, y_label;
  double x_low = NAN, x_high = NAN, y_low = NAN, y_high = NAN;
  bool log_x = false, log_y = false;
  std::string x_tics;  // in gnuplot's words, where its own choice does not do
  std::vector<Curve> curves;
};

// A Failure if a picture of that name cannot be drawn; to be called before long work. `option` is
// what the name was given to.
void require_drawable(const std::string& path, const char* option = "--plot");

// Panels in rows of so many, with a line of small print below them. Complete or not at all; a
// Failure says what is missing or wrong.
void draw(const std::string& path, const std::vector<Panel>& panels, int columns,
          const std::string& small_print);

// The same of characters, one panel below the other.
std::string draw_text(const std::vector<Panel>& panels, const std::string& small_print);

// Any other picture of that many pixels: gnuplot's commands, data inline as $name << END. Leaves
// the last 26 pixels to the small print.
void draw_commands(const std::string& path, int width, int height, const std::string& commands,
                   const std::string& small_print, int font = 13);

// "Intel ... , 2026-12-31, luxvm 5.2", of this machine and day.
std::string machine_and_date();

#endif
