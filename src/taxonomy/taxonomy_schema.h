// Tables and columns of a taxonomy database (docs/formats/taxonomy-database.md).
#pragma once

#include <string_view>
#include <vector>

#include "data/table_definition.h"

namespace selvane {

// Fields and tables have numbers, by which lookups over any table name them.
enum FieldNumber : int { kIndexField, kFatherIdField, kCanonicalField, kFirstSonField, kIndexOrnexField };
enum TableNumber : int { kSourceTable, kOrnexTable };

// The name of a field or a table by its number; empty for another number.
std::string_view FieldName(int number);
std::string_view TableName(int number);

// The fields that every row has, and the description of a SON column, from 1.
std::vector<Field> NodeFields();
Field SonField(int number);

}  // namespace selvane
