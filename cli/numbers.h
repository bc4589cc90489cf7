// SPDX-License-Identifier: MIT
//
// Real numbers as text. They are carried as bit patterns, because a signalling NaN that passes
// through a floating-point register becomes a quiet one.
#ifndef LUX_CLI_NUMBERS_H
#define LUX_CLI_NUMBERS_H

#include "catalog/lookup.h"
#include "catalog/number_format.h"

#include <cstdint>
#include <string>
#include <string_view>

// Decimal, hex float, inf, nan, or the bit pattern: 0x and exactly 8 (width 4) or 16 (width 8)
// digits. False, with the reason in `why`, when `text` is none of them or too large for the width.
bool parse_real(std::string_view text, int width, uint64_t& bits, std::string& why);

// One element: a real number, or for complex types "real,imaginary". Appends its bytes.
void parse_element(const std::string& text, const ElementType& type, std::string& bytes);

// The bytes of the scalar, none for the functions that take no scalar.
std::string parse_scalar(const std::string& text, const Function& function);

void append_bits(std::string& bytes, uint64_t bits, int width);

std::string decimal(uint64_t bits, int width);  // the shortest that reads back as the same number
std::string hex_float(uint64_t bits, int width);
std::string bit_pattern(uint64_t bits, int width);

// In plain digits or scientific notation (1e6).
bool parse_whole(std::string_view text, uint64_t& whole);

#endif
