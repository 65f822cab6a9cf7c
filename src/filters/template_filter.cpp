#include "filters/template_filter.h"

#include <algorithm>

namespace selvane {

namespace {

constexpr RuleNumber kPulseRules = 1024;

bool Holds(std::span<const NodeNumber> items, NodeNumber item) {
  return std::find(items.begin(), items.end(), item) != items.end();
}

// An item that is named twice fails on the antecedent and passes on the consequent. Results depend on it.
bool HasItems(const RuleTemplate& wanted, const Rule& rule) {
  std::vector<NodeNumber> named;
  for (const TemplateFeature& feature : wanted.antecedent) {
    if (feature.kind != FeatureKind::kItem) continue;
    if (!Holds(rule.antecedent, feature.id) || Holds(named, feature.id)) return false;
    named.push_back(feature.id);
  }
  return std::all_of(wanted.consequent.begin(), wanted.consequent.end(), [&](const TemplateFeature& feature) {
    return feature.kind != FeatureKind::kItem || Holds(rule.consequent, feature.id);
  });
}

}  // namespace

bool TemplateFilter::IsOfClass(NodeNumber item, const std::string& code) {
  if (!all_positions) return names_.CodeOf(item).find(code) != std::string::npos;
  const std::vector<std::string>& codes = names_.AllCodesOf(item);
  return std::any_of(codes.begin(), codes.end(),
                     [&code](const std::string& own) { return own.find(code) != std::string::npos; });
}

// Classes take items in the order in which they stand in the template, without trying again: where a first
// class has taken the only item of a second one, the rule does not fit, though another choice would have.
// Items that the template names are not taken and may stand for a class too. "Anywhere" in a code means that
// C.2 has C.23 below it, and also D.C.2.
bool TemplateFilter::HasClasses(std::span<const TemplateFeature> features,
                                std::span<const NodeNumber> items) {
  used_.assign(items.size(), false);
  for (const TemplateFeature& feature : features) {
    // "*" and Any ask for nothing. Nor does "+" ask for more than "1" does, since further items are always
    // allowed.
    if (feature.kind != FeatureKind::kOneOfClass && feature.kind != FeatureKind::kSomeOfClass) continue;
    const std::string& code = names_.CodeOf(feature.id);
    std::size_t place = 0;
    while (place < items.size() && (used_[place] || !IsOfClass(items[place], code))) {
      ++place;
    }
    if (place == items.size()) return false;
    used_[place] = true;
  }
  return true;
}

bool TemplateFilter::Matches(const RuleTemplate& wanted, const Rule& rule) {
  return HasItems(wanted, rule) && HasClasses(wanted.antecedent, rule.antecedent) &&
         HasClasses(wanted.consequent, rule.consequent);
}

std::vector<RuleNumber> TemplateFilter::Run(const RuleList& rules, Progress& progress) {
  progress.SetStatus("Filtering rules with templates ...");
  progress.SetRange(0, static_cast<int>(rules.size()));
  progress.SetPosition(0);
  std::vector<RuleNumber> kept;
  for (RuleNumber number = 1; number <= rules.size(); ++number) {
    const auto fits = [&](const RuleTemplate& wanted) { return Matches(wanted, rules[number]); };
    if ((inclusive.empty() || std::any_of(inclusive.begin(), inclusive.end(), fits)) &&
        std::none_of(restrictive.begin(), restrictive.end(), fits)) {
      kept.push_back(number);
    }
    if (number % kPulseRules == 0) {
      progress.SetPosition(static_cast<int>(number));
      progress.Pulse();
    }
  }
  progress.SetPosition(static_cast<int>(rules.size()));
  progress.SetStatus("Completed!!");
  return kept;
}

}  // namespace selvane
