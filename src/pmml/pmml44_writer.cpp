#include "pmml/pmml44_writer.h"

#include <fmt/format.h>

#include <array>
#include <optional>
#include <set>

#include "base/file.h"
#include "base/text.h"
#include "measures/measures.h"
#include "pmml/xml_text.h"
#include "rules/rule_list.h"
#include "taxonomy/position_code.h"
#include "version.h"

namespace selvane {

namespace {

// A number as XML has it, whatever sign the text was written with.
std::string NumberText(const std::string& text) {
  const auto number = NumberOf(text);
  return number ? SingleText(static_cast<float>(*number)) : "0";
}

std::string CountText(const std::string& text) {
  return fmt::format("{}", Int32Of(text).value_or(0));
}

// The itemsets of all rules, each once, numbered from 1. The same items with another figure are another
// itemset, so that no figure is lost.
class Itemsets {
 public:
  std::size_t NumberOf(const std::vector<std::int32_t>& items, float support) {
    const std::string key = ItemsetToText(items) + SingleText(support);
    const auto [found, is_new] = numbers_.emplace(key, all_.size() + 1);
    if (is_new) all_.push_back({items, support});
    return found->second;
  }
  struct Itemset {
    std::vector<std::int32_t> items;
    float support;
  };
  const std::vector<Itemset>& all() const { return all_; }

 private:
  TextMap<std::size_t> numbers_;
  std::vector<Itemset> all_;
};

std::string TimeText(const Clock& clock) {
  const std::tm time = clock.LocalTime();
  std::array<char, 32> text{};
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &time)};
}

void WriteHead(OutputFile& output, const Clock& clock) {
  output.Write(
      fmt::format("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                  "<PMML version=\"4.4\" xmlns=\"http://www.dmg.org/PMML-4_4\">\n"
                  " <Header description=\"Generalized association rules\">\n"
                  "  <Application name=\"Selvane\" version=\"" SELVANE_VERSION "\"/>\n"
                  "  <Timestamp>{}</Timestamp>\n"
                  " </Header>\n"
                  " <DataDictionary numberOfFields=\"2\">\n"
                  "  <DataField name=\"transaction\" optype=\"categorical\" dataType=\"string\"/>\n"
                  "  <DataField name=\"item\" optype=\"categorical\" dataType=\"string\"/>\n"
                  " </DataDictionary>\n",
                  TimeText(clock)));
}

void WriteItem(OutputFile& output, std::int32_t item, const TaxonomyStore& taxonomy) {
  const TaxonomyNode node = taxonomy.source().FindNode(item).value_or(TaxonomyNode{});
  const std::string name = node.term.empty() ? fmt::format("#{}", item) : node.term;
  output.Write(fmt::format("  <Item id=\"{}\" value=\"{}\" mappedValue=\"{}\"/>\n", item, XmlAttribute(name),
                           XmlAttribute(TreeNumber(node.code))));
}

void WriteItemset(OutputFile& output, std::size_t number, const Itemsets::Itemset& itemset) {
  std::string text = fmt::format("  <Itemset id=\"{}\" support=\"{}\" numberOfItems=\"{}\">\n", number,
                                 SingleText(itemset.support), itemset.items.size());
  for (const std::int32_t item : itemset.items) {
    fmt::format_to(std::back_inserter(text), "   <ItemRef itemRef=\"{}\"/>\n", item);
  }
  output.Write(text + "  </Itemset>\n");
}

void WriteRule(OutputFile& output, RuleNumber number, const Rule& rule, std::size_t antecedent,
               std::size_t consequent) {
  const std::optional<double> lift = Lift(
      {.support = rule.support, .confidence = rule.confidence, .antecedent = rule.pa, .consequent = rule.pc});
  output.Write(
      fmt::format("  <AssociationRule id=\"{}\" antecedent=\"{}\" consequent=\"{}\" support=\"{}\" "
                  "confidence=\"{}\"{}/>\n",
                  number, antecedent, consequent, SingleText(rule.support), SingleText(rule.confidence),
                  lift ? fmt::format(" lift=\"{}\"", SingleText(static_cast<float>(*lift))) : std::string()));
}

}  // namespace

void WritePmml44(const RulesStore& store, const ModelParameters& parameters, const TaxonomyStore& taxonomy,
                 const std::filesystem::path& path, ExistingFile existing, const Clock& clock,
                 Progress& progress) {
  const RuleList rules(store, progress);
  // Collected before the file is begun, since its head says how many there are.
  std::set<std::int32_t> items;
  Itemsets itemsets;
  for (RuleNumber number = 1; number <= rules.size(); ++number) {
    const Rule& rule = rules[number];
    items.insert(rule.antecedent.begin(), rule.antecedent.end());
    items.insert(rule.consequent.begin(), rule.consequent.end());
    itemsets.NumberOf(rule.antecedent, rule.pa);
    itemsets.NumberOf(rule.consequent, rule.pc);
  }
  NewFile file(path, existing);
  OutputFile output(file.temporary(), file.path());
  WriteHead(output, clock);
  output.Write(fmt::format(
      " <AssociationModel functionName=\"associationRules\" modelName=\"{}\" numberOfTransactions=\"{}\" "
      "minimumSupport=\"{}\" minimumConfidence=\"{}\" numberOfItems=\"{}\" numberOfItemsets=\"{}\" "
      "numberOfRules=\"{}\">\n"
      "  <MiningSchema>\n"
      "   <MiningField name=\"transaction\" usageType=\"group\"/>\n"
      "   <MiningField name=\"item\" usageType=\"active\"/>\n"
      "  </MiningSchema>\n",
      XmlAttribute(parameters.name), CountText(parameters.transactions), NumberText(parameters.min_support),
      NumberText(parameters.min_confidence), items.size(), itemsets.all().size(), rules.size()));
  progress.SetStatus("Exporting items ...");
  for (const std::int32_t item : items) WriteItem(output, item, taxonomy);
  progress.SetStatus("Exporting itemsets ...");
  for (std::size_t i = 0; i < itemsets.all().size(); ++i) WriteItemset(output, i + 1, itemsets.all()[i]);
  progress.SetStatus("Exporting rules ...");
  for (RuleNumber number = 1; number <= rules.size(); ++number) {
    const Rule& rule = rules[number];
    WriteRule(output, number, rule, itemsets.NumberOf(rule.antecedent, rule.pa),
              itemsets.NumberOf(rule.consequent, rule.pc));
    if (number % 1024 == 0) progress.Pulse();
  }
  output.Write(" </AssociationModel>\n</PMML>\n");
  output.Close();
  file.Commit();
  progress.SetStatus("Completed!!");
}

}  // namespace selvane
