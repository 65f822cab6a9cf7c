#include "filters/rating_window.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QRadioButton>
#include <QTreeWidget>

#include "base/fraction.h"
#include "ui/framed.h"
#include "ui/number_field.h"
#include "ui/qt_text.h"
#include "ui/searched_tree.h"
#include "ui/text_tree.h"

namespace selvane {

RatingWindow::RatingWindow(const WindowContext& context, QWidget* parent, const FilterInput& input)
    : RuleFilterWindow(context, parent, input, "rating", "Kovril: Filtering Rules: Using Rating",
                       "Filtering Rules: Using Rating ", "Filtered rules saved in database table:\n ") {
  auto* const grid = new QGridLayout;
  grid->addWidget(ViewpointGroup(), 0, 0);
  grid->addWidget(ThresholdGroup(), 0, 1);
  grid->addWidget(BehaviourGroup(), 0, 2);
  grid->addWidget(FilteredRules(), 1, 0, 1, 3);
  grid->setRowStretch(1, 1);
  content().addLayout(grid);
  filtered().tree().setRootIsDecorated(false);
  AddFilterButtons();
}

QGroupBox* RatingWindow::ViewpointGroup() {
  dependency_ = new QRadioButton("Dependency");
  surprise_ = new QRadioButton("Surprise");
  connect(dependency_, &QRadioButton::clicked, this,
          [this] { Run([this] { ChooseViewpoint(RatingViewpoint::kDependency); }); });
  connect(surprise_, &QRadioButton::clicked, this,
          [this] { Run([this] { ChooseViewpoint(RatingViewpoint::kSurprise); }); });
  return Framed("Statistical viewpoint", {dependency_, surprise_});
}

QGroupBox* RatingWindow::ThresholdGroup() {
  threshold_ = new NumberField(context().decimal_sign);
  threshold_->left = [this] { LeaveThreshold(); };
  return Framed("Probability threshold", threshold_);
}

QGroupBox* RatingWindow::BehaviourGroup() {
  standard_ = new QRadioButton("Statistically standard");
  rare_ = new QRadioButton("Statistically rare");
  connect(standard_, &QRadioButton::clicked, this,
          [this] { options_.behaviour = RatingBehaviour::kStandard; });
  connect(rare_, &QRadioButton::clicked, this, [this] { options_.behaviour = RatingBehaviour::kRare; });
  return Framed("Statistical behavior", {standard_, rare_});
}

void RatingWindow::Refresh() {
  threshold_->Show(options_.probability_threshold);
  threshold_->setEnabled(options_.viewpoint == RatingViewpoint::kDependency);
  dependency_->setChecked(options_.viewpoint == RatingViewpoint::kDependency);
  surprise_->setChecked(options_.viewpoint == RatingViewpoint::kSurprise);
  standard_->setChecked(options_.behaviour == RatingBehaviour::kStandard);
  rare_->setChecked(options_.behaviour == RatingBehaviour::kRare);
}

void RatingWindow::ChooseViewpoint(RatingViewpoint viewpoint) {
  options_.viewpoint = viewpoint;
  Refresh();
}

void RatingWindow::LeaveThreshold() {
  options_.probability_threshold = threshold_->Number().value_or(0);
  if (IsFraction(options_.probability_threshold)) return;
  // The field shows the refused text until the next refresh.
  options_.probability_threshold = kDefaultProbabilityThreshold;
  RunLater([this] {
    ShowMessage(MessageIcon::kError, "Rating",
                "Probability threshold has a Incorrect value \n It'll take in default value ");
  });
}

void RatingWindow::Reset() {
  options_ = {};
  options_.minimum_support = input().min_support;
  Refresh();
  ForgetResult();
}

QString RatingWindow::LineOf(const Rule& rule) {
  const std::string antecedent = names().WithAnd(rule.antecedent);
  const std::string consequent = names().WithAnd(rule.consequent);
  return antecedent.empty() || consequent.empty() ? QString() : ToQt(antecedent + "  => " + consequent + " ");
}

void RatingWindow::Filter() {
  ForgetResult();
  if (!filter_) filter_.emplace(rules().size());
  for (const RuleNumber number : filter_->Run(rules(), options_, progress())) {
    ShowRule(number, LineOf(rules()[number]));
  }
  ResultIsShown();
  progress().SetStatus("Completed!!");
}

}  // namespace selvane
