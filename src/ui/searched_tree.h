// A tree of lines with a field that narrows it.
#pragma once

#include <QWidget>
#include <functional>

class QLabel;
class QLineEdit;
class QTreeWidgetItem;

namespace selvane {

class TextTree;

// Above the tree a field: while it holds a text, only lines that have it, in capitals or not, and those above
// them are shown. Below the tree a line that tells more of the current line.
class SearchedTree final : public QWidget {
 public:
  explicit SearchedTree(const QString& accessible_name);

  TextTree& tree() { return *tree_; }
  // What to tell of a line; nothing when it is not set.
  std::function<QString(const QTreeWidgetItem& line)> describe;
  // Empties the tree, and the field with it.
  void Clear();
  // To be called when lines were added.
  void Narrow();

 private:
  QLineEdit* search_;
  TextTree* tree_;
  QLabel* more_;
};

}  // namespace selvane
