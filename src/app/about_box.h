#pragma once

#include <QDialog>

namespace selvane {

class AboutBox final : public QDialog {
 public:
  explicit AboutBox(QWidget* parent);
};

}  // namespace selvane
