// A value read from a field, and its conversions.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

namespace selvane {

// Null, an integer, a floating-point number or text. Conversions throw InputError when the value does not
// fit; a null value converts to text only (the empty one).
class Variant {
 public:
  Variant() = default;
  Variant(std::int64_t value) : value_(value) {}       // NOLINT(google-explicit-constructor): a value type
  Variant(int value) : value_(std::int64_t{value}) {}  // NOLINT(google-explicit-constructor)
  Variant(double value) : value_(value) {}             // NOLINT(google-explicit-constructor)
  Variant(std::string value) : value_(std::move(value)) {}         // NOLINT(google-explicit-constructor)
  Variant(std::string_view value) : value_(std::string(value)) {}  // NOLINT(google-explicit-constructor)
  Variant(const char* value) : value_(std::string(value)) {}       // NOLINT(google-explicit-constructor)

  bool IsNull() const { return std::holds_alternative<std::monostate>(value_); }
  const std::int64_t* AsInteger() const { return std::get_if<std::int64_t>(&value_); }
  const double* AsReal() const { return std::get_if<double>(&value_); }
  const std::string* AsText() const { return std::get_if<std::string>(&value_); }

  std::string ToText() const;
  // A fraction is rounded, a half to the even neighbour; text must be a number.
  std::int16_t ToInt16() const;
  std::int32_t ToInt32() const;
  float ToSingle() const;

 private:
  std::int64_t ToInteger(std::int64_t lowest, std::int64_t greatest) const;

  std::variant<std::monostate, std::int64_t, double, std::string> value_;
};

}  // namespace selvane
