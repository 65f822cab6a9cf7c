// The commands that are walked through. Another one is another row.
#pragma once

#include <array>
#include <string_view>
#include <vector>

namespace selvane::faults {

// Command lines of selvane-cli without quotes; a word that begins with "@" is in the folder of the samples.
struct FaultCase {
  std::string_view name;
  std::vector<std::string_view> prepare;  // what makes its inputs, and what is to be replaced
  std::string_view command;
  // A reader that must fail on outputs of two sets, which a kill between two names can leave; empty where one
  // file is made, which is there or not.
  std::string_view reader = "";
  // What is committed before the outputs have their names, and may be new while they are not.
  std::string_view ahead = "";
};

inline std::vector<FaultCase> FaultCases() {
  constexpr std::string_view kLoad = "taxonomy load @/taxonomy.xml tax.mdb";
  constexpr std::string_view kPrune = "taxonomy prune tax.mdb D.02 E";
  constexpr std::string_view kTerms = "terms build --taxonomy tax.mdb --output terms.mdb @/abstracts";
  constexpr std::string_view kSets =
      "terms build --taxonomy tax.mdb --output terms.mdb --terms all --form sets @/abstracts";
  constexpr std::string_view kHeadings = "taxonomy load @/headings.txt tax.mdb --check-tags";
  constexpr std::string_view kLiterature =
      "terms build --taxonomy tax.mdb --output terms.mdb --terms all @/search.nbib @/marks.pubtator";
  constexpr std::string_view kExtract =
      "rules extract terms.mdb --taxonomy tax.mdb --output rules.mdb --min-support 0.2 --min-confidence 0.7";
  constexpr std::string_view kFewer =
      "rules extract terms.mdb --taxonomy tax.mdb --output rules.mdb --min-support 0.3 --overwrite";
  constexpr std::string_view kClosed =
      "rules extract terms.mdb --taxonomy tax.mdb --output rules.mdb --closed";
  constexpr std::string_view kClosedAgain =
      "rules extract terms.mdb --taxonomy tax.mdb --output rules.mdb --closed --min-support 0.2 --overwrite";
  constexpr std::string_view kItemsets =
      "rules extract terms.mdb --taxonomy tax.mdb --output rules.mdb --min-support 0.2 --itemsets kept.dat";
  constexpr std::string_view k11 = "pmml export rules.mdb --taxonomy tax.mdb --output model.xml";
  constexpr std::string_view k11Again =
      "pmml export rules.mdb --taxonomy tax.mdb --output model.xml --overwrite";
  constexpr std::string_view k44 =
      "pmml export rules.mdb --taxonomy tax.mdb --output model.xml --pmml-version 4.4";
  constexpr std::string_view k44Again =
      "pmml export rules.mdb --taxonomy tax.mdb --output model.xml --pmml-version 4.4 --overwrite";
  constexpr std::string_view kReader = "rules list rules.mdb";
  return {
      {"load", {}, kLoad},
      {"load-headings", {}, kHeadings},
      {"prune", {kLoad}, kPrune},
      {"restore", {kLoad, kPrune}, "taxonomy restore tax.mdb"},
      {"terms", {kLoad}, kTerms},
      {"terms-sets", {kLoad}, kSets},
      {"terms-literature", {kHeadings}, kLiterature},
      {"extract", {kLoad, kTerms}, kExtract, kReader},
      {"extract-sets", {kLoad, kSets}, kExtract, kReader},
      {"extract-overwrite", {kLoad, kTerms, kExtract}, kFewer, kReader},
      {"extract-pruned", {kLoad, kTerms, kPrune}, kExtract, kReader, "tax.mdb"},
      {"extract-itemsets", {kLoad, kTerms}, kItemsets, kReader},
      {"closed", {kLoad, kTerms}, kClosed, kReader},
      {"closed-overwrite", {kLoad, kTerms, kClosed}, kClosedAgain, kReader},
      {"filter-save", {kLoad, kTerms, kExtract}, "rules filter rating rules.mdb --taxonomy tax.mdb --save"},
      {"export-1.1", {kLoad, kTerms, kExtract}, k11},
      {"export-1.1-overwrite", {kLoad, kTerms, kExtract, k44}, k11Again},
      {"export-4.4", {kLoad, kTerms, kExtract}, k44},
      {"export-4.4-overwrite", {kLoad, kTerms, kExtract, k11}, k44Again},
      {"import", {kLoad, kTerms, kExtract, k44}, "pmml import model.xml --taxonomy tax.mdb --output new.mdb"},
      {"import-rules",
       {kLoad, kTerms, kExtract, k44},
       "pmml import model.xml --taxonomy tax.mdb --output new.mdb --rules",
       "rules list new.mdb"},
      {"tabulate", {}, "tabulate @/README.md @/taxonomy.xml counts.dat"},
      {"tabulate-overwrite",
       {"tabulate @/README.md @/README.md counts.dat"},
       "tabulate @/README.md @/taxonomy.xml counts.dat"},
  };
}

}  // namespace selvane::faults
