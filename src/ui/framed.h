// A group box around one control.
#pragma once

#include <QGroupBox>
#include <QVBoxLayout>

namespace selvane {

// The caption is also what the control is called aloud, unless it has a name of its own.
inline QGroupBox* Framed(const QString& caption, QWidget* widget) {
  auto* const group = new QGroupBox(caption);
  auto* const layout = new QVBoxLayout(group);
  layout->addWidget(widget);
  if (widget->accessibleName().isEmpty()) widget->setAccessibleName(caption);
  return group;
}

}  // namespace selvane
