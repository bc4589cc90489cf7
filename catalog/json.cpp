// SPDX-License-Identifier: MIT
#include "catalog/json.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>

template <class T, class Variant>
static auto& as(Variant& value, const char* kind) {
  auto* const found = std::get_if<T>(&value);
  if (!found) throw Json::exception(std::string("a value is no ") + kind);
  return *found;
}

Json::Json(std::initializer_list<Json> elements) {
  const auto is_member = [](const Json& e) {
    return e.is_array() && e.size() == 2 && e.at(0).is_string();
  };
  if (!std::all_of(elements.begin(), elements.end(), is_member)) {
    value_ = Array(elements);
    return;
  }
  value_ = Object();
  for (const Json& e : elements) member(e.at(0).get<std::string>()) = e.at(1);
}

void Json::get_to(bool& x) const { x = as<bool>(value_, "true or false"); }
void Json::get_to(std::string& x) const { x = as<std::string>(value_, "text"); }
double Json::real() const { return as<double>(value_, "number"); }

size_t Json::size() const {
  if (const auto* object = std::get_if<Object>(&value_)) return object->size();
  return is_null() ? 0 : as<Array>(value_, "list").size();
}

const Json* Json::begin() const { return is_null() ? nullptr : as<Array>(value_, "list").data(); }

const Json* Json::find(std::string_view key) const {
  if (const auto* object = std::get_if<Object>(&value_))
    for (const auto& [name, value] : *object)
      if (name == key) return &value;
  return nullptr;
}

const Json& Json::at(std::string_view key) const {
  if (const Json* const found = find(key)) return *found;
  throw exception("there is no " + std::string(key));
}

const Json& Json::at(size_t i) const {
  const Array& list = as<Array>(value_, "list");
  if (i >= list.size()) throw exception("a list is too short");
  return list[i];
}

Json& Json::member(std::string_view key) {
  if (const Json* const found = find(key)) return const_cast<Json&>(*found);
  if (is_null()) value_ = Object();
  return as<Object>(value_, "object").emplace_back(key, nullptr).second;
}

void Json::erase(std::string_view key) {
  std::erase_if(as<Object>(value_, "object"), [&](const auto& m) { return m.first == key; });
}

void Json::push_back(Json element) {
  if (is_null()) value_ = Array();
  as<Array>(value_, "list").push_back(std::move(element));
}

bool Json::equals(const Json& other) const {
  if (!is_number() || !other.is_number()) return value_ == other.value_;
  if (!is_number_integer() || !other.is_number_integer())
    return get<double>() == other.get<double>();
  // Beyond the signed numbers only an unsigned one reaches, and not below zero.
  const auto negative = [](const Json& x) {
    return !x.is_number_unsigned() && x.get<int64_t>() < 0;
  };
  return negative(*this) == negative(other) && get<uint64_t>() == other.get<uint64_t>();
}

// To and from the JSON library's own value.
struct JsonText {
  using Other = nlohmann::ordered_json;

  static Other to(const Json& json) {
    if (json.is_object()) {
      Other object = Other::object();
      for (const auto& [key, value] : std::get<Json::Object>(json.value_)) object[key] = to(value);
      return object;
    }
    if (json.is_array()) {
      Other list = Other::array();
      for (const Json& element : json) list.push_back(to(element));
      return list;
    }
    return std::visit(
        [](const auto& x) -> Other {
          using T = std::decay_t<decltype(x)>;
          if constexpr (std::is_arithmetic_v<T> || std::is_same_v<T, std::string>)
            return x;
          else
            return nullptr;
        },
        json.value_);
  }

  static Json from(const Other& other) {
    if (other.is_object()) {
      Json object = Json::object();
      for (const auto& [key, value] : other.items()) object[key] = from(value);
      return object;
    }
    if (other.is_array()) {
      Json list = Json::array();
      for (const Other& element : other) list.push_back(from(element));
      return list;
    }
    if (other.is_boolean()) return other.get<bool>();
    if (other.is_string()) return other.get<std::string>();
    if (other.is_number_unsigned()) return other.get<uint64_t>();
    if (other.is_number_integer()) return other.get<int64_t>();
    if (other.is_number()) return other.get<double>();
    return nullptr;
  }
};

std::string Json::dump(int indent) const {
  return JsonText::to(*this).dump(indent, ' ', false, JsonText::Other::error_handler_t::replace);
}

Json Json::parse(const std::string& text) {
  using Other = JsonText::Other;
  // Of two members of one name the first would be lost.
  std::vector<std::set<std::string>> names;
  const auto watch = [&](int depth, Other::parse_event_t event, Other& value) {
    if (depth > kDeepest) throw exception("it is nested too deeply");
    if (event == Other::parse_event_t::object_start) names.emplace_back();
    if (event == Other::parse_event_t::object_end) names.pop_back();
    if (event == Other::parse_event_t::key && !names.back().insert(value).second)
      throw exception("'" + value.get<std::string>() + "' stands there twice");
    return true;
  };
  try {
    return JsonText::from(Other::parse(text, watch));
  } catch (const Other::parse_error& error) {
    throw exception(text.empty() ? "it is empty" : "no JSON at byte " + std::to_string(error.byte));
  } catch (const Other::exception&) {
    throw exception("it holds a number beyond all bounds");
  }
}
