#include "termdb/term_database_window.h"

#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "termdb/term_table.h"
#include "ui/qt_text.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

constexpr const char* kCaption = "Creating Mesh-Terms DB";

QString Described(const TermTableReport& report, const fs::path& database) {
  QStringList columns;
  for (const std::string& column : report.columns) columns.append(ToQt(column));
  return QString("%1 holds the table %2: %3 abstracts, and a column for each of these terms:\n%4")
      .arg(PathToQt(database), ToQt(report.table), QString::number(report.rows), columns.join('\n'));
}

}  // namespace

TermDatabaseWindow::TermDatabaseWindow(const WindowContext& context, QWidget* parent)
    : ToolWindow(context, parent, "term_database", "Kovril: Creating Mesh-Terms DB", {520, 340}),
      summary_(new QPlainTextEdit("No query files are chosen yet.")) {
  summary_->setReadOnly(true);
  summary_->setTabChangesFocus(true);
  summary_->setAccessibleName("Summary");
  content().addWidget(summary_);
  AddButton("Choose Query &Files", [this] { ChooseQueryFiles(); });
  AddButton("&Create DB", [this] { CreateDatabase(); });
  // Both labels have the letter C. It belongs to the task; Escape closes.
  AddCloseButton()->setShortcut({});
}

void TermDatabaseWindow::ChooseQueryFiles() {
  std::vector<fs::path> files =
      context().dialogs.OpenFiles(this, FileKind::kQueryFiles, "Selecting query files : ");
  if (files.empty()) return;
  query_files_ = std::move(files);
  summary_->setPlainText(query_files_.size() == 1
                             ? QString("1 query file is chosen.")
                             : QString("%1 query files are chosen.").arg(query_files_.size()));
  progress().Clear();
}

TermCollection TermDatabaseWindow::ReadQueryFiles(const fs::path& taxonomy) {
  const TaxonomyStore store(taxonomy);
  progress().SetStatus("Reading query files ....");
  const auto skipped = [this](const fs::path& file, const std::string& reason) {
    ShowMessage(MessageIcon::kError, kCaption, ToQt(reason), PathToQt(file));
  };
  return CollectTerms(store, query_files_, skipped, progress());
}

void TermDatabaseWindow::CreateDatabase() {
  if (query_files_.empty()) {
    ShowMessage(MessageIcon::kWarning, kCaption, "No query files selected. Choose them first.");
    return;
  }
  const fs::path taxonomy =
      context().dialogs.OpenFile(this, FileKind::kTaxonomyDatabase, "Selecting taxonomies database : ");
  if (taxonomy.empty()) return;
  try {
    MakeTermDatabase(ReadQueryFiles(taxonomy));
  } catch (const NoTerms&) {
    progress().Clear();
    ShowMessage(MessageIcon::kInformation, kCaption,
                "No query file holds a term of the taxonomy, so no database was made. Check that the files "
                "are tagged and that the taxonomy is not pruned too far.");
  }
}

void TermDatabaseWindow::MakeTermDatabase(const TermCollection& collection) {
  const fs::path output = context().dialogs.SaveFile(
      this, FileKind::kTermDatabase,
      "Saving mesh-terms in abstracts on database : ", OverwriteQuestion::kNotAsked);
  if (output.empty()) {
    progress().Clear();
    return;
  }
  progress().SetStatus("Creating mesh-terms database ....");
  const TermTableReport report =
      WriteTermTable(collection, output, ExistingFile::kRefuse, context().clock, progress());
  progress().SetStatus("Completed!!");
  summary_->setPlainText(Described(report, output));
}

}  // namespace selvane
