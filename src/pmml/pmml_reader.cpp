#include "pmml/pmml_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <optional>
#include <pugixml.hpp>
#include <unordered_map>

#include "base/error.h"
#include "base/text.h"
#include "data/new_database.h"
#include "data/sql_dialect.h"
#include "taxonomy/taxonomy_file.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

bool Has(std::string_view line, std::string_view part) {
  return line.find(part) != std::string_view::npos;
}

// The lines of a text, with their numbers for messages.
class Lines {
 public:
  Lines(std::string_view text, const fs::path& path) : rest_(text), path_(path) {}

  bool Next() {
    if (rest_.empty()) return false;
    line_ = NextLine(rest_);
    ++number_;
    return true;
  }
  std::string_view line() const { return line_; }

  std::string Attribute(std::string_view name) const {
    if (auto value = LineAttribute(line_, name)) return *std::move(value);
    throw Missing(name);
  }
  std::int32_t Number(std::string_view name) const {
    if (const auto number = Int32Of(Attribute(name))) return *number;
    throw Missing(name);
  }
  float Figure(std::string_view name) const {
    const auto number = NumberOf(Attribute(name));
    if (number && std::isfinite(*number)) return static_cast<float>(*number);
    throw Missing(name);
  }

 private:
  InputError Missing(std::string_view name) const {
    return InputError(fmt::format("{}: line {} has no {}\"...\" that can be read; export the rules again",
                                  path_.string(), number_, name));
  }

  std::string_view rest_;
  std::string_view line_;
  const fs::path& path_;
  long number_ = 0;
};

InputError NoModel(const fs::path& path) {
  return InputError(fmt::format(
      "{}: the file holds no association model; choose a file that an export has written", path.string()));
}

PmmlHead ReadLineHead(const std::string& text, const fs::path& path, Progress& progress) {
  PmmlHead head;
  Lines lines(text, path);
  bool has_model = false;
  bool has_statistics = false;
  while (!has_statistics && lines.Next()) {
    if (Has(lines.line(), "AssociationModel")) {
      head.parameters.name = lines.Attribute("modelName=");
      has_model = true;
    }
    if (has_model && Has(lines.line(), "AssocInputStats")) {
      head.parameters.transactions = lines.Attribute("numberOfTransactions=");
      head.parameters.min_support = lines.Attribute("minimumSupport=");
      head.parameters.min_confidence = lines.Attribute("minimumConfidence=");
      head.declared_rules = lines.Number("numberOfRules=");
      head.declared_items = lines.Number("numberOfItems=");
      has_statistics = true;
    }
  }
  if (!has_model) throw NoModel(path);
  progress.SetStatus("Importing used taxonomies ...");
  progress.SetRange(0, head.declared_items);
  progress.SetPosition(0);
  // "<AssocItem" also begins the name of the element that ends the items.
  for (int read = 1; lines.Next() && !Has(lines.line(), "<AssocItemset"); ++read) {
    if (Has(lines.line(), "<AssocItem")) {
      const std::string code = lines.Attribute("mappedValue=");
      const std::string value = lines.Attribute("value=");
      if (code.size() == 1) {
        head.taxonomies.push_back(value);
        head.taxonomy_codes += code;
      }
    }
    if (read % 1024 == 0) {
      progress.SetPosition(read);
      progress.Pulse();
    }
  }
  progress.SetPosition(head.declared_items);
  return head;
}

// An itemset of the file: its items and its support.
struct FileItemset {
  std::vector<std::int32_t> items;
  float support = 0;
};

Rule MakeRule(const FileItemset& antecedent, const FileItemset& consequent, float support, float confidence) {
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

const FileItemset& Find(const TextMap<FileItemset>& itemsets, const std::string& id, const fs::path& path) {
  const auto found = itemsets.find(id);
  if (found != itemsets.end()) return found->second;
  throw InputError(
      fmt::format("{}: a rule names the itemset \"{}\", which is not in the file", path.string(), id));
}

// The itemsets of a file of version 1.1, in its order.
class LineItemsets {
 public:
  void Add(const std::string& id, FileItemset itemset) {
    first_.try_emplace(id, itemset);
    all_.emplace_back(id, std::move(itemset));
  }
  // The itemset of this name at this place, or else the first of the name.
  const FileItemset& At(std::size_t place, const std::string& id, const fs::path& path) const {
    if (place < all_.size() && all_[place].first == id) return all_[place].second;
    return Find(first_, id, path);
  }

 private:
  std::vector<std::pair<std::string, FileItemset>> all_;
  TextMap<FileItemset> first_;
};

std::vector<Rule> ReadLineRules(const std::string& text, const fs::path& path, Progress& progress) {
  LineItemsets itemsets;
  std::vector<Rule> rules;
  Lines lines(text, path);
  for (long read = 0; lines.Next(); ++read) {
    if (Has(lines.line(), "<AssocItemset")) {
      const std::string id = lines.Attribute("id=");
      itemsets.Add(id, {TextToItemset(id), lines.Figure("support=")});
    } else if (Has(lines.line(), "<AssocRule")) {
      // Our own writer gives each rule its two itemsets, so that it has the figures of its own.
      const std::size_t place = 2 * rules.size();
      rules.push_back(MakeRule(itemsets.At(place, lines.Attribute("antecedent="), path),
                               itemsets.At(place + 1, lines.Attribute("consequent="), path),
                               lines.Figure("support="), lines.Figure("confidence=")));
    }
    if (read % 4096 == 0) progress.Pulse();
  }
  return rules;
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
    auto number = NumberOf(Text(node, name));
    if (number && !std::isfinite(*number)) number.reset();
    return static_cast<float>(Parsed(node, name, number));
  }
  std::int32_t Number(const pugi::xml_node& node, const char* name) const {
    return Parsed(node, name, Int32Of(Text(node, name)));
  }

 private:
  template <typename Value>
  Value Parsed(const pugi::xml_node& node, const char* name, const std::optional<Value>& value) const {
    if (value) return *value;
    throw InputError(fmt::format("{}: the {} \"{}\" of an element {} is no number, at byte {}",
                                 path_.string(), name, Text(node, name), node.name(), node.offset_debug()));
  }

  const fs::path& path_;
  pugi::xml_document document_;
  pugi::xml_node model_;
};

PmmlHead ReadXmlHead(const std::string& text, const fs::path& path) {
  const XmlModel xml(text, path);
  const pugi::xml_node& model = xml.node();
  PmmlHead head;
  head.parameters = {model.attribute("modelName").value(), xml.Text(model, "numberOfTransactions"),
                     xml.Text(model, "minimumSupport"), xml.Text(model, "minimumConfidence")};
  head.declared_rules = xml.Number(model, "numberOfRules");
  head.declared_items = xml.Number(model, "numberOfItems");
  for (const pugi::xml_node& item : model.children("Item")) {
    const std::string code = item.attribute("mappedValue").value();
    if (code.size() != 1) continue;
    head.taxonomies.push_back(xml.Text(item, "value"));
    head.taxonomy_codes += code;
  }
  return head;
}

// Which node of the taxonomy an item of the file is.
class ItemNodes {
 public:
  ItemNodes(const XmlModel& xml, const TaxonomyStore& taxonomy, const fs::path& path) : xml_(xml) {
    for (const pugi::xml_node& item : xml.node().children("Item")) {
      const std::string id = xml.Text(item, "id");
      const std::string value = xml.Text(item, "value");
      const std::vector<std::string> codes = PositionCodes(item.attribute("mappedValue").value());
      const auto node = Find(Int32Of(id), value, codes.empty() ? std::string() : codes.front(), taxonomy);
      if (!node) {
        throw InputError(
            fmt::format("{}: the taxonomy does not have the item \"{}\"; choose the taxonomy that the rules "
                        "were made over",
                        path.string(), value));
      }
      const auto [other, is_new] = ids_.emplace(*node, id);
      if (!is_new && other->second != id) {
        throw InputError(
            fmt::format("{}: the items {} and {}, \"{}\", are one node in the taxonomy; choose the taxonomy "
                        "that the rules "
                        "were made over",
                        path.string(), other->second, id, value));
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
  static std::optional<NodeNumber> Find(std::optional<std::int32_t> number, const std::string& value,
                                        const std::string& code, const TaxonomyStore& taxonomy) {
    const bool is_unnamed = number && value == fmt::format("#{}", *number);  // as an export writes it
    if (number) {
      // What is pruned keeps its number, and an item without a position is known by its number and its name.
      const TaxonomyStore::Node node = taxonomy.SourceNode(*number);
      if ((code.empty() || node.code == code) && (node.canonical == value || is_unnamed)) return number;
    }
    std::vector<NodeNumber> nodes;
    if (!code.empty()) nodes = taxonomy.NodesAtPosition(code);
    // Another term may stand there in this taxonomy.
    std::erase_if(nodes, [&](NodeNumber node) { return !is_unnamed && taxonomy.Canonical(node) != value; });
    if (nodes.empty()) nodes = taxonomy.NodesOfTerm(value);
    return nodes.empty() ? std::nullopt : std::optional(nodes.front());
  }

  const XmlModel& xml_;
  TextMap<NodeNumber> nodes_;
  std::unordered_map<NodeNumber, std::string> ids_;
};

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
    rules.push_back(MakeRule(Find(itemsets, xml.Text(node, "antecedent"), path),
                             Find(itemsets, xml.Text(node, "consequent"), path), xml.Figure(node, "support"),
                             xml.Figure(node, "confidence")));
    if (rules.size() % 1024 == 0) progress.Pulse();
  }
  return rules;
}

void CheckImport(const PmmlHead& head, const std::vector<Rule>* rules) {
  if (head.parameters.name.empty()) {
    throw InputError("the model has no name, and its table is named like it; give the file a modelName");
  }
  if (rules == nullptr) return;
  if (!SqlDialect::IsPlainName(head.parameters.name)) {
    throw InputError(
        fmt::format("the model's name \"{}\" cannot be that of a table with rules; change modelName in the "
                    "file to letters, digits and underscores",
                    head.parameters.name));
  }
  if (rules->size() > static_cast<std::size_t>(kMostRules)) {
    throw InputError(fmt::format("the file has {} rules, and a table holds {}", rules->size(), kMostRules));
  }
}

// So that the rules can be filtered.
void WriteImportInfo(const PmmlHead& head, const std::vector<Rule>& rules, const fs::path& path) {
  std::vector<std::int32_t> items;
  for (const Rule& rule : rules) {
    items.insert(items.end(), rule.antecedent.begin(), rule.antecedent.end());
    items.insert(items.end(), rule.consequent.begin(), rule.consequent.end());
  }
  std::sort(items.begin(), items.end());
  items.erase(std::unique(items.begin(), items.end()), items.end());
  const ModelParameters& parameters = head.parameters;
  std::vector<std::string> texts = {parameters.name, parameters.transactions, parameters.min_support,
                                    parameters.min_confidence};
  // An export of the old form repeats its items.
  for (const std::string& name : head.taxonomies) {
    if (std::find(texts.begin() + 4, texts.end(), name) == texts.end()) texts.push_back(name);
  }
  WriteRulesInfo(items, {}, texts, RulesInfoBasePath(path));
}

// What a replaced database was made of says nothing of the new one.
void ForgetInfo(const fs::path& path) {
  fs::path info = RulesInfoBasePath(path);
  info += ".dat";
  std::error_code not_there;
  fs::remove(info, not_there);
}

}  // namespace

std::optional<std::string> LineAttribute(std::string_view line, std::string_view name) {
  const auto same = [](char a, char b) {
    return a == b || ((a ^ b) == 0x20 && std::isalpha(static_cast<unsigned char>(a)) != 0);
  };
  const auto at = std::search(line.begin(), line.end(), name.begin(), name.end(), same);
  if (at == line.end()) return std::nullopt;
  const std::size_t begin = line.find('"', static_cast<std::size_t>(at - line.begin()));
  if (begin == std::string_view::npos) return std::nullopt;
  const std::size_t end = line.find('"', begin + 1);
  if (end == std::string_view::npos) return std::nullopt;
  return std::string(line.substr(begin + 1, end - begin - 1));
}

PmmlFile::PmmlFile(const fs::path& path) : path_(path), text_(DecodeInput(ReadFile(path))) {}

bool PmmlFile::IsLineOriented() const {
  // Later versions must have the second, wherever their attributes and elements stand.
  return !Has(text_, "<PMML version=\"4") && !Has(text_, "functionName=");
}

PmmlHead PmmlFile::ReadHead(Progress& progress) const {
  return IsLineOriented() ? ReadLineHead(text_, path_, progress) : ReadXmlHead(text_, path_);
}

std::vector<Rule> PmmlFile::ReadRules(const TaxonomyStore& taxonomy, Progress& progress) const {
  progress.SetStatus("Importing rules ...");
  return IsLineOriented() ? ReadLineRules(text_, path_, progress)
                          : ReadXmlRules(text_, path_, taxonomy, progress);
}

void ImportRules(const PmmlHead& head, const std::vector<Rule>* rules, const fs::path& path,
                 ExistingFile existing, Progress& progress) {
  CheckImport(head, rules);
  MakeDatabase(path, existing, [&](const fs::path& temporary) {
    RulesStore store;
    store.CreateRulesDatabase(temporary, head.parameters.name);
    if (rules == nullptr) return ForgetInfo(path);
    store.SetTargetTable(head.parameters.name);
    Transaction transaction(store.database());
    long stored = 0;
    for (const Rule& rule : *rules) {
      store.InsertRule(rule);
      if (++stored % 256 == 0) progress.Pulse();
    }
    transaction.Commit();
    store.Close();
    WriteImportInfo(head, *rules, path);
  });
}

}  // namespace selvane
