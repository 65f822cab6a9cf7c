// An edit field for a number.
#pragma once

#include <QLineEdit>
#include <functional>
#include <optional>

namespace selvane {

// Shows numbers with the user's decimal sign and takes either.
class NumberField final : public QLineEdit {
 public:
  explicit NumberField(char decimal_sign) : decimal_sign_(decimal_sign) {}

  // Called when the field loses the focus to another control of its window.
  std::function<void()> left;
  // Called with a text that is no number, when that is read.
  std::function<void(const QString& text)> refused;

  void Show(float number);
  // The number in the field; nothing when its text is none.
  std::optional<float> Number() const;
  // The number in the field. When its text is none, the field shows `old` again and gives that.
  float Read(float old);

 protected:
  void focusOutEvent(QFocusEvent* event) override;

 private:
  char decimal_sign_;
};

}  // namespace selvane
