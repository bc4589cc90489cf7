// SPDX-License-Identifier: MIT
#include "cli/json_file.h"

#include <fmt/format.h>

Json parse_json(const std::string& text) {
  try {
    return Json::parse(text);
  } catch (const Json::exception& error) {
    throw BadField(error.what());
  }
}

const Json& member(const Json& object, const char* key) {
  if (!object.is_object() || !object.contains(key))
    throw BadField(fmt::format("'{}' is missing", key));
  return object.at(key);
}

static const Json& of_kind(const Json& value, const char* key, bool right, const char* kind) {
  if (!right) throw BadField(fmt::format("'{}' is no {}", key, kind));
  return value;
}

const Json& array_in(const Json& object, const char* key) {
  const Json& value = member(object, key);
  return of_kind(value, key, value.is_array(), "list");
}

const Json& object_in(const Json& object, const char* key) {
  const Json& value = member(object, key);
  return of_kind(value, key, value.is_object(), "object");
}

std::string text_in(const Json& object, const char* key) {
  const Json& value = member(object, key);
  return of_kind(value, key, value.is_string(), "text").get<std::string>();
}

double number_in(const Json& object, const char* key) {
  const Json& value = member(object, key);
  return of_kind(value, key, value.is_number(), "number").get<double>();
}

int64_t whole_in(const Json& object, const char* key, int64_t least, int64_t most) {
  const Json& value = member(object, key);
  const bool fits = value.is_number_integer() &&
                    !(value.is_number_unsigned() && value.get<uint64_t>() > uint64_t(INT64_MAX));
  const int64_t whole = of_kind(value, key, fits, "whole number").get<int64_t>();
  if (whole < least || whole > most)
    throw BadField(fmt::format("'{}' is not from {} to {}", key, least, most));
  return whole;
}

bool flag_in(const Json& object, const char* key) {
  const Json& value = member(object, key);
  return of_kind(value, key, value.is_boolean(), "true or false").get<bool>();
}
