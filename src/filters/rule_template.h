// Templates of rules: what a rule must hold on either side.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "taxonomy/taxonomy_store.h"

namespace selvane {

// The numbers are those of the feature kinds wherever these are written down.
enum class FeatureKind : std::int32_t {
  kItem = 0,         // this item
  kOneOfClass = 1,   // "1": an item of the class
  kSomeOfClass = 2,  // "+": the same; more of them are allowed, as they always are
  kAnyOfClass = 3    // "*": no requirement
};

// The class "Any" has this number and kind kAnyOfClass.
inline constexpr NodeNumber kAnyClass = -1;

struct TemplateFeature {
  NodeNumber id = kAnyClass;
  FeatureKind kind = FeatureKind::kAnyOfClass;
  friend bool operator==(const TemplateFeature&, const TemplateFeature&) = default;
};

struct RuleTemplate {
  std::vector<TemplateFeature> antecedent;
  std::vector<TemplateFeature> consequent;
};

enum class RuleSide { kAntecedent, kConsequent };

// A template while a user puts it together, feature by feature, with the text that shows each side.
class TemplateBuilder {
 public:
  void AddItem(RuleSide side, NodeNumber item, std::string_view name);
  // `symbol` is "1", "+", "*", or empty when none was chosen. False when a class needs one: the text stays as
  // it is then, and the feature is added all the same, with the kind of the class feature added before.
  bool AddClass(RuleSide side, NodeNumber id, std::string_view name, std::string_view symbol);

  const std::string& Text(RuleSide side) const {
    return side == RuleSide::kAntecedent ? antecedent_ : consequent_;
  }
  // True when both sides show something.
  bool IsComplete() const { return !antecedent_.empty() && !consequent_.empty(); }
  // The line that shows the whole template.
  std::string Line() const { return antecedent_ + " =>" + consequent_; }
  // The template; the builder is empty then, but for the kind of the last class feature.
  RuleTemplate Take();

 private:
  std::vector<TemplateFeature>& Features(RuleSide side);
  std::string& TextOf(RuleSide side) { return side == RuleSide::kAntecedent ? antecedent_ : consequent_; }

  RuleTemplate built_;
  std::string antecedent_;
  std::string consequent_;
  FeatureKind last_class_kind_ = FeatureKind::kAnyOfClass;
};

// The node of a name, or of a number as #17. Throws InputError when there is none, or several: it names them.
NodeNumber ParseItem(std::string_view text, const TaxonomyStore& taxonomy);

// Reads "SIDE => SIDE". A side is features separated by ";": an item, as Fever or #17, a class with its
// symbol, as [Fever]1, [Fever]+ or [#17]*, or [Any]. Throws InputError.
RuleTemplate ParseTemplate(std::string_view text, const TaxonomyStore& taxonomy);

}  // namespace selvane
