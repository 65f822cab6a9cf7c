// Fills a tree with many lines while work goes on.
#pragma once

#include <QStringList>

namespace selvane {

class TextTree;

// Empties the tree, then adds lines at its end, in blocks; the last block at the end of its life.
class LineBuffer {
 public:
  explicit LineBuffer(TextTree& tree);
  LineBuffer(const LineBuffer&) = delete;
  LineBuffer& operator=(const LineBuffer&) = delete;
  ~LineBuffer() { Flush(); }

  void Add(const QString& line);

 private:
  void Flush();

  TextTree& tree_;
  QStringList lines_;
};

}  // namespace selvane
