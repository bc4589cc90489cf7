// SPDX-License-Identifier: MIT
//
// Which calls the graded exports split, and how they hand them over. Linked with the library's
// objects; the splitters are this program's own, which only note that they were called.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/catalog.h"
#include "tests/topology_fake.h"

extern "C" int32_t threads_omp_of_n_lux;
int32_t threads_omp_of_n_lux = 2;

static struct {
  std::string name;
  const void* kernel;
  const void* arrays[3];  // in the order of the arguments
  unsigned char scalar[16];
  int32_t threads, len;
} handed;

static Status note(const char* name, const void* kernel, int32_t threads, const void* first,
                   const void* second, const void* third, int32_t len) {
  handed.name = name;
  handed.kernel = kernel;
  handed.arrays[0] = first;
  handed.arrays[1] = second;
  handed.arrays[2] = third;
  handed.threads = threads;
  handed.len = len;
  return 77;
}

#define NOTED_1_1 src, dst, nullptr
#define NOTED_2_1 src1, src2, dst
#define NOTED_1_2 src, dst1, dst2
#define NOTED_2_1_1 src, dst, (memcpy(handed.scalar, &scalar, sizeof scalar), nullptr)
#define SPLITTER(t, type, shape)                                                                \
  Status nox##t##Threading_##shape(LuxKernel_##type##_##shape kernel, int32_t threads,          \
                                   LUX_PARAMS_##shape(LUX_ELEMENT_##type), int32_t len) {       \
    return note(#t #shape, reinterpret_cast<const void*>(kernel), threads, NOTED_##shape, len); \
  }
#define SPLITTERS(t, type) \
  SPLITTER(t, type, 1_1) SPLITTER(t, type, 2_1) SPLITTER(t, type, 1_2) SPLITTER(t, type, 2_1_1)
SPLITTERS(s, 32f)
SPLITTERS(d, 64f)
SPLITTERS(c, 32fc)
SPLITTERS(z, 64fc)
// The kernels, which the wrappers name in the same way.
#define LUX_GRADED(F, type, grade, letter, shape, row, variant)                                \
  extern "C" Status _noxomp_luxs##F##_##type##_##grade(LUX_PARAMS_##shape(LUX_ELEMENT_##type), \
                                                       int32_t len);
#include "core/functions.def"
static const void* kernel_of(const Function& f) {
#define LUX_GRADED(F, type, grade, letter, shape, row, variant) \
  if (f.name == "luxs" #F "_" #type "_" #grade)                 \
    return reinterpret_cast<const void*>(_noxomp_luxs##F##_##type##_##grade);
#include "core/functions.def"
  return nullptr;
}

TEST(Wrappers, SplitAboveTheThresholdOfTheirRow) {
  impose({8, false, 1, 1});  // eight packages: 9000 cycles for a thread
  std::vector<double> memory(4 * 2 * 20000, 0.5);
  for (const Function& f : kFunctions) {
    if (!f.graded()) continue;
    const Arrays arrays = {
        {&memory[0], &memory[40000]}, {&memory[80000], &memory[120000]}, &memory[7]};
    const int32_t most = threshold(f);
    const auto is_split = [&](int32_t len) {
      handed = {};
      const Status status = f.call(arrays, len);
      EXPECT_EQ(status == 77, handed.len == len) << f.name;
      return status == 77;
    };
    if (f.grade == "A11") {
      EXPECT_EQ(most, INT32_MAX) << f.name;
      EXPECT_FALSE(is_split(20000)) << f.name;
      continue;
    }
    const int32_t least = std::max(most, 200) + 1;  // and more than a hundred for each thread
    EXPECT_FALSE(is_split(least - 1)) << f.name;
    ASSERT_TRUE(is_split(least)) << f.name << " at " << least;
    EXPECT_EQ(handed.name, f.type.letter + std::string(f.shape.name)) << f.name;
    EXPECT_EQ(handed.kernel, kernel_of(f)) << f.name;
    EXPECT_EQ(handed.threads, 2) << f.name;
    std::vector<const void*> want = {arrays.source[0]};
    if (f.shape.sources == 2) want.push_back(arrays.source[1]);
    want.push_back(arrays.destination[0]);
    if (f.shape.destinations == 2) want.push_back(arrays.destination[1]);
    want.resize(3);
    EXPECT_TRUE(std::equal(want.begin(), want.end(), handed.arrays)) << f.name;
    EXPECT_TRUE(!f.shape.scalar || memcmp(handed.scalar, arrays.scalar, f.type.bytes()) == 0)
        << f.name;
  }
}
