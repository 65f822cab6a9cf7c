#include "filters/rule_template.h"

#include <fmt/format.h>

#include "base/error.h"
#include "base/text.h"

namespace selvane {

namespace {

constexpr std::string_view kAnyName = "Any";

FeatureKind KindOf(std::string_view symbol) {
  if (symbol == "1") return FeatureKind::kOneOfClass;
  if (symbol == "+") return FeatureKind::kSomeOfClass;
  return FeatureKind::kAnyOfClass;
}

TemplateFeature ParseFeature(std::string_view text, const TaxonomyStore& taxonomy) {
  if (!text.starts_with('[')) return {ParseItem(text, taxonomy), FeatureKind::kItem};
  const std::size_t end = text.rfind(']');
  const std::string_view symbol =
      end == std::string_view::npos ? std::string_view() : Trimmed(text.substr(end + 1));
  const std::string_view name =
      end == std::string_view::npos ? std::string_view() : Trimmed(text.substr(1, end - 1));
  if (name == kAnyName && symbol.empty()) return {};
  if (symbol != "1" && symbol != "+" && symbol != "*") {
    throw InputError(fmt::format(
        "\"{}\" is no class with its symbol; write it as [Fever]1, [Fever]+, [Fever]* or [Any]", text));
  }
  return {ParseItem(name, taxonomy), KindOf(symbol)};
}

std::vector<TemplateFeature> ParseSide(std::string_view text, const TaxonomyStore& taxonomy) {
  std::vector<TemplateFeature> features;
  while (true) {
    const std::size_t end = text.find(';');
    features.push_back(ParseFeature(Trimmed(text.substr(0, end)), taxonomy));
    if (end == std::string_view::npos) return features;
    text.remove_prefix(end + 1);
  }
}

}  // namespace

std::vector<TemplateFeature>& TemplateBuilder::Features(RuleSide side) {
  return side == RuleSide::kAntecedent ? built_.antecedent : built_.consequent;
}

void TemplateBuilder::AddItem(RuleSide side, NodeNumber item, std::string_view name) {
  TextOf(side).append(name).append("   ");
  Features(side).push_back({item, FeatureKind::kItem});
}

bool TemplateBuilder::AddClass(RuleSide side, NodeNumber id, std::string_view name, std::string_view symbol) {
  const bool is_any = id == kAnyClass;
  const bool needs_symbol = !is_any && symbol.empty();
  if (!needs_symbol) {
    last_class_kind_ = is_any ? FeatureKind::kAnyOfClass : KindOf(symbol);
    std::string& text = TextOf(side).append(name);
    if (!is_any && symbol != "1") text.append(symbol);
    text.append("  ");
  }
  // Without its symbol the class is added too, as the user may go on as if it had been; only nothing shows
  // it.
  Features(side).push_back({id, last_class_kind_});
  return !needs_symbol;
}

RuleTemplate TemplateBuilder::Take() {
  RuleTemplate taken = std::move(built_);
  built_ = {};
  antecedent_.clear();
  consequent_.clear();
  return taken;
}

NodeNumber ParseItem(std::string_view text, const TaxonomyStore& taxonomy) {
  if (text.starts_with('#')) {
    const auto number = Int32Of(text.substr(1));
    if (number && taxonomy.working().FindTerm(*number)) return *number;  // a node without a term counts too
    throw InputError(fmt::format("the taxonomy has no item {}", text));
  }
  if (text.empty()) {  // would be found where a node has no name
    throw InputError("an item is empty; name it as Fever or #17, or write [Any] where anything will do");
  }
  const std::vector<NodeNumber> nodes = taxonomy.working().NodesOfTerm(text);
  if (nodes.size() == 1) return nodes.front();
  if (nodes.empty()) {
    throw InputError(fmt::format("the taxonomy has no term \"{}\"; taxonomy list shows what there is", text));
  }
  std::string choices;
  for (const NodeNumber node : nodes) {
    fmt::format_to(std::back_inserter(choices), "{}#{} at {}", choices.empty() ? "" : ", ", node,
                   taxonomy.working().PositionOf(node));
  }
  throw InputError(
      fmt::format("{} stands at several positions; choose one by its number: {}", text, choices));
}

RuleTemplate ParseTemplate(std::string_view text, const TaxonomyStore& taxonomy) {
  const std::size_t arrow = text.find("=>");
  if (arrow == std::string_view::npos) {
    throw InputError(
        fmt::format("the template \"{}\" has no =>; write it as \"Fever ; [Drugs]+ => [Any]\"", text));
  }
  return {ParseSide(text.substr(0, arrow), taxonomy), ParseSide(text.substr(arrow + 2), taxonomy)};
}

}  // namespace selvane
