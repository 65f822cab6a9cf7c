// The window that people start from: a menu and eight picture buttons, each of which opens a tool window.
#pragma once

#include <QMainWindow>
#include <span>
#include <vector>

#include "ui/window_context.h"

class QMenu;
class QPushButton;

namespace selvane {

class MainWindow final : public QMainWindow {
 public:
  explicit MainWindow(const WindowContext& context);

  // What one command is and shows. Its menu entry and its button send different numbers and do the same.
  struct Command {
    int menu_number;    // 0 when no menu entry sends it
    int button_number;  // 0 when no button sends it
    const char* popup;  // nullptr when it is in no popup of the menu bar
    const char* text;   // of the menu entry
    const char* prompt;
    const char* picture;  // the name of the button's picture
    const char* tooltip;  // of the button
    void (MainWindow::*run)();
  };
  static std::span<const Command> Commands();

  // Runs the command of this number; false when there is none.
  bool Send(int number);
  // What a minimised window shows.
  void PaintMinimised(QPainter& painter) const;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void AddMenus();
  void AddSystemMenu();
  void AddButtons();

  template <typename Window>
  void OpenWindow();
  void CreateTermDatabase();
  void LoadTaxonomies();
  void RestoreTaxonomies();
  void SelectTaxonomies();
  void ExtractRules();
  void FilterRules();
  void ExchangeRules();
  void Tabulate();
  void ShowAbout();
  void Exit();

  const WindowContext& context_;
  std::vector<QPushButton*> buttons_;
};

}  // namespace selvane
