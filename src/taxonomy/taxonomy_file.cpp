#include "taxonomy/taxonomy_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>

#include "base/byte_source.h"
#include "base/error.h"
#include "base/text.h"
#include "taxonomy/position_code.h"

namespace selvane {

namespace {

constexpr std::size_t kTextWidth = 127;

// The next text between double quotes, searched from `at`; `at` moves behind it. False when there is none.
bool NextQuoted(std::string_view line, std::size_t& at, std::string_view& value) {
  const std::size_t open = line.find('"', at);
  const std::size_t close = open == std::string_view::npos ? open : line.find('"', open + 1);
  if (close == std::string_view::npos) return false;
  value = line.substr(open + 1, close - open - 1);
  at = close + 1;
  return true;
}

void CheckWidth(std::string_view value, std::string_view what, std::string_view name, long number) {
  if (value.size() <= kTextWidth || CharacterCount(value) <= kTextWidth) return;
  throw InputError(fmt::format("{}: line {}: the {} is longer than {} characters; shorten it and load again",
                               name, number, what, kTextWidth));
}

void CheckLine(const TaxonomyLine& line, std::string_view name, long number) {
  CheckWidth(line.term, "canonical value", name, number);
  const bool odd_letter = std::any_of(line.codes.begin(), line.codes.end(), [](const std::string& code) {
    return static_cast<unsigned char>(code[0]) >= 0x80;
  });
  if (odd_letter || line.tree.find('\'') != std::string_view::npos) {
    throw InputError(fmt::format(
        "{}: line {}: the tree value holds an apostrophe or an odd letter; correct it and load again", name,
        number));
  }
  for (const std::string& code : line.codes) CheckWidth(code, "position code", name, number);
}

// Texts in order of appearance, each once. Looked up by hash: a damaged file may have another type in each
// line.
class DistinctTexts {
 public:
  explicit DistinctTexts(std::vector<std::string>& list) : list_(list) {}
  // The value must outlive this.
  void Add(std::string_view value) {
    if (seen_.insert(value).second) list_.emplace_back(value);
  }

 private:
  std::vector<std::string>& list_;
  std::unordered_set<std::string_view> seen_;
};

}  // namespace

void CheckTaxonomyFileName(const std::filesystem::path& path) {
  // The whole path is looked at, so a name without a dot passes in a folder named like tax.xml.
  const std::string name = LowerCase(path.string());
  const std::size_t dot = name.rfind('.');
  if (dot == std::string::npos || name.find("xml", dot) == std::string::npos) {
    throw EndOfProgram("Loading Taxonomy", "Selected file is not xml file");
  }
}

void ParseTaxonomyText(std::string text, std::string_view name, TaxonomyFile& file, Progress& progress) {
  file = TaxonomyFile{};
  file.text = DecodeInput(std::move(text));
  DistinctTexts types(file.types);
  DistinctTexts categories(file.categories);
  HundredthSteps steps(progress, file.text.size());
  std::string_view rest = file.text;
  for (long number = 1; !rest.empty(); ++number) {
    const std::string_view line = NextLine(rest);
    steps.Reached(file.text.size() - rest.size());
    // Plain words anywhere in the line, not attributes: files are taken that no XML reader would take.
    const std::size_t canonical = line.find("canonical");
    const bool has_canonical = canonical != std::string_view::npos;
    const bool has_others =
        line.find("type") != std::string_view::npos && line.find("tree") != std::string_view::npos;
    if (!has_canonical || !has_others) {
      // A line with none of the words is the file's frame; one with some may be a node that was misspelt.
      if (has_canonical || has_others) file.passed_over.push_back(number);
      continue;
    }
    TaxonomyLine node;
    std::size_t at = canonical;
    if (!NextQuoted(line, at, node.term) || !NextQuoted(line, at, node.type) ||
        !NextQuoted(line, at, node.tree)) {
      // A comment or a declaration may hold the three words without giving them values.
      const auto behind = Trimmed(line.substr(canonical + std::string_view("canonical").size()));
      if (!behind.starts_with('=')) {
        file.passed_over.push_back(number);
        continue;
      }
      throw InputError(
          fmt::format("{}: line {}: canonical, type and tree must stand in this order, each with its "
                      "value in double quotes; correct the line and load again",
                      name, number));
    }
    node.codes = PositionCodes(node.tree);
    CheckLine(node, name, number);
    types.Add(node.type);
    categories.Add(CategoryOf(node.tree));
    file.lines.push_back(std::move(node));
  }
  // Both lists lose what came last, as they always have; they tell what a file is about and decide nothing.
  if (!file.types.empty()) file.types.pop_back();
  if (!file.categories.empty()) file.categories.pop_back();
}

void ReadTaxonomyFile(const std::filesystem::path& path, TaxonomyFile& file, Progress& progress) {
  ByteSource source(path);
  std::string text;
  for (std::string_view piece = source.Next(); !piece.empty(); piece = source.Next()) text += piece;
  ParseTaxonomyText(std::move(text), path.string(), file, progress);
}

}  // namespace selvane
