#include "ui/line_buffer.h"

#include "ui/text_tree.h"

namespace selvane {

namespace {

// Each addition makes the tree lay itself out anew, so lines go in by blocks.
constexpr qsizetype kBlock = 1024;

}  // namespace

LineBuffer::LineBuffer(TextTree& tree) : tree_(tree) {
  tree_.clear();
}

LineBuffer::~LineBuffer() {
  // Lines that were not handed to the tree, as after a failure, belong to nobody else.
  qDeleteAll(items_);
}

void LineBuffer::Add(const QString& line, qlonglong number) {
  auto* const item = new QTreeWidgetItem({line});
  if (number != 0) item->setData(0, Qt::UserRole, number);
  items_.append(item);
  if (items_.size() >= kBlock) Flush();
}

void LineBuffer::Flush() {
  tree_.addTopLevelItems(items_);  // which owns them from here on
  items_.clear();
}

}  // namespace selvane
