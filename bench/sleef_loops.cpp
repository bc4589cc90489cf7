// SPDX-License-Identifier: MIT
//
// LUX_BYTES is the size of the registers, LUX_SLEEF_SET the name of what a compilation gives. Everything
// else is private to the file and no standard class is used: the linker could otherwise take an inline
// function from here for code that must run without these instructions.
#include "bench/sleef_loops.h"

#include <string.h>

namespace bench {
namespace {

template <class Element>
struct Lanes {
  using E = Element;
  typedef E V __attribute__((vector_size(LUX_BYTES)));
  static constexpr int32_t kLanes = LUX_BYTES / sizeof(E);
  static V load(const E* from) {
    V value;
    memcpy(&value, from, sizeof value);
    return value;
  }
  static V all(E value) { return V{} + value; }
  static void store(E* to, V value) { memcpy(to, &value, sizeof value); }
};
using Singles = Lanes<float>;
using Doubles = Lanes<double>;

template <class T>
struct Two {
  typename T::V first, second;
};

template <class T>
struct Unary {
  using Called = typename T::V(typename T::V);
  using E = typename T::E;
  static void step(Called* f, const E* a, const E*, E* c, E*) { T::store(c, f(T::load(a))); }
};

template <class T>
struct Binary {
  using Called = typename T::V(typename T::V, typename T::V);
  using E = typename T::E;
  static void step(Called* f, const E* a, const E* b, E* c, E*) {
    T::store(c, f(T::load(a), T::load(b)));
  }
};

template <class T>
struct ScalarSecond : Binary<T> {
  using E = typename T::E;
  static void step(typename Binary<T>::Called* f, const E* a, const E* b, E* c, E*) {
    T::store(c, f(T::load(a), T::all(*b)));
  }
};

template <class T>
struct TwoResults {
  using Called = Two<T>(typename T::V);
  using E = typename T::E;
  static void step(Called* f, const E* a, const E*, E* c, E* d) {
    const Two<T> results = f(T::load(a));
    T::store(c, results.first);
    T::store(d, results.second);
  }
};

template <class T>
struct TwoResultsSwapped : TwoResults<T> {
  using E = typename T::E;
  static void step(typename TwoResults<T>::Called* f, const E* a, const E* b, E* c, E* d) {
    TwoResults<T>::step(f, a, b, d, c);
  }
};

// What does not fill all lanes goes through arrays that do. `fixed`: the second source is one
// element for all.
template <class T, class Step, bool fixed>
void loop(const void* const source[2], void* const destination[2], int32_t len, int32_t times,
          void* called) {
  using E = typename T::E;
  constexpr int32_t kLanes = T::kLanes;
  const auto f = reinterpret_cast<typename Step::Called*>(called);
  const E* const a = static_cast<const E*>(source[0]);
  const E* const b = static_cast<const E*>(source[1]);
  E* const c = static_cast<E*>(destination[0]);
  E* const d = static_cast<E*>(destination[1]);
  for (; times > 0; --times) {
    int32_t i = 0;
    for (; i + kLanes <= len; i += kLanes)
      Step::step(f, a + i, fixed ? b : b + i, c + i, d ? d + i : d);
    if (i < len) {
      E in[2][kLanes], out[2][kLanes];
      for (int32_t k = 0; k < kLanes; ++k) {
        const int32_t from = i + k < len ? i + k : len - 1;
        in[0][k] = a[from];
        in[1][k] = b[fixed ? 0 : from];
      }
      Step::step(f, in[0], in[1], out[0], out[1]);
      for (int32_t k = 0; i + k < len; ++k) {
        c[i + k] = out[0][k];
        if (d) d[i + k] = out[1][k];
      }
    }
    asm volatile("" ::: "memory");
  }
}

template <template <class> class Step, bool fixed = false>
constexpr SleefLoops loops() {
  return {loop<Singles, Step<Singles>, fixed>, loop<Doubles, Step<Doubles>, fixed>};
}

}  // namespace

const SleefSet LUX_SLEEF_SET = {loops<Unary>(), loops<Binary>(), loops<ScalarSecond, true>(),
                                loops<TwoResults>(), loops<TwoResultsSwapped>()};

}  // namespace bench
