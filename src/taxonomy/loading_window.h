// The window that makes a taxonomy database of a taxonomy file.
#pragma once

#include "ui/tool_window.h"

namespace selvane {

class LoadingWindow final : public ToolWindow {
 public:
  explicit LoadingWindow(const WindowContext& context, QWidget* parent = nullptr);

 private:
  void Execute();
};

}  // namespace selvane
