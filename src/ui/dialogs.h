// ui/: what all windows share. Windows show dialogs through the one door of this header, report to a progress
// bar and leave failures to the application; so each can be driven by a test.
#pragma once

#include <QString>
#include <filesystem>
#include <vector>

class QWidget;

namespace selvane {

enum class MessageIcon { kInformation, kWarning, kError };

// What a file dialog is for. Each kind has its file filter and remembers its last folder.
enum class FileKind {
  kTaxonomyFile,
  kTaxonomyDatabase,
  kQueryFiles,
  kTermDatabase,
  kRulesDatabase,
  kModelFile
};

// Whether a save dialog asks before an existing file is taken. Where it does not, the file stays as it is and
// making the new one fails.
enum class OverwriteQuestion { kNotAsked, kAsked };

// The seam to the person at the screen: tests answer from a script. A path is empty, and a list too, when the
// dialog was cancelled.
class Dialogs {
 public:
  virtual ~Dialogs() = default;
  virtual std::filesystem::path OpenFile(QWidget* parent, FileKind kind, const QString& title) = 0;
  virtual std::vector<std::filesystem::path> OpenFiles(QWidget* parent, FileKind kind,
                                                       const QString& title) = 0;
  // `suggestion` is the name that stands in the dialog at first, without its suffix.
  virtual std::filesystem::path SaveFile(QWidget* parent, FileKind kind, const QString& title,
                                         OverwriteQuestion question, const QString& suggestion = {}) = 0;
  // A question that is answered by yes or no; false for no, which Escape says too.
  virtual bool Ask(QWidget* parent, const QString& title, const QString& text) = 0;
  // Waits until the message is closed. `details` are shown on demand only; an empty text has none.
  virtual void Message(QWidget* parent, MessageIcon icon, const QString& title, const QString& text,
                       const QString& details = {}) = 0;
};

}  // namespace selvane
