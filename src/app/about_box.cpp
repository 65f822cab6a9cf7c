#include "app/about_box.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>

#include "version.h"

namespace selvane {

AboutBox::AboutBox(QWidget* parent) : QDialog(parent) {
  setWindowTitle("Informazioni su Kovril");
  auto* const icon = new QLabel;  // names an icon that there is none of, and stays empty
  icon->setMinimumSize(32, 32);
  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  auto* const layout = new QGridLayout(this);
  layout->addWidget(icon, 0, 0, 2, 1);
  layout->addWidget(new QLabel("Kovril Versione 1.0"), 0, 1);
  layout->addWidget(
      new QLabel("Association rules from biomedical abstracts (program version " SELVANE_VERSION ")"), 1, 1);
  layout->addWidget(buttons, 2, 0, 1, 2);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

}  // namespace selvane
