#include "mining/extraction_window.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "base/file.h"
#include "base/new_file.h"
#include "base/text.h"
#include "itemsets/itemset_file.h"
#include "ui/framed.h"
#include "ui/line_buffer.h"
#include "ui/number_field.h"
#include "ui/qt_text.h"
#include "ui/text_tree.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

constexpr const char* kCaption = "Extracting Rules";
constexpr const char* kShortCaption = "Extracting";

}  // namespace

ExtractionWindow::ExtractionWindow(const WindowContext& context, QWidget* parent)
    : ToolWindow(context, parent, "extraction", "Kovril: Extracting Rules", {860, 720}) {
  auto* const grid = new QGridLayout;
  grid->addWidget(InputGroup(), 0, 0, 1, 3);
  grid->addWidget(ThresholdGroup("Minimun Support", support_edit_), 1, 0);
  grid->addWidget(ThresholdGroup("Minimun Confidence", confidence_edit_), 1, 1);
  grid->addWidget(GeneralizingGroup(), 1, 2);
  grid->addWidget(RulesGroup(), 2, 0, 1, 3);
  grid->setRowStretch(0, 1);
  grid->setRowStretch(2, 2);
  content().addLayout(grid);
  AddButtons();
  WriteFields();
}

QGroupBox* ExtractionWindow::InputGroup() {
  tables_ = new QListWidget;
  fields_ = new QListWidget;
  tables_->setObjectName("tables");
  fields_->setObjectName("fields");
  for (QListWidget* const list : {tables_, fields_}) list->setUniformItemSizes(true);
  auto* const group = new QGroupBox("Input data :");
  auto* const layout = new QHBoxLayout(group);
  layout->addWidget(Framed("Tables in Database", tables_));
  layout->addWidget(Framed("Fields in database table", fields_));
  connect(tables_, &QListWidget::itemSelectionChanged, this, [this] {
    // A drag over several rows is one choice.
    if (!std::exchange(selection_pending_, true)) RunLater([this] { SelectTable(); });
  });
  return group;
}

QGroupBox* ExtractionWindow::ThresholdGroup(const QString& caption, NumberField*& field) {
  field = new NumberField(context().decimal_sign);
  field->setObjectName(caption);
  field->left = [this] { LeaveThreshold(); };
  field->refused = [this](const QString& text) {
    RunLater([this, text] {
      ShowMessage(
          MessageIcon::kError, kCaption,
          QString("\"%1\" is not a number. Enter one such as 0.05; the value before stays until then.")
              .arg(text));
    });
  };
  return Framed(caption, field);
}

QGroupBox* ExtractionWindow::GeneralizingGroup() {
  generalize_box_ = new QCheckBox("Generalizing Rules");
  connect(generalize_box_, &QCheckBox::clicked, this, [this] { Run([this] { ReadFields(); }); });
  return Framed({}, generalize_box_);
}

QGroupBox* ExtractionWindow::RulesGroup() {
  rules_ = new TextTree("Extracted Rules");
  rules_->setRootIsDecorated(false);
  rules_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  return Framed(rules_->accessibleName(), rules_);
}

void ExtractionWindow::AddButtons() {
  open_ = AddButton("&Open Database", [this] { OpenDatabase(); });
  extract_ = AddButton("&Extract with APRIORI", [this] { Extract(Extractor::kApriori); });
  extract_->setEnabled(false);
  AddButton("Extraxt with ORNEX", [this] { Extract(Extractor::kOrnex); });
  AddCloseButton();
}

void ExtractionWindow::OpenDatabase() {
  const fs::path path =
      context().dialogs.OpenFile(this, FileKind::kTermDatabase, "Opening target database : ");
  if (path.empty()) {
    ShowMessage(MessageIcon::kError, kCaption, "Select a valid Data Source");
    return;
  }
  WriteFields();
  source_.Open(path);
  std::vector<std::string> names;
  source_.ListTables(names);
  open_->setEnabled(false);
  tables_->clear();
  for (const std::string& name : names) tables_->addItem(ToQt(name));
  tables_->setFocus();
}

void ExtractionWindow::SelectTable() {
  selection_pending_ = false;
  fields_->clear();
  const QList<QListWidgetItem*> selected = tables_->selectedItems();
  if (selected.isEmpty()) return;
  try {
    table_ = FromQt(selected.front()->text());
    std::vector<std::string> names;
    source_.ListItemFields(table_, names);
    for (const std::string& name : names) {
      fields_->addItem(ToQt(name));
      fields_->item(fields_->count() - 1)->setToolTip(ToQt(name));  // long ones are cut short
    }
    OpenTaxonomy(
        context().dialogs.OpenFile(this, FileKind::kTaxonomyDatabase, "Selecting taxonomies database : "));
  } catch (...) {
    // So that a click on the same table asks again.
    tables_->clearSelection();
    tables_->setCurrentItem(nullptr);
    throw;
  }
  extract_->setEnabled(true);
  WriteFields();
}

void ExtractionWindow::OpenTaxonomy(const fs::path& path) {
  // One that is held from an earlier choice could not be opened a second time.
  const auto held = std::find_if(taxonomies_.begin(), taxonomies_.end(),
                                 [&path](const auto& store) { return IsSameFile(store->path(), path); });
  if (held == taxonomies_.end()) {
    taxonomies_.push_back(std::make_unique<TaxonomyStore>(path));
    taxonomy_ = taxonomies_.back().get();
  } else {
    taxonomy_ = held->get();
  }
}

QString ExtractionWindow::NumberText(double value) const {
  return ToQt(SingleText(static_cast<float>(value), context().decimal_sign));
}

void ExtractionWindow::ReadFields() {
  min_support_ = support_edit_->Read(min_support_);
  min_confidence_ = confidence_edit_->Read(min_confidence_);
  generalize_ = generalize_box_->isChecked();
}

void ExtractionWindow::WriteFields() {
  support_edit_->Show(min_support_);
  confidence_edit_->Show(min_confidence_);
  generalize_box_->setChecked(generalize_);
}

// The field of a corrected value shows it when the next extraction begins.
QStringList ExtractionWindow::CorrectThresholds() {
  QStringList captions;
  if (!IsFraction(min_confidence_)) {
    captions.append(kCaption);
    min_confidence_ = kDefaultMinConfidence;
  }
  if (!IsFraction(min_support_)) {
    captions.append(kShortCaption);
    min_support_ = kDefaultMinSupport;
  }
  return captions;
}

void ExtractionWindow::ReportCorrection(const QString& caption) {
  // One text for both fields.
  ShowMessage(MessageIcon::kError, caption,
              "Minimun Confidence has a Invalid value \n It'll take in default value");
}

void ExtractionWindow::LeaveThreshold() {
  ReadFields();
  for (const QString& caption : CorrectThresholds()) {
    // Shown at once, the message would swallow the release of the mouse button, and the click that left the
    // field would be lost.
    RunLater([this, caption] { ReportCorrection(caption); });
  }
}

void ExtractionWindow::Extract(Extractor extractor) {
  if (tables_->selectedItems().isEmpty()) {
    ShowMessage(MessageIcon::kWarning, kShortCaption, "No table selected");
    return;
  }
  // The check box reads the fields too, and so may have brought a refused value back.
  for (const QString& caption : CorrectThresholds()) ReportCorrection(caption);
  QStringList restored;
  try {
    extractor == Extractor::kOrnex ? ExtractWithOrnex() : ExtractWithApriori(restored);
  } catch (...) {
    // Lines of rules that were stored nowhere must not stay in the list.
    rules_->clear();
    ReportRestored(restored);
    throw;
  }
  ReportRestored(restored);
}

ExtractionRequest ExtractionWindow::Request() const {
  return {.table = table_,
          .min_support = min_support_,
          .min_confidence = min_confidence_,
          .decimal_sign = context().decimal_sign};
}

ExtractionHooks ExtractionWindow::Hooks(const QString& suggestion, LineBuffer& lines) {
  ExtractionHooks hooks;
  hooks.choose_output = [this, suggestion] {
    return RulesOutput{ChooseOutput(suggestion), ExistingFile::kReplace};
  };
  hooks.rule_line = [&lines](std::string_view line) { lines.Add(ToQt(line)); };
  hooks.will_not_fit = [this](const TooManyRules& rules) { WarnOfTooMany(rules); };
  return hooks;
}

void ExtractionWindow::ExtractWithApriori(QStringList& restored) {
  ItemsetFileHold hold(ItemsetFileHold::DefaultFolder(), {source_.file_name(), taxonomy_->path()});
  WriteFields();
  LineBuffer lines(*rules_);
  ExtractionHooks hooks = Hooks({}, lines);
  hooks.restored = [&restored](const std::string& term) { restored.append(ToQt(term)); };
  const AprioriReport report = ExtractRules(source_, *taxonomy_, hold,
                                            {.run = Request(), .generalize = generalize_}, hooks, progress());
  lines.Flush();
  ShowEnd(report.run);
}

void ExtractionWindow::ExtractWithOrnex() {
  const ItemsetFileHold hold(ItemsetFileHold::DefaultFolder(), {source_.file_name(), taxonomy_->path()});
  WriteFields();
  LineBuffer lines(*rules_);
  const ClosedReport report = ExtractClosedRules(source_, *taxonomy_, hold, {.run = Request()},
                                                 Hooks("RulesORNEX", lines), progress());
  lines.Flush();
  ShowEnd(report.run);
  ReportItems(report);
}

fs::path ExtractionWindow::ChooseOutput(const QString& suggestion) {
  fs::path path = context().dialogs.SaveFile(
      this, FileKind::kRulesDatabase, "Saving extracted rules :", OverwriteQuestion::kAsked, suggestion);
  if (!path.empty() && path.extension() != ".mdb") {
    ShowMessage(MessageIcon::kWarning, kCaption,
                QString("%1 is not named *.mdb, so the filtering will not take it. Rename it, with the file "
                        "of information beside it, before that.")
                    .arg(PathToQt(path.filename())));
  }
  return path;
}

void ExtractionWindow::WarnOfTooMany(const TooManyRules& rules) {
  QStringList fitting;
  if (const auto confidence = rules.fitting.confidence) {
    fitting.append("a minimum confidence of " + NumberText(*confidence));
  }
  if (const auto support = rules.fitting.support) {
    fitting.append("a minimum support of " + NumberText(*support));
  }
  ShowMessage(MessageIcon::kInformation, kCaption,
              QString("There are %1 rules and a table holds %2: the first %2 will be stored. %3")
                  .arg(rules.found)
                  .arg(rules.stored)
                  .arg(fitting.isEmpty() ? "No higher threshold would make them fit; choose fewer terms."
                                         : "All would have fitted with " + fitting.join(" or ") + '.'));
}

void ExtractionWindow::ShowEnd(const ExtractionReport& report) {
  const auto tell = [this](const char* text, const char* advice) {
    ShowMessage(MessageIcon::kInformation, kCaption, text, advice);
  };
  constexpr const char* kNotExtractable = "No extractable rules";
  switch (report.end) {
    case ExtractionEnd::kEmptyTable:
      return tell(kNotExtractable, "The table is empty.");
    case ExtractionEnd::kNoKnownTerm:
      return tell(kNotExtractable,
                  "No row holds a term that the taxonomy knows. Do the table and the taxonomy belong "
                  "together?");
    case ExtractionEnd::kOnlySingleItems:
      return tell(kNotExtractable,
                  "No two items are frequent together, so no database was made. Try a lower support.");
    case ExtractionEnd::kNoRules:
      return tell("No extracted rules", "None reaches the minimum confidence. Try a lower one.");
    case ExtractionEnd::kRules:
    case ExtractionEnd::kOnlyTooLongRules:  // told with the items
      break;
  }
}

void ExtractionWindow::ReportRestored(const QStringList& terms) {
  if (terms.isEmpty()) return;
  ShowMessage(MessageIcon::kInformation, kCaption,
              QString("Terms of the table had been pruned from the taxonomy, and were brought back with all "
                      "that is below them: %1")
                  .arg(terms.join("; ")));
}

// What became of the items of an extraction with ORNEX.
void ExtractionWindow::ReportItems(const ClosedReport& report) {
  const auto tell = [this](MessageIcon icon, const char* what, const std::vector<std::string>& names) {
    if (!names.empty()) ShowMessage(icon, kCaption, what + ToQt(": " + Listed(names)));
  };
  tell(MessageIcon::kInformation, "Columns without a node in the taxonomy were left out",
       report.unknown_columns);
  tell(MessageIcon::kInformation, "Columns of a node that an earlier column has too were joined with it",
       report.joined_columns);
  tell(MessageIcon::kWarning,
       "Taxonomy does not have these items of TaxonomyOrnex under the same numbers, as they were pruned or "
       "the "
       "tables differ; filters will not name them rightly",
       report.renumbered);
  if (report.too_long_rules > 0) {
    ShowMessage(
        MessageIcon::kInformation, kCaption,
        QString("Rules with more items than a table has room for: %1. They are in the file Rules.dat only.")
            .arg(report.too_long_rules));
  }
}

}  // namespace selvane
