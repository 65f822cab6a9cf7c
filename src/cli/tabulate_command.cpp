// selvane-cli tabulate
#include <fmt/ostream.h>

#include <memory>

#include "base/error.h"
#include "base/file.h"
#include "cli/cli.h"
#include "tabulation/tabulation.h"

namespace selvane {

void AddTabulateCommand(CLI::App& app, const CliContext& context) {
  struct Options {
    // The names that the command of the windows has too, so that both read and make the same files.
    std::filesystem::path first = "f1.dat";
    std::filesystem::path second = "f2.dat";
    std::filesystem::path result = "ris.dat";
  };
  CLI::App* command = app.add_subcommand("tabulate", "Compare the entries of two files");
  auto options = std::make_shared<Options>();
  command->add_option("FIRST", options->first, "Words between blanks; f1.dat when left out");
  command->add_option("SECOND", options->second, "The same; f2.dat when left out");
  command->add_option("RESULT", options->result, "Where the counts go; ris.dat when left out");
  command->footer(
      "Counts the distinct entries that are in both files, and those in one of them only.\n"
      "Example:\n  selvane-cli tabulate f1.dat f2.dat ris.dat");
  command->callback([options, &context] {
    CheckIsNoInput(options->result, {options->first, options->second});
    const Tabulation counts = TabulateEntries(options->first, options->second, options->result);
    fmt::print(context.err, "{} in both, {} only in {}, {} only in {}\n", counts.in_both,
               counts.only_in_first, options->first.string(), counts.only_in_second,
               options->second.string());
  });
}

}  // namespace selvane
