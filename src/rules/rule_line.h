// How a rule that was just stored is shown.
#pragma once

#include <functional>
#include <string_view>

namespace selvane {

// Receives the display line of each stored rule: both sides rendered, joined by " => ".
using RuleLine = std::function<void(std::string_view line)>;

}  // namespace selvane
