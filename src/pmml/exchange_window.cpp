#include "pmml/exchange_window.h"

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/file.h"
#include "pmml/pmml11_writer.h"
#include "rules/new_rules_database.h"
#include "ui/framed.h"
#include "ui/qt_text.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

constexpr const char* kCaption = "Importing/Exporting rules";

}  // namespace

ExchangeWindow::ExchangeWindow(const WindowContext& context, QWidget* parent)
    : ToolWindow(context, parent, "exchange", "Kovril: Importing/Exporting Rules", {560, 560}) {
  content().addWidget(ImportGroup());
  content().addWidget(ExportGroup(), 1);
  AddCloseButton();
}

QPushButton* ExchangeWindow::MakeButton(const QString& text, void (ExchangeWindow::*run)()) {
  auto* const button = new QPushButton(text);
  button->setAutoDefault(false);
  connect(button, &QPushButton::clicked, this, [this, run] { Run([this, run] { (this->*run)(); }); });
  return button;
}

QLineEdit* ExchangeWindow::AddResult(QLayout& layout, const QString& label) {
  auto* const field = new QLineEdit;
  field->setReadOnly(true);
  field->setObjectName(label);
  field->setAccessibleName(label.trimmed());
  layout.addWidget(new QLabel(label));
  layout.addWidget(field);
  return field;
}

QGroupBox* ExchangeWindow::ImportGroup() {
  auto* const group = new QGroupBox("Importing rules from xml file to database");
  auto* const layout = new QVBoxLayout(group);
  auto* const buttons = new QHBoxLayout;
  buttons->addWidget(MakeButton("Select &XML file", &ExchangeWindow::SelectFile));
  import_ = MakeButton("&Import", &ExchangeWindow::Import);
  import_->setEnabled(false);
  buttons->addWidget(import_);
  buttons->addStretch();
  layout->addLayout(buttons);
  database_result_ = AddResult(*layout, "Rules Database ");
  table_result_ = AddResult(*layout, "Rules Table in Database");
  rules_result_ = AddResult(*layout, "Imported Rules  ");
  return group;
}

QGroupBox* ExchangeWindow::ExportGroup() {
  auto* const group = new QGroupBox("Exporting rules from database to xml file");
  auto* const layout = new QVBoxLayout(group);
  auto* const buttons = new QHBoxLayout;
  buttons->addWidget(MakeButton("Select &Database", &ExchangeWindow::SelectDatabase));
  export_ = MakeButton("&Export", &ExchangeWindow::Export);
  export_->setEnabled(false);
  buttons->addWidget(export_);
  buttons->addStretch();
  tables_ = new QListWidget;
  layout->addLayout(buttons);
  layout->addWidget(Framed("Rules Tables in Database", tables_));
  return group;
}

void ExchangeWindow::CloseDatabases() {
  rules_.reset();
  taxonomy_.reset();
}

bool ExchangeWindow::ChooseTaxonomy(const QString& title) {
  const fs::path path = context().dialogs.OpenFile(this, FileKind::kTaxonomyDatabase, title);
  taxonomy_.reset();
  if (path.empty()) {
    CloseDatabases();
    Close();
    return false;
  }
  taxonomy_.emplace(path);
  return true;
}

void ExchangeWindow::SelectFile() {
  const fs::path path = context().dialogs.OpenFile(this, FileKind::kModelFile, "Selecting xml rules file : ");
  if (path.empty()) {
    CloseDatabases();
    return Close();
  }
  import_->setEnabled(false);
  // The button is off meanwhile: where this file cannot be read, the earlier one must not be imported in its
  // place.
  file_.emplace(path);
  file_path_ = path;
  import_->setEnabled(true);
}

void ExchangeWindow::Import() {
  const PmmlHead head = file_->ReadHead(progress());
  if (!ChooseTaxonomy("Selecting taxonomies database : ")) return;
  largest_imported_node_ = taxonomy_->source().LargestNodeNamedIn(head.taxonomy_codes);
  fs::path path = context().dialogs.SaveFile(this, FileKind::kRulesDatabase,
                                             "Saving imported rules :", OverwriteQuestion::kAsked);
  // Nobody was asked about the one that stands in for it.
  const ExistingFile existing = path.empty() ? ExistingFile::kRefuse : ExistingFile::kReplace;
  if (path.empty()) path = kDefaultImport;
  for (const fs::path& made : {path, RulesInfoPath(path)})
    CheckIsNoInput(made, {taxonomy_->path(), file_path_});
  // One that is replaced must not be open; any other is given up when the new one is there.
  if (rules_ && IsSameFile(path, rules_->path())) rules_.reset();
  ImportRules(head, nullptr, path, existing, progress());
  tables_->clear();
  export_->setEnabled(false);
  rules_.emplace();
  rules_->OpenRulesDatabase(path);
  database_result_->setText(PathToQt(path.stem()));
  table_result_->setText(ToQt(head.parameters.name));
  rules_result_->setText(QString::number(head.declared_rules));
  file_.reset();
  progress().SetStatus("Completed!!");
  import_->setEnabled(false);
}

void ExchangeWindow::SelectDatabase() {
  const fs::path path =
      context().dialogs.OpenFile(this, FileKind::kRulesDatabase, "Selecting rules database : ");
  if (path.empty()) {
    CloseDatabases();
    return Close();
  }
  rules_.reset();
  tables_->clear();
  export_->setEnabled(false);
  // A store of its own until all is read, so that no database without its information can be exported.
  RulesStore store;
  store.OpenRulesDatabase(path);
  info_ = ReadInfoOf(store);
  rules_ = std::move(store);
  for (const std::string& table : rules_->ListRulesTables()) tables_->addItem(ToQt(table));
  export_->setEnabled(true);
}

void ExchangeWindow::Export() {
  const QList<QListWidgetItem*> selected = tables_->selectedItems();
  if (selected.isEmpty()) {
    ShowMessage(MessageIcon::kWarning, kCaption, "No table selected");
    return;
  }
  const std::string table = FromQt(selected.front()->text());
  rules_->OpenRulesTable(table);
  const fs::path chosen = context().dialogs.SaveFile(this, FileKind::kModelFile,
                                                     "Saving exported rules :", OverwriteQuestion::kAsked);
  const fs::path path = ExportPath(chosen);
  // The dialog has asked about the name without the suffix that is always added, or about none.
  if (IsTaken(path) && !context().dialogs.Ask(
                           this, kCaption, QString("%1 is there already. Replace it?").arg(PathToQt(path)))) {
    return;
  }
  CheckIsNoInput(path, {rules_->path()});
  const auto choose_taxonomy = [this]() -> const TaxonomyStore* {
    return ChooseTaxonomy("Selecting taxonomies database :") ? &*taxonomy_ : nullptr;
  };
  WritePmml11(*rules_, table, info_, choose_taxonomy, path, ExistingFile::kReplace, progress());
}

}  // namespace selvane
