// SPDX-License-Identifier: MIT
#include "cli/numbers.h"
#include "catalog/failure.h"

#include <fmt/format.h>

#include <bit>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

static std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r\n";
  const size_t first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) + 1 - first);
}

// A hex float without its exponent is as likely a mistyped bit pattern.
static bool lacks_exponent(std::string_view text) {
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) text.remove_prefix(1);
  return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') &&
         text.find_first_not_of("0123456789abcdefABCDEF.", 2) == std::string_view::npos;
}

// Rounds once, to the width asked for; the bits are taken from memory.
static bool parse_rounded(const char* text, const char* end, int width, uint64_t& bits) {
  char* stop = nullptr;
  if (width == 4) {
    const float value = strtof(text, &stop);
    bits = std::bit_cast<uint32_t>(value);
  } else {
    const double value = strtod(text, &stop);
    bits = std::bit_cast<uint64_t>(value);
  }
  return stop == end;
}

bool parse_real(std::string_view text, int width, uint64_t& bits, std::string& why) {
  const std::string_view number = trimmed(text);
  if (lacks_exponent(number)) {
    if (number.size() == 2 + size_t(width) * 2 && number[0] == '0' &&
        number.find('.') == std::string_view::npos) {
      bits = strtoull(std::string(number).c_str(), nullptr, 16);
      return true;
    }
    why = fmt::format(
        "{} is no bit pattern of {} hex digits, and a hex float has an exponent "
        "(0x1p3)",
        in_quotes(number), width * 2);
    return false;
  }
  const std::string copy(number);
  errno = 0;
  if (copy.empty() || !parse_rounded(copy.c_str(), copy.c_str() + copy.size(), width, bits)) {
    why = in_quotes(number) + " is not a number";
    return false;
  }
  if (errno == ERANGE && number_format(width).is_infinite(bits)) {
    why = fmt::format("{} is too large for {} bits (write inf for infinity)", in_quotes(number),
                      width * 8);
    return false;
  }
  return true;
}

bool parse_whole(std::string_view untrimmed, uint64_t& whole) {
  const std::string_view text = trimmed(untrimmed);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), whole);
  if (error == std::errc() && end == text.data() + text.size()) return true;
  if (text.empty() || text.find_first_not_of("0123456789.eE+") != std::string_view::npos)
    return false;
  const std::string copy(text);
  char* stop = nullptr;
  const double value = strtod(copy.c_str(), &stop);
  if (*stop || !(value < 0x1p64) || value != std::floor(value)) return false;
  whole = uint64_t(value);
  return true;
}

void parse_element(const std::string& text, const ElementType& type, std::string& bytes) {
  const size_t comma = text.find(',');
  if ((comma != std::string::npos) != (type.parts == 2))
    throw Failure(type.parts == 2 ? fmt::format("{} needs complex values as real,imaginary, not {}",
                                                type.name, in_quotes(text))
                                  : fmt::format("{} is not a number", in_quotes(text)));
  std::string_view rest = text;
  for (int part = 0; part < type.parts; ++part) {
    uint64_t bits = 0;
    std::string why;
    const bool last = part + 1 == type.parts;
    if (!parse_real(last ? rest : rest.substr(0, comma), type.width, bits, why)) throw Failure(why);
    append_bits(bytes, bits, type.width);
    if (!last) rest.remove_prefix(comma + 1);
  }
}

std::string parse_scalar(const std::string& text, const Function& function) {
  if (function.shape.scalar && text.empty())
    throw Failure(std::string(function.name) + " needs its scalar: --scalar VALUE");
  if (!function.shape.scalar && !text.empty())
    throw Failure(std::string(function.name) + " takes no scalar");
  std::string bytes;
  if (function.shape.scalar) parse_element(text, function.type, bytes);
  return bytes;
}

void append_bits(std::string& bytes, uint64_t bits, int width) {
  bytes.append(reinterpret_cast<const char*>(&bits), size_t(width));
}

std::string decimal(uint64_t bits, int width) {
  return width == 4 ? fmt::format("{}", std::bit_cast<float>(uint32_t(bits)))
                    : fmt::format("{}", std::bit_cast<double>(bits));
}

std::string hex_float(uint64_t bits, int width) {
  char text[40];
  snprintf(text, sizeof text, "%a", as_double(bits, width));
  return text;
}

std::string bit_pattern(uint64_t bits, int width) {
  return fmt::format("0x{:0{}X}", bits, width * 2);
}
