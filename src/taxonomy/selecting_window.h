// The window in which branches of a taxonomy are taken out of the mining.
#pragma once

#include <optional>

#include "taxonomy/taxonomy_store.h"
#include "ui/tool_window.h"

class QTreeWidgetItem;

namespace selvane {

class TextTree;

// Three trees: the working taxonomy, and the nodes chosen to be pruned upward and downward. A line's text is
// the node's term, its data the node's number. A chosen node stands in angle brackets.
class SelectingWindow final : public ToolWindow {
 public:
  explicit SelectingWindow(const WindowContext& context, QWidget* parent = nullptr);

  // Asks for the taxonomy database and shows its categories.
  bool Prepare() override;

 private:
  void BuildTrees();
  void ShowCategories();
  void ShowChildren(QTreeWidgetItem& item);
  void PruneHierarchy();
  void ResetAll();
  void Execute();

  std::optional<TaxonomyStore> taxonomy_;
  TextTree* existing_;
  TextTree* upward_;
  TextTree* downward_;
};

}  // namespace selvane
