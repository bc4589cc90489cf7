// SPDX-License-Identifier: MIT
//
// Cycles per element of every function on the processors this build is tuned for, in the row order
// of functions.def. They feed only the decision when a call is worth splitting. A best grade of 0
// means: never split.
#ifndef LUX_CORE_COST_TABLES_H
#define LUX_CORE_COST_TABLES_H

struct CyclesPerElement {
  double best_grade;  // A24, A53
  double next_grade;  // A21, A50
};

// clang-format off
// 32f
constexpr CyclesPerElement sCpeTable[] = {
    {4.61, 1.91},    // 0 Inv
    {4.34, 2.42},    // 1 Div
    {5.34, 2.52},    // 2 Sqrt
    {3.74, 2.2},     // 3 InvSqrt
    {12.69, 8.52},   // 4 Cbrt
    {14.09, 9.7},    // 5 InvCbrt
    {24.74, 24.74},  // 6 Pow
    {24.21, 24.26},  // 7 Powx
    {7.06, 6.4},     // 8 Exp
    {11.3, 9.82},    // 9 Ln
    {10.98, 9.85},   // 10 Log10
    {11.75, 7.35},   // 11 Cos
    {11.42, 6.4},    // 12 Sin
    {18.43, 10.64},  // 13 SinCos
    {19.67, 10.44},  // 14 Tan
    {18.7, 10.43},   // 15 Acos
    {10.71, 8.33},   // 16 Asin
    {15.82, 7.94},   // 17 Atan
    {32.88, 14.73},  // 18 Atan2
    {12.33, 9.54},   // 19 Cosh
    {17.62, 10.61},  // 20 Sinh
    {15.7, 13.21},   // 21 Tanh
    {14.11, 14.14},  // 22 Acosh
    {14.46, 13.81},  // 23 Asinh
    {19.71, 11.86},  // 24 Atanh
    {15.66, 14.11},  // 25 Erf
    {30.04, 23.78},  // 26 Erfc
    {27.49, 27.5},   // 27 ErfInv
    {49.36, 49.36},  // 28 Hypot
};

// 64f
constexpr CyclesPerElement dCpeTable[] = {
    {9.39, 6.54},    // 0 Inv
    {9.44, 9.45},    // 1 Div
    {17.55, 13.85},  // 2 Sqrt
    {13.42, 11.17},  // 3 InvSqrt
    {27.59, 22.5},   // 4 Cbrt
    {27.8, 27.87},   // 5 InvCbrt
    {53.82, 54.84},  // 6 Pow
    {50.38, 50.41},  // 7 Powx
    {17.94, 11.09},  // 8 Exp
    {18.04, 18.53},  // 9 Ln
    {18.86, 18.41},  // 10 Log10
    {23.74, 24.1},   // 11 Cos
    {22.59, 22.66},  // 12 Sin
    {37.34, 29.42},  // 13 SinCos
    {46.45, 30.35},  // 14 Tan
    {47.41, 36.34},  // 15 Acos
    {47, 33.98},     // 16 Asin
    {36.66, 34.7},   // 17 Atan
    {78.26, 44.34},  // 18 Atan2
    {24.12, 20.6},   // 19 Cosh
    {24.54, 21.98},  // 20 Sinh
    {35.25, 29.3},   // 21 Tanh
    {94.68, 43.43},  // 22 Acosh
    {97.68, 52.32},  // 23 Asinh
    {50.22, 41.77},  // 24 Atanh
    {34.9, 29.29},   // 25 Erf
    {62.18, 45.08},  // 26 Erfc
    {61.83, 60.93},  // 27 ErfInv
    {32.34, 32.36},  // 28 Hypot
};

// 32fc
constexpr CyclesPerElement cCpeTable[] = {
    {70.62, 70.63},  // 0 Sqrt
    {1630, 1534},    // 1 Pow
    {1510, 1582},    // 2 Powx
    {74.05, 26.99},  // 3 Exp
    {80.45, 52.48},  // 4 Ln
    {593.6, 593.2},  // 5 Log10
    {579.5, 588.2},  // 6 Cos
    {609.4, 599},    // 7 Sin
    {673.8, 660},    // 8 Tan
    {1220, 1231},    // 9 Acos
    {1355, 1339},    // 10 Asin
    {646, 642.6},    // 11 Atan
    {510.7, 507.6},  // 12 Cosh
    {511.8, 512.5},  // 13 Sinh
    {588.5, 581.8},  // 14 Tanh
    {1240, 1240},    // 15 Acosh
    {1219, 1225},    // 16 Asinh
    {565.7, 565.9},  // 17 Atanh
};

// 64fc
constexpr CyclesPerElement zCpeTable[] = {
    {183.8, 183.3},  // 0 Sqrt
    {1506, 1506},    // 1 Pow
    {1505, 1516},    // 2 Powx
    {90.26, 89.4},   // 3 Exp
    {176.2, 176.1},  // 4 Ln
    {577.8, 577.2},  // 5 Log10
    {566.6, 553.5},  // 6 Cos
    {574.5, 573.9},  // 7 Sin
    {654.5, 650.5},  // 8 Tan
    {1207, 1217},    // 9 Acos
    {1323, 1333},    // 10 Asin
    {627.1, 628.7},  // 11 Atan
    {496.5, 496},    // 12 Cosh
    {499.4, 499},    // 13 Sinh
    {563.2, 565.4},  // 14 Tanh
    {1227, 1228},    // 15 Acosh
    {1214, 1210},    // 16 Asinh
    {544, 545.9},    // 17 Atanh
};

// clang-format on

#endif
