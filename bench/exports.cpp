// SPDX-License-Identifier: MIT
//
// The function list as a table of loops.
#include "bench/measure.h"

#include "core/shapes.h"

namespace bench {
namespace {

// The arguments of each shape, from untyped arrays.
#define CALL_1_1(E) static_cast<const E*>(a.src1), static_cast<E*>(a.dst1)
#define CALL_2_1(E) \
  static_cast<const E*>(a.src1), static_cast<const E*>(a.src2), static_cast<E*>(a.dst1)
#define CALL_1_2(E) static_cast<const E*>(a.src1), static_cast<E*>(a.dst1), static_cast<E*>(a.dst2)
#define CALL_2_1_1(E) \
  static_cast<const E*>(a.src1), *static_cast<const E*>(a.src2), static_cast<E*>(a.dst1)

#define LOOP(name, type, shape)                                             \
  void loop_##name(const Arrays& a, int32_t len, int32_t times) {           \
    for (; times > 0; --times) name(CALL_##shape(LUX_ELEMENT_##type), len); \
  }
#define LUX_GRADED(F, type, grade, letter, shape, row, variant) \
  LOOP(luxs##F##_##type##_##grade, type, shape)
#define LUX_EXACT(F, type, letter, shape, returns) LOOP(luxs##F##_##type, type, shape)
#include "core/functions.def"

constexpr Type element_of(char letter) {
  return letter == 's'   ? Type::f32
         : letter == 'd' ? Type::f64
         : letter == 'c' ? Type::fc32
                         : Type::fc64;
}

const std::vector<Export> kExports = {
#define ROW(F, type, grade, letter, shape, name, loop) \
  {name, #F, #type, grade, #shape, element_of(#letter[0]), loop},
#define LUX_GRADED(F, type, grade, letter, shape, row, variant)       \
  ROW(F, type, #grade, letter, shape, "luxs" #F "_" #type "_" #grade, \
      loop_luxs##F##_##type##_##grade)
#define LUX_PENDING(F, type, grade, letter, shape, row, variant) \
  ROW(F, type, #grade, letter, shape, "luxs" #F "_" #type "_" #grade, nullptr)
#define LUX_EXACT(F, type, letter, shape, returns) \
  ROW(F, type, "", letter, shape, "luxs" #F "_" #type, loop_luxs##F##_##type)
#include "core/functions.def"
};

}  // namespace

const std::vector<Export>& exports() { return kExports; }

}  // namespace bench
