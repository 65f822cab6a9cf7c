// The options of rules extract that ask for more than the plain run.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/cli.h"
#include "mining/selected_rules.h"

namespace selvane {

// As they were given; what was not is left to --readable or to the plain run.
struct ChoiceOptions {
  bool readable = false;
  std::optional<ItemKind> items;
  std::optional<bool> distinct;
  std::size_t max_size = 0;
  std::vector<std::string> antecedent;
  std::vector<std::string> consequent;
  std::vector<std::string> left_out;
  std::optional<double> min_lift;
  std::optional<double> improvement;
  std::optional<double> significance;
  Correction correction = Correction::kHolm;
  std::optional<double> specific;
  std::optional<double> interesting;
  std::optional<bool> shortest;
  std::optional<KeptRules> keep;
  std::optional<Measure> by;
};

// None of them goes with `closed`.
void AddChoiceOptions(CLI::App& command, ChoiceOptions& options, CLI::Option* closed);

RunChoices ChoicesOf(const ChoiceOptions& options);

}  // namespace selvane
