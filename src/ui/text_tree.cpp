#include "ui/text_tree.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QToolTip>

namespace selvane {

TextTree::TextTree(const QString& accessible_name, QWidget* parent) : QTreeWidget(parent) {
  setAccessibleName(accessible_name);
  setHeaderHidden(true);
  // Else every one of thousands of lines would be measured.
  setUniformRowHeights(true);
  setTextElideMode(Qt::ElideRight);
  setTabKeyNavigation(false);
  header()->setStretchLastSection(true);
}

bool TextTree::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    auto* const help = static_cast<QHelpEvent*>(event);
    const QTreeWidgetItem* const item = itemAt(help->pos());
    QToolTip::showText(help->globalPos(), item == nullptr ? QString() : ToolTipOf(*item), this);
    return true;
  }
  return QTreeWidget::viewportEvent(event);
}

QString TextTree::ToolTipOf(const QTreeWidgetItem& item) const {
  const QString more = item.toolTip(0);
  if (!more.isEmpty()) return item.text(0) + '\n' + more;
  const bool is_cut = sizeHintForIndex(indexFromItem(&item)).width() > visualItemRect(&item).width();
  return is_cut ? item.text(0) : QString();
}

void TextTree::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) {
    CopySelected();
  } else {
    QTreeWidget::keyPressEvent(event);
  }
}

void TextTree::CopySelected() {
  // The selection is kept in the order of clicks, the lines are wanted in the order of the tree.
  QStringList lines;
  for (QTreeWidgetItemIterator item(this, QTreeWidgetItemIterator::Selected); *item; ++item) {
    lines.append((*item)->text(0));
  }
  if (!lines.isEmpty()) QGuiApplication::clipboard()->setText(lines.join('\n'));
}

}  // namespace selvane
