#include "ui/line_buffer.h"

#include "ui/text_tree.h"

namespace selvane {

namespace {

constexpr qsizetype kBlock = 1024;

}  // namespace

LineBuffer::LineBuffer(TextTree& tree) : tree_(tree) {
  tree_.clear();
}

void LineBuffer::Add(const QString& line) {
  lines_.append(line);
  if (lines_.size() >= kBlock) Flush();
}

void LineBuffer::Flush() {
  QList<QTreeWidgetItem*> items;
  items.reserve(lines_.size());
  for (const QString& line : lines_) items.append(new QTreeWidgetItem({line}));
  tree_.addTopLevelItems(items);
  lines_.clear();
}

}  // namespace selvane
