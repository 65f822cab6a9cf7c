// The window that makes a term database of tagged abstracts.
#pragma once

#include <filesystem>
#include <vector>

#include "ui/tool_window.h"

class QPlainTextEdit;

namespace selvane {

struct TermCollection;

class TermDatabaseWindow final : public ToolWindow {
 public:
  explicit TermDatabaseWindow(const WindowContext& context, QWidget* parent = nullptr);

 private:
  void ChooseQueryFiles();
  void CreateDatabase();
  void MakeTermDatabase(const TermCollection& collection);
  TermCollection ReadQueryFiles(const std::filesystem::path& taxonomy);

  std::vector<std::filesystem::path> query_files_;
  QPlainTextEdit* summary_;
};

}  // namespace selvane
