// SPDX-License-Identifier: MIT
//
// Zeros, infinities, NaNs, subnormals and both neighbours of every bound, in every lane of a block
// and in the tail: result bits and code.
#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

#include "tests/catalog.h"
#include "tests/support.h"

template <class U>
struct Row {
  U in, out;
  int code;
};
template <class U>
struct DivRow {
  U dividend, divisor, out;
  int code;
};
template <class U>
struct ModfRow {
  U in, whole, fraction;
};

constexpr Row<uint32_t> kInv32[] = {
    {0x00000000, 0x7F800000, 18}, {0x80000000, 0xFF800000, 18}, {0x7F800000, 0x00000000, 0},
    {0xFF800000, 0x80000000, 0},  {0x7FC12345, 0x7FC12345, 0},  {0x7F812345, 0x7FC12345, 0},
    {0xFFA00000, 0xFFE00000, 0},  {0x40000000, 0x3F000000, 0},  {0x00000001, 0x7F800000, 0},
    {0x80000001, 0xFF800000, 0},  {0x001FFFFF, 0x7F800000, 0},  {0x00200000, 0x7F800000, 0},
    {0x00200001, 0x7F7FFFF8, 0},  {0x00800000, 0x7E800000, 0},  {0x7E800000, 0x00800000, 0},
    {0x7F7FFFFF, 0x00200000, 0},  {0xFF7FFFFF, 0x80200000, 0},  {0x40400000, 0x3EAAAAAB, 0},
};
constexpr Row<uint64_t> kInv64[] = {
    {0x0000000000000000, 0x7FF0000000000000, 18}, {0x8000000000000000, 0xFFF0000000000000, 18},
    {0x7FF0000000000000, 0x0000000000000000, 0},  {0xFFF0000000000000, 0x8000000000000000, 0},
    {0x7FF8000000000123, 0x7FF8000000000123, 0},  {0x7FF0000000000001, 0x7FF8000000000001, 0},
    {0xFFF4000000000000, 0xFFFC000000000000, 0},  {0x4000000000000000, 0x3FE0000000000000, 0},
    {0x0000000000000001, 0x7FF0000000000000, 0},  {0x8000000000000001, 0xFFF0000000000000, 0},
    {0x0004000000000000, 0x7FF0000000000000, 0},  {0x0004000000000001, 0x7FEFFFFFFFFFFFF8, 0},
    {0x7FEFFFFFFFFFFFFF, 0x0004000000000000, 0},  {0x7FD0000000000000, 0x0010000000000000, 0},
    {0x7E37E43C8800759C, 0x01A56E1FC2F8F359, 0},
};
constexpr DivRow<uint32_t> kDiv32[] = {
    {0x3F800000, 0x00000000, 0x7F800000, 18}, {0xBF800000, 0x00000000, 0xFF800000, 18},
    {0x3F800000, 0x80000000, 0xFF800000, 18}, {0x00000000, 0x00000000, 0xFFC00000, 18},
    {0x7F800000, 0x80000000, 0xFF800000, 18}, {0xFF800000, 0x00000000, 0xFF800000, 18},
    {0x7FC00001, 0x00000000, 0x7FC00001, 0},  {0x7F800001, 0x80000000, 0x7FC00001, 0},
    {0x00000001, 0x00000000, 0x7F800000, 18}, {0x3F800000, 0x7F800000, 0x00000000, 0},
    {0x7F800000, 0x7F800000, 0xFFC00000, 0},  {0x00000000, 0xC0000000, 0x80000000, 0},
    {0x3F800000, 0x7FA00000, 0x7FE00000, 0},  {0x7F7FFFFF, 0x3F000000, 0x7F800000, 0},
    {0x00800000, 0x40000000, 0x00400000, 0},  {0x00000001, 0x40000000, 0x00000000, 0},
    {0x00000003, 0x40000000, 0x00000002, 0},  {0x3F800000, 0x40400000, 0x3EAAAAAB, 0},
};
constexpr DivRow<uint64_t> kDiv64[] = {
    {0x3FF0000000000000, 0x0000000000000000, 0x7FF0000000000000, 18},
    {0x3FF0000000000000, 0x8000000000000000, 0xFFF0000000000000, 18},
    {0x0000000000000000, 0x0000000000000000, 0xFFF8000000000000, 18},
    {0xFFF0000000000000, 0x0000000000000000, 0xFFF0000000000000, 18},
    {0x7FF8000000000005, 0x0000000000000000, 0x7FF8000000000005, 18},
    {0x7FF0000000000005, 0x8000000000000000, 0x7FF8000000000005, 18},
    {0x7FF0000000000000, 0xFFF0000000000000, 0xFFF8000000000000, 0},
    {0x3FF0000000000000, 0x7FF0000000000001, 0x7FF8000000000001, 0},
    {0x7FEFFFFFFFFFFFFF, 0x3FE0000000000000, 0x7FF0000000000000, 0},
    {0x0010000000000000, 0x4000000000000000, 0x0008000000000000, 0},
    {0x0000000000000001, 0x4000000000000000, 0x0000000000000000, 0},
    {0x0000000000000003, 0x4000000000000000, 0x0000000000000002, 0},
    {0x8000000000000000, 0x4000000000000000, 0x8000000000000000, 0},
};
constexpr Row<uint32_t> kExp32[] = {
    {0x00000000, 0x3F800000, 0},  {0x80000000, 0x3F800000, 0},   // e^0 is exactly 1
    {0x00000001, 0x3F800000, 0},  {0x3F800000, 0x402DF854, 0},   // e
    {0x7F800000, 0x7F800000, 0},  {0xFF800000, 0x00000000, 0},   //
    {0x7FC00055, 0x7FC00055, 0},  {0x7F800055, 0x7FC00055, 0},   //
    {0xFFA00000, 0xFFE00000, 0},  {0x42B17217, 0x7F7FFF84, 0},   // the last finite one
    {0x42B17218, 0x7F800000, 12}, {0x42B17219, 0x7F800000, 12},  //
    {0x7F7FFFFF, 0x7F800000, 12}, {0xC2CFF1B4, 0x00000001, 0},   // the last above zero
    {0xC2CFF1B5, 0x00000000, 17}, {0xFF7FFFFF, 0x00000000, 17},
};
constexpr Row<uint64_t> kExp64[] = {
    {0x0000000000000000, 0x3FF0000000000000, 0},   // e^0 is exactly 1
    {0x8000000000000000, 0x3FF0000000000000, 0},   //
    {0x0000000000000001, 0x3FF0000000000000, 0},   //
    {0x3FF0000000000000, 0x4005BF0A8B145769, 0},   // e
    {0x7FF0000000000000, 0x7FF0000000000000, 0},   //
    {0xFFF0000000000000, 0x0000000000000000, 0},   //
    {0x7FF8000000000077, 0x7FF8000000000077, 0},   //
    {0x7FF0000000000077, 0x7FF8000000000077, 0},   //
    {0xFFF4000000000000, 0xFFFC000000000000, 0},   //
    {0x40862E42FEFA39EF, 0x7FEFFFFFFFFFFF2A, 0},   // the last finite one
    {0x40862E42FEFA39F0, 0x7FF0000000000000, 12},  //
    {0x40862E4300000000, 0x7FF0000000000000, 12},  //
    {0x7FEFFFFFFFFFFFFF, 0x7FF0000000000000, 12},  //
    {0xC0874910D52D3052, 0x0000000000000000, 17},  // from here down, zero
    {0xC0874910D52D3053, 0x0000000000000000, 17},  //
    {0xC0874911D52D3051, 0x0000000000000000, 17},  // a larger high word, a smaller low word
    {0xFFEFFFFFFFFFFFFF, 0x0000000000000000, 17},
};
// Only the code: the values are checked for accuracy elsewhere.
struct BandRow {
  double in;
  int code;
};
constexpr BandRow kExp64Band[] = {
    {-709, 8},      {-745, 8},  {-708.5, 14}, {-720.5, 14},
    {-733.25, 38},  {-710, 62}, {-740, 62},   {-0x1.6232bdd7abcd2p+9, 0},
    {-708.3962, 0},  // through the careful path, yet normal: no code
};
constexpr ModfRow<uint32_t> kModf32[] = {
    {0xC0700000, 0xC0400000, 0xBF400000}, {0xC0A00000, 0xC0A00000, 0x80000000},
    {0x3E800000, 0x00000000, 0x3E800000}, {0x80000001, 0x80000000, 0x80000001},
    {0x00000000, 0x00000000, 0x00000000}, {0x80000000, 0x80000000, 0x80000000},
    {0x3F800000, 0x3F800000, 0x00000000}, {0x3F7FFFFF, 0x00000000, 0x3F7FFFFF},
    {0x4AFFFFFF, 0x4AFFFFFE, 0x3F000000}, {0x4B000000, 0x4B000000, 0x00000000},
    {0x7F800000, 0x7F800000, 0x00000000}, {0xFF800000, 0xFF800000, 0x80000000},
    {0x7F800001, 0x7FC00001, 0x7FC00001}, {0xFFC00001, 0xFFC00001, 0xFFC00001},
};
constexpr ModfRow<uint64_t> kModf64[] = {
    {0xC00E000000000000, 0xC008000000000000, 0xBFE8000000000000},
    {0x8000000000000000, 0x8000000000000000, 0x8000000000000000},
    {0x3FEFFFFFFFFFFFFF, 0x0000000000000000, 0x3FEFFFFFFFFFFFFF},
    {0x3FF0000000000001, 0x3FF0000000000000, 0x3CB0000000000000},
    {0x413FFFFFFFFFFFFF, 0x413FFFFF00000000, 0x3FEFFFFFFFE00000},
    {0x4340000000000001, 0x4340000000000001, 0x0000000000000000},
    {0x432FFFFFFFFFFFFF, 0x432FFFFFFFFFFFFE, 0x3FE0000000000000},
    {0xFFF0000000000000, 0xFFF0000000000000, 0x8000000000000000},
    {0x7FF0000000000001, 0x7FF8000000000001, 0x7FF8000000000001},  // payload in the low word only
    {0xFFF8000000000001, 0xFFF8000000000001, 0xFFF8000000000001},
};
// in; Floor, Ceil, Trunc, Round
struct RoundingRow {
  uint32_t in, floor, ceil, trunc, round;
};
constexpr RoundingRow kRounding32[] = {
    {0x80000000, 0x80000000, 0x80000000, 0x80000000, 0x80000000},  // -0
    {0x80000001, 0xBF800000, 0x80000000, 0x80000000, 0x80000000},  // -1e-45
    {0x3E99999A, 0x00000000, 0x3F800000, 0x00000000, 0x00000000},  // 0.3
    {0xBE99999A, 0xBF800000, 0x80000000, 0x80000000, 0x80000000},  // -0.3
    {0x4A800001, 0x4A800000, 0x4A800002, 0x4A800000, 0x4A800002},  // 4194304.5
    {0x4B000001, 0x4B000001, 0x4B000001, 0x4B000001, 0x4B000001},  // 8388609
    {0x40200000, 0x40000000, 0x40400000, 0x40000000, 0x40400000},  // 2.5
    {0xC0200000, 0xC0400000, 0xC0000000, 0xC0000000, 0xC0400000},  // -2.5
    {0x3EFFFFFF, 0x00000000, 0x3F800000, 0x00000000, 0x00000000},  // just below a half
    {0x3F000000, 0x00000000, 0x3F800000, 0x00000000, 0x3F800000},  // 0.5
    {0xFF800001, 0xFFC00001, 0xFFC00001, 0xFFC00001, 0xFFC00001},
};

constexpr int kLengths[] = {1, 4, 5, 7, 12};

// Every row at every place of arrays of plain values: a block's lanes, the tail, and blocks whose
// neighbours must come out as if nothing special were there.
template <class U>
static void expect_row(const Function& f, const std::vector<U>& in, const std::vector<U>& out,
                       int code) {
  for (const int len : kLengths)
    for (int at = 0; at < len; ++at) {
      std::vector<U> src[2], dst[2], plain(len);
      for (auto* v : {&src[0], &src[1], &dst[0], &dst[1]}) v->assign(len, kOne<U>);
      const auto pointers = [&] {
        return Arrays{{src[0].data(), src[1].data()}, {dst[0].data(), dst[1].data()}, nullptr};
      };
      f.call(pointers(), len);
      plain = dst[0];
      for (size_t k = 0; k < in.size(); ++k) src[k][at] = in[k];
      const Status status = f.call(pointers(), len);
      const auto where = testing::Message()
                         << f.name << " of " << std::hex << in[0] << (in.size() > 1 ? " " : "")
                         << (in.size() > 1 ? in[1] : 0) << std::dec << " at " << at << " of "
                         << len;
      EXPECT_EQ(status, f.counts ? len : code) << where;
      for (size_t k = 0; k < out.size(); ++k)
        EXPECT_EQ(dst[k][at], out[k]) << where << std::hex << ": got " << dst[k][at];
      for (int i = 0; i < len; ++i)
        EXPECT_TRUE(i == at || dst[0][i] == plain[i]) << where << ": neighbour " << i;
    }
}

template <class Check>
static void each(std::string_view family, std::string_view type, Check check) {
  int found = 0;
  for (const Function& f : kCatalog)
    if (f.is(family, type)) ++found, check(f);
  EXPECT_GT(found, 0);
}

template <class U>
static void expect_rows(std::string_view family, std::span<const Row<U>> rows) {
  each(family, sizeof(U) == 4 ? "32f" : "64f", [&](const Function& f) {
    for (const Row<U>& row : rows) expect_row<U>(f, {row.in}, {row.out}, row.code);
  });
}
template <class U>
static void expect_rows(std::string_view family, std::span<const DivRow<U>> rows) {
  each(family, sizeof(U) == 4 ? "32f" : "64f", [&](const Function& f) {
    for (const DivRow<U>& r : rows) expect_row<U>(f, {r.dividend, r.divisor}, {r.out}, r.code);
  });
}
template <class U>
static void expect_rows(std::string_view family, std::span<const ModfRow<U>> rows) {
  each(family, sizeof(U) == 4 ? "32f" : "64f", [&](const Function& f) {
    for (const ModfRow<U>& row : rows) expect_row<U>(f, {row.in}, {row.whole, row.fraction}, 0);
  });
}

TEST(SpecialValues, Inv) {
  expect_rows<uint32_t>("Inv", std::span(kInv32));
  expect_rows<uint64_t>("Inv", std::span(kInv64));
}
TEST(SpecialValues, Div) {
  expect_rows<uint32_t>("Div", std::span(kDiv32));
  expect_rows<uint64_t>("Div", std::span(kDiv64));
}
TEST(SpecialValues, Exp) {
  expect_rows<uint32_t>("Exp", std::span(kExp32));
  expect_rows<uint64_t>("Exp", std::span(kExp64));
}
TEST(SpecialValues, Modf) {
  expect_rows<uint32_t>("Modf", std::span(kModf32));
  expect_rows<uint64_t>("Modf", std::span(kModf64));
}
TEST(SpecialValues, Rounding) {
  for (const RoundingRow& r : kRounding32) {
    each("Floor", "32f", [&](const Function& f) { expect_row<uint32_t>(f, {r.in}, {r.floor}, 0); });
    each("Ceil", "32f", [&](const Function& f) { expect_row<uint32_t>(f, {r.in}, {r.ceil}, 0); });
    each("Trunc", "32f", [&](const Function& f) { expect_row<uint32_t>(f, {r.in}, {r.trunc}, 0); });
    each("Round", "32f", [&](const Function& f) { expect_row<uint32_t>(f, {r.in}, {r.round}, 0); });
  }
}
TEST(SpecialValues, ExpReportsItsSubnormalsByTheMiddleIndex) {
  each("Exp", "64f", [](const Function& f) {
    for (const BandRow& row : kExp64Band) expect_row<uint64_t>(f, {bits(row.in)}, {}, row.code);
  });
}

// The status is the code of the last element reported, wherever in a block it stands.
TEST(SpecialValues, TheLastReportDecides) {
  each("Exp", "32f", [](const Function& f) {
    const float over = 100, under = -110, one = 1;
    float dst[9];
    for (const auto& [src, status] : std::initializer_list<std::pair<std::vector<float>, int>>{
             {{over, under, one, one}, 17},
             {{under, over, one, one}, 12},
             {{one, over, one, one, under, one, one, one, one}, 17},
             {{one, under, one, one, one, one, one, one, over}, 12}}) {
      const Arrays a{{src.data()}, {dst}, nullptr};
      EXPECT_EQ(f.call(a, int32_t(src.size())), status);
    }
  });
}

// One division for four doubles is exact enough only while their product fits the single range.
TEST(SpecialValues, InvOfBlocksAtTheEdgesOfTheSharedDivision) {
  const double blocks[][4] = {{1e200, 1e200, 1e-200, 1e-200}, {1e300, 1e300, 1, 1},
                              {1e-300, 1e-300, 1, 1},         {1, 4e-320, 1, 1},
                              {0x1p-75, 0x1p-75, 1, 1},       {0x1p-75, 0x1.0000001p-75, 1, 1},
                              {0x1p64, 0x1.fffffep63, 1, 1},  {0x1p64, 0x1.fffffdp63, 1, 1}};
  each("Inv", "64f", [&](const Function& f) {
    for (const auto& block : blocks) {
      double dst[4];
      EXPECT_EQ(f.call({{block}, {dst}, nullptr}, 4), 0);
      for (int i = 0; i < 4; ++i) {
        const volatile double want = 1 / block[i];
        EXPECT_LE(steps_apart(bits(double(want)), bits(dst[i])), 1u) << block[i];
      }
    }
  });
}
