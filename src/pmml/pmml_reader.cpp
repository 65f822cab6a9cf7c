#include "pmml/pmml_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <optional>
#include <unordered_set>

#include "base/error.h"
#include "base/file.h"
#include "base/text.h"
#include "data/sql_dialect.h"
#include "pmml/pmml_xml_reader.h"
#include "rules/new_rules_database.h"
#include "taxonomy/position_code.h"

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
    if (const auto figure = FigureOf(Attribute(name))) return *figure;
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

// By lines and attributes: names in such files are not escaped, and an XML reader would refuse them.
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
  CheckParameters(head.parameters, path);
  progress.SetStatus("Importing used taxonomies ...");
  progress.SetRange(0, head.declared_items);
  progress.SetPosition(0);
  // "<AssocItem" also begins the name of the element that ends the items.
  for (int read = 1; lines.Next() && !Has(lines.line(), "<AssocItemset"); ++read) {
    if (Has(lines.line(), "<AssocItem")) {
      const std::string code = lines.Attribute("mappedValue=");
      const std::string value = lines.Attribute("value=");
      if (IsCategory(code)) {
        CheckTaxonomyName(value, path);
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
    return FindItemset(first_, id, path);
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
                               lines.Figure("support="), lines.Figure("confidence="), path));
    }
    if (read % 4096 == 0) progress.Pulse();
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
RulesInfo ImportInfo(const PmmlHead& head, const std::vector<Rule>& rules) {
  std::vector<std::int32_t> items;
  for (const Rule& rule : rules) {
    items.insert(items.end(), rule.antecedent.begin(), rule.antecedent.end());
    items.insert(items.end(), rule.consequent.begin(), rule.consequent.end());
  }
  const ModelParameters& parameters = head.parameters;
  RulesInfo info{.term_table = parameters.name,
                 .rows = parameters.transactions,
                 .min_support = parameters.min_support,
                 .min_confidence = parameters.min_confidence,
                 .taxonomies = {},
                 .first_map = MapOfItems(items),
                 .second_map = MapOfItems({})};
  // An export of the old form repeats its items.
  std::unordered_set<std::string_view> seen;
  for (const std::string& name : head.taxonomies) {
    if (seen.insert(name).second) info.taxonomies.push_back(name);
  }
  return info;
}

}  // namespace

std::optional<std::string> LineAttribute(std::string_view line, std::string_view name) {
  // Letters that differ in this bit only are one letter, small and capital.
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
  NewRulesDatabase made(path, existing, head.parameters.name);
  if (rules == nullptr) return made.Commit(std::nullopt);
  made.Fill([&](RulesStore& store) {
    store.InsertRules([&](RuleBatch& batch) {
      long stored = 0;
      for (const Rule& rule : *rules) {
        batch.Insert(rule);
        if (++stored % 256 == 0) progress.Pulse();
      }
    });
  });
  made.Commit(ImportInfo(head, *rules));
}

}  // namespace selvane
