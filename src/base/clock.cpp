#include "base/clock.h"

namespace selvane {

std::tm SystemClock::LocalTime() const {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return local;
}

}  // namespace selvane
