// The window of the template filter.
#pragma once

#include "filters/rule_filter_window.h"
#include "filters/template_filter.h"

class QGroupBox;
class QLabel;
class QListWidget;
class QRadioButton;

namespace selvane {

class TemplateWindow final : public RuleFilterWindow {
 public:
  TemplateWindow(const WindowContext& context, QWidget* parent, const FilterInput& input);

 protected:
  void Filter() override;
  void Reset() override;

 private:
  // The lists of one side of a template, their buttons and its text.
  struct Side {
    RuleSide side = RuleSide::kAntecedent;
    QListWidget* items = nullptr;
    QListWidget* classes = nullptr;
    QListWidget* cardinalities = nullptr;
    QPushButton* add_item = nullptr;
    QPushButton* add_class = nullptr;
    QLabel* text = nullptr;
  };

  QGroupBox* SideGroup(Side& side, const QString& name, const QString& specific);
  QGroupBox* TemplatesGroup();
  QPushButton* AddAddButton(QListWidget& list, void (TemplateWindow::*add)(Side&), Side& side);
  void FillLists(Side& side);
  void AddItem(Side& side);
  void AddClass(Side& side);
  void AddTemplate();
  void ShowTexts();

  TemplateBuilder builder_;
  TemplateFilter filter_{names()};
  Side antecedent_{RuleSide::kAntecedent};
  Side consequent_{RuleSide::kConsequent};
  QRadioButton* inclusive_;
  QRadioButton* restrictive_;
  QPushButton* add_template_;
  QListWidget* inclusive_templates_;
  QListWidget* restrictive_templates_;
};

}  // namespace selvane
