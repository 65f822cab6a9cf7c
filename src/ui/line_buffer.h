// Fills a tree with many lines while work goes on.
#pragma once

#include <QStringList>

namespace selvane {

class TextTree;

// Empties the tree, then adds lines at its end, in blocks.
class LineBuffer {
 public:
  explicit LineBuffer(TextTree& tree);

  void Add(const QString& line);
  // To be called after the last line.
  void Flush();

 private:
  TextTree& tree_;
  QStringList lines_;
};

}  // namespace selvane
