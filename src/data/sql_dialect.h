// The system's own SQL, turned into the engine's.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "data/variant.h"

namespace selvane {

// An SQL text with its literals lifted out: each `?` of `text` stands for the next of `values`. Two texts
// that differ in literals only have the same `text`, which is the key of the cache of compiled statements.
struct TranslatedSql {
  std::string text;
  std::vector<Variant> values;
};

// Translates in one pass over the tokens:
// - every name is quoted, so that `INDEX` is a column and a table may be called `14_05_23_11_MESHTERMS`;
//   `[a name in brackets]` may hold anything, `]` itself written twice;
// - 'quoted' literals become parameters, and so do numbers after a comparison or in a list of values;
// - `DELETE * FROM` loses its star;
// - `Like 'C.23*'` becomes a case-sensitive pattern match: * any text, ? one character, # one digit.
class SqlDialect {
 public:
  // Throws InputError for a text that is no SQL of ours, such as one with an unmatched quote.
  static TranslatedSql Translate(std::string_view sql);
  // True for a name that can stand in an SQL text without brackets.
  static bool IsPlainName(std::string_view name);
  // The name as it stands in an SQL text: in brackets unless it is plain and no word of the language.
  static std::string NameText(std::string_view name);
  // The value between single quotes, with those inside it doubled.
  static std::string ValueText(std::string_view value);
  // The pattern, between quotes, of the texts that begin with the value, whatever signs it holds.
  static std::string BeginningText(std::string_view value);
};

}  // namespace selvane
