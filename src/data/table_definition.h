// What a database says about its tables and their fields.
#pragma once

#include <cstdint>
#include <string>

namespace selvane {

enum class FieldType {
  kInt16,    // SMALLINT
  kInt32,    // INTEGER
  kSingle,   // REAL, and whatever else other programs declare for numbers
  kText,     // VARCHAR(n)
  kBytes,    // BLOB, in tables of our own only: of another's it is kUnknown
  kUnknown,  // any other declared type, in files that other programs made
};

struct Field {
  std::string name;
  FieldType type = FieldType::kText;
  int size = 0;  // characters, for text; 0 where the file states none
};

// The most rows of a table whose rows are numbered by a column of 16 bits, as those of terms and of rules
// are.
inline constexpr long kMostNumberedRows = 32767;

// Bits of a table's attribute word. An ordinary local table has none of them.
inline constexpr std::uint32_t kHiddenTable = 0x00000001;
inline constexpr std::uint32_t kSystemTable = 0x80000002;
inline constexpr std::uint32_t kLinkedTable =
    0x40000000;  // rows that come from elsewhere: views, virtual tables

struct TableDefinition {
  std::string name;
  std::uint32_t attributes = 0;
};

}  // namespace selvane
