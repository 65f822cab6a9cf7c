#include "filters/specificity_window.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>

#include "ui/framed.h"
#include "ui/qt_text.h"
#include "ui/searched_tree.h"
#include "ui/text_tree.h"

namespace selvane {

namespace {

constexpr const char* kCaption = "Using Specificity";

}  // namespace

const SpecificityWindow::Step SpecificityWindow::kMoreSpecific = {
    "Please select rule to be specified", "No more specified rule ", SpecificityMove::kMoreSpecific};
const SpecificityWindow::Step SpecificityWindow::kEnhance = {
    "Please select rule to be enhanced", "No more enhanced rule ", SpecificityMove::kEnhanceOtherSide};

SpecificityWindow::SpecificityWindow(const WindowContext& context, QWidget* parent, const FilterInput& input)
    : RuleFilterWindow(context, parent, input, "specificity", "Kovril: Filtering rules: Using Specificity",
                       "Filtering Rules: Using Specificity", "Filtered rules saved in database table:\n") {
  auto* const grid = new QGridLayout;
  grid->addWidget(GroundGroup(), 0, 0);
  grid->addWidget(ChoicesGroup(), 0, 1);
  QWidget* const filtered = FilteredRules();
  grid->addWidget(filtered, 1, 0, 1, 2);
  grid->setColumnStretch(0, 1);
  grid->setRowStretch(0, 1);
  grid->setRowStretch(1, 2);
  content().addLayout(grid);
  AddButton("More Specific", [this] { Explore(kMoreSpecific); });
  AddButton("Enhance other side", [this] { Explore(kEnhance); });
  AddFilterButtons();
}

QGroupBox* SpecificityWindow::GroundGroup() {
  items_ = new QListWidget;
  items_->setUniformItemSizes(true);
  items_->setAccessibleName("Ground Items");
  auto* const add = new QPushButton("&ADD");
  add->setAutoDefault(false);
  connect(add, &QPushButton::clicked, this, [this] { Run([this] { AddGroundItem(); }); });
  ground_text_ = new QLabel;
  ground_text_->setTextFormat(Qt::PlainText);
  ground_text_->setWordWrap(true);
  ground_text_->setObjectName("ground");
  auto* const group = new QGroupBox(" Ground Items ");
  auto* const grid = new QGridLayout(group);
  grid->addWidget(items_, 0, 0, 1, 2);
  grid->addWidget(add, 1, 0);
  grid->addWidget(ground_text_, 1, 1);
  grid->setColumnStretch(1, 1);
  return group;
}

QWidget* SpecificityWindow::ChoicesGroup() {
  on_antecedent_ = new QRadioButton("On Antecedent");
  on_consequent_ = new QRadioButton("On Consequent");
  auto* const choices = new QWidget;
  auto* const layout = new QVBoxLayout(choices);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(Framed({}, {on_antecedent_, on_consequent_}));
  layout->addWidget(OrderGroup(Qt::Vertical));
  layout->addStretch();
  return choices;
}

SpecificityOptions SpecificityWindow::Options() const {
  return {on_antecedent_->isChecked() ? RuleSide::kAntecedent : RuleSide::kConsequent, Order()};
}

void SpecificityWindow::Reset() {
  ground_.clear();
  ground_text_->clear();
  items_->clear();
  // An item of both maps stands twice.
  AddItems(*items_, input().info.first_map);
  AddItems(*items_, input().info.second_map);
  on_antecedent_->setChecked(true);
  ResetOrder();
  filter_.emplace(rules(), input().taxonomy.SpecificityBound());
  filter_button().setEnabled(false);
  ForgetResult();
}

void SpecificityWindow::AddGroundItem() {
  const QList<QListWidgetItem*> selected = items_->selectedItems();
  if (selected.isEmpty()) return;
  ground_.push_back(selected.front()->data(Qt::UserRole).toInt());
  ground_text_->setText(ground_text_->text() + selected.front()->text() + "  ");
  delete selected.front();
  items_->setCurrentItem(nullptr);
  filter_button().setEnabled(true);
}

void SpecificityWindow::Filter() {
  ForgetResult();
  const std::vector<RuleNumber> found = filter_->MostGeneral(ground_, Options(), progress());
  filter_button().setEnabled(false);
  if (found.empty()) {
    ShowMessage(MessageIcon::kInformation, kCaption, "No rule with ground items");
    progress().Clear();
    return;
  }
  ShowLevel(found, nullptr);
}

void SpecificityWindow::Explore(const Step& step) {
  QTreeWidgetItem* const line = filtered().tree().currentItem();
  const RuleNumber rule = line == nullptr || !line->isSelected() ? 0 : RuleOf(line);
  if (rule == 0) {
    ShowMessage(MessageIcon::kWarning, kCaption, step.no_selection);
    return;
  }
  const std::vector<RuleNumber> found = filter_->Explore(rule, step.move, Options(), progress());
  if (found.empty()) {
    ShowMessage(MessageIcon::kInformation, kCaption, step.nothing);
    progress().Clear();
    return;
  }
  ShowLevel(found, line);
}

void SpecificityWindow::ShowLevel(const std::vector<RuleNumber>& numbers, QTreeWidgetItem* parent) {
  for (const RuleNumber number : numbers) ShowRule(number, RenderedLine(number), parent);
  if (parent != nullptr) parent->setExpanded(true);
  ResultIsShown();
  progress().SetStatus("Completed!!");
}

}  // namespace selvane
