// The window that undoes every pruning of a taxonomy.
#pragma once

#include "ui/tool_window.h"

namespace selvane {

class RestoringWindow final : public ToolWindow {
 public:
  explicit RestoringWindow(const WindowContext& context, QWidget* parent = nullptr);

 private:
  void Execute();
};

}  // namespace selvane
