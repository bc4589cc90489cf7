// SPDX-License-Identifier: MIT
//
// The wide steps against the kernels' own, in one process: results bit for bit, status, reports, and the
// flags that either unit is left with.
//
//   neighbours   arrays of singles next to one another, as many as are asked for: every block is
//                ordinary or special as a whole, but for a few
//   alone        blocks of one element, so that its flags show
//   mixed        short arrays of all lengths and alignments, ordinary elements and others
//
// The last two under various control words.
#include "cli/check_paths.h"

#include "bench/arguments.h"
#include "catalog/paths.h"
#include "catalog/random.h"
#include "catalog/thread_count.h"
#include "cli/cli.h"
#include "cli/json_formats.h"
#include "cli/numbers.h"
#include "cli/reports.h"

#include <fmt/format.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>

using bench::Path;

constexpr int32_t kChunk = 4096, kShortest = 8;

// What a call leaves.
struct Left {
  Status status = 0;
  uint32_t flags = 0;  // of the x87 unit, and above those of the SSE unit
  uint64_t reports = 0;
};

// The caller's: directions and precision, flush-to-zero, denormals-are-zero. Nothing is unmasked.
struct Control {
  uint16_t x87 = 0x037F;
  uint32_t mxcsr = 0x1F80;
};
constexpr Control kControls[] = {
    {}, {}, {0x037F, 0x1FC0}, {0x0B7F, 0x5F80}, {0x007F, 0xFFC0}, {0x067F, 0x3F80}};

// Both units' flags are clear before.
static Left call(const Function& f, const Arrays& arrays, int32_t n, Path path,
                 const Control& control) {
  bench::set_least_wide_length(path == Path::wide ? kShortest : INT32_MAX);
  Left left;
  uint32_t mxcsr;
  uint16_t x87;
  asm volatile("fnclex\n\tfldcw %0\n\tldmxcsr %1"
               :
               : "m"(control.x87), "m"(control.mxcsr)
               : "memory");
  left.status = f.call(arrays, n);
  asm volatile("fnstsw %0\n\tstmxcsr %1" : "=m"(x87), "=m"(mxcsr) : : "memory");
  const Control usual;
  asm volatile("fldcw %0\n\tldmxcsr %1" : : "m"(usual.x87), "m"(usual.mxcsr) : "memory");
  left.flags = (x87 & 0x3Fu) | (mxcsr & 0x3Fu) << 8;
  left.reports = take_sum_of_reports();
  return left;
}

// What one worker found, where the others see it.
struct Found {
  uint64_t compared, different;
  bool crashed;
  char first[200];  // difference

  void add(const std::string& text) {
    if (different++ == 0) strncpy(first, text.c_str(), sizeof first - 1);
  }
};

class Comparison {
 public:
  Comparison(const Function& f, Found& found)
      : f_(f), found_(found), bytes_(4 * size_t(kChunk + 64) * f.type.bytes()) {}

  unsigned char* source(int i) { return bytes_.data() + size_t(i) * array_bytes() + offset_; }
  void set_offset(int offset) { offset_ = offset; }
  void set_control(const Control& control) { control_ = control; }

  uint64_t pattern(int i, int32_t element) {
    uint64_t x = 0;
    memcpy(&x, source(i) + element * f_.type.width, size_t(f_.type.width));
    return x;
  }
  void set(int i, int32_t element, uint64_t pattern) {
    memcpy(source(i) + element * f_.type.width, &pattern, size_t(f_.type.width));
  }

  void compute_once() {
    Arrays arrays;
    std::vector<unsigned char> to(size_t(2 * f_.type.bytes()));
    for (int i = 0; i < 2; ++i) {
      arrays.source[i] = arrays.scalar = source(i);
      arrays.destination[i] = to.data() + i * f_.type.bytes();
    }
    f_.call(arrays, 1);
    take_sum_of_reports();
  }

  void compare(int32_t n) {
    const size_t size = size_t(n) * f_.type.bytes();
    std::vector<unsigned char>* const results[] = {narrow_, wide_};
    Left left[2];
    for (const Path path : {Path::narrow, Path::wide}) {
      Arrays arrays;
      arrays.source[0] = source(0);
      arrays.source[1] = source(1);
      arrays.scalar = source(1);
      for (int d = 0; d < f_.shape.destinations; ++d) {
        std::vector<unsigned char>& to = results[int(path)][d];
        to.assign(size + 16, 0xA5);
        arrays.destination[d] = to.data() + offset_ % 16;
      }
      left[int(path)] = call(f_, arrays, n, path, control_);
    }
    found_.compared += uint64_t(n);
    for (int d = 0; d < f_.shape.destinations; ++d)
      if (narrow_[d] != wide_[d]) return found_.add(text_of_difference(d, n));
    const char* what = nullptr;
    if (left[0].status != left[1].status) what = "status";
    if (left[0].flags != left[1].flags) what = "flags";
    if (left[0].reports != left[1].reports) what = "reports";
    if (what)
      found_.add(fmt::format(
          "{} of {} elements from ({}{}) on: {:#x}, wide {:#x}", what, n, hex(pattern(0, 0)),
          f_.shape.sources + f_.shape.scalar > 1 ? ", " + hex(pattern(1, 0)) : "", left[0].flags,
          left[1].flags));
  }

 private:
  size_t array_bytes() const { return size_t(kChunk + 64) * f_.type.bytes(); }
  std::string hex(uint64_t pattern) const { return bit_pattern(pattern, f_.type.width); }

  std::string text_of_difference(int d, int32_t n) {
    for (int32_t i = 0; i < n; ++i) {
      uint64_t a = 0, b = 0;
      const size_t at = offset_ % 16 + size_t(i) * f_.type.bytes();
      memcpy(&a, narrow_[d].data() + at, size_t(f_.type.bytes()));
      memcpy(&b, wide_[d].data() + at, size_t(f_.type.bytes()));
      if (a != b)
        return fmt::format("({}{}): {}, wide {}", hex(pattern(0, i)),
                           f_.shape.sources > 1 ? ", " + hex(pattern(1, i))
                           : f_.shape.scalar    ? ", " + hex(pattern(1, 0))
                                                : "",
                           hex(a), hex(b));
    }
    return "written outside of the results";
  }

  const Function& f_;
  Found& found_;
  std::vector<unsigned char> bytes_, narrow_[2], wide_[2];
  int offset_ = 0;
  Control control_;
};

// ---- What is compared

// A number of the typical interval, or any pattern, or one next to a power of two, or a special one.
static uint64_t some_pattern(const Function& f, int source, Random& random, bool typical) {
  const auto pattern_of = [&](double x) {
    const float single = float(x);
    uint32_t bits;
    memcpy(&bits, &single, sizeof bits);
    uint64_t wide;
    memcpy(&wide, &x, sizeof wide);
    return f.type.width == 4 ? bits : wide;
  };
  const int bits = 8 * f.type.width, fraction = f.type.width == 4 ? 23 : 52;
  const uint64_t sign = uint64_t(1) << (bits - 1), one = uint64_t(1) << fraction;
  const uint64_t any = f.type.width == 4 ? random.next() >> 32 : random.next();
  if (typical) return pattern_of(bench::draw(bench::typical_of(f).source[source], random));
  switch (random.below(4)) {
    case 0:
      return any;
    case 1:
      return (any & ~(one - 1)) + random.below(5) - 2;
    case 2:
      return pattern_of(bench::draw(bench::typical_of(f).source[source], random)) ^ (any & sign);
    default:
      return (any & sign) | (random.below(2) ? sign - one : 0) | (random.below(3) ? 0 : any & 0xFF);
  }
}

static void compare_mixed(const Function& f, Comparison& c, Random& random) {
  constexpr int kCalls = 4000, kLongest = 200;
  for (int k = 0; k < kCalls; ++k) {
    const int32_t n = 1 + int32_t(random.below(kLongest));
    c.set_offset(int(random.below(16)));
    c.set_control(kControls[random.below(std::size(kControls))]);
    const uint64_t others = random.below(3) ? random.below(40) : 0;  // of 256
    for (int source = 0; source < 2; ++source)
      for (int32_t i = 0; i < n; ++i)
        c.set(source, i, some_pattern(f, source, random, random.below(256) >= others));
    c.compare(n);
  }
  c.set_offset(0);
}

static void compare_alone(const Function& f, Comparison& c, Random& random) {
  constexpr int kCalls = 40000;
  constexpr int32_t kAlone = 2 * kShortest;
  for (int k = 0; k < kCalls; ++k) {
    c.set_control(kControls[random.below(std::size(kControls))]);
    for (int source = 0; source < 2; ++source) {
      const uint64_t x = some_pattern(f, source, random, k % 4 == 0);
      for (int32_t i = 0; i < kAlone; ++i) c.set(source, i, x);
    }
    c.compare(kAlone);
  }
  c.set_control({});
}

// Every so-many-th chunk of singles, shares of the work dealt to the workers in turn.
static void compare_neighbours(Comparison& c, uint64_t stride, uint64_t worker, uint64_t workers) {
  constexpr uint64_t kChunks = (uint64_t(1) << 32) / kChunk;
  for (uint64_t chunk = worker * stride; chunk < kChunks; chunk += workers * stride) {
    uint32_t patterns[kChunk];
    for (int32_t i = 0; i < kChunk; ++i) patterns[i] = uint32_t(chunk * kChunk) + uint32_t(i);
    memcpy(c.source(0), patterns, sizeof patterns);
    c.compare(kChunk);
  }
}

static void compare_pairs(const Function& f, Comparison& c, uint64_t pairs, Random& random) {
  for (uint64_t done = 0; done < pairs; done += kChunk) {
    const bool typical = done / kChunk % 4 != 0;
    for (int source = 0; source < 2; ++source)
      for (int32_t i = 0; i < kChunk; ++i)
        c.set(source, i, some_pattern(f, source, random, typical));
    c.compare(kChunk);
  }
}

// ---- The workers

static bool of_one_single(const Function& f) {
  return f.shape.sources == 1 && !f.shape.scalar && f.type.width == 4;
}

constexpr uint64_t kSampleStride = 256;

static void work(const Function& f, const PathsOptions& options, Found& found, uint64_t worker,
                 uint64_t workers) {
  bench::set_thread_count(1);
  sum_reports();
  Comparison c(f, found);
  Random random{0x5EED + worker * 0x1234567};
  c.compute_once();  // the first call finds out from which length to split, on the x87 unit
  compare_mixed(f, c, random);
  compare_alone(f, c, random);
  if (of_one_single(f))
    compare_neighbours(c, options.exhaustive ? 1 : kSampleStride, worker, workers);
  else
    compare_pairs(f, c, options.pairs / workers, random);
}

static int processors() {
  cpu_set_t set;
  return sched_getaffinity(0, sizeof set, &set) == 0 ? std::max(1, CPU_COUNT(&set)) : 1;
}

static Found compare_function(const Function& f, const PathsOptions& options) {
  const uint64_t workers = uint64_t(processors());
  const size_t size = workers * sizeof(Found);
  Found* const found = static_cast<Found*>(
      mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  if (found == MAP_FAILED) throw Failure("not enough memory");
  fflush(stdout);
  std::vector<pid_t> children;
  for (uint64_t worker = 0; worker < workers; ++worker) {
    const pid_t child = fork();
    if (child < 0) throw Failure(fmt::format("cannot start a process: {}", strerror(errno)));
    if (child == 0) {
      prctl(PR_SET_PDEATHSIG, SIGTERM);
      work(f, options, found[worker], worker, workers);
      _exit(0);
    }
    children.push_back(child);
  }
  Found total{};
  for (uint64_t worker = 0; worker < workers; ++worker) {
    int status = 0;
    while (waitpid(children[worker], &status, 0) < 0 && errno == EINTR) {
    }
    const Found& one = found[worker];
    total.compared += one.compared;
    if (one.different && !total.different) memcpy(total.first, one.first, sizeof one.first);
    total.different += one.different;
    if (!WIFEXITED(status) || WEXITSTATUS(status)) total.crashed = true;
  }
  munmap(found, size);
  return total;
}

void check_paths(const PathsOptions& options) {
  const bench::WidePath& path = bench::wide_path();
  if (!path.taken) {
    if (options.json)
      print_json(
          {{"format", format_json("luxvm-check-paths")}, {"wide", false}, {"why", path.why}});
    else
      fmt::print("one path only: {} ({})\n", path.why, path.file);
    return;
  }
  Json rows = Json::array();
  bool passed = true;
  const std::vector<const Function*> chosen = find_functions(options.patterns);
  for (const Function* f : bench::functions_with_own_step()) {
    if (std::find(chosen.begin(), chosen.end(), f) == chosen.end()) continue;
    const Found found = compare_function(*f, options);
    const bool good = !found.different && !found.crashed;
    passed &= good;
    rows.push_back({{"name", f->name},
                    {"compared", found.compared},
                    {"calls_that_differ", found.different},
                    {"crashed", found.crashed},
                    {"first", found.first}});
    if (options.json) continue;
    fmt::print("{:<22} {:>12} elements  {}\n", f->name, found.compared,
               good ? paint(Colour::good, "same")
               : found.crashed
                   ? paint(Colour::bad, "CRASHED")
                   : paint(Colour::bad, fmt::format("{} calls DIFFER", found.different)) + " " +
                         found.first);
    fflush(stdout);
  }
  if (options.json)
    print_json({{"format", format_json("luxvm-check-paths")}, {"wide", true}, {"functions", rows}});
  if (!passed) throw CheckFailed("");
}
