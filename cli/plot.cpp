// SPDX-License-Identifier: MIT
#include "cli/plot.h"

#include "cli/cli.h"
#include "cli/files.h"
#include "cli/machine.h"

#include <fmt/format.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <sstream>
#include <utility>

// Without a name, so that nothing of it is left whatever happens.
class Scratch {
 public:
  explicit Scratch(const std::string& content = "") : file_(tmpfile(), fclose) {
    if (!file_ || fwrite(content.data(), 1, content.size(), file_.get()) != content.size() ||
        fflush(file_.get()) != 0)
      throw Failure(fmt::format("cannot write a temporary file: {}", strerror(errno)));
    rewind(file_.get());
  }

  int descriptor() const { return fileno(file_.get()); }

  std::string content() {
    std::string text;
    char part[1 << 16];
    rewind(file_.get());
    while (const size_t got = fread(part, 1, sizeof part, file_.get())) text.append(part, got);
    return text;
  }

 private:
  std::unique_ptr<FILE, int (*)(FILE*)> file_;
};

// 0 or an errno; `status` is what the process left.
static int run_gnuplot(const Scratch& in, const Scratch& out, const Scratch& messages,
                       int& status) {
  posix_spawn_file_actions_t streams;
  posix_spawn_file_actions_init(&streams);
  posix_spawn_file_actions_adddup2(&streams, in.descriptor(), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&streams, out.descriptor(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&streams, messages.descriptor(), STDERR_FILENO);
  char name[] = "gnuplot", no_start_up_files[] = "-d";
  char* const arguments[] = {name, no_start_up_files, nullptr};
  pid_t process;
  const int error = posix_spawnp(&process, name, &streams, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&streams);
  if (error) return error;
  while (waitpid(process, &status, 0) < 0)
    if (errno != EINTR) return errno;
  return 0;
}

// gnuplot shows the line, a mark below it and then the reason, the last thing it says.
static std::string reason_in(std::string messages) {
  messages.erase(messages.find_last_not_of(" \n\t") + 1);
  const size_t last_line = messages.find_last_of('\n') + 1;
  const size_t start = messages.find_first_not_of(' ', last_line);
  return start == std::string::npos ? "it was told to plot nothing" : messages.substr(start);
}

static Failure no_gnuplot() {
  return Failure(
      "plots are drawn by gnuplot, which is not installed (Debian: apt-get install gnuplot-nox)");
}

// As posix_spawnp looks for it.
static bool has_gnuplot() {
  const char* const path = getenv("PATH");
  std::istringstream folders(path ? path : "/bin:/usr/bin");
  for (std::string folder; std::getline(folders, folder, ':');)
    if (access(((folder.empty() ? "." : folder) + "/gnuplot").c_str(), X_OK) == 0) return true;
  return false;
}

void require_drawable(const std::string& path, const char* option) {
  if (is_standard_stream(path)) throw Failure(fmt::format("{} needs the name of a file", option));
  require_writable(path);
  if (!has_gnuplot()) throw no_gnuplot();
}

std::string machine_and_date() {
  const Machine machine = probe_machine();
  return fmt::format("{}, {}, luxvm " LUX_VERSION,
                     machine.brand.empty() ? machine.vendor : machine.brand, today());
}

const char* colour_of(const Function& function) {
  return colour::kGrades[std::clamp(function.variant, 0, 2)];
}

static std::string drawn(const std::string& what, const std::string& commands) {
  const Scratch in("set encoding utf8\n" + commands);
  Scratch out, messages;
  int status = 0;
  if (const int error = run_gnuplot(in, out, messages, status))
    throw error == ENOENT ? no_gnuplot()
                          : Failure(fmt::format("cannot run gnuplot: {}", strerror(error)));
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    throw Failure(
        fmt::format("gnuplot could not draw {}: {}", what, reason_in(messages.content())));
  return out.content();
}

static bool is_png(const std::string& path) { return path.ends_with(".png"); }

// Exponents as they are printed: 2^-21 with small digits.
static std::string typeset(const std::string& text) {
  constexpr const char* kDigits[] = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹"};
  std::string result;
  bool raised = false;
  for (const char c : text) {
    if (c == '^') {
      raised = true;
    } else if (raised && (c == '-' || (c >= '0' && c <= '9') || c == '.')) {
      result += c == '-' ? "⁻" : c == '.' ? "·" : kDigits[c - '0'];
    } else {
      raised = false;
      result += c;
    }
  }
  return result;
}

static size_t letters_in(const std::string& text) {
  return size_t(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

// Any text between gnuplot's double quotes.
static std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result + '"';
}

void draw_commands(const std::string& path, int width, int height, const std::string& commands,
                   const std::string& small_print, int font) {
  const char* const terminal = is_png(path) ? "pngcairo" : "svg";
  const std::string picture =
      drawn(path, fmt::format("set terminal {} size {},{} enhanced font '{},{}' background '{}'\n"
                              "set label 1000 {} at screen {:.4f},{:.4f} left font ',10' tc rgb "
                              "'#606060' noenhanced\n{}\n",
                              terminal, width, height, is_png(path) ? "Sans" : "sans-serif", font,
                              is_png(path) ? "#ffffff" : "white", quoted(small_print), 10.0 / width,
                              11.0 / height, commands));
  const std::string_view end = is_png(path) ? "IEND" : "</svg>";
  if (picture.find(end) == std::string::npos)
    throw Failure(fmt::format("gnuplot could not draw {}: the picture is incomplete", path));
  write_file(path, picture);
}

// ---- Panels ----------------------------------------------------------------------------------

struct Bounds {
  double low = std::numeric_limits<double>::infinity(), high = -low;

  void take(double x) {
    if (std::isfinite(x)) low = std::min(low, x), high = std::max(high, x);
  }
};

// The panel with bounds that hold all points, a little room around them.
static Panel bounded(Panel panel) {
  Bounds x, y;
  for (const Curve& curve : panel.curves)
    for (const auto& point : curve.points) {
      if (panel.log_x && point.first <= 0) continue;
      x.take(point.first);
      if (!panel.log_y || point.second > 0) y.take(point.second);
    }
  if (!(x.low <= x.high)) x = {1, 10};
  if (!(y.low <= y.high)) y = {1, 10};
  if (x.low == x.high)
    x = panel.log_x ? Bounds{x.low / 2, x.low * 2} : Bounds{x.low - 1, x.low + 1};
  const double room = panel.log_y ? std::pow(y.high / y.low, 0.06) : (y.high - y.low) * 0.06;
  const auto set = [](double& bound, double value) { bound = std::isnan(bound) ? value : bound; };
  set(panel.x_low, x.low);
  set(panel.x_high, x.high);
  const double least = std::fabs(y.high) * 0.05 + 1e-300;
  set(panel.y_low, panel.log_y ? y.low / std::max(room, 1.2) : y.low - std::max(room, least));
  set(panel.y_high, panel.log_y ? y.high * std::max(room, 1.2) : y.high + std::max(room, least));
  return panel;
}

static double share_of_height(const Panel& panel, double y) {
  const double share = panel.log_y
                           ? std::log(y / panel.y_low) / std::log(panel.y_high / panel.y_low)
                           : (y - panel.y_low) / (panel.y_high - panel.y_low);
  return std::clamp(std::isnan(share) ? 0.0 : share, 0.0, 1.0);
}

struct EndLabel {
  double height;  // 0 to 1 of the panel
  std::string text, colour;
};

// Beside the ends of the curves, moved apart so that each can be read.
static std::vector<EndLabel> end_labels(const Panel& panel, double spacing) {
  std::vector<EndLabel> labels;
  for (const Curve& curve : panel.curves) {
    if (curve.label.empty()) continue;
    // Of a noisy curve the height of its end is the mean over the last sixtieth.
    double sum = 0;
    int count = 0;
    const size_t tail = std::max<size_t>(1, curve.points.size() / 60);
    for (size_t i = curve.points.size(); i-- > 0 && count < int(tail);)
      if (std::isfinite(curve.points[i].second))
        sum += share_of_height(panel, curve.points[i].second), ++count;
    labels.push_back({count ? sum / count : 0, curve.label, curve.colour});
  }
  std::stable_sort(labels.begin(), labels.end(),
                   [](const auto& a, const auto& b) { return a.height < b.height; });
  for (size_t i = 1; i < labels.size(); ++i)
    labels[i].height = std::max(labels[i].height, labels[i - 1].height + spacing);
  double most = 1;
  for (size_t i = labels.size(); i-- > 0; most = labels[i].height - spacing)
    labels[i].height = std::min(labels[i].height, most);
  return labels;
}

// On a logarithmic axis gnuplot marks powers of ten only, of which a short one has none.
static std::string log_tics(double low, double high) {
  if (high / low > 2000) return "autofreq";
  std::string tics;
  for (double power = std::pow(10, std::floor(std::log10(low))); power <= high; power *= 10)
    for (const double step : {1.0, 1.5, 2.0, 3.0, 4.0, 5.0, 6.0, 8.0}) {
      const bool kept = high / low < 12 || step == 1 || step == 2 || step == 5;
      const double x = power * step;
      if (kept && x >= low * 0.9999 && x <= high * 1.0001)
        tics += fmt::format("{}{:.6g}", tics.empty() ? "(" : ", ", x);
    }
  return tics.empty() ? "autofreq" : tics + ")";
}

static std::string axes(const Panel& panel) {
  const auto axis = [&](char name, bool log, double low, double high, const std::string& tics) {
    const bool powers = log && (high / low >= 1e4 || low < 1e-3);
    return fmt::format(
        "{} logscale {}\nset {}range [{:.17g}:{:.17g}]\nset format {} '{}'\n"
        "set {}tics {}\n",
        log ? "set" : "unset", name, name, low, high, name, powers ? "10^{%T}" : "%g", name,
        !tics.empty() ? "(" + tics + ")"
        : log         ? log_tics(low, high)
                      : "autofreq");
  };
  return axis('x', panel.log_x, panel.x_low, panel.x_high, panel.x_tics) +
         axis('y', panel.log_y, panel.y_low, panel.y_high, "") +
         fmt::format("set xlabel {} noenhanced offset 0,0.3\nset ylabel {} noenhanced\n",
                     quoted(panel.x_label), quoted(panel.y_label));
}

// The data and the plot command; the titles are for a key.
static std::string plot_of(const Panel& panel, size_t number, bool keyed) {
  std::string data, plots;
  for (size_t i = 0; i < panel.curves.size(); ++i) {
    const Curve& curve = panel.curves[i];
    data += fmt::format("$d{}_{} << END\n", number, i);
    for (const auto& [x, y] : curve.points)
      data += std::isfinite(y) && std::isfinite(x) ? fmt::format("{:.8g} {:.5g}\n", x, y) : "\n";
    data += "END\n";
    plots +=
        fmt::format("{}$d{}_{} using 1:2 with {} lw {} dt {} lc rgb '{}'{} {}", i ? ", " : "plot ",
                    number, i, curve.marked && !keyed ? "linespoints" : "lines", curve.width,
                    curve.dash, curve.colour, curve.marked && !keyed ? " pt 7 ps 0.4" : "",
                    keyed && !curve.label.empty() ? "title " + quoted(curve.label) : "notitle");
  }
  return data + plots + "\n";
}

static Panel typeset(Panel panel) {
  for (std::string* text : {&panel.title, &panel.x_label, &panel.y_label}) *text = typeset(*text);
  for (Curve& curve : panel.curves) curve.label = typeset(curve.label);
  return panel;
}

void draw(const std::string& path, const std::vector<Panel>& panels, int columns,
          const std::string& small_print) {
  const int rows = (int(panels.size()) + columns - 1) / columns;
  const int cell_width = columns == 1 ? 800 : 460;
  const int cell_height = columns > 1 ? 260 : rows == 1 ? 430 : 340;
  const int font = columns == 1 ? 13 : 9;
  const int width = cell_width * columns, height = cell_height * rows + 26;
  std::string commands = fmt::format(
      "set multiplot\nset clip two\nset tics nomirror scale 0.5 font ',{0}'\nset border 3 lc rgb "
      "'#404040'\n"
      "set grid lt 1 lc rgb '#d0d0d0' lw 0.7\nunset key\n",
      font - 1);
  for (size_t k = 0; k < panels.size(); ++k) {
    const Panel panel = typeset(bounded(panels[k]));
    const double left_edge = double(int(k) % columns * cell_width);
    const double top_edge = height - double(int(k) / columns * cell_height);
    const double plot_height = cell_height - 56 - 3.1 * font;
    size_t longest = 0;
    const std::vector<EndLabel> labels = end_labels(panel, 1.35 * font / plot_height);
    for (const EndLabel& label : labels) longest = std::max(longest, letters_in(label.text));
    const double left = left_edge + 6.6 * font;
    const double right = left_edge + cell_width - 20 - 0.62 * font * double(longest);
    const double top = top_edge - 36, bottom = top - plot_height;
    commands += fmt::format(
        "set lmargin at screen {:.4f}\nset rmargin at screen {:.4f}\n"
        "set tmargin at screen {:.4f}\nset bmargin at screen {:.4f}\n"
        "set label 1 {} at screen {:.4f},{:.4f} left font ',{}' noenhanced\n{}",
        left / width, right / width, top / height, bottom / height, quoted(panel.title),
        left / width, (top + 17) / height, font + 1, axes(panel));
    for (size_t i = 0; i < labels.size(); ++i)
      commands += fmt::format(
          "set label {} {} at screen {:.4f},{:.4f} left font ',{}' tc rgb '{}' noenhanced\n", i + 2,
          quoted(labels[i].text), (right + 7) / width,
          (bottom + labels[i].height * plot_height) / height, font - 1, labels[i].colour);
    commands += plot_of(panel, k, false) + "unset label\n";
  }
  draw_commands(path, width, height, commands + "unset multiplot\n", small_print, font);
}

// Exponents as characters can show them.
static std::string in_characters(std::string commands) {
  const auto replace = [&](const std::string& what, const std::string& by) {
    for (size_t at = 0; (at = commands.find(what, at)) != std::string::npos; at += by.size())
      commands.replace(at, what.size(), by);
  };
  replace("10^{%T}", "%g");
  replace("10^{", "1e");
  replace("}\"", "\"");
  return commands;
}

std::string draw_text(const std::vector<Panel>& panels, const std::string& small_print) {
  winsize window{};
  const bool terminal =
      isatty(STDOUT_FILENO) && ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_col;
  const int width = terminal ? std::max<int>(40, window.ws_col - 1) : 79;
  const int height = terminal ? std::max<int>(12, window.ws_row - 2) : 24;
  if (!has_gnuplot()) throw no_gnuplot();
  std::string text;
  for (Panel panel : panels) {
    panel = bounded(panel);
    text += fmt::format("{}\n{}, over the {}\n", panel.title, std::exchange(panel.y_label, ""),
                        std::exchange(panel.x_label, ""));
    std::string page =
        drawn("text",
              fmt::format("set terminal dumb size {},{} noenhanced\n{}"
                          "set clip two\nset key below left vertical maxrows 3\n"
                          "set tics nomirror\n{}",
                          width, height - 2, in_characters(axes(panel)), plot_of(panel, 0, true)));
    page.erase(std::remove(page.begin(), page.end(), '\f'), page.end());
    // Without the lines at its head that have only blanks.
    const size_t first = std::min(page.find_first_not_of(" \n"), page.size());
    text += page.substr(first ? page.rfind('\n', first) + 1 : 0);
  }
  return text + small_print + "\n";
}
