// The local time, as table names show it.
#pragma once

#include <ctime>

namespace selvane {

// The seam to the system's clock: tests pass their own.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual std::tm LocalTime() const = 0;
};

class SystemClock final : public Clock {
 public:
  std::tm LocalTime() const override;
};

}  // namespace selvane
