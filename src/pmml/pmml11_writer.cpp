#include "pmml/pmml11_writer.h"

#include <fmt/format.h>

#include <unordered_map>

#include "base/file.h"
#include "base/text.h"
#include "pmml/pmml_model.h"
#include "pmml/xml_text.h"
#include "rules/rule_list.h"
#include "taxonomy/position_code.h"

namespace selvane {

namespace {

constexpr std::size_t kPulseLines = 4096;

void AppendItemset(std::string& text, const std::vector<std::int32_t>& items, float support,
                   std::int32_t count) {
  const std::string id = ItemsetToText(items);
  fmt::format_to(std::back_inserter(text), "<AssocItemset id=\"{}\"  support=\"{}\" numberOfItems=\"{}\">\n",
                 id, SingleText(support), count);
  for (const std::int32_t item : items) {
    fmt::format_to(std::back_inserter(text), "\t\t<AssocItemRef itemRef=\"{}\"/>\n", item);
  }
  text += "</AssocItemset>\n";
}

// The first seven lines end in carriage return and line feed, all others in line feed.
void WriteHead(OutputFile& output, std::string_view model_name, const RulesInfo& info, long rules) {
  output.Write(
      "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n"
      "<PMML version=\"1.1\">\r\n"
      "<Header copyright=\"www.dmg.org\"      description=\"Pmml specifics for generalized association "
      "rules\"/>\r\n"
      "<Application name=\"Selvane_Pudro\"/>\r\n"
      "<DataDictionary numberOfFields=\"1\" >\r\n"
      "\t\t<DataField name=\"item\" optype=\"categorical\" />\r\n"
      "</DataDictionary>\r\n");
  output.Write(fmt::format("\n\n<AssociationModel   modelName=\"{}\">\n", PlainLatin1(model_name)));
  output.Write(fmt::format(
      "\t\t<AssocInputStats numberOfTransactions=\"{}\" minimumSupport=\"{}\"  minimumConfidence=\"{}\" "
      "numberOfItems=\"{}\"  numberOfItemsets=\"{}\"  numberOfRules=\"{}\"/>",
      PlainLatin1(info.rows), PlainLatin1(info.min_support), PlainLatin1(info.min_confidence),
      info.first_map.size() + info.second_map.size(), 2 * rules, rules));
}

// The maps' entries are taken for item numbers, as they stand: each of their 0s and 10s gives a line.
void WriteItems(OutputFile& output, const std::vector<std::int32_t>& map, std::string_view weight,
                const TaxonomyStore& taxonomy, Progress& progress) {
  std::unordered_map<std::int32_t, std::string> lines;  // each number is looked up once
  std::string text;
  for (std::size_t place = 0; place < map.size(); ++place) {
    auto line = lines.find(map[place]);
    if (line == lines.end()) {
      const TaxonomyNode node = taxonomy.source().FindNode(map[place]).value_or(TaxonomyNode{});
      line = lines
                 .emplace(map[place],
                          fmt::format(
                              "<AssocItem id=\"{}\"  value=\"{}\"  mappedValue=\"{}\" weight=\"{}\"/>\n",
                              map[place], PlainLatin1(node.term), PlainLatin1(TreeNumber(node.code)), weight))
                 .first;
    }
    text += line->second;
    if (place % kPulseLines == 0) {
      progress.SetPosition(static_cast<int>(place));
      progress.Pulse();
      output.Write(text);
      text.clear();
    }
  }
  output.Write(text);
}

void WriteModel(OutputFile& output, const RulesStore& store, const RulesInfo& info,
                const TaxonomyStore& taxonomy, Progress& progress) {
  const RuleList rules(store, progress);
  const RuleNumber count = rules.size();
  progress.SetStatus("Exporting items ...");
  progress.SetRange(0, static_cast<int>(info.first_map.size()));
  output.Write(
      "\n\n<!-- Mapped value attribute is  pubmed taxonomy  identifier for each item and weight gives kind "
      "of item in generalized rules extraction-->\n");
  WriteItems(output, info.first_map, "item", taxonomy, progress);
  WriteItems(output, info.second_map, "class", taxonomy, progress);

  progress.SetStatus("Exporting itemsets ...");
  progress.SetRange(0, static_cast<int>(count));
  output.Write("\n\n");
  std::string text;
  for (RuleNumber number = 1; number <= count; ++number) {
    text.clear();
    // Each rule has two itemsets of its own, also where another has the same: readers find them by their
    // place, and the head declares twice as many as there are rules.
    AppendItemset(text, rules[number].antecedent, rules[number].pa, rules[number].aspec);
    AppendItemset(text, rules[number].consequent, rules[number].pc, rules[number].cspec);
    output.Write(text);
    progress.SetPosition(static_cast<int>(number));
    if (number % 1024 == 0) progress.Pulse();
  }
  progress.SetStatus("Exporting rules ...");
  progress.SetRange(0, static_cast<int>(count));
  output.Write("\n\n");
  for (RuleNumber number = 1; number <= count; ++number) {
    const Rule& rule = rules[number];
    output.Write(
        fmt::format("<AssocRule  support=\"{}\"  confidence=\"{}\"  antecedent=\"{}\"  consequent=\"{}\"/>\n",
                    SingleText(rule.support), SingleText(rule.confidence), ItemsetToText(rule.antecedent),
                    ItemsetToText(rule.consequent)));
  }
  progress.SetPosition(static_cast<int>(count));
  output.Write("</AssociationModel>\n</PMML>\n");
}

}  // namespace

void WritePmml11(const RulesStore& rules, std::string_view model_name, const RulesInfo& info,
                 const std::function<const TaxonomyStore*()>& choose_taxonomy,
                 const std::filesystem::path& path, ExistingFile existing, Progress& progress) {
  NewFile file(path, existing);
  OutputFile output(file.temporary(), file.path());
  WriteHead(output, model_name, info, rules.CountRules());
  if (const TaxonomyStore* const taxonomy = choose_taxonomy()) {
    WriteModel(output, rules, info, *taxonomy, progress);
    progress.SetStatus("Completed!!");
  }
  output.Close();
  file.Commit();
}

std::filesystem::path ExportPath(const std::filesystem::path& chosen) {
  if (chosen.empty()) return kDefaultExport;
  std::filesystem::path path = chosen;
  path += ".xml";
  return path;
}

}  // namespace selvane
