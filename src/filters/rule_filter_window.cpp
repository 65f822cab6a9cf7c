#include "filters/rule_filter_window.h"

#include <QGroupBox>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>
#include <utility>

#include "base/text.h"
#include "ui/framed.h"
#include "ui/qt_text.h"
#include "ui/searched_tree.h"
#include "ui/text_tree.h"

namespace selvane {

namespace {

constexpr int kRuleRole = Qt::UserRole;

}  // namespace

QString FiguresText(RuleNumber number, const Rule& rule, char decimal_sign) {
  const auto text = [decimal_sign](float value) { return ToQt(SingleText(value, decimal_sign)); };
  return QString("Rule %1: support %2, confidence %3, antecedent in %4, consequent in %5 of the rows")
      .arg(QString::number(number), text(rule.support), text(rule.confidence), text(rule.pa), text(rule.pc));
}

RuleFilterWindow::RuleFilterWindow(const WindowContext& context, QWidget* parent, const FilterInput& input,
                                   const QString& name, const QString& title, const QString& save_caption,
                                   const QString& save_text)
    : ToolWindow(context, parent, name, title, {920, 720}),
      input_(input),
      save_caption_(save_caption),
      save_text_(save_text),
      names_(input.taxonomy) {}

bool RuleFilterWindow::Prepare() {
  rules_ = RuleList(input_.rules, progress());
  progress().Clear();
  kept_ = KeepMask(rules_.size());
  Reset();
  return true;
}

QWidget* RuleFilterWindow::FilteredRules() {
  filtered_ = new SearchedTree("Filtered rules");
  filtered_->tree().setSelectionMode(QAbstractItemView::ExtendedSelection);
  filtered_->describe = [this](const QTreeWidgetItem& line) {
    const RuleNumber number = RuleOf(&line);
    return number == 0 ? QString() : FiguresText(number, rules_[number], context().decimal_sign);
  };
  return Framed("Filtered rules", filtered_);
}

QGroupBox* RuleFilterWindow::OrderGroup(Qt::Orientation orientation) {
  by_support_ = new QRadioButton("Decreasing Support");
  by_confidence_ = new QRadioButton("Decreasing Confidence");
  return Framed({}, {by_support_, by_confidence_}, orientation);
}

void RuleFilterWindow::ResetOrder() {
  by_support_->setChecked(true);
}

RuleOrder RuleFilterWindow::Order() const {
  return by_support_->isChecked() ? RuleOrder::kDecreasingSupport : RuleOrder::kDecreasingConfidence;
}

void RuleFilterWindow::AddNode(QListWidget& list, NodeNumber node, const QString& name) {
  auto* const line = new QListWidgetItem(name, &list);
  line->setData(Qt::UserRole, node);
  line->setToolTip(name);
}

void RuleFilterWindow::AddItems(QListWidget& list, const std::vector<std::int32_t>& map) {
  for (const NodeNumber item : ItemsOfMap(map)) AddNode(list, item, ToQt(names_.Joined(std::span(&item, 1))));
}

void RuleFilterWindow::AddFilterButtons() {
  filter_button_ = AddButton("&Filter", [this] { Filter(); });
  AddButton("&Reset All", [this] { Reset(); });
  save_button_ = AddButton("&Save rules", [this] { Save(); });
  AddCloseButton();
}

void RuleFilterWindow::EnableSave(bool enabled) {
  something_to_save_ = enabled;
  save_button_->setEnabled(enabled);
}

void RuleFilterWindow::ForgetResult() {
  filtered_->Clear();
  kept_ = KeepMask(rules_.size());
  EnableSave(false);
}

QTreeWidgetItem* RuleFilterWindow::ShowRule(RuleNumber number, const QString& line, QTreeWidgetItem* parent) {
  // The mask follows what is shown, so that just that is saved.
  kept_.Keep(number);
  auto* const item = new QTreeWidgetItem({line});
  item->setData(0, kRuleRole, static_cast<qlonglong>(number));
  if (parent == nullptr) {
    filtered_->tree().addTopLevelItem(item);
  } else {
    parent->addChild(item);
  }
  return item;
}

void RuleFilterWindow::ResultIsShown() {
  filtered_->Narrow();
  if (!kept_.IsEmpty()) EnableSave(true);
}

RuleNumber RuleFilterWindow::RuleOf(const QTreeWidgetItem* line) {
  return line == nullptr ? 0 : static_cast<RuleNumber>(line->data(0, kRuleRole).toLongLong());
}

QString RuleFilterWindow::RenderedLine(RuleNumber number) {
  const Rule& rule = rules_[number];
  return ToQt(names_.Rendered(rule.antecedent) + " => " + names_.Rendered(rule.consequent));
}

void RuleFilterWindow::Save() {
  // What was saved is not saved again, under another name, when closing in a cascade saves too.
  if (!something_to_save_ || kept_.IsEmpty()) return;
  const std::string table = SaveFilteredRules(input_.rules, rules_, kept_, context().clock, progress());
  ShowMessage(MessageIcon::kInformation, save_caption_, save_text_ + ToQt(table));
  EnableSave(false);
}

void RuleFilterWindow::Close() {
  if (input_.cascade) {
    try {
      Save();
    } catch (...) {
      // The second time the window closes all the same: what cannot be saved must not hold the user.
      if (std::exchange(save_failed_, true)) ToolWindow::Close();
      throw;
    }
    // Behind the saving, whose table is what the next filter loads. Where nothing was saved, the source
    // stays.
    input_.rules.ContinueCascade();
  }
  ToolWindow::Close();
}

}  // namespace selvane
