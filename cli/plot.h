// SPDX-License-Identifier: MIT
//
// Pictures, drawn by gnuplot.
#ifndef LUX_CLI_PLOT_H
#define LUX_CLI_PLOT_H

#include <string>

// A Failure if a picture of that name cannot be drawn; to be called before long work.
void require_drawable(const std::string& path);

// Runs the commands (UTF-8; data inline, as $name << END) with gnuplot's svg terminal of that many
// pixels and writes the picture, complete or not at all. A Failure says what is missing or wrong.
void draw_svg(const std::string& path, int width, int height, const std::string& commands);

#endif
