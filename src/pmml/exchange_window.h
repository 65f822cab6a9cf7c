// The window that exchanges rules with other programs.
#pragma once

#include <optional>

#include "pmml/pmml_reader.h"
#include "rules/rules_info.h"
#include "taxonomy/taxonomy_store.h"
#include "ui/tool_window.h"

class QGroupBox;
class QLayout;
class QLineEdit;
class QListWidget;

namespace selvane {

// Two groups: one writes a rules table as a file, the other takes a file's head into a new rules database. A
// cancelled dialog for a database or for the file to import closes the window.
class ExchangeWindow final : public ToolWindow {
 public:
  explicit ExchangeWindow(const WindowContext& context, QWidget* parent = nullptr);

 private:
  QGroupBox* ImportGroup();
  QGroupBox* ExportGroup();
  QPushButton* MakeButton(const QString& text, void (ExchangeWindow::*run)());
  QLineEdit* AddResult(QLayout& layout, const QString& label);

  void SelectFile();
  void Import();
  void SelectDatabase();
  void Export();
  // Opens the taxonomy database that the user chooses; false when the dialog was cancelled.
  bool ChooseTaxonomy(const QString& title);
  void CloseDatabases();

  std::optional<PmmlFile> file_;
  std::filesystem::path file_path_;
  std::optional<RulesStore> rules_;
  std::optional<TaxonomyStore> taxonomy_;
  RulesInfo info_;
  // The greatest node of the taxonomies that an import named.
  NodeNumber largest_imported_node_ = 0;

  QPushButton* import_;
  QLineEdit* database_result_;
  QLineEdit* table_result_;
  QLineEdit* rules_result_;
  QListWidget* tables_;
  QPushButton* export_;
};

}  // namespace selvane
