// selvane-cli: the workbench's operations without a display.
#pragma once

#include <CLI/App.hpp>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "base/clock.h"
#include "base/progress.h"

namespace selvane {

// What a run of the command line takes from outside.
struct CliContext {
  std::ostream& out;  // data only
  std::ostream& err;  // messages and the summary line
  Progress& progress;
  const Clock& clock;
  char decimal_sign = '.';
};

// Exit statuses.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kWrongUsage = 2;
inline constexpr int kEndedByDesign = 255;

// What is said when there is no memory.
inline constexpr std::string_view kOutOfMemory =
    "out of memory; close other programs, or raise the minimum support";

// Parses the arguments (without the program's name), runs the command and returns the exit status. Every
// failure is a message on `err`; thrown is only std::bad_alloc, when there is no memory for the message.
int RunCli(std::vector<std::string> arguments, const CliContext& context);

// Each adds its group of commands. What a command needs lives as long as the returned app's callbacks.
void AddTaxonomyCommands(CLI::App& app, const CliContext& context);
void AddTermsCommands(CLI::App& app, const CliContext& context);
void AddRulesCommands(CLI::App& app, const CliContext& context);
void AddPmmlCommands(CLI::App& app, const CliContext& context);
void AddTabulateCommand(CLI::App& app, const CliContext& context);
// Adds `find` to the taxonomy commands.
void AddTaxonomyFindCommand(CLI::App& taxonomy, const CliContext& context);
// Adds `extract` to the rules commands.
void AddExtractCommand(CLI::App& rules, const CliContext& context);
// Adds `filter` to the rules commands.
void AddFilterCommands(CLI::App& rules, const CliContext& context);
// Add `documents` to the terms and to the rules commands.
void AddTermsDocuments(CLI::App& terms, const CliContext& context);
void AddRulesDocuments(CLI::App& rules, const CliContext& context);

// Helpers of the commands.

// The table that the user named, or the only one there is. Throws InputError with the names to choose from.
std::string ChooseTable(const std::vector<std::string>& tables, const std::string& given,
                        const std::filesystem::path& database);

// An option whose value is a fraction in (0, 1], with a point or a comma.
CLI::Option* AddFraction(CLI::App& command, const std::string& name, float& value, const std::string& help);

// An option whose value is one of some words, which its help names.
template <typename Value>
void AddChoice(CLI::App& command, const std::string& name, Value& value,
               const std::vector<std::pair<std::string, Value>>& words, const std::string& help) {
  std::vector<std::string> texts;
  texts.reserve(words.size());
  for (const auto& [text, meaning] : words) texts.push_back(text);
  // Not CLI::CheckedTransformer: it would take the enumerator's number too, and show it in the help.
  const auto choose = [words, &value](const std::string& word) {
    for (const auto& [text, meaning] : words) {
      if (text == word) value = meaning;
    }
  };
  command.add_option_function<std::string>(name, choose, help)->check(CLI::IsMember(texts));
}

// Writes text to the output and checks that it got there. Throws FileError.
void WriteOut(const CliContext& context, std::string_view text);

}  // namespace selvane
