// Fills a tree with many lines while work goes on.
#pragma once

#include <QList>

class QTreeWidgetItem;

namespace selvane {

class TextTree;

// Empties the tree, then adds lines at its end, in blocks.
class LineBuffer {
 public:
  explicit LineBuffer(TextTree& tree);
  LineBuffer(const LineBuffer&) = delete;
  LineBuffer& operator=(const LineBuffer&) = delete;
  ~LineBuffer();

  // `number` is the line's data, in the first column's user role.
  void Add(const QString& line, qlonglong number = 0);
  // To be called after the last line.
  void Flush();

 private:
  TextTree& tree_;
  QList<QTreeWidgetItem*> items_;
};

}  // namespace selvane
