// SPDX-License-Identifier: MIT
//
// Compiled for SSE2. Everything is private to the file and no standard class is used: the linker
// could otherwise take an inline function from here for code that must run without SSE2.
#include "bench/sleef_loops.h"

#include <emmintrin.h>

namespace bench {
namespace {

struct Singles {
  using E = float;
  using V = __m128;
  static constexpr int32_t kLanes = 4;
  static V load(const E* from) { return _mm_loadu_ps(from); }
  static V all(E value) { return _mm_set1_ps(value); }
  static void store(E* to, V value) { _mm_storeu_ps(to, value); }
};

struct Doubles {
  using E = double;
  using V = __m128d;
  static constexpr int32_t kLanes = 2;
  static V load(const E* from) { return _mm_loadu_pd(from); }
  static V all(E value) { return _mm_set1_pd(value); }
  static void store(E* to, V value) { _mm_storeu_pd(to, value); }
};

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

const SleefLoops kSleefUnary = loops<Unary>(), kSleefBinary = loops<Binary>(),
                 kSleefScalarSecond = loops<ScalarSecond, true>(),
                 kSleefTwoResults = loops<TwoResults>(),
                 kSleefTwoResultsSwapped = loops<TwoResultsSwapped>();

}  // namespace bench
