#include "ui/qt_dialogs.h"

#include <QFileDialog>
#include <QGridLayout>
#include <QMessageBox>

#include "base/new_file.h"
#include "ui/qt_text.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

constexpr int kMessageWidth = 360;

struct KindTraits {
  QString name;  // under which the last folder is kept
  QString filter;
  QString suffix;  // of a new file whose name is typed without one
};

KindTraits TraitsOf(FileKind kind) {
  switch (kind) {
    case FileKind::kTaxonomyFile:
      return {"taxonomy_file", "Taxonomy files (*.xml *.XML)", "xml"};
    case FileKind::kTaxonomyDatabase:  // taxDB: the name used when none was chosen
      return {"taxonomy_database", "Taxonomy databases (*.mdb *.MDB taxDB)", "mdb"};
    case FileKind::kQueryFiles:
      return {"query_files", "Tagged abstracts (*.txt *.TXT)", "txt"};
    case FileKind::kTermDatabase:
      return {"term_database", "Term databases (*.mdb *.MDB)", "mdb"};
    case FileKind::kRulesDatabase:
      return {"rules_database", "Rules databases (*.mdb)", "mdb"};
    case FileKind::kModelFile:  // the suffix is added by the export itself
      return {"model_file", "Association models (*.xml *.XML *.pmml)", ""};
  }
  return {};
}

QMessageBox::Icon IconOf(MessageIcon icon) {
  switch (icon) {
    case MessageIcon::kInformation:
      return QMessageBox::Information;
    case MessageIcon::kWarning:
      return QMessageBox::Warning;
    case MessageIcon::kError:
      return QMessageBox::Critical;
  }
  return QMessageBox::NoIcon;
}

}  // namespace

QtDialogs::QtDialogs(QSettings& settings, QString start_folder)
    : settings_(settings), start_folder_(std::move(start_folder)) {}

QStringList QtDialogs::Ask(QFileDialog& dialog, FileKind kind) {
  const KindTraits traits = TraitsOf(kind);
  const QString key = "folders/" + traits.name;
  QString folder = settings_.value(key).toString();
  if (QFileInfo(start_folder_).isDir() && !kinds_used_.contains(traits.name)) folder = start_folder_;
  if (QFileInfo(folder).isDir()) dialog.setDirectory(folder);
  dialog.setNameFilters({traits.filter, "All files (*)"});
  // Not for opening: the file may well have a name without a suffix.
  if (dialog.acceptMode() == QFileDialog::AcceptSave) dialog.setDefaultSuffix(traits.suffix);
  if (dialog.exec() != QDialog::Accepted) return {};
  QStringList chosen = dialog.selectedFiles();
  // The folder of the file, which may have been typed with another one than the dialog shows.
  if (!chosen.isEmpty()) settings_.setValue(key, QFileInfo(chosen.constFirst()).absolutePath());
  kinds_used_.insert(traits.name);
  return chosen;
}

fs::path QtDialogs::OpenFile(QWidget* parent, FileKind kind, const QString& title) {
  QFileDialog dialog(parent, title);
  dialog.setFileMode(QFileDialog::ExistingFile);
  const QStringList chosen = Ask(dialog, kind);
  return chosen.isEmpty() ? fs::path() : PathFromQt(chosen.front());
}

std::vector<fs::path> QtDialogs::OpenFiles(QWidget* parent, FileKind kind, const QString& title) {
  QFileDialog dialog(parent, title);
  dialog.setFileMode(QFileDialog::ExistingFiles);
  std::vector<fs::path> files;
  for (const QString& name : Ask(dialog, kind)) files.push_back(PathFromQt(name));
  return files;
}

fs::path QtDialogs::SaveFile(QWidget* parent, FileKind kind, const QString& title, OverwriteQuestion question,
                             const QString& suggestion) {
  QFileDialog dialog(parent, title);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setFileMode(QFileDialog::AnyFile);
  dialog.setOption(QFileDialog::DontConfirmOverwrite, question == OverwriteQuestion::kNotAsked);
  // A native dialog would ask about the name as typed, before the suffix is added to it.
  dialog.setOption(QFileDialog::DontUseNativeDialog, question == OverwriteQuestion::kAsked);
  if (!suggestion.isEmpty()) dialog.selectFile(suggestion);
  const QStringList chosen = Ask(dialog, kind);
  return chosen.isEmpty() ? fs::path() : PathFromQt(chosen.front());
}

bool QtDialogs::Ask(QWidget* parent, const QString& title, const QString& text) {
  QMessageBox box(QMessageBox::Question, title, text, QMessageBox::Yes | QMessageBox::No, parent);
  box.setTextFormat(Qt::PlainText);
  box.setDefaultButton(QMessageBox::No);
  return box.exec() == QMessageBox::Yes;
}

void QtDialogs::Message(QWidget* parent, MessageIcon icon, const QString& title, const QString& text,
                        const QString& details) {
  QMessageBox box(IconOf(icon), title, text, QMessageBox::Ok, parent);
  box.setTextFormat(Qt::PlainText);
  box.setDetailedText(details);
  // Wide enough for its title, however short the text.
  if (auto* const grid = qobject_cast<QGridLayout*>(box.layout())) {
    grid->addItem(new QSpacerItem(kMessageWidth, 0), grid->rowCount(), 0, 1, grid->columnCount());
  }
  box.exec();
}

}  // namespace selvane
