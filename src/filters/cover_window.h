// The window of the cover filter.
#pragma once

#include <filesystem>
#include <optional>

#include "filters/cover_filter.h"
#include "filters/rule_filter_window.h"

class QCheckBox;
class QSpinBox;

namespace selvane {

class CoverWindow final : public RuleFilterWindow {
 public:
  CoverWindow(const WindowContext& context, QWidget* parent, const FilterInput& input);

 protected:
  void Filter() override;
  void Reset() override;

 private:
  void ShowCover(const CoverFilter& filter, const CoverFilter::Cover& cover);

  // The rows of the term table, asked for with the first filtering.
  std::optional<ItemRegistry> items_;
  QCheckBox* clustering_;
  QSpinBox* clusters_;
};

}  // namespace selvane
