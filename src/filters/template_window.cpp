#include "filters/template_window.h"

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

QListWidget* MakeList(const QString& accessible_name) {
  auto* const list = new QListWidget;
  list->setAccessibleName(accessible_name);
  list->setUniformItemSizes(true);
  return list;
}

// Takes the selected line away, and selects no other in its place: the next ADD would add that.
void RemoveSelected(QListWidget& list) {
  const QSignalBlocker quiet(list);
  delete list.takeItem(list.currentRow());
  list.setCurrentItem(nullptr);
}

const QListWidgetItem* Selected(const QListWidget& list) {
  const QList<QListWidgetItem*> selected = list.selectedItems();
  return selected.isEmpty() ? nullptr : selected.front();
}

}  // namespace

TemplateWindow::TemplateWindow(const WindowContext& context, QWidget* parent, const FilterInput& input)
    : RuleFilterWindow(context, parent, input, "template", "Kovril: Filtering Rules: Using Template",
                       "Filtering Rules: Using Templates", "Filtered rules saved in database table:\n") {
  auto* const grid = new QGridLayout;
  grid->addWidget(SideGroup(antecedent_, "Antecedent", "Antecedent Specific :"), 0, 0);
  grid->addWidget(SideGroup(consequent_, "Consequent", "Consequent Specific :"), 0, 1);
  grid->addWidget(TemplatesGroup(), 1, 0, 1, 2);
  grid->addWidget(OrderGroup(Qt::Horizontal), 2, 0, 1, 2);
  grid->addWidget(FilteredRules(), 3, 0, 1, 2);
  grid->setRowStretch(0, 3);
  grid->setRowStretch(1, 1);
  grid->setRowStretch(3, 4);
  content().addLayout(grid);
  filtered().tree().setRootIsDecorated(false);
  AddFilterButtons();
}

QPushButton* TemplateWindow::AddAddButton(QListWidget& list, void (TemplateWindow::*add)(Side&), Side& side) {
  auto* const button = new QPushButton("ADD");
  button->setAutoDefault(false);
  connect(button, &QPushButton::clicked, this,
          [this, add, &side] { Run([this, add, &side] { (this->*add)(side); }); });
  connect(&list, &QListWidget::itemSelectionChanged, button, [button] { button->setEnabled(true); });
  return button;
}

QGroupBox* TemplateWindow::SideGroup(Side& side, const QString& name, const QString& specific) {
  side.items = MakeList(name + " Items");
  side.classes = MakeList(name + " Taxonomy Classes");
  side.cardinalities = MakeList(name + " Cardinality");
  side.add_item = AddAddButton(*side.items, &TemplateWindow::AddItem, side);
  side.add_class = AddAddButton(*side.classes, &TemplateWindow::AddClass, side);
  connect(side.cardinalities, &QListWidget::itemSelectionChanged, side.add_class,
          [button = side.add_class] { button->setEnabled(true); });
  side.add_item->setAccessibleName("ADD item to " + name);
  side.add_class->setAccessibleName("ADD class to " + name);
  for (QPushButton* const button : {side.add_item, side.add_class})
    button->setObjectName(button->accessibleName());
  side.text = new QLabel;
  side.text->setTextFormat(Qt::PlainText);
  side.text->setWordWrap(true);
  side.text->setObjectName(specific);

  auto* const group = new QGroupBox(name);
  auto* const grid = new QGridLayout(group);
  grid->addWidget(new QLabel("Items"), 0, 0);
  grid->addWidget(new QLabel("Taxonomy Classes"), 0, 1);
  grid->addWidget(new QLabel("Cardinality"), 0, 2);
  grid->addWidget(side.items, 1, 0);
  grid->addWidget(side.add_item, 2, 0);
  grid->addWidget(side.classes, 1, 1);
  grid->addWidget(side.cardinalities, 1, 2);
  grid->addWidget(side.add_class, 2, 1, 1, 2);
  grid->addWidget(new QLabel(specific), 3, 0);
  grid->addWidget(side.text, 3, 1, 1, 2);
  grid->setColumnStretch(0, 3);
  grid->setColumnStretch(1, 3);
  grid->setColumnStretch(2, 1);
  return group;
}

QGroupBox* TemplateWindow::TemplatesGroup() {
  inclusive_ = new QRadioButton("Inclusive Template");
  restrictive_ = new QRadioButton("Restrictive Template");
  add_template_ = new QPushButton("Add &Template");
  add_template_->setAutoDefault(false);
  connect(add_template_, &QPushButton::clicked, this, [this] { Run([this] { AddTemplate(); }); });
  inclusive_templates_ = MakeList("Inclusive Template");
  restrictive_templates_ = MakeList("Restrictive Template");
  auto* const group = new QGroupBox;
  auto* const grid = new QGridLayout(group);
  grid->addWidget(inclusive_, 0, 0);
  grid->addWidget(restrictive_, 1, 0);
  grid->addWidget(add_template_, 2, 0);
  grid->addWidget(Framed("Inclusive Template", inclusive_templates_), 0, 1, 3, 1);
  grid->addWidget(Framed("Restrictive Template", restrictive_templates_), 0, 2, 3, 1);
  grid->setColumnStretch(1, 1);
  grid->setColumnStretch(2, 1);
  return group;
}

void TemplateWindow::FillLists(Side& side) {
  for (QListWidget* const list : {side.items, side.classes, side.cardinalities}) {
    const QSignalBlocker quiet(list);
    list->clear();
  }
  AddItems(*side.items, input().info.first_map);
  AddNode(*side.classes, kAnyClass, "Any");
  AddItems(*side.classes, input().info.second_map);
  side.cardinalities->addItems({"*", "+", "1"});
  side.add_item->setEnabled(true);
  side.add_class->setEnabled(true);
}

void TemplateWindow::Reset() {
  builder_ = {};
  filter_.inclusive.clear();
  filter_.restrictive.clear();
  inclusive_templates_->clear();
  restrictive_templates_->clear();
  FillLists(antecedent_);
  FillLists(consequent_);
  inclusive_->setChecked(true);
  ResetOrder();
  ShowTexts();
  ForgetResult();
}

void TemplateWindow::ShowTexts() {
  for (const Side* const side : {&antecedent_, &consequent_})
    side->text->setText(ToQt(builder_.Text(side->side)));
  add_template_->setEnabled(builder_.IsComplete());
}

void TemplateWindow::AddItem(Side& side) {
  const QListWidgetItem* const selected = Selected(*side.items);
  if (selected == nullptr) return;
  const NodeNumber item = selected->data(Qt::UserRole).toInt();
  builder_.AddItem(side.side, item, FromQt(selected->text()));
  RemoveSelected(*side.items);
  // One item is used once in a template.
  Side& other = &side == &antecedent_ ? consequent_ : antecedent_;
  for (int row = 0; row < other.items->count(); ++row) {
    if (other.items->item(row)->data(Qt::UserRole).toInt() == item) {
      const QSignalBlocker quiet(other.items);
      other.items->setCurrentItem(nullptr);  // else the line beside it would be selected in its place
      delete other.items->takeItem(row);
      break;
    }
  }
  ShowTexts();
}

void TemplateWindow::AddClass(Side& side) {
  const QListWidgetItem* const selected = Selected(*side.classes);
  if (selected == nullptr) return;
  const QListWidgetItem* const cardinality = Selected(*side.cardinalities);
  const QString symbol = cardinality == nullptr ? QString() : cardinality->text();
  const NodeNumber id = selected->data(Qt::UserRole).toInt();
  if (!builder_.AddClass(side.side, id, FromQt(selected->text()), FromQt(symbol))) {
    ShowMessage(MessageIcon::kWarning, "Filtering association rules",
                "Select a cardinality symbol for the selected class");
    return;
  }
  // Twice "1" asks for two items of the class, so such a one stays.
  if (id == kAnyClass || symbol != "1") RemoveSelected(*side.classes);
  ShowTexts();
}

void TemplateWindow::AddTemplate() {
  const bool inclusive = inclusive_->isChecked();
  (inclusive ? inclusive_templates_ : restrictive_templates_)->addItem(ToQt(builder_.Line()));
  (inclusive ? filter_.inclusive : filter_.restrictive).push_back(builder_.Take());
  ShowTexts();
  for (const Side* const side : {&antecedent_, &consequent_}) {
    // A line that stays selected could not be selected again, which is what enables its button.
    for (QListWidget* const list : {side->items, side->classes, side->cardinalities}) {
      list->setCurrentItem(nullptr);
    }
    side->add_item->setEnabled(false);
    side->add_class->setEnabled(false);
  }
  filter_button().setEnabled(true);
}

void TemplateWindow::Filter() {
  ForgetResult();
  filter_.all_positions = input().rules.RunOfSource().CountsTerms();
  std::vector<RuleNumber> kept = filter_.Run(rules(), progress());
  if (kept.empty()) {
    ShowMessage(MessageIcon::kInformation, "Using Template", "No satisfying rule ");
    return;
  }
  progress().SetStatus("Ordering filtered rules ...");
  OrderRules(rules(), Order(), kept);
  for (const RuleNumber number : kept) ShowRule(number, RenderedLine(number));
  ResultIsShown();
  progress().SetStatus("Completed!!");
}

}  // namespace selvane
