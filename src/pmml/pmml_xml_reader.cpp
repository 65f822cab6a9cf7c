#include "pmml/pmml_xml_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <pugixml.hpp>
#include <unordered_map>

#include "base/shown_text.h"
#include "pmml/xml_text.h"
#include "rules/rules_store.h"
#include "taxonomy/position_code.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

// In bytes. A term has 127 characters at most, and a reference to a character 10 bytes.
constexpr std::size_t kLongestParameter = 255;
constexpr std::size_t kLongestTaxonomyName = std::size_t{127} * 10;

void CheckLength(std::string_view text, std::string_view what, std::size_t most, const fs::path& path) {
  if (text.size() <= most) return;
  throw InputError(fmt::format("{}: the {} has {} bytes, and {} are the most; shorten \"{}\" in the file",
                               path.string(), what, text.size(), most, Shortened(text)));
}

// The model of a file that is read as XML.
class XmlModel {
 public:
  XmlModel(const std::string& text, const fs::path& path) : path_(path) {
    const pugi::xml_parse_result result =
        document_.load_buffer(text.data(), text.size(), pugi::parse_default, pugi::encoding_utf8);
    if (!result) {
      throw InputError(fmt::format("{}: the file is no complete XML, at byte {}: {}; get or export it again",
                                   path.string(), result.offset, result.description()));
    }
    model_ = document_.child("PMML").child("AssociationModel");
    if (!model_) throw NoModel(path);
  }

  const pugi::xml_node& node() const { return model_; }

  std::string Text(const pugi::xml_node& node, const char* name) const {
    const pugi::xml_attribute attribute = node.attribute(name);
    if (attribute) return attribute.value();
    throw InputError(fmt::format("{}: an element {} has no {}, at byte {}", path_.string(), node.name(), name,
                                 node.offset_debug()));
  }
  float Figure(const pugi::xml_node& node, const char* name) const {
    return Parsed(node, name, FigureOf(Text(node, name)));
  }
  std::int32_t Number(const pugi::xml_node& node, const char* name) const {
    return Parsed(node, name, Int32Of(Text(node, name)));
  }

 private:
  template <typename Value>
  Value Parsed(const pugi::xml_node& node, const char* name, const std::optional<Value>& value) const {
    if (value) return *value;
    throw InputError(fmt::format("{}: the {} \"{}\" of an element {} is no number, at byte {}",
                                 path_.string(), name, Shortened(Text(node, name)), node.name(),
                                 node.offset_debug()));
  }

  const fs::path& path_;
  pugi::xml_document document_;
  pugi::xml_node model_;
};

// Which node of the taxonomy an item of the file is.
class ItemNodes {
 public:
  ItemNodes(const XmlModel& xml, const TaxonomyStore& taxonomy, const fs::path& path) : xml_(xml) {
    for (const pugi::xml_node& item : xml.node().children("Item")) {
      const std::string id = xml.Text(item, "id");
      const std::string value = xml.Text(item, "value");
      const auto node = Find(Int32Of(id), value, FirstCode(item.attribute("mappedValue").value()), taxonomy);
      if (!node) {
        throw InputError(
            fmt::format("{}: the taxonomy does not have the item \"{}\"; choose the taxonomy that the rules "
                        "were made over",
                        path.string(), Shortened(value)));
      }
      const auto [other, is_new] = ids_.emplace(*node, id);
      // Taken for one, the two would join rules that are different, and nobody would see it.
      if (!is_new && other->second != id) {
        throw InputError(
            fmt::format("{}: the items {} and {}, \"{}\", are one node in the taxonomy; choose the taxonomy "
                        "that the rules were made over",
                        path.string(), Shortened(other->second), Shortened(id), Shortened(value)));
      }
      nodes_.insert_or_assign(id, *node);
    }
  }

  // Of an ItemRef. An item that is not declared is taken for a number.
  NodeNumber Of(const pugi::xml_node& reference) const {
    const auto found = nodes_.find(xml_.Text(reference, "itemRef"));
    return found != nodes_.end() ? found->second : xml_.Number(reference, "itemRef");
  }

 private:
  // Of tree numbers that may be millions; empty when there is none.
  static std::string FirstCode(std::string_view tree) {
    tree.remove_prefix(std::min(tree.find_first_not_of("; \t\r\n"), tree.size()));
    const std::vector<std::string> codes = PositionCodes(tree.substr(0, tree.find(';')));
    return codes.empty() ? std::string() : codes.front();
  }
  static std::optional<NodeNumber> Find(std::optional<std::int32_t> number, const std::string& value,
                                        const std::string& code, const TaxonomyStore& taxonomy) {
    const bool is_unnamed = number && value == fmt::format("#{}", *number);  // as an export writes it
    if (number) {
      // What is pruned keeps its number, and an item without a position is known by its number and its name.
      const TaxonomyNode node = taxonomy.source().FindNode(*number).value_or(TaxonomyNode{});
      // Names are compared as the file can hold them.
      if ((code.empty() || node.code == code) && (HeldByXml(node.term) == value || is_unnamed)) {
        return number;
      }
    }
    std::vector<NodeNumber> nodes;
    if (!code.empty()) nodes = taxonomy.working().NodesAtPosition(code);
    // Another term may stand there in this taxonomy.
    std::erase_if(nodes, [&](NodeNumber node) {
      return !is_unnamed && HeldByXml(taxonomy.working().FindTerm(node).value_or("")) != value;
    });
    if (nodes.empty()) nodes = taxonomy.working().NodesOfTerm(value);
    return nodes.empty() ? std::nullopt : std::optional(nodes.front());
  }

  const XmlModel& xml_;
  TextMap<NodeNumber> nodes_;
  std::unordered_map<NodeNumber, std::string> ids_;
};

}  // namespace

Rule MakeRule(const FileItemset& antecedent, const FileItemset& consequent, float support, float confidence,
              const fs::path& path) {
  for (const FileItemset* const side : {&antecedent, &consequent}) {
    if (ItemsetToText(side->items).size() <= kLongestItemsetText) continue;
    throw InputError(
        fmt::format("{}: a rule has a side of {} items, more than a rules table has room for; take the rule "
                    "out of the file",
                    path.string(), side->items.size()));
  }
  Rule rule;
  rule.antecedent = antecedent.items;
  rule.consequent = consequent.items;
  rule.pa = antecedent.support;
  rule.pc = consequent.support;
  rule.support = support;
  rule.confidence = confidence;
  rule.aspec = static_cast<std::int32_t>(antecedent.items.size());
  rule.cspec = static_cast<std::int32_t>(consequent.items.size());
  return rule;
}

std::optional<float> FigureOf(std::string_view text) {
  const std::optional<double> number = NumberOf(text);
  if (!number || !(std::abs(*number) <= double{std::numeric_limits<float>::max()})) return std::nullopt;
  return static_cast<float>(*number);
}

void CheckParameters(const ModelParameters& parameters, const fs::path& path) {
  for (const auto& [what, text] : {std::pair("modelName", &parameters.name),
                                   {"numberOfTransactions", &parameters.transactions},
                                   {"minimumSupport", &parameters.min_support},
                                   {"minimumConfidence", &parameters.min_confidence}}) {
    CheckLength(*text, what, kLongestParameter, path);
  }
}

void CheckTaxonomyName(std::string_view name, const fs::path& path) {
  CheckLength(name, "name of a taxonomy", kLongestTaxonomyName, path);
}

const FileItemset& FindItemset(const TextMap<FileItemset>& itemsets, const std::string& id,
                               const fs::path& path) {
  const auto found = itemsets.find(id);
  if (found != itemsets.end()) return found->second;
  throw InputError(fmt::format("{}: a rule names the itemset \"{}\", which is not in the file", path.string(),
                               Shortened(id)));
}

InputError NoModel(const fs::path& path) {
  return InputError(fmt::format(
      "{}: the file holds no association model; choose a file that an export has written", path.string()));
}

PmmlHead ReadXmlHead(const std::string& text, const fs::path& path) {
  const XmlModel xml(text, path);
  const pugi::xml_node& model = xml.node();
  PmmlHead head;
  head.parameters = {model.attribute("modelName").value(), xml.Text(model, "numberOfTransactions"),
                     xml.Text(model, "minimumSupport"), xml.Text(model, "minimumConfidence")};
  CheckParameters(head.parameters, path);
  head.declared_rules = xml.Number(model, "numberOfRules");
  head.declared_items = xml.Number(model, "numberOfItems");
  for (const pugi::xml_node& item : model.children("Item")) {
    const std::string code = item.attribute("mappedValue").value();
    if (code.size() != 1) continue;
    head.taxonomies.push_back(xml.Text(item, "value"));
    CheckTaxonomyName(head.taxonomies.back(), path);
    head.taxonomy_codes += code;
  }
  return head;
}

std::vector<Rule> ReadXmlRules(const std::string& text, const fs::path& path, const TaxonomyStore& taxonomy,
                               Progress& progress) {
  const XmlModel xml(text, path);
  const ItemNodes nodes(xml, taxonomy, path);
  TextMap<FileItemset> itemsets;
  for (const pugi::xml_node& node : xml.node().children("Itemset")) {
    FileItemset itemset;
    // The support of an itemset may be left out; it is not known then.
    if (node.attribute("support")) itemset.support = xml.Figure(node, "support");
    for (const pugi::xml_node& item : node.children("ItemRef")) {
      itemset.items.push_back(nodes.Of(item));
    }
    itemsets.insert_or_assign(xml.Text(node, "id"), std::move(itemset));
  }
  std::vector<Rule> rules;
  for (const pugi::xml_node& node : xml.node().children("AssociationRule")) {
    rules.push_back(MakeRule(FindItemset(itemsets, xml.Text(node, "antecedent"), path),
                             FindItemset(itemsets, xml.Text(node, "consequent"), path),
                             xml.Figure(node, "support"), xml.Figure(node, "confidence"), path));
    if (rules.size() % 1024 == 0) progress.Pulse();
  }
  return rules;
}

}  // namespace selvane
