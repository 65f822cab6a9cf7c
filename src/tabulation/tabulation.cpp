#include "tabulation/tabulation.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_set>

#include "base/file.h"
#include "base/new_file.h"

namespace selvane {

namespace {

// Views into the texts of the files, which stay in memory as long as they are compared.
using Entries = std::unordered_set<std::string_view>;

Entries EntriesOf(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n\f\v";
  Entries entries;
  for (std::size_t begin = text.find_first_not_of(kBlanks); begin != std::string_view::npos;) {
    const std::size_t end = std::min(text.find_first_of(kBlanks, begin), text.size());
    entries.insert(text.substr(begin, end - begin));
    begin = text.find_first_not_of(kBlanks, end);
  }
  return entries;
}

}  // namespace

Tabulation TabulateEntries(const std::filesystem::path& first, const std::filesystem::path& second,
                           const std::filesystem::path& result) {
  const std::string first_text = ReadFile(first);
  const std::string second_text = ReadFile(second);
  const Entries first_entries = EntriesOf(first_text);
  const Entries second_entries = EntriesOf(second_text);
  Tabulation counts;
  for (const std::string_view entry : first_entries) counts.in_both += second_entries.count(entry);
  counts.only_in_first = first_entries.size() - counts.in_both;
  counts.only_in_second = second_entries.size() - counts.in_both;
  NewFile file(result, ExistingFile::kReplace);
  OutputFile output(file.temporary(), file.path());
  output.Write(fmt::format("both {}\nfirst {}\nsecond {}\n", counts.in_both, counts.only_in_first,
                           counts.only_in_second));
  output.Close();
  file.Commit();
  return counts;
}

}  // namespace selvane
