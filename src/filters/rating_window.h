// The window of the rating filter.
#pragma once

#include <optional>

#include "filters/rating_filter.h"
#include "filters/rule_filter_window.h"

class QGroupBox;
class QRadioButton;

namespace selvane {

class NumberField;

class RatingWindow final : public RuleFilterWindow {
 public:
  RatingWindow(const WindowContext& context, QWidget* parent, const FilterInput& input);

 protected:
  void Filter() override;
  void Reset() override;

 private:
  QGroupBox* ViewpointGroup();
  QGroupBox* ThresholdGroup();
  QGroupBox* BehaviourGroup();
  void ChooseViewpoint(RatingViewpoint viewpoint);
  void LeaveThreshold();
  void Refresh();
  QString LineOf(const Rule& rule);

  // Made with the first filtering, so that ratings last from one to the next.
  std::optional<RatingFilter> filter_;
  RatingFilter::Options options_;
  QRadioButton* dependency_;
  QRadioButton* surprise_;
  QRadioButton* standard_;
  QRadioButton* rare_;
  NumberField* threshold_;
};

}  // namespace selvane
