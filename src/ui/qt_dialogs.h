// Qt's own dialogs.
#pragma once

#include <QSet>
#include <QSettings>

#include "ui/dialogs.h"

class QFileDialog;

namespace selvane {

class QtDialogs final : public Dialogs {
 public:
  // Last folders are kept in `settings`. When `start_folder` is not empty, dialogs of a kind not used yet in
  // this run of the program start there instead.
  QtDialogs(QSettings& settings, QString start_folder);

  std::filesystem::path OpenFile(QWidget* parent, FileKind kind, const QString& title) override;
  std::vector<std::filesystem::path> OpenFiles(QWidget* parent, FileKind kind, const QString& title) override;
  std::filesystem::path SaveFile(QWidget* parent, FileKind kind, const QString& title,
                                 OverwriteQuestion question, const QString& suggestion) override;
  bool Ask(QWidget* parent, const QString& title, const QString& text) override;
  void Message(QWidget* parent, MessageIcon icon, const QString& title, const QString& text,
               const QString& details) override;

 private:
  QStringList Ask(QFileDialog& dialog, FileKind kind);

  QSettings& settings_;
  QString start_folder_;
  QSet<QString> kinds_used_;
};

}  // namespace selvane
