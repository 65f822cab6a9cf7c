// Taxonomy files and databases for tests.
#pragma once

#include "support/test_support.h"
#include "taxonomy/taxonomy_loading.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

inline std::string NodeLine(const std::string& term, const std::string& tree) {
  return "<node canonical=\"" + term + "\" type=\"descriptor\" tree=\"" + tree + "\"/>\n";
}

// A small taxonomy with everything that can go wrong in a large one: names at several positions, positions
// before their parents or without a line of their own, codes that occur in others, empty names.
inline std::string RandomTaxonomy(std::mt19937& random, int lines) {
  const char* const names[] = {"Fever", "Cough",      "Asthma", "AIDS", "Crohn's",
                               "A",     "Lung, left", "Zoster", "fever"};
  const char* const segments[] = {"1", "2", "12", "21", "112"};
  std::string text;
  for (int i = 0; i < lines; ++i) {
    std::string tree;
    for (auto codes = 1 + random() % 2; codes > 0; --codes) {
      std::string code(1, "CD"[random() % 2]);
      const auto depth = random() % 4;
      for (unsigned level = 0; level < depth; ++level)
        code += (level == 0 ? "" : ".") + std::string(segments[random() % std::size(segments)]);
      tree += (tree.empty() ? "" : ";") + code;
    }
    text += NodeLine(random() % 12 == 0 ? "" : names[random() % std::size(names)], tree);
  }
  return text;
}

inline void LoadText(const std::string& lines, const std::string& database) {
  WriteText("load.xml", "<taxonomy>\n" + lines + "</taxonomy>\n");
  SilentProgress progress;
  LoadTaxonomy("load.xml", database, ExistingFile::kReplace, progress);
  fs::remove("load.xml");
}

}  // namespace selvane
