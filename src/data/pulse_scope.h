// How statements that take long let themselves be stopped.
#pragma once

#include <memory>

#include "base/progress.h"

namespace selvane {

class Database;
struct Connection;

// As long as it lives, the engine calls Progress::Pulse some times a second while a statement of the database
// works, however long that takes for one row. What Pulse throws ends the statement and comes out of the call
// that ran it; a change that was under way is undone. Pulse must not use the same database. An inner scope
// takes the place of an outer one until it ends.
class PulseScope {
 public:
  PulseScope(const Database& database, Progress& progress);
  PulseScope(const PulseScope&) = delete;
  PulseScope& operator=(const PulseScope&) = delete;
  ~PulseScope();

 private:
  std::shared_ptr<Connection> connection_;
  Progress* outer_;
};

}  // namespace selvane
