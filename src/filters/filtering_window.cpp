#include "filters/filtering_window.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSplitter>
#include <QTreeWidget>
#include <utility>

#include "base/text.h"
#include "filters/cover_window.h"
#include "filters/rating_window.h"
#include "filters/rules_opening.h"
#include "filters/specificity_window.h"
#include "filters/template_window.h"
#include "ui/framed.h"
#include "ui/line_buffer.h"
#include "ui/qt_text.h"
#include "ui/searched_tree.h"
#include "ui/text_tree.h"

namespace selvane {

namespace {

constexpr const char* kCaption = "Filtering Rules";

}  // namespace

FilteringWindow::FilteringWindow(const WindowContext& context, QWidget* parent)
    : ToolWindow(context, parent, "filtering", "Kovril: Filtering Rules", {980, 700}) {
  auto* const splitter = new QSplitter(Qt::Horizontal);
  splitter->addWidget(RulesGroup());
  splitter->addWidget(DatabaseColumn());
  splitter->setChildrenCollapsible(false);
  splitter->setStretchFactor(0, 3);
  splitter->setStretchFactor(1, 1);
  content().addWidget(splitter);
  AddButtons();
}

QWidget* FilteringWindow::RulesGroup() {
  current_rules_ = new SearchedTree("Current Rules");
  current_rules_->tree().setRootIsDecorated(false);
  current_rules_->tree().setSelectionMode(QAbstractItemView::ExtendedSelection);
  current_rules_->describe = [this](const QTreeWidgetItem& line) {
    const auto number = static_cast<RuleNumber>(line.data(0, Qt::UserRole).toLongLong());
    return number < 1 || number > shown_.size() ? QString()
                                                : FiguresText(number, shown_[number], context().decimal_sign);
  };
  return Framed("Current Rules", current_rules_);
}

QLineEdit* FilteringWindow::AddReadOnlyField(QLayout& layout, const QString& label) {
  auto* const caption = new QLabel(label);
  auto* const field = new QLineEdit;
  field->setReadOnly(true);
  field->setObjectName(label);
  field->setAccessibleName(label.trimmed());
  layout.addWidget(caption);
  layout.addWidget(field);
  return field;
}

QGroupBox* FilteringWindow::TableGroup() {
  auto* const group = new QGroupBox("Current Rules Table");
  auto* const layout = new QVBoxLayout(group);
  table_name_ = AddReadOnlyField(*layout, "Table Name ");
  rules_number_ = AddReadOnlyField(*layout, "Rules Number");
  return group;
}

QWidget* FilteringWindow::DatabaseColumn() {
  tables_ = new QListWidget;
  tables_->setObjectName("tables");
  taxonomies_ = new QListWidget;
  taxonomies_->setObjectName("taxonomies");
  auto* const column = new QWidget;
  auto* const layout = new QVBoxLayout(column);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(Framed("Tables List in Rules Database", tables_), 2);
  layout->addWidget(Framed("Database taxonomies used", taxonomies_), 1);
  min_support_field_ = AddReadOnlyField(*layout, "Min Support Value  :");
  min_confidence_field_ = AddReadOnlyField(*layout, "Min Confidence Value  :");
  layout->addWidget(TableGroup());
  cascade_ = new QCheckBox("Cascade Filtering");
  cascade_->setEnabled(false);
  layout->addWidget(cascade_);
  connect(cascade_, &QCheckBox::clicked, this, [this] { Run([this] { rules_->BeginCascade(); }); });
  connect(tables_, &QListWidget::itemSelectionChanged, this, [this] {
    // A drag over several tables is one choice.
    if (!std::exchange(choice_pending_, true)) RunLater([this] { ChooseTable(); });
  });
  return column;
}

void FilteringWindow::AddButtons() {
  AddButton("&Load Rules", [this] { LoadRules(); });
  AddButton("Using &Template", [this] { OpenFilter<TemplateWindow>(); });
  AddButton("Using &Rating", [this] { OpenFilter<RatingWindow>(); });
  AddButton("Using &Specificity", [this] { OpenFilter<SpecificityWindow>(); });
  AddCloseButton();
}

bool FilteringWindow::Prepare() {
  // Asked before the window is shown, so its parent is that of the dialog.
  taxonomy_.emplace(context().dialogs.OpenFile(parentWidget(), FileKind::kTaxonomyDatabase,
                                               "Selecting taxonomies database : "));
  return true;
}

void FilteringWindow::ForgetTable() {
  rules_loaded_ = false;
  shown_ = {};
  current_rules_->Clear();
  table_name_->clear();
  rules_number_->clear();
  cascade_->setChecked(false);
  cascade_->setEnabled(false);
}

void FilteringWindow::ForgetRules() {
  ForgetTable();
  rules_.reset();
  info_ = {};
  const QSignalBlocker quiet(tables_);
  tables_->clear();
  taxonomies_->clear();
  for (QLineEdit* const field : {min_support_field_, min_confidence_field_}) field->clear();
}

void FilteringWindow::LoadRules() {
  const std::filesystem::path path =
      context().dialogs.OpenFile(this, FileKind::kRulesDatabase, "Loading extracted rules :");
  // Says that no file was named, before the rules at hand are given up.
  if (path.empty()) RulesStore().OpenRulesDatabase(path);
  ForgetRules();
  try {
    OpenRules(path);
  } catch (const MissingTaxonomies& missing) {
    ShowMessage(MessageIcon::kWarning, kCaption, ToQt(missing.what()));
  } catch (...) {
    ForgetRules();
    throw;
  }
}

void FilteringWindow::OpenRules(const std::filesystem::path& path) {
  rules_.emplace();
  info_ = OpenRulesForFiltering(*rules_, *taxonomy_, path);
  min_support_ = MinimumSupportOf(info_);
  ListTables();
  for (const std::string& name : info_.taxonomies) taxonomies_->addItem(ToQt(name));
  min_support_field_->setText(ToQt(SingleText(min_support_, context().decimal_sign)));
  min_confidence_field_->setText(ToQt(SingleText(MinimumConfidenceOf(info_), context().decimal_sign)));
  tables_->setFocus();
}

// Adds the tables that are not listed yet, as those that a filter has saved.
void FilteringWindow::ListTables() {
  for (const std::string& table : rules_->ListRulesTables()) {
    if (tables_->findItems(ToQt(table), Qt::MatchExactly).isEmpty()) tables_->addItem(ToQt(table));
  }
}

void FilteringWindow::ChooseTable() {
  choice_pending_ = false;
  const QList<QListWidgetItem*> selected = tables_->selectedItems();
  if (selected.isEmpty()) return;
  try {
    ShowTable(FromQt(selected.front()->text()));
  } catch (...) {
    ForgetTable();
    // So that a click on the same table tries again.
    tables_->clearSelection();
    tables_->setCurrentItem(nullptr);
    throw;
  }
}

void FilteringWindow::ShowTable(const std::string& table) {
  rules_->OpenRulesTable(table);
  current_rules_->Clear();
  progress().SetStatus("Loading rules ....");
  const RuleNumber count = rules_->CountRules();
  rules_number_->setText(QString::number(count));
  table_name_->setText(ToQt(table));
  shown_ = RuleList(*rules_, progress());
  NodeNames names(*taxonomy_);
  LineBuffer lines(current_rules_->tree());
  for (RuleNumber number = 1; number <= shown_.size(); ++number) {
    const Rule& rule = shown_[number];
    lines.Add(ToQt(names.WithAnd(rule.antecedent) + " => " + names.WithAnd(rule.consequent)), number);
    if (number % 1024 == 0) progress().Pulse();
  }
  lines.Flush();
  progress().SetStatus("Completed!!");
  cascade_->setEnabled(true);
  cascade_->setChecked(false);
  rules_loaded_ = true;
}

bool FilteringWindow::CanFilter() {
  if (rules_loaded_) return true;
  ShowMessage(MessageIcon::kInformation, kCaption, "No loaded rules");
  return false;
}

template <typename Window>
void FilteringWindow::OpenFilter() {
  if (!CanFilter()) return;
  const bool cascade = cascade_->isChecked();
  // The chain cannot be left before another table is chosen.
  if (cascade) cascade_->setEnabled(false);
  Window window(context(), this, {*rules_, *taxonomy_, info_, cascade, min_support_});
  if (window.Prepare()) window.exec();
  ListTables();
}

bool FilteringWindow::Send(int command) {
  switch (command) {
    case kTemplateCommand:
      Run([this] { OpenFilter<TemplateWindow>(); });
      return true;
    // Has no button; only its number opens it.
    case kCoverCommand:
      Run([this] { OpenFilter<CoverWindow>(); });
      return true;
    case kRatingCommand:
      Run([this] { OpenFilter<RatingWindow>(); });
      return true;
    case kSpecificityCommand:
      Run([this] { OpenFilter<SpecificityWindow>(); });
      return true;
    default:
      return false;
  }
}

}  // namespace selvane
