#include "ui/number_field.h"

#include <QFocusEvent>
#include <optional>

#include "base/text.h"
#include "ui/qt_text.h"

namespace selvane {

void NumberField::Show(float number) {
  setText(ToQt(SingleText(number, decimal_sign_)));
}

std::optional<float> NumberField::Number() const {
  const std::optional<double> number = NumberOf(FromQt(text()));
  return number ? std::optional(static_cast<float>(*number)) : std::nullopt;
}

float NumberField::Read(float old) {
  if (const std::optional<float> number = Number()) return *number;
  const QString bad = text();
  Show(old);
  if (refused) refused(bad);
  return old;
}

void NumberField::focusOutEvent(QFocusEvent* event) {
  QLineEdit::focusOutEvent(event);
  // A message box or another program takes the focus for a while only.
  const Qt::FocusReason reason = event->reason();
  if (left && reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) left();
}

}  // namespace selvane
