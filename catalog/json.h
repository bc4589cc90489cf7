// SPDX-License-Identifier: MIT
//
// JSON as a value. Members keep the order in which they came.
#ifndef LUX_CATALOG_JSON_H
#define LUX_CATALOG_JSON_H

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

class Json {
 public:
  struct exception : std::runtime_error {  // another kind of value, no such member, no JSON
    using std::runtime_error::runtime_error;
  };
  using Array = std::vector<Json>;
  using Object = std::vector<std::pair<std::string, Json>>;

  template <class T>
  static constexpr bool is_text = std::convertible_to<const T&, std::string_view>;
  template <class T>
  static constexpr bool is_number_type = std::is_arithmetic_v<T> && !std::same_as<T, char>;
  template <class T>
  static constexpr bool is_range = !is_text<T> && requires(const T& range) {
    std::begin(range);
  };

  template <class T>  // arrays: what they hold is set, not added
  static constexpr bool is_filled = !is_text<T> && requires(T & x) {
    std::size(x), x[0];
  };

  Json(std::nullptr_t = nullptr) {}
  Json(bool x) : value_(x) {}
  template <std::signed_integral T>
  Json(T x) : value_(int64_t(x)) {}
  template <std::unsigned_integral T>
  Json(T x) : value_(uint64_t(x)) {}
  template <std::floating_point T>
  Json(T x) : value_(double(x)) {}
  template <class T>
  requires is_text<T> Json(const T& text) : value_(std::string(std::string_view(text))) {}
  template <class T>
  requires(is_range<T> && !std::same_as<T, Json>) Json(const T& range) : value_(Array()) {
    for (const auto& element : range) push_back(Json(element));
  }
  // An object, if every element is a list of a text and a value, else a list.
  Json(std::initializer_list<Json> elements);
  static Json array() { return Json(Value(Array())); }
  static Json object() { return Json(Value(Object())); }

  bool is_null() const { return std::holds_alternative<std::monostate>(value_); }
  bool is_boolean() const { return std::holds_alternative<bool>(value_); }
  bool is_number_unsigned() const { return std::holds_alternative<uint64_t>(value_); }
  bool is_number_integer() const {
    return is_number_unsigned() || std::holds_alternative<int64_t>(value_);
  }
  bool is_number() const { return is_number_integer() || std::holds_alternative<double>(value_); }
  bool is_string() const { return std::holds_alternative<std::string>(value_); }
  bool is_array() const { return std::holds_alternative<Array>(value_); }
  bool is_object() const { return std::holds_alternative<Object>(value_); }

  // The value, if it is of that kind; a number as any number.
  template <class T>
  T get() const {
    T x;
    get_to(x);
    return x;
  }
  void get_to(Json& x) const { x = *this; }
  void get_to(bool& x) const;
  void get_to(std::string& x) const;
  template <class T>
  requires is_number_type<T>
  void get_to(T& x) const {
    if (const auto* i = std::get_if<int64_t>(&value_))
      x = T(*i);
    else if (const auto* u = std::get_if<uint64_t>(&value_))
      x = T(*u);
    else
      x = T(real());
  }
  template <class T>
  void get_to(std::vector<T>& x) const {
    x.clear();
    for (const Json& element : *this) x.push_back(element.get<T>());
  }
  template <class T>
  requires is_filled<T>
  void get_to(T& x) const {
    for (size_t i = 0; i < std::size(x); ++i) at(i).get_to(x[i]);
  }
  template <class T>
  requires(is_number_type<T> || std::same_as<T, std::string> || is_filled<T>) operator T() const {
    return get<T>();
  }

  // Lists and objects.
  size_t size() const;
  bool empty() const { return size() == 0; }
  const Json* begin() const;  // of a list
  const Json* end() const { return begin() + size(); }
  bool contains(std::string_view key) const { return find(key); }
  const Json& at(std::string_view key) const;
  const Json& at(size_t i) const;
  const Json& at(int i) const { return at(size_t(i)); }
  const Json& operator[](const char* key) const { return at(std::string_view(key)); }
  const Json& operator[](const std::string& key) const { return at(std::string_view(key)); }
  const Json& operator[](size_t i) const { return at(i); }
  const Json& operator[](int i) const { return at(size_t(i)); }
  // Makes a member that is not there, and an object of a null.
  Json& operator[](const char* key) { return member(key); }
  Json& operator[](const std::string& key) { return member(key); }
  template <class T>
  auto value(std::string_view key, const T& otherwise) const {
    using Result = std::conditional_t<is_text<T>, std::string, T>;
    const Json* const found = find(key);
    return found ? found->get<Result>() : Result(otherwise);
  }
  void erase(std::string_view key);
  void push_back(Json element);

  friend bool operator==(const Json& a, const Json& b) { return a.equals(b); }
  template <class T>
  requires std::is_arithmetic_v<T>
  friend bool operator==(const Json& a, T b) { return a.equals(Json(b)); }

  // On one line, or indented. What is no UTF-8 is replaced, no number becomes null.
  std::string dump(int indent = -1) const;
  // The message of its exception stands behind a file's name. Objects and lists may stand in one
  // another up to kDeepest times, since copying and writing recur over the levels.
  static constexpr int kDeepest = 32;
  static Json parse(const std::string& text);

 private:
  using Value =
      std::variant<std::monostate, bool, int64_t, uint64_t, double, std::string, Array, Object>;
  explicit Json(Value value) : value_(std::move(value)) {}
  bool equals(const Json& other) const;
  double real() const;
  const Json* find(std::string_view key) const;
  Json& member(std::string_view key);

  Value value_;
  friend struct JsonText;
};

#endif
