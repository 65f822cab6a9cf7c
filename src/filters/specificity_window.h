// The window of the specificity filter.
#pragma once

#include <optional>
#include <vector>

#include "filters/rule_filter_window.h"
#include "filters/specificity_filter.h"

class QGroupBox;
class QLabel;
class QListWidget;
class QRadioButton;

namespace selvane {

class SpecificityWindow final : public RuleFilterWindow {
 public:
  SpecificityWindow(const WindowContext& context, QWidget* parent, const FilterInput& input);

 protected:
  void Filter() override;
  void Reset() override;

 private:
  // One of the two ways to go on from a line.
  struct Step {
    const char* no_selection;
    const char* nothing;
    SpecificityMove move;
  };
  static const Step kMoreSpecific;
  static const Step kEnhance;

  QGroupBox* GroundGroup();
  QWidget* ChoicesGroup();
  SpecificityOptions Options() const;
  void AddGroundItem();
  void Explore(const Step& step);
  void ShowLevel(const std::vector<RuleNumber>& numbers, QTreeWidgetItem* parent);

  std::optional<SpecificityFilter> filter_;
  std::vector<NodeNumber> ground_;
  QListWidget* items_;
  QLabel* ground_text_;
  QRadioButton* on_antecedent_;
  QRadioButton* on_consequent_;
};

}  // namespace selvane
