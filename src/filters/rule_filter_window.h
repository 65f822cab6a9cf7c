// The base of the windows that filter rules.
#pragma once

#include <string>
#include <vector>

#include "filters/kept_rules.h"
#include "rules/rules_info.h"
#include "taxonomy/node_names.h"
#include "ui/tool_window.h"

class QGroupBox;
class QListWidget;
class QRadioButton;
class QTreeWidgetItem;

namespace selvane {

class SearchedTree;

// What the filtering window hands to a filter's window. Both stores and the information outlive it.
struct FilterInput {
  RulesStore& rules;
  TaxonomyStore& taxonomy;
  const RulesInfo& info;
  bool cascade = false;
  float min_support = 0;  // of the extraction, as a fraction of the rows
};

// Filters the rules of the store's source table, as they were when the window was opened, shows those that
// are kept, and saves them into a new table. In a cascade, closing saves too, and what was saved is the
// source of the next filter.
class RuleFilterWindow : public ToolWindow {
 public:
  // Loads the rules.
  bool Prepare() override;

 protected:
  // `save_caption` and `save_text` are of the message that follows a save; the table's name comes behind the
  // text.
  RuleFilterWindow(const WindowContext& context, QWidget* parent, const FilterInput& input,
                   const QString& name, const QString& title, const QString& save_caption,
                   const QString& save_text);

  // A group box with the tree of filtered rules.
  QWidget* FilteredRules();
  // The choice of the order in which rules are shown, by support at first; ResetOrder goes back to that.
  QGroupBox* OrderGroup(Qt::Orientation orientation);
  void ResetOrder();
  RuleOrder Order() const;
  // Adds a line with a node and its name; and a line for each item of a map of the information file.
  static void AddNode(QListWidget& list, NodeNumber node, const QString& name);
  void AddItems(QListWidget& list, const std::vector<std::int32_t>& map);
  // "&Filter", "&Reset All", "&Save rules", "&Close"; sets filter_button() and save_button().
  void AddFilterButtons();
  // What "&Filter" and "&Reset All" do.
  virtual void Filter() = 0;
  virtual void Reset() = 0;

  // Empties the tree, and forgets what was kept.
  void ForgetResult();
  // Adds a line to the tree, below `parent` unless that is nullptr, and keeps the rule.
  QTreeWidgetItem* ShowRule(RuleNumber number, const QString& line, QTreeWidgetItem* parent = nullptr);
  // To be called when all lines of a result are shown: they can be saved now, if there are any.
  void ResultIsShown();
  // The rule of a line; 0 for none.
  static RuleNumber RuleOf(const QTreeWidgetItem* line);

  void Close() override;

  const FilterInput& input() const { return input_; }
  const RuleList& rules() const { return rules_; }
  NodeNames& names() { return names_; }
  SearchedTree& filtered() { return *filtered_; }
  QPushButton& filter_button() { return *filter_button_; }
  QPushButton& save_button() { return *save_button_; }
  // Both sides of a rule as the template and specificity windows show them.
  QString RenderedLine(RuleNumber number);

 private:
  void Save();
  void EnableSave(bool enabled);

  FilterInput input_;
  QString save_caption_;
  QString save_text_;
  NodeNames names_;
  RuleList rules_;
  KeepMask kept_;
  bool something_to_save_ = false;
  bool save_failed_ = false;  // when the window was to be closed
  SearchedTree* filtered_ = nullptr;
  QRadioButton* by_support_ = nullptr;
  QRadioButton* by_confidence_ = nullptr;
  QPushButton* filter_button_ = nullptr;
  QPushButton* save_button_ = nullptr;
};

// The figures of a rule, for a line of their own.
QString FiguresText(RuleNumber number, const Rule& rule, char decimal_sign);

}  // namespace selvane
