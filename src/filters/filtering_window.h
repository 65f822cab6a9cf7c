// The window from which stored rules are filtered.
#pragma once

#include <filesystem>
#include <optional>

#include "filters/kept_rules.h"
#include "rules/rules_info.h"
#include "taxonomy/taxonomy_store.h"
#include "ui/tool_window.h"

class QCheckBox;
class QGroupBox;
class QLineEdit;
class QListWidget;

namespace selvane {

class SearchedTree;

// From no rules database over an opened one, whose tables are listed, to a chosen table, whose rules are
// shown and can be filtered. In a cascade each filter's result is what the next one starts from, until
// another table is chosen.
class FilteringWindow final : public ToolWindow {
 public:
  FilteringWindow(const WindowContext& context, QWidget* parent = nullptr);

  // Asks for the taxonomy database. Throws DatabaseError when it cannot be opened.
  bool Prepare() override;

  // Numbers of the commands that open a filter.
  static constexpr int kTemplateCommand = 1032;
  static constexpr int kCoverCommand = 1033;  // has no button
  static constexpr int kRatingCommand = 1034;
  static constexpr int kSpecificityCommand = 1035;
  // Runs one of them, as a click on its button does; false for another number.
  bool Send(int command);

 private:
  QWidget* RulesGroup();
  QWidget* DatabaseColumn();
  QGroupBox* TableGroup();
  void AddButtons();
  QLineEdit* AddReadOnlyField(QLayout& layout, const QString& label);

  void LoadRules();
  void OpenRules(const std::filesystem::path& path);
  void ForgetTable();
  void ForgetRules();
  void ChooseTable();
  void ListTables();
  void ShowTable(const std::string& table);
  bool CanFilter();
  template <typename Window>
  void OpenFilter();

  std::optional<TaxonomyStore> taxonomy_;
  std::optional<RulesStore> rules_;
  RulesInfo info_;
  RuleList shown_;
  bool rules_loaded_ = false;  // a table was chosen
  float min_support_ = 0;
  bool choice_pending_ = false;

  SearchedTree* current_rules_;
  QListWidget* tables_;
  QListWidget* taxonomies_;
  QLineEdit* min_support_field_;
  QLineEdit* min_confidence_field_;
  QLineEdit* table_name_;
  QLineEdit* rules_number_;
  QCheckBox* cascade_;
};

}  // namespace selvane
