// Group boxes around one control or a few.
#pragma once

#include <QBoxLayout>
#include <QGroupBox>
#include <initializer_list>

namespace selvane {

inline QGroupBox* Framed(const QString& caption, std::initializer_list<QWidget*> widgets,
                         Qt::Orientation orientation = Qt::Vertical) {
  auto* const group = new QGroupBox(caption);
  auto* const layout =
      new QBoxLayout(orientation == Qt::Vertical ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight, group);
  for (QWidget* const widget : widgets) layout->addWidget(widget);
  if (orientation == Qt::Horizontal) layout->addStretch();
  return group;
}

// The caption is also what the control is called aloud, unless it has a name of its own.
inline QGroupBox* Framed(const QString& caption, QWidget* widget) {
  if (widget->accessibleName().isEmpty()) widget->setAccessibleName(caption);
  return Framed(caption, {widget});
}

}  // namespace selvane
