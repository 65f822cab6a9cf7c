#include "cli/cli.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <new>
#include <ostream>

#include "base/error.h"
#include "base/file.h"
#include "base/text.h"
#include "version.h"

namespace selvane {

namespace {

int ParseAndRun(CLI::App& app, std::vector<std::string> arguments, const CliContext& context) {
  std::reverse(arguments.begin(), arguments.end());  // the library takes them from the back
  try {
    app.parse(std::move(arguments));
    return kDone;
  } catch (const CLI::ParseError& error) {
    // Help and version come as errors too, with the status 0. All others are wrong usage here, whatever
    // number the library has for them.
    return app.exit(error, context.out, context.err) == 0 ? kDone : kWrongUsage;
  }
}

void Report(const CliContext& context, std::string_view message) {
  fmt::print(context.err, "selvane-cli: {}\n", message);
}

void AddCommands(CLI::App& app, const CliContext& context) {
  app.set_version_flag("--version", "selvane-cli " SELVANE_VERSION, "Show the version and leave");
  app.require_subcommand(1);
  app.footer("Run a command with --help for its options and an example.");
  AddTaxonomyCommands(app, context);
  AddTermsCommands(app, context);
  AddRulesCommands(app, context);
  AddPmmlCommands(app, context);
  AddTabulateCommand(app, context);
}

}  // namespace

int RunCli(std::vector<std::string> arguments, const CliContext& context) {
  try {
    CLI::App app("Mines association rules over a taxonomy from tagged abstracts.", "selvane-cli");
    AddCommands(app, context);
    const int status = ParseAndRun(app, std::move(arguments), context);
    // A full disk may show only when the last of the output leaves the buffer, and a script must not take
    // half of it for all.
    if (!context.out.flush()) throw FileError("the output cannot be written; is the disk full?");
    return status;
  } catch (const EndOfProgram& end) {
    Report(context, fmt::format("{}: {}", end.title(), end.what()));
    return kEndedByDesign;
  } catch (const Interrupted&) {
    Report(context, "interrupted; nothing half-made was left behind");
  } catch (const SilentAbort&) {
  } catch (const std::bad_alloc&) {
    Report(context, kOutOfMemory);
  } catch (const std::filesystem::filesystem_error& error) {
    Report(context, fmt::format("{}: {}", error.path1().string(), ReasonOf(error.code().value())));
  } catch (const std::exception& error) {
    Report(context, error.what());
  }
  return kFailed;
}

std::string ChooseTable(const std::vector<std::string>& tables, const std::string& given,
                        const std::filesystem::path& database) {
  if (!given.empty()) {
    // The engine takes names for equal that differ in capitals only, so a name may be typed in either way.
    const auto found = std::find_if(tables.begin(), tables.end(), [&given](const std::string& table) {
      return LowerCase(table) == LowerCase(given);
    });
    if (found != tables.end()) return *found;
  } else if (tables.size() == 1) {
    return tables.front();
  }
  if (tables.empty()) throw InputError(fmt::format("{}: the database holds no table", database.string()));
  std::string names;
  for (const std::string& table : tables) names += (names.empty() ? "" : ", ") + table;
  throw InputError(
      given.empty()
          ? fmt::format("{}: choose a table with --table; there are: {}", database.string(), names)
          : fmt::format("{}: there is no table {}; there are: {}", database.string(), given, names));
}

CLI::Option* AddFraction(CLI::App& command, const std::string& name, float& value, const std::string& help) {
  // Not by the library's own conversion, which knows no decimal comma. What is above 0 is asked of the float
  // that the run compares with: a very small number becomes 0 there.
  const auto parse = [name, &value](const std::string& text) {
    const std::optional<double> number = NumberOf(text);
    if (!number || !(static_cast<float>(*number) > 0) || *number > 1) {
      throw CLI::ValidationError(name, "needs a number above 0 and at most 1, such as 0.05; not " + text);
    }
    value = static_cast<float>(*number);
  };
  return command.add_option_function<std::string>(name, parse, help)
      ->type_name("FRACTION")
      ->default_str(SingleText(value));
}

void WriteOut(const CliContext& context, std::string_view text) {
  context.out.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
  if (!context.out) throw FileError("the output cannot be written; is the disk full?");
}

}  // namespace selvane
