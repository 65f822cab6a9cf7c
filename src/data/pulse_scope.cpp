#include "data/pulse_scope.h"

#include <sqlite3.h>

#include <utility>

#include "data/database.h"
#include "data/statement.h"

namespace selvane {

namespace {

// So few that even steps over long values come by often; the clock keeps Pulse from being called as often.
constexpr int kStepsBetween = 1000;
constexpr std::chrono::milliseconds kBetween(20);

// Nothing may be thrown through the engine: it is kept, and thrown when the engine has ended the statement.
int Ask(void* context) noexcept {
  auto& connection = *static_cast<Connection*>(context);
  const auto now = std::chrono::steady_clock::now();
  if (now - connection.last_pulse < kBetween) return 0;
  connection.last_pulse = now;
  try {
    connection.progress->Pulse();
    return 0;
  } catch (...) {
    connection.stopped_by = std::current_exception();
    return 1;
  }
}

void SetProgress(Connection& connection, Progress* progress) {
  connection.progress = progress;
  sqlite3_progress_handler(connection.handle.get(), kStepsBetween, progress != nullptr ? Ask : nullptr,
                           &connection);
}

}  // namespace

PulseScope::PulseScope(const Database& database, Progress& progress)
    : connection_(database.connection()), outer_(connection_->progress) {
  SetProgress(*connection_, &progress);
}

PulseScope::~PulseScope() {
  SetProgress(*connection_, outer_);
}

}  // namespace selvane
