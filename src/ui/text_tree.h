// A tree of long lines.
#pragma once

#include <QTreeWidget>

namespace selvane {

// One column of text: a line that does not fit is cut short and shown whole as a tooltip, and so is one that
// has a tooltip of its own, with it. The selected lines are copied by Ctrl+C. Thousands of lines cost little:
// all are of one height.
class TextTree final : public QTreeWidget {
 public:
  explicit TextTree(const QString& accessible_name, QWidget* parent = nullptr);

 protected:
  bool viewportEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  QString ToolTipOf(const QTreeWidgetItem& item) const;
  void CopySelected();
};

}  // namespace selvane
