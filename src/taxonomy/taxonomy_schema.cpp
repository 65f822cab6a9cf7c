#include "taxonomy/taxonomy_schema.h"

#include <fmt/format.h>

#include <array>
#include <string>

namespace selvane {

namespace {

constexpr int kTextWidth = 127;

template <std::size_t size>
std::string_view NameAt(const std::array<std::string_view, size>& names, int number) {
  // A negative number becomes one beyond the end.
  const auto place = static_cast<std::size_t>(number);
  return place < size ? names[place] : std::string_view();
}

}  // namespace

std::string_view FieldName(int number) {
  // Nothing of ours reads IndexOrnex; the name is kept for tables that other programs make.
  return NameAt<5>({"Index", "FatherId", "Canonical", "SON1", "IndexOrnex"}, number);
}

std::string_view TableName(int number) {
  return NameAt<2>({"Source", "TaxonomyOrnex"}, number);
}

std::vector<Field> NodeFields() {
  std::vector<Field> fields;
  for (const int number : {kIndexField, kFatherIdField, kCanonicalField}) {
    fields.push_back({std::string(FieldName(number)), FieldType::kText, kTextWidth});
  }
  return fields;
}

Field SonField(int number) {
  return {fmt::format("SON{}", number), FieldType::kText, kTextWidth};
}

}  // namespace selvane
