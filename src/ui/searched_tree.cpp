#include "ui/searched_tree.h"

#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "ui/text_tree.h"

namespace selvane {

namespace {

// True when the line or one below it stays visible.
bool NarrowLine(QTreeWidgetItem& line, const QString& text) {
  bool visible = text.isEmpty() || line.text(0).contains(text, Qt::CaseInsensitive);
  for (int i = 0; i < line.childCount(); ++i) visible |= NarrowLine(*line.child(i), text);
  // Hiding costs a new layout of the tree, even when nothing changes by it.
  if (line.isHidden() == visible) line.setHidden(!visible);
  return visible;
}

}  // namespace

SearchedTree::SearchedTree(const QString& accessible_name)
    : search_(new QLineEdit), tree_(new TextTree(accessible_name)), more_(new QLabel) {
  search_->setObjectName("search");
  search_->setPlaceholderText("Show only lines with ...");
  search_->setAccessibleName("Show only lines with");
  search_->setClearButtonEnabled(true);
  more_->setTextFormat(Qt::PlainText);
  more_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  more_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);  // a long text must not widen the window
  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(search_);
  layout->addWidget(tree_, 1);
  layout->addWidget(more_);
  connect(search_, &QLineEdit::textChanged, this, [this] { Narrow(); });
  connect(tree_, &QTreeWidget::currentItemChanged, this, [this](const QTreeWidgetItem* line) {
    more_->setText(line != nullptr && describe ? describe(*line) : QString());
  });
}

void SearchedTree::Clear() {
  search_->clear();
  tree_->clear();
}

void SearchedTree::Narrow() {
  const QString text = search_->text().trimmed();
  tree_->setUpdatesEnabled(false);
  for (int i = 0; i < tree_->topLevelItemCount(); ++i) NarrowLine(*tree_->topLevelItem(i), text);
  tree_->setUpdatesEnabled(true);
}

}  // namespace selvane
