// SPDX-License-Identifier: MIT
#include "cli/bench_rows.h"
#include "cli/plot.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <set>

// Told apart with every kind of colour vision.
constexpr const char* kColours[] = {"#0072b2", "#d55e00", "#009e73", "#cc79a7",
                                    "#e69f00", "#56b4e9", "#000000", "#8c6d31"};

constexpr char kCommon[] =
    "set grid ytics lc rgb '#c8c8c8'\n"
    "set tics nomirror scale 0.5\n"
    "set logscale y\n"
    "set ylabel 'core cycles per element'\n";

template <class Key>
static size_t distinct(const std::vector<BenchRow>& rows, const Key& key) {
  std::set<decltype(key(rows[0]))> keys;
  for (const BenchRow& row : rows) keys.insert(key(row));
  return keys.size();
}

struct Varying {
  bool functions, types, threads, offsets;
};

static Varying varying(const std::vector<BenchRow>& rows) {
  return {distinct(rows, [](const auto& r) { return r.function->name; }) > 1,
          distinct(rows, [](const auto& r) { return r.function->type.name; }) > 1,
          distinct(rows, [](const auto& r) { return r.threads; }) > 1,
          distinct(rows, [](const auto& r) { return r.offset; }) > 1};
}

static std::string conditions(const BenchRow& row, const Varying& several) {
  std::string text;
  if (several.threads) text += fmt::format(" T={}", row.threads);
  if (several.offsets) text += fmt::format(" +{}B", row.offset);
  return text;
}

// ---- Cycles over the length ------------------------------------------------------------------

struct Lengths {  // of one function under the same conditions
  std::string label;
  int colour, dash;
  std::vector<const BenchRow*> rows;
};

static std::vector<Lengths> curves_of(const std::vector<BenchRow>& rows) {
  const Varying several = varying(rows);
  std::vector<Lengths> curves;
  std::vector<const Function*> functions;
  for (const BenchRow& row : rows) {
    const std::string label =
        fmt::format("{}{}", row.function->name.substr(4), conditions(row, several));
    if (functions.empty() || functions.back() != row.function) functions.push_back(row.function);
    auto curve = std::find_if(curves.begin(), curves.end(),
                              [&](const Lengths& c) { return c.label == label; });
    if (curve == curves.end()) {
      const long siblings = std::count_if(curves.begin(), curves.end(), [&](const Lengths& c) {
        return c.rows[0]->function == row.function;
      });
      curves.push_back({label, int(functions.size()) - 1, int(siblings) + 1, {}});
      curve = curves.end() - 1;
    }
    curve->rows.push_back(&row);
  }
  for (Lengths& curve : curves)
    std::sort(curve.rows.begin(), curve.rows.end(),
              [](const auto* a, const auto* b) { return a->n < b->n; });
  return curves;
}

static Curve curve_of(const std::vector<const BenchRow*>& rows, const std::string& label,
                      const std::string& colour, int dash, double (*cycles)(const BenchRow& row)) {
  Curve curve{label, colour, {}, dash, 1.8, true};
  for (const BenchRow* row : rows) curve.points.emplace_back(row->n, cycles(*row));
  return curve;
}

static double own(const BenchRow& row) { return row.element.minimum; }
static double of_libm(const BenchRow& row) { return row.libm ? row.libm->minimum : NAN; }
static double of_sleef(const BenchRow& row) { return row.sleef ? row.sleef->minimum : NAN; }

static bool any_is(const std::vector<const BenchRow*>& rows, double (*cycles)(const BenchRow&)) {
  return std::any_of(rows.begin(), rows.end(),
                     [&](const BenchRow* row) { return std::isfinite(cycles(*row)); });
}

void require_few_curves(size_t curves) {
  if (curves > kMostCurves)
    throw Failure(fmt::format("{} curves are too many for a plot; choose at most {} by a pattern",
                              curves, kMostCurves));
}

Panel speed_panel(const std::vector<BenchRow>& rows) {
  const std::vector<Lengths> all = curves_of(rows);
  require_few_curves(all.size());
  const Function& first = *rows[0].function;
  const bool one_family = std::all_of(rows.begin(), rows.end(), [&](const BenchRow& row) {
    return row.function->is(first.family, first.type.name);
  });
  Panel panel;
  panel.title = one_family ? fmt::format("{} {}: speed", first.family, first.type.name) : "Speed";
  panel.x_label = "elements of an array";
  panel.y_label = "core cycles per element";
  panel.log_x = panel.log_y = true;
  for (const Lengths& lengths : all) {
    const Function& f = *lengths.rows[0]->function;
    const char* const colour =
        one_family ? colour_of(f) : kColours[size_t(lengths.colour) % std::size(kColours)];
    const std::string grade =
        f.graded() ? std::string(f.grade) + lengths.label.substr(f.name.size() - 4) : lengths.label;
    panel.curves.push_back(
        curve_of(lengths.rows, one_family ? grade : lengths.label, colour,
                 lengths.dash + lengths.colour / int(std::size(kColours)) * int(!one_family), own));
    const bool best = one_family && std::max(f.variant, 0) == 0 && lengths.dash == 1;
    if ((best || !one_family) && any_is(lengths.rows, of_libm))
      panel.curves.push_back(
          curve_of(lengths.rows, best ? "libm" : "", best ? colour::kLibm : colour, 3, of_libm));
    if (best && any_is(lengths.rows, of_sleef))
      panel.curves.push_back(curve_of(lengths.rows, "SLEEF", colour::kSleef, 3, of_sleef));
  }
  if (!one_family && panel.curves.size() > all.size()) panel.y_label += " (libm dotted)";
  return panel;
}

// ---- Bars ------------------------------------------------------------------------------------

// The bars of a family: its grades, then the others beside the best grade.
struct Cluster {
  std::string label;
  std::vector<const BenchRow*> rows;
};

static std::vector<Cluster> clusters_of(const std::vector<BenchRow>& rows) {
  const Varying several = varying(rows);
  std::vector<Cluster> clusters;
  for (const BenchRow& row : rows) {
    const Function& f = *row.function;
    const std::string label =
        fmt::format("{}{}{}", f.family, several.types ? fmt::format(" {}", f.type.name) : "",
                    conditions(row, several));
    auto cluster = std::find_if(clusters.begin(), clusters.end(),
                                [&](const Cluster& c) { return c.label == label; });
    if (cluster == clusters.end()) cluster = clusters.insert(clusters.end(), {label, {}});
    cluster->rows.push_back(&row);
  }
  // The best grade first.
  for (Cluster& cluster : clusters)
    std::stable_sort(cluster.rows.begin(), cluster.rows.end(), [](const auto* a, const auto* b) {
      return a->function->variant < b->function->variant;
    });
  return clusters;
}

struct Series {
  const char *title, *colour;
  double (*value)(const Cluster& cluster);  // not a number: no bar
};

template <int kVariant>
static double grade(const Cluster& cluster) {
  for (const BenchRow* row : cluster.rows)
    if (std::max(row->function->variant, 0) == kVariant) return row->element.minimum;
  return NAN;
}

template <std::optional<Figure> BenchRow::*kPeer>
static double peer(const Cluster& cluster) {
  const std::optional<Figure>& figure = cluster.rows[0]->*kPeer;
  return figure ? figure->minimum : NAN;
}

constexpr Series kSeries[] = {{"A24, A53 or exact", colour::kGrades[0], grade<0>},
                              {"A21, A50", colour::kGrades[1], grade<1>},
                              {"A11", colour::kGrades[2], grade<2>},
                              {"SLEEF", colour::kSleef, peer<&BenchRow::sleef>},
                              {"libm", colour::kLibm, peer<&BenchRow::libm>}};

// What a bar of a single cluster is.
static std::string bar_name(const Series& series, const Cluster& cluster) {
  for (const BenchRow* row : cluster.rows) {
    const Function& f = *row->function;
    if (series.colour == std::string_view(colour_of(f)))
      return std::string(f.graded() ? f.grade : f.name);
  }
  return series.title;
}

static std::vector<const Series*> shown_in(const std::vector<Cluster>& clusters) {
  std::vector<const Series*> shown;
  for (const Series& series : kSeries)
    if (std::any_of(clusters.begin(), clusters.end(),
                    [&](const Cluster& c) { return !std::isnan(series.value(c)); }))
      shown.push_back(&series);
  return shown;
}

// One family's grades and what it is compared with, each with its name and figure.
static void draw_one_cluster(const std::string& path, const Cluster& cluster,
                             const std::string& small_print) {
  const std::vector<const Series*> shown = shown_in({cluster});
  std::string data, plots, names;
  double most = 0;
  for (size_t s = 0; s < shown.size(); ++s) {
    const double cycles = shown[s]->value(cluster);
    most = std::max(most, cycles);
    names += fmt::format("{}\"{}\" {}", s ? ", " : "", bar_name(*shown[s], cluster), s);
    data += fmt::format("$s{} << END\n{} {:.4g}\nEND\n", s, s, cycles);
    plots += fmt::format(
        "{0}$s{1} using 1:2 with boxes fs solid noborder lc rgb '{2}' notitle, $s{1} using "
        "1:2:(sprintf('%.3g', $2)) with labels offset 0,0.7 notitle",
        s ? ", " : "", s, shown[s]->colour);
  }
  draw_commands(path, 560, 340,
                fmt::format("{}unset logscale y\nset border 3 lc rgb '#404040'\nset boxwidth 0.6\n"
                            "set xtics ({}) noenhanced\nset xrange [-0.6:{}]\nset yrange [0:{}]\n"
                            "set bmargin at screen 0.16\nunset key\n"
                            "set title \"{}, arrays of {} elements\" noenhanced\n{}plot {}\n",
                            kCommon, names, double(shown.size()) - 0.4, 1.15 * most, cluster.label,
                            cluster.rows[0]->n, data, plots),
                small_print);
}

static void draw_bars(const std::string& path, const std::vector<BenchRow>& rows,
                      const std::string& small_print) {
  const std::vector<Cluster> clusters = clusters_of(rows);
  if (clusters.size() == 1) return draw_one_cluster(path, clusters[0], small_print);
  const std::vector<const Series*> shown = shown_in(clusters);
  // A cluster fills 0.84 of its place, whichever of the series it has.
  std::string data, plots, labels;
  const double width = 0.84 / double(shown.size());
  std::vector<std::string> points(shown.size());
  for (size_t k = 0; k < clusters.size(); ++k) {
    const Cluster& cluster = clusters[k];
    labels += fmt::format("{}\"{}\" {}", k ? ", " : "", cluster.label, k);
    std::vector<size_t> has;
    for (size_t s = 0; s < shown.size(); ++s)
      if (!std::isnan(shown[s]->value(cluster))) has.push_back(s);
    const double left = double(k) - width * double(has.size()) / 2;
    for (size_t i = 0; i < has.size(); ++i)
      points[has[i]] += fmt::format("{:.4f} {:.4g}\n", left + width * (double(i) + 0.5),
                                    shown[has[i]]->value(cluster));
  }
  for (size_t s = 0; s < shown.size(); ++s) {
    data += fmt::format("$s{} << END\n{}END\n", s, points[s]);
    plots += fmt::format("{}$s{} using 1:2 with boxes fs solid noborder lc rgb '{}' title '{}'",
                         s ? ", " : "", s, shown[s]->colour, shown[s]->title);
  }
  const int pixels = std::clamp(140 + int(clusters.size() * (shown.size() * 7 + 6)), 560, 1500);
  draw_commands(
      path, pixels, 486,
      fmt::format("{}set boxwidth {:.4f}\n"
                  "set xtics rotate by -45 ({}) noenhanced\nset xrange [-0.7:{}]\n"
                  "set key outside top center horizontal Left reverse samplen 2\n"
                  "set bmargin at screen 0.25\n{}plot {}\n",
                  kCommon, width * 0.94, labels, double(clusters.size()) - 0.3, data, plots),
      small_print);
}

bool has_several_lengths(const std::vector<BenchRow>& rows) {
  const Function* const first = rows.front().function;
  return std::any_of(rows.begin(), rows.end(), [&](const BenchRow& row) {
    return row.function == first && row.threads == rows.front().threads && row.n != rows.front().n;
  });
}

void draw_bench(const std::string& path, const std::vector<BenchRow>& rows,
                const std::string& small_print) {
  has_several_lengths(rows) ? draw(path, {speed_panel(rows)}, 1, small_print)
                            : draw_bars(path, rows, small_print);
}

std::string bench_text(const std::vector<BenchRow>& rows, const std::string& small_print) {
  if (has_several_lengths(rows)) return draw_text({speed_panel(rows)}, small_print);
  std::string text = "core cycles per element\n";
  double most = 0;
  const std::vector<Cluster> clusters = clusters_of(rows);
  for (const Cluster& cluster : clusters)
    for (const Series* series : shown_in({cluster})) most = std::max(most, series->value(cluster));
  for (const Cluster& cluster : clusters)
    for (const Series* series : shown_in({cluster})) {
      const double cycles = series->value(cluster);
      text += fmt::format("{:<14} {:<16} {:>8.2f} {}\n", cluster.label, bar_name(*series, cluster),
                          cycles, std::string(size_t(std::lround(36 * cycles / most)), '#'));
    }
  return text + small_print + "\n";
}
