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

struct Curve {
  std::string label;
  int colour, dash;
  std::vector<const BenchRow*> rows;
};

static std::vector<Curve> curves_of(const std::vector<BenchRow>& rows) {
  const Varying several = varying(rows);
  std::vector<Curve> curves;
  std::vector<const Function*> functions;
  for (const BenchRow& row : rows) {
    const std::string label =
        fmt::format("{}{}", row.function->name.substr(4), conditions(row, several));
    if (functions.empty() || functions.back() != row.function) functions.push_back(row.function);
    auto curve = std::find_if(curves.begin(), curves.end(),
                              [&](const Curve& c) { return c.label == label; });
    if (curve == curves.end()) {
      const long siblings = std::count_if(curves.begin(), curves.end(), [&](const Curve& c) {
        return c.rows[0]->function == row.function;
      });
      curves.push_back({label, int(functions.size()) - 1, int(siblings) + 1, {}});
      curve = curves.end() - 1;
    }
    curve->rows.push_back(&row);
  }
  for (Curve& curve : curves)
    std::sort(curve.rows.begin(), curve.rows.end(),
              [](const auto* a, const auto* b) { return a->n < b->n; });
  return curves;
}

static void draw_curves(const std::string& path, const std::vector<BenchRow>& rows) {
  const std::vector<Curve> curves = curves_of(rows);
  if (curves.size() > kMostCurves)
    throw Failure(fmt::format("{} curves are too many for a plot; choose at most {} by a pattern",
                              curves.size(), kMostCurves));
  std::string data, plots;
  bool libm = false;
  for (size_t i = 0; i < curves.size(); ++i) {
    const Curve& curve = curves[i];
    data += fmt::format("$c{} << END\n", i);
    for (const BenchRow* row : curve.rows) {
      data += fmt::format("{} {} {}\n", row->n, row->element.minimum,
                          row->libm ? row->libm->minimum : NAN);
      libm |= row->libm.has_value();
    }
    data += "END\n";
    const std::string colour = kColours[size_t(curve.colour) % std::size(kColours)];
    const int dash = curve.dash + curve.colour / int(std::size(kColours));
    plots += fmt::format(
        "{}$c{} using 1:2 with linespoints lw 2 pt 7 ps 0.35 dt {} lc rgb '{}' title \"{}\"",
        i ? ", " : "", i, dash, colour, curve.label);
    if (curve.rows[0]->libm)
      plots +=
          fmt::format(", $c{} using 1:3 with lines lw 1.5 dt 3 lc rgb '{}' notitle", i, colour);
  }
  if (libm) plots += ", NaN with lines lw 1.5 dt 3 lc rgb '#606060' title 'libm'";
  draw_svg(
      path, 880, 480,
      fmt::format(
          "{}set logscale x\nset format x '%.0s%c'\n"
          "set grid xtics lc rgb '#c8c8c8'\n"
          "set xlabel 'elements'\nset key outside right top Left reverse noenhanced\n{}plot {}\n",
          kCommon, data, plots));
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

constexpr Series kSeries[] = {{"A24, A53 or exact", "#0072b2", grade<0>},
                              {"A21, A50", "#56b4e9", grade<1>},
                              {"A11", "#b3dcf2", grade<2>},
                              {"SLEEF", "#e69f00", peer<&BenchRow::sleef>},
                              {"libm", "#a0a0a0", peer<&BenchRow::libm>}};

static void draw_bars(const std::string& path, const std::vector<BenchRow>& rows) {
  const std::vector<Cluster> clusters = clusters_of(rows);
  std::vector<const Series*> shown;
  for (const Series& series : kSeries)
    if (std::any_of(clusters.begin(), clusters.end(),
                    [&](const Cluster& c) { return !std::isnan(series.value(c)); }))
      shown.push_back(&series);
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
  draw_svg(path, pixels, 460,
           fmt::format("{}set boxwidth {:.4f}\n"
                       "set xtics rotate by -45 ({}) noenhanced\nset xrange [-0.7:{}]\n"
                       "set key outside top center horizontal Left reverse samplen 2\n{}plot {}\n",
                       kCommon, width * 0.94, labels, double(clusters.size()) - 0.3, data, plots));
}

void draw_bench(const std::string& path, const std::vector<BenchRow>& rows) {
  const Function* const first = rows.front().function;
  const bool lengths = std::any_of(rows.begin(), rows.end(), [&](const BenchRow& row) {
    return row.function == first && row.threads == rows.front().threads && row.n != rows.front().n;
  });
  lengths ? draw_curves(path, rows) : draw_bars(path, rows);
}
