// SPDX-License-Identifier: MIT
//
// The promises of the reference, tried over raw patterns:
// fuzz [--seconds N] [--seed S] [--replay FILE] [--keep FILE] [PATTERN...]
//
// Every function takes random numbers of every class in calls of 1 to 40 elements, at any address,
// apart or in place, under any control words of the caller's. Checked are the accuracy, by exact
// values, and the class of each result; the status; the flags, and that nothing traps that is not
// accounted for; the control words, the x87 stack, the sources and the bytes around the
// destinations. Exits with 1 when something was found; the line that says so is followed by the call as
// a row of the findings' file, tests/findings.txt, whose head explains it. --keep adds rows to a file,
// --replay makes its calls again first.
#include <setjmp.h>
#include <signal.h>
#include <stdio.h>
#include <time.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "accuracy/promises.h"
#include "catalog/lookup.h"
#include "tests/exceptions.h"

static Random random_numbers{1};
static const Function* target;
static uint64_t calls, elements, findings, numbers_of[kNan + 1];

static std::string hex(const void* number, int width) {
  char text[20];
  uint64_t bits = 0;
  memcpy(&bits, number, width);
  snprintf(text, sizeof text, "%0*llX", 2 * width, static_cast<unsigned long long>(bits));
  return text;
}

static uint64_t below(uint64_t bound) { return random_numbers.next() % bound; }

static sigjmp_buf before_trap;
static void trapped(int) {
  set({});
  siglongjmp(before_trap, 1);
}

// ---- One call in strange surroundings

struct Surroundings {
  Environment words;                 // all masked, flags of MXCSR as the caller has raised them
  bool traps = false;                // what is not accounted for is unmasked
  unsigned place[4] = {};            // of two sources and two destinations, within 16 bytes
  int in_place = -1, at_source = 0;  // which destination stands where which source does

  std::string text() const {
    char line[80];
    snprintf(line, sizeof line, "%04X %04X %s %X%X%X%X ", words.control, unsigned(words.mxcsr),
             traps ? "traps" : "masked", place[0], place[1], place[2], place[3]);
    return line + (in_place < 0 ? std::string("apart")
                                : std::to_string(in_place) + "@" + std::to_string(at_source));
  }
};

static const Surroundings* replayed;   // null where they are random
static std::vector<std::string> rows;  // of the calls since the last search for errors
static FILE* findings_file;

static void keep(const std::string& row) {
  static int kept = 0;
  if (++kept > 50) return;
  printf("  %s\n", row.c_str());
  if (findings_file && !replayed) fprintf(findings_file, "%s\n", row.c_str());
}

constexpr int kRoom = 40 * 16, kAround = 64;
constexpr unsigned char kCanary = 0xA5;

class Chunk {
 public:
  Chunk(const Arrays& arrays, int32_t first, int32_t len)
      : f_(*target), len_(len), bytes_(len * f_.type.bytes()) {
    if (replayed)
      around_ = *replayed;
    else
      place_anywhere();
    for (int k = 0; k < 2; ++k) {
      source_[k] = room_[k] + kAround / 2 + around_.place[k];
      destination_[k] = room_[2 + k] + kAround / 2 + around_.place[2 + k];
      memset(room_[2 + k], kCanary, sizeof room_[2 + k]);
      if (k < f_.shape.sources)
        memcpy(source_[k], at(arrays.source[k], first), bytes_);
      else
        source_[k] = source_[0];
    }
    scalar_ = arrays.scalar;
    memcpy(kept_, room_, sizeof kept_);
    if (around_.in_place >= 0) destination_[around_.in_place] = source_[around_.at_source];
  }

  void run(const Arrays& arrays, int32_t first) {
    const volatile uint16_t may = look_at_elements(arrays, first);
    if (!replayed) take_words_of_a_caller();
    remember(arrays, first);
    Environment e = around_.words;
    Environment after;
    uint16_t x87 = 0;
    Status status = 0;
    bool stack_empty = true;
    if (sigsetjmp(before_trap, 1) == 0) {
      if (around_.traps) {
        const uint16_t masks = may | kDenormal;
        e.control = uint16_t((e.control & ~kAllFlags) | masks);
        e.mxcsr = (e.mxcsr & ~(uint32_t(kAllFlags) << 7 | kAllFlags)) | uint32_t(masks) << 7;
      }
      set(e);
      status = f_.call(here(), len_);
      __asm__ volatile("fwait");
      x87 = x87_flags();
      stack_empty = x87_stack_empty();
      after = environment();
      set({});
    } else {
      return complain("an exception traps");
    }
    ++calls;
    if (!stack_empty) complain("values are left on the x87 stack");
    if (after.control != e.control) complain("another x87 control word");
    if ((after.mxcsr ^ e.mxcsr) & ~kAllFlags) complain("another MXCSR");
    if (e.mxcsr & ~after.mxcsr & kAllFlags) complain("flags of the caller's are lost");
    if (x87 & ~may) complain("raises" + names(x87 & ~may));
    if (after.mxcsr & ~e.mxcsr & ~may & kAllFlags)
      complain("raises" + names(after.mxcsr & ~e.mxcsr & ~may & kAllFlags) + " in MXCSR");
    // A block of eight reports its zeros before its negative numbers, so the last code may be either.
    const bool same = has_special_blocks(f_) ? (status == 0) == (status_ == 0)
                                             : status == (f_.counts ? len_ : status_);
    if (!same) complain("another status");
    check_surroundings();
    for (int k = 0; k < f_.shape.destinations; ++k)
      memcpy(const_cast<char*>(at(arrays.destination[k], first)), destination_[k], bytes_);
  }

 private:
  const char* at(const void* array, int32_t i) const {
    return static_cast<const char*>(array) + size_t(i) * f_.type.bytes();
  }
  Arrays here() const {
    return {{source_[0], source_[1]}, {destination_[0], destination_[1]}, scalar_};
  }

  // Each alone: its code, what it may raise, whether there is a subnormal number in it.
  uint16_t look_at_elements(const Arrays& arrays, int32_t first) {
    uint16_t may = kInexact;
    for (int32_t i = 0; i < len_; ++i) {
      unsigned char results[2][16];
      const Arrays one = {{at(arrays.source[0], first + i),
                           f_.shape.sources == 2 ? at(arrays.source[1], first + i) : nullptr},
                          {results[0], results[1]},
                          scalar_};
      const Status status = f_.call(one, 1);
      if (status > 0) status_ = status;
      may |= accounted_for(f_, one, status);
      look_for_special_numbers(one);
    }
    if (signalling_) may |= kInvalid;
    return may;
  }

  void look_for_special_numbers(const Arrays& one) {
    const auto look = [&](const void* element) {
      for (int part = 0; part < f_.type.parts; ++part) {
        const auto* const number =
            static_cast<const unsigned char*>(element) + part * f_.type.width;
        const Class k = class_of(number, f_.type.width);
        ++numbers_of[k];
        subnormal_ |= k == kSubnormal;
        const int quiet = number[f_.type.width - 2] & (f_.type.width == 4 ? 0x40 : 0x08);
        signalling_ |= k == kNan && !quiet;
      }
    };
    for (int k = 0; k < f_.shape.sources; ++k) look(one.source[k]);
    if (f_.shape.scalar) look(one.scalar);
    for (int k = 0; k < f_.shape.destinations; ++k) look(one.destination[k]);
  }

  void place_anywhere() {
    for (unsigned& place : around_.place) place = unsigned(below(16));
    if (below(4) != 0) return;
    around_.in_place = int(below(f_.shape.destinations));
    around_.at_source = int(below(f_.shape.sources));
  }

  void take_words_of_a_caller() {
    constexpr uint16_t kPrecisions[] = {0x000, 0x200, 0x300, 0x300};
    Environment& e = around_.words;
    // Rint and NearbyInt follow the direction, and blocks of eight with a special element both.
    if (!f_.counts && !has_special_blocks(f_))
      e.control = uint16_t(0x7F | kPrecisions[below(4)] | below(4) << 10);
    e.mxcsr |= uint32_t(below(4) << 13 | below(2) << 15);
    if (!subnormal_) e.mxcsr |= uint32_t(below(2) << 6);  // denormals are zeros
    if (below(2)) e.mxcsr |= kAllFlags;
    around_.traps = below(4) == 0;
  }

  // The call as a row: the numbers of an element are those of its sources, then the scalar's.
  void remember(const Arrays& arrays, int32_t first) {
    row_ = std::string(f_.name) + " " + around_.text();
    for (int32_t i = 0; i < len_; ++i) {
      const char* separator = " ";
      const auto add = [&](const char* element) {
        for (int part = 0; part < f_.type.parts; ++part, separator = ",")
          row_ += separator + hex(element + part * f_.type.width, f_.type.width);
      };
      for (int k = 0; k < f_.shape.sources; ++k) add(at(arrays.source[k], first + i));
      if (f_.shape.scalar) add(at(scalar_, 0));
    }
    rows.push_back(row_);
  }

  // Nothing changed but the destinations' own bytes.
  void check_surroundings() {
    for (int k = 0; k < 2; ++k)
      for (unsigned char* own : {destination_[k]})
        for (int r = 0; r < 4; ++r)
          if (own >= room_[r] && own < room_[r] + sizeof room_[r] && k < f_.shape.destinations)
            memcpy(kept_[r] + (own - room_[r]), own, bytes_);
    if (memcmp(kept_, room_, sizeof kept_) != 0) complain("bytes beside the destinations change");
  }

  void complain(const std::string& what) const {
    if (++findings > 50) return;
    printf("%s: %s\n", f_.name.data(), what.c_str());
    keep(row_);
  }

  const Function& f_;
  const int32_t len_;
  const size_t bytes_;
  unsigned char room_[4][kRoom + 2 * kAround] = {}, kept_[4][kRoom + 2 * kAround];
  unsigned char *source_[2], *destination_[2];
  const void* scalar_;
  Surroundings around_;
  std::string row_;
  Status status_ = 0;
  bool subnormal_ = false, signalling_ = false;
};

// What the survey of errors calls in place of the function.
static Status call_in_chunks(const Arrays& arrays, int32_t len) {
  for (int32_t first = 0; first < len;) {
    const int32_t count = std::min(len - first, int32_t(1 + below(40)));
    Chunk(arrays, first, count).run(arrays, first);
    first += count;
    elements += count;
  }
  return 0;
}

// ---- Arguments

template <class U>
static uint64_t any_number() {
  constexpr int m = Format<U>::mantissa;
  const U pattern = any_pattern<U>(random_numbers);
  // Half of them around 1, where functions have ordinary results.
  if (below(2)) return pattern;
  const U exponent = U(Format<U>::bias - 12 + below(20)) << m;
  return (pattern & ~(kInfinity<U>)) | exponent;
}

// An infinity or a NaN.
static bool is_special(uint64_t number, int width) {
  const uint64_t infinity = width == 4 ? kInfinity<uint32_t> : kInfinity<uint64_t>;
  return (number & infinity) == infinity;
}

static std::vector<bench::Argument> any_arguments(const Function& f, int count) {
  std::vector<bench::Argument> all(count);
  const int numbers = bench::Oracle::arguments(f);
  for (bench::Argument& argument : all)
    for (int k = 0; k < numbers; ++k) {
      argument[k] = f.type.width == 4 ? any_number<uint32_t>() : any_number<uint64_t>();
      // What a complex function makes of infinities and NaNs is for the special rows to say.
      const uint64_t infinity = f.type.width == 4 ? kInfinity<uint32_t> : kInfinity<uint64_t>;
      if (f.type.complex() && is_special(argument[k], f.type.width)) argument[k] ^= infinity / 2;
    }
  // An infinity beside a NaN has the NaN for hypotenuse here, not the infinity as in C.
  if (f.family == "Hypot")
    for (bench::Argument& argument : all)
      if (is_special(argument[0], f.type.width) && is_special(argument[1], f.type.width))
        argument[1] = argument[0];
  // Elements of functions with a scalar are grouped by it.
  if (f.shape.scalar)
    for (int i = 0; i < count; ++i)
      for (int k = f.type.parts; k < numbers; ++k) all[i][k] = all[i / 24 * 24][k];
  return all;
}

static void try_function(const Function& f, const std::vector<bench::Argument>& arguments) {
  target = &f;
  rows.clear();
  Function strange = f;
  strange.call = call_in_chunks;
  static const std::atomic<bool> go_on{false};
  const bench::Statistics s = bench::survey({&strange}, arguments, 1, nullptr, go_on)[0];
  const bench::Accuracy promise = bench::guarantee(f);
  if (bench::within(s, promise)) return;
  ++findings;
  const bench::Case& worst = s.mismatches ? s.mismatched[0] : s.worst[0];
  std::string text;
  for (int k = 0; k < bench::Oracle::arguments(f); ++k)
    text += (k ? "," : " ") + hex(&worst.argument[k], f.type.width);
  printf("%s of%s: %s instead of %s\n", f.name.data(), text.c_str(),
         s.mismatches ? ("class of " + hex(&worst.got, f.type.width)).c_str()
                      : (std::to_string(worst.ulp) + " ulp").c_str(),
         bench::text_of(promise).c_str());
  for (const std::string& row : rows)
    if ((row + " ").find(text + " ") != std::string::npos) return keep(row);
}

// ---- Findings

// False when the file is not what it should be.
static bool replay(const char* path) {
  std::ifstream file(path);
  int count = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream row(line);
    std::string name, traps, place, in_place, element;
    Surroundings around;
    row >> name >> std::hex >> around.words.control >> around.words.mxcsr >> traps >> place >>
        in_place;
    const Function* const f = function_named(name);
    if (!row || !f || place.size() != 4)
      return fprintf(stderr, "%s: %s\n", path, line.c_str()), false;
    around.traps = traps == "traps";
    for (int k = 0; k < 4; ++k)
      around.place[k] = unsigned(std::stoul(place.substr(k, 1), nullptr, 16));
    if (in_place != "apart")
      around.in_place = in_place[0] - '0', around.at_source = in_place[2] - '0';
    std::vector<bench::Argument> arguments;
    while (row >> element) {
      bench::Argument argument{};
      std::istringstream numbers(element);
      for (int k = 0; std::getline(numbers, element, ',') && k < bench::Oracle::arguments(*f); ++k)
        argument[k] = std::stoull(element, nullptr, 16);
      arguments.push_back(argument);
    }
    replayed = &around;
    try_function(*f, arguments);
    replayed = nullptr;
    ++count;
  }
  printf("%d findings replayed\n", count);
  return true;
}

int main(int argc, char** argv) {
  double seconds = 0;
  uint64_t seed = 1;
  const char* old_findings = nullptr;
  std::vector<std::string> patterns;
  for (int i = 1; i < argc; ++i)
    if (argv[i] == std::string("--seconds") && i + 1 < argc)
      seconds = atof(argv[++i]);
    else if (argv[i] == std::string("--seed") && i + 1 < argc)
      seed = strtoull(argv[++i], nullptr, 0);
    else if (argv[i] == std::string("--replay") && i + 1 < argc)
      old_findings = argv[++i];
    else if (argv[i] == std::string("--keep") && i + 1 < argc)
      findings_file = fopen(argv[++i], "a");
    else
      patterns.push_back(argv[i]);
  signal(SIGFPE, trapped);
  random_numbers.state = seed;
  printf("seed %llu\n", static_cast<unsigned long long>(seed));
  if (old_findings && !replay(old_findings)) return 2;
  const auto functions = find_functions(patterns);
  const time_t end = time(nullptr) + time_t(seconds);
  do
    for (const Function* const f : functions) try_function(*f, any_arguments(*f, 240));
  while (time(nullptr) < end);
  printf("%llu elements in %llu calls of %zu functions, %llu findings\n",
         static_cast<unsigned long long>(elements), static_cast<unsigned long long>(calls),
         functions.size(), static_cast<unsigned long long>(findings));
  const char* separator = "their numbers: ";
  for (int k = kZero; k <= kNan; ++k, separator = ", ") {
    constexpr const char* kNames[] = {"zeros",  "subnormal", "smallest normal",
                                      "normal", "infinite",  "NaNs"};
    printf("%s%llu %s", separator, static_cast<unsigned long long>(numbers_of[k]), kNames[k]);
  }
  printf("\n");
  return findings ? 1 : 0;
}
