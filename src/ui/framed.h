// Group boxes around one control or a few.
#pragma once

#include <QBoxLayout>
#include <QGroupBox>
#include <initializer_list>
#include <memory>

namespace selvane {

inline QGroupBox* Framed(const QString& caption, std::initializer_list<QWidget*> widgets,
                         Qt::Orientation orientation = Qt::Vertical) {
  auto group = std::make_unique<QGroupBox>(caption);
  auto layout = std::make_unique<QBoxLayout>(orientation == Qt::Vertical ? QBoxLayout::TopToBottom
                                                                         : QBoxLayout::LeftToRight);
  for (QWidget* const widget : widgets) layout->addWidget(widget);
  if (orientation == Qt::Horizontal) layout->addStretch();
  group->setLayout(layout.release());
  return group.release();
}

// The caption is also what the control is called aloud, unless it has a name of its own.
inline QGroupBox* Framed(const QString& caption, QWidget* widget) {
  if (widget->accessibleName().isEmpty()) widget->setAccessibleName(caption);
  return Framed(caption, {widget});
}

}  // namespace selvane
