#include "taxonomy/mesh_collection.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

#include "taxonomy/position_code.h"

namespace selvane {

namespace {

constexpr std::size_t kTermWidth = 127;
constexpr std::size_t kIdWidth = 100;  // so that a part of a name has room before it
constexpr std::string_view kCheckTags = "T";

struct Category {
  std::string_view letter;
  std::string_view name;
};

// MeSH files do not name their categories. Where a heading has the usual name, we have words of our own: one
// term for both would make a row of the heading one of the whole category.
constexpr std::array kCategories = std::to_array<Category>({
    {"A", "Anatomical Structures"},
    {"B", "Organisms"},
    {"C", "Diseases"},
    {"D", "Chemicals and Drugs"},
    {"E", "Analytical, Diagnostic and Therapeutic Techniques, and Equipment"},
    {"F", "Psychiatry and Psychology"},
    {"G", "Phenomena and Processes"},
    {"H", "Disciplines and Occupations"},
    {"I", "Anthropology, Education, Sociology, and Social Phenomena"},
    {"J", "Technology, Industry, Agriculture"},
    {"K", "Arts and Humanities"},
    {"L", "Information and Communication"},
    {"M", "Named Groups"},
    {"N", "Health Care"},
    {kCheckTags, "Check Tags"},
    {"V", "Publication Characteristics"},
    {"Z", "Geographicals"},
});

bool IsLongerThan(std::string_view text, std::size_t characters) {
  return text.size() > characters && CharacterCount(text) > characters;
}

// The first characters of a text, so many of them.
std::string_view FirstCharacters(std::string_view text, std::size_t characters) {
  std::size_t end = 0;
  for (; end < text.size(); ++end) {
    const bool begins = (static_cast<unsigned char>(text[end]) & 0xC0U) != 0x80U;
    if (begins && characters-- == 0) break;
  }
  return text.substr(0, end);
}

// Line ends and other control characters within a text become blanks.
void Clean(std::string& text) {
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  text = std::string(Trimmed(text));
}

// A letter and groups of digits, joined by dots: what a position code can be made of. Letters in the groups
// would be taken for categories when branches are pruned by the texts of their codes.
bool IsTreeNumber(std::string_view number) {
  if (number.size() < 2 || number.size() >= kTermWidth || number[0] < 'A' || number[0] > 'Z') return false;
  if (number.find_first_not_of("0123456789.", 1) != std::string_view::npos) return false;
  return number[1] != '.' && number.back() != '.' && number.find("..") == std::string_view::npos;
}

template <typename Record>
void SortById(std::vector<Record>& records) {
  std::stable_sort(records.begin(), records.end(),
                   [](const Record& a, const Record& b) { return a.id < b.id; });
}

}  // namespace

void MeshCollection::OnProblem(std::string_view kind, std::string_view example) {
  auto problem = problems_.find(kind);
  if (problem == problems_.end()) {
    problem =
        problems_.emplace(kind, MeshProblem{0, std::string(FirstCharacters(example, kTermWidth))}).first;
  }
  ++problem->second.count;
}

void MeshCollection::OnHeading(MeshHeading&& heading) {
  Clean(heading.id);
  Clean(heading.name);
  if (heading.id.empty() || heading.name.empty() || IsLongerThan(heading.id, kIdWidth)) {
    return OnProblem("records without a name or an identifier", heading.name + heading.id);
  }
  // The layout of the tree has a line for each position, so the same heading comes as often as it has
  // positions.
  const auto [found, is_new] = by_id_.try_emplace(heading.id, headings_.size());
  if (is_new) return headings_.push_back(std::move(heading));
  MeshHeading& known = headings_[found->second];
  if (known.name != heading.name) OnProblem("identifiers of two names, of which the first stays", heading.id);
  std::move(heading.tree_numbers.begin(), heading.tree_numbers.end(), std::back_inserter(known.tree_numbers));
  std::move(heading.entry_terms.begin(), heading.entry_terms.end(), std::back_inserter(known.entry_terms));
}

void MeshCollection::OnSupplementary(MeshSupplementary&& record) {
  Clean(record.id);
  Clean(record.name);
  if (record.id.empty() || record.name.empty() || IsLongerThan(record.id, kIdWidth)) {
    return OnProblem("records without a name or an identifier", record.name + record.id);
  }
  record.name = FirstCharacters(record.name, kHeadingTextWidth);
  supplementary_.push_back(std::move(record));
}

// A name that no column can hold is cut: leaving the heading out would leave what stands below it without a
// name above. The identifier tells it from others that begin so, and the whole name still finds it.
void MeshCollection::SetName(MeshHeading& heading) {
  if (IsLongerThan(heading.name, kTermWidth)) {
    OnProblem("names above 127 characters, cut and with their identifier behind them", heading.id);
    heading.entry_terms.push_back(heading.name);
    heading.name = FirstCharacters(heading.name, kHeadingTextWidth);
    const std::size_t room = kTermWidth - std::min(CharacterCount(heading.id) + 1, kTermWidth);
    terms_.push_back(fmt::format("{} {}", FirstCharacters(heading.name, room), heading.id));
  } else {
    terms_.push_back(heading.name);
  }
  ReplaceQuotes(terms_.back());
}

void MeshCollection::SetEntryTerms(MeshHeading& heading) {
  std::vector<std::string>& texts = heading.entry_terms;
  for (std::string& text : texts) Clean(text);
  std::sort(texts.begin(), texts.end());
  texts.erase(std::unique(texts.begin(), texts.end()), texts.end());
  std::erase_if(texts, [&](const std::string& text) {
    const bool is_too_long = IsLongerThan(text, kHeadingTextWidth);
    if (is_too_long) OnProblem("entry terms above 1,000 characters", heading.id);
    // The name itself finds the heading anyway, unless it was cut.
    return is_too_long || text.empty() || (text == heading.name && !IsLongerThan(text, kTermWidth));
  });
}

// In the order of the identifiers, so numbers stay when a file with other records is loaded for the most.
void MeshCollection::AddCheckTag(std::size_t heading, std::vector<Position>& positions) {
  if (!check_tags_) {
    return OnProblem("headings without a tree number left out; a category of check tags takes them",
                     headings_[heading].name);
  }
  positions.push_back({fmt::format("{}.{:03}", kCheckTags, ++check_tag_count_), heading});
}

std::vector<MeshCollection::Position> MeshCollection::Positions() {
  std::vector<Position> positions;
  for (std::size_t i = 0; i < headings_.size(); ++i) {
    for (const std::string& number : headings_[i].tree_numbers) {
      if (IsTreeNumber(number)) {
        positions.push_back({PositionCode(number), i});
      } else {
        OnProblem("tree numbers that are none", fmt::format("{} of {}", number, headings_[i].id));
      }
    }
    if (headings_[i].tree_numbers.empty()) AddCheckTag(i, positions);
  }
  // Brings the positions of a category together, so that each category is named once, before the first of
  // them.
  std::sort(positions.begin(), positions.end(), [](const Position& a, const Position& b) {
    return std::pair(std::string_view(a.code), a.heading) < std::pair(std::string_view(b.code), b.heading);
  });
  DropClaimedTwice(positions);
  return positions;
}

void MeshCollection::DropClaimedTwice(std::vector<Position>& positions) {
  const Position* last = nullptr;
  for (Position& position : positions) {
    if (last == nullptr || position.code != last->code) {
      last = &position;
      continue;
    }
    if (position.heading != last->heading) {
      OnProblem("positions that several headings claim, of which the first has it",
                fmt::format("{} of {} and {}", TreeNumber(position.code), headings_[last->heading].id,
                            headings_[position.heading].id));
    }
    // Marked here and erased in one go; erasing one by one would be quadratic.
    position.code.clear();
  }
  std::erase_if(positions, [](const Position& position) { return position.code.empty(); });
}

std::string MeshCollection::CategoryName(std::string_view letter) const {
  const auto known = std::find_if(kCategories.begin(), kCategories.end(),
                                  [letter](const Category& category) { return category.letter == letter; });
  std::string name =
      known == kCategories.end() ? fmt::format("Category {}", letter) : std::string(known->name);
  if (by_name_.contains(name)) name += " (category)";
  return name;
}

SourceRows MeshCollection::MakeRows() {
  // Each layout has an order of its own. In this one all of them give the same rows, and so the same numbers.
  SortById(headings_);
  SortById(supplementary_);
  // The places in it were those before the sorting.
  by_id_.clear();
  for (std::size_t i = 0; i < headings_.size(); ++i) {
    SetName(headings_[i]);
    SetEntryTerms(headings_[i]);
    by_id_.emplace(headings_[i].id, i);
    by_name_.emplace(headings_[i].name, i);
  }
  has_position_.assign(headings_.size(), false);
  SourceRows rows;
  std::string_view category;
  const std::vector<Position> positions = Positions();
  for (const Position& position : positions) {
    if (CategoryOf(position.code) != category) {
      category = CategoryOf(position.code);
      rows.Add(std::string(category), CategoryName(category));
      ++counts_.categories;
    }
    rows.Add(position.code, terms_[position.heading]);
    has_position_[position.heading] = true;
  }
  counts_.positions = static_cast<long>(positions.size());
  counts_.headings = std::count(has_position_.begin(), has_position_.end(), true);
  return rows;
}

// By identifier, else by name, else by name with a qualifier behind it.
std::optional<std::size_t> MeshCollection::FindHeading(std::string_view named) const {
  if (const auto found = by_id_.find(named); found != by_id_.end()) return found->second;
  for (const std::string_view name : {named, Trimmed(named.substr(0, named.rfind('/')))}) {
    if (const auto found = by_name_.find(name); found != by_name_.end()) return found->second;
  }
  return std::nullopt;
}

// The identifiers of those that the taxonomy has, each once. Layouts mark the important ones by a star.
std::vector<std::string_view> MeshCollection::HeadingsOf(const MeshSupplementary& record) {
  std::vector<std::string_view> ids;
  for (std::string_view named : record.headings) {
    if (named.starts_with('*')) named.remove_prefix(1);
    const std::optional<std::size_t> found = FindHeading(named);
    if (!found || !has_position_[*found]) {
      OnProblem("headings that supplementary records map to and the taxonomy lacks",
                fmt::format("{} of {}", named, record.id));
      continue;
    }
    const std::string_view id = headings_[*found].id;
    if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(id);
  }
  return ids;
}

void MeshCollection::FillTables(HeadingWriter& writer) {
  for (std::size_t i = 0; i < headings_.size(); ++i) {
    const MeshHeading& heading = headings_[i];
    if (!has_position_[i]) continue;
    writer.AddHeading({heading.id, terms_[i], heading.name, heading.descriptor_class});
    for (const std::string& text : heading.entry_terms) writer.AddEntryTerm(heading.id, text);
    counts_.entry_terms += static_cast<long>(heading.entry_terms.size());
  }
  std::string_view last;
  for (const MeshSupplementary& record : supplementary_) {
    if (record.id == last) {
      OnProblem("supplementary records that stand twice, of which the first stays", record.id);
      continue;
    }
    last = record.id;
    const std::vector<std::string_view> ids = HeadingsOf(record);
    for (const std::string_view id : ids) writer.AddSupplementary(record.id, record.name, id);
    if (ids.empty()) writer.AddSupplementary(record.id, record.name, {});
    ++counts_.supplementary;
    if (!ids.empty()) ++counts_.mapped;
  }
}

}  // namespace selvane
