// The window that mines association rules from a term table.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "data/transaction_source.h"
#include "mining/apriori_extraction.h"
#include "mining/closed_extraction.h"
#include "taxonomy/taxonomy_store.h"
#include "ui/tool_window.h"

class QCheckBox;
class QGroupBox;
class QListWidget;

namespace selvane {

class LineBuffer;
class NumberField;
class TextTree;

// From no database over an open one to a chosen table: "Open Database" is enabled in the first state only,
// the extraction in the last. One window opens one term database in its life.
class ExtractionWindow final : public ToolWindow {
 public:
  explicit ExtractionWindow(const WindowContext& context, QWidget* parent = nullptr);

 private:
  QGroupBox* InputGroup();
  QGroupBox* ThresholdGroup(const QString& caption, NumberField*& field);
  QGroupBox* GeneralizingGroup();
  QGroupBox* RulesGroup();
  void AddButtons();

  void OpenDatabase();
  void SelectTable();
  void OpenTaxonomy(const std::filesystem::path& path);
  // When one of their fields loses the focus.
  void LeaveThreshold();
  // Puts the defaults in place of values out of range; returns the captions of the messages to be shown.
  QStringList CorrectThresholds();
  void ReportCorrection(const QString& caption);
  enum class Extractor { kApriori, kOrnex };
  void Extract(Extractor extractor);
  void ExtractWithApriori(QStringList& restored);
  void ExtractWithOrnex();
  ExtractionRequest Request() const;
  // `suggestion` is the name that the dialog for the output begins with.
  ExtractionHooks Hooks(const QString& suggestion, LineBuffer& lines);
  std::filesystem::path ChooseOutput(const QString& suggestion);

  void ReadFields();
  void WriteFields();
  QString NumberText(double value) const;
  void WarnOfTooMany(const TooManyRules& rules);
  void ShowEnd(const ExtractionReport& report);
  void ReportRestored(const QStringList& terms);
  void ReportItems(const ClosedReport& report);

  QListWidget* tables_;
  QListWidget* fields_;
  NumberField* support_edit_;
  NumberField* confidence_edit_;
  QCheckBox* generalize_box_;
  TextTree* rules_;
  QPushButton* open_;
  QPushButton* extract_;

  float min_support_ = kDefaultMinSupport;
  float min_confidence_ = kDefaultMinConfidence;
  bool generalize_ = true;
  TransactionSource source_;
  // Each taxonomy that was chosen stays open as long as the window.
  std::vector<std::unique_ptr<TaxonomyStore>> taxonomies_;
  TaxonomyStore* taxonomy_ = nullptr;
  std::string table_;
  bool selection_pending_ = false;
};

}  // namespace selvane
