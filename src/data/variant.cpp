#include "data/variant.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>

#include "base/error.h"
#include "base/shown_text.h"
#include "base/text.h"

namespace selvane {

std::string Variant::ToText() const {
  if (const auto* text = AsText()) return *text;
  if (const auto* integer = AsInteger()) return fmt::format("{}", *integer);
  if (const auto* real = AsReal()) return SingleText(static_cast<float>(*real));
  return {};
}

std::int64_t Variant::ToInteger(std::int64_t lowest, std::int64_t greatest) const {
  if (IsNull()) throw InputError("an empty (null) value stands where a number is needed");
  if (const auto* integer = AsInteger(); integer != nullptr && *integer >= lowest && *integer <= greatest) {
    return *integer;
  }
  const auto* text = AsText();
  const std::optional<double> parsed = text != nullptr ? NumberOf(*text)
                                       : AsReal() != nullptr
                                           ? std::optional<double>(*AsReal())
                                           : std::optional<double>(static_cast<double>(*AsInteger()));
  if (!parsed) throw InputError(fmt::format("the value \"{}\" is not a number", Shortened(ToText())));
  const double rounded = std::nearbyint(*parsed);
  // Written so that not-a-number is outside too.
  if (!(rounded >= static_cast<double>(lowest) && rounded <= static_cast<double>(greatest))) {
    throw InputError(fmt::format("the value {} is outside {}..{}", Shortened(ToText()), lowest, greatest));
  }
  return static_cast<std::int64_t>(rounded);
}

std::int16_t Variant::ToInt16() const {
  using Limits = std::numeric_limits<std::int16_t>;
  return static_cast<std::int16_t>(ToInteger(Limits::min(), Limits::max()));
}

std::int32_t Variant::ToInt32() const {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(ToInteger(Limits::min(), Limits::max()));
}

float Variant::ToSingle() const {
  if (IsNull()) throw InputError("an empty (null) value stands where a number is needed");
  if (const auto* integer = AsInteger()) return static_cast<float>(*integer);
  if (const auto* real = AsReal()) return static_cast<float>(*real);
  const std::optional<double> parsed = NumberOf(*AsText());
  if (!parsed) throw InputError(fmt::format("the value \"{}\" is not a number", Shortened(*AsText())));
  return static_cast<float>(*parsed);
}

}  // namespace selvane
