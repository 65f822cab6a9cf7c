#include "app/application.h"

#include <new>

#include "base/error.h"
#include "data/database_error.h"
#include "ui/qt_text.h"

namespace selvane {

namespace {

constexpr const char* kTitle = "Kovril";

QString ReasonOf(const DatabaseError& error) {
  const QString reason = ToQt(error.reason());
  return error.file().empty() ? reason : PathToQt(error.file()) + '\n' + reason;
}

QString DetailsOf(const DatabaseError& error) {
  return error.statement().empty() ? QString() : "The statement that failed:\n" + ToQt(error.statement());
}

}  // namespace

void Application::HandleFailure(QWidget* parent, const std::exception_ptr& failure) {
  const auto show = [this, parent](const QString& text, const QString& details = {}) {
    dialogs_.Message(parent, MessageIcon::kError, kTitle, text, details);
  };
  // From the special to the general: as a mere Error, one of a database would lose its file and its
  // statement.
  try {
    std::rethrow_exception(failure);
  } catch (const EndOfProgram& end) {
    dialogs_.Message(parent, MessageIcon::kError, ToQt(end.title()), ToQt(end.what()));
    leave_(kEndStatus);
  } catch (const SilentAbort&) {
  } catch (const DatabaseError& error) {
    show(ReasonOf(error), DetailsOf(error));
  } catch (const Error& error) {
    show(ToQt(error.what()));
  } catch (const std::bad_alloc&) {
    show("There is not enough memory. Close other programs, or raise the minimum support.");
  } catch (const std::exception& error) {
    show("The command failed.", error.what());
  } catch (...) {
    show("The command failed.");
  }
}

}  // namespace selvane
