// pmml/: rules as files that other programs read, and back (docs/formats/association-model.md).
#pragma once

#include <array>
#include <string>
#include <vector>

#include "rules/rule.h"
#include "rules/rules_info.h"

namespace selvane {

// What an association model says of itself. The texts are as they stand in the file or in the rules
// information file.
struct ModelParameters {
  std::string name;  // of the rules table
  std::string transactions;
  std::string min_support;
  std::string min_confidence;
};

// Of a rules database: the name is that of the table, the other texts are those of its information file.
inline ModelParameters ParametersOf(const RulesInfo& info, std::string table) {
  return {std::move(table), info.rows, info.min_support, info.min_confidence};
}

}  // namespace selvane
