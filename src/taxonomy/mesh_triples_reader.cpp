// MeSH as N-Triples: headings, concepts and terms are subjects of their own, in any order.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "base/line_source.h"
#include "base/text.h"
#include "taxonomy/mesh_readers.h"

namespace selvane {

namespace {

enum class Kind { kNone, kHeading, kSupplementary };

// A descriptor, a supplementary record, a concept or a term, by what points to and from it.
struct Subject {
  Kind kind = Kind::kNone;
  int descriptor_class = 0;
  bool is_inactive = false;
  std::string label;
  std::vector<std::string> tree_numbers;
  std::vector<std::string> parts;   // of a heading its concepts and terms, of a concept its terms
  std::vector<std::string> texts;   // of a term
  std::vector<std::string> mapped;  // of a supplementary record its headings
};

struct Triple {
  std::string_view subject;
  std::string_view predicate;
  std::string_view object;  // behind the last / or # of a name, between the quotes of a literal
  bool is_literal = false;
  bool is_foreign = false;  // a literal in another language than English
};

// What stands behind the last / or # of a name in angle brackets.
std::string_view LastPart(std::string_view name) {
  return name.substr(name.find_last_of("/#") + 1);
}

// The name in angle brackets at the beginning of the line, which moves behind it.
bool NextName(std::string_view& line, std::string_view& name) {
  const std::size_t end = line.find('>');
  if (!line.starts_with('<') || end == std::string_view::npos) return false;
  name = LastPart(line.substr(1, end - 1));
  line = Trimmed(line.substr(end + 1));
  return true;
}

bool ParseTriple(std::string_view line, Triple& triple) {
  line = Trimmed(line);
  if (!line.ends_with('.')) return false;
  line = Trimmed(line.substr(0, line.size() - 1));
  if (!NextName(line, triple.subject) || !NextName(line, triple.predicate)) return false;
  triple.is_literal = line.starts_with('"');
  if (!triple.is_literal) return NextName(line, triple.object);
  const std::size_t end = line.rfind('"');
  if (end == 0) return false;
  triple.object = line.substr(1, end - 1);
  const std::string_view tag = line.substr(end + 1);
  triple.is_foreign = tag.starts_with('@') && !tag.starts_with("@en");
  return true;
}

void AppendUtf8(std::uint32_t character, std::string& text) {
  constexpr std::uint32_t kLast = 0x10FFFF;
  const bool is_half = character >= 0xD800 && character <= 0xDFFF;
  if (character > kLast || is_half) character = 0xFFFD;
  const auto put = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
  if (character < 0x80) return put(character);
  if (character < 0x800) {
    put(0xC0U | (character >> 6U));
  } else {
    if (character < 0x10000) {
      put(0xE0U | (character >> 12U));
    } else {
      put(0xF0U | (character >> 18U));
      put(0x80U | ((character >> 12U) & 0x3FU));
    }
    put(0x80U | ((character >> 6U) & 0x3FU));
  }
  put(0x80U | (character & 0x3FU));
}

// The text of a literal: \" and the like, \u00E9 and \U0001F600.
std::string Unescaped(std::string_view literal) {
  std::string text;
  for (std::size_t at = literal.find('\\'); at != std::string_view::npos; at = literal.find('\\')) {
    text += literal.substr(0, at);
    literal.remove_prefix(std::min(at + 2, literal.size()));
    const char kind = literal.data()[-1];
    const std::size_t digits = kind == 'u' ? 4 : kind == 'U' ? 8 : 0;
    std::uint32_t character = 0;
    const char* const end = literal.data() + std::min(digits, literal.size());
    if (digits > 0 && std::from_chars(literal.data(), end, character, 16).ptr == end) {
      AppendUtf8(character, text);
      literal.remove_prefix(std::min(digits, literal.size()));
    } else {
      // \t, \n and the like are blanks in a name.
      text += kind == '"' || kind == '\\' || kind == '\'' ? kind : ' ';
    }
  }
  return text += literal;
}

class TripleSubjects {
 public:
  void Take(const Triple& triple) {
    const std::string_view predicate = triple.predicate;
    if (predicate == "type") {
      TakeType(triple);
    } else if (predicate == "label" && !triple.is_foreign) {
      // Of headings and supplementary records only: there are as many labels as there are subjects.
      if (triple.subject.starts_with('D') || triple.subject.starts_with('C')) {
        Of(triple.subject).label = Unescaped(triple.object);
      }
    } else if (predicate == "treeNumber") {
      Of(triple.subject).tree_numbers.emplace_back(triple.object);
    } else if (IsOneOf(predicate, {"preferredConcept", "concept", "preferredTerm", "term"})) {
      Of(triple.subject).parts.emplace_back(triple.object);
    } else if (IsOneOf(predicate, {"prefLabel", "altLabel"}) && !triple.is_foreign) {
      Of(triple.subject).texts.push_back(Unescaped(triple.object));
    } else if (IsOneOf(predicate, {"preferredMappedTo", "mappedTo"})) {
      // A heading with a qualifier is named by both: D002164Q000031.
      Of(triple.subject).mapped.emplace_back(triple.object.substr(0, triple.object.find('Q')));
    } else if (predicate == "active") {
      Of(triple.subject).is_inactive = triple.object == "false";
    }
  }

  void Tell(MeshVisitor& visitor, const MeshPulse& pulse) {
    long told = 0;
    for (auto& [id, subject] : subjects_) {
      if (++told % 1024 == 0) pulse();
      if (subject.is_inactive) continue;
      if (subject.kind == Kind::kSupplementary) {
        visitor.OnSupplementary({id, std::move(subject.label), std::move(subject.mapped)});
      } else if (subject.kind == Kind::kHeading) {
        std::vector<std::string> texts;
        // Two steps: from the heading to its concepts, and from these to their terms.
        TakeTexts(subject, 2, texts);
        visitor.OnHeading({id, std::move(subject.label), subject.descriptor_class,
                           std::move(subject.tree_numbers), std::move(texts)});
      }
    }
  }

 private:
  static bool IsOneOf(std::string_view text, std::initializer_list<std::string_view> words) {
    return std::find(words.begin(), words.end(), text) != words.end();
  }

  void TakeType(const Triple& triple) {
    constexpr std::array<std::string_view, 4> kClasses = {"TopicalDescriptor", "PublicationType", "CheckTag",
                                                          "GeographicalDescriptor"};
    const auto found = std::find(kClasses.begin(), kClasses.end(), triple.object);
    if (found != kClasses.end()) {
      Subject& subject = Of(triple.subject);
      subject.kind = Kind::kHeading;
      subject.descriptor_class = static_cast<int>(found - kClasses.begin()) + 1;
    } else if (triple.object.starts_with("SCR_")) {
      Of(triple.subject).kind = Kind::kSupplementary;
    }
  }

  // Triples of one subject stand together in the files there are.
  Subject& Of(std::string_view id) {
    if (last_ == nullptr || last_->first != id) last_ = &*subjects_.try_emplace(std::string(id)).first;
    return last_->second;
  }

  // Takes the texts of the terms that are so many steps away at most. A concept is one heading's, so they are
  // taken away: a file cannot make much of little by naming one again and again.
  void TakeTexts(Subject& subject, int steps, std::vector<std::string>& texts) {
    for (const std::string& part : std::exchange(subject.parts, {})) {
      const auto found = subjects_.find(part);
      if (found == subjects_.end()) continue;
      for (std::string& text : std::exchange(found->second.texts, {})) texts.push_back(std::move(text));
      if (steps > 1) TakeTexts(found->second, steps - 1, texts);
    }
  }

  TextMap<Subject> subjects_;
  // Stays good while the map grows, which moves none of its entries.
  TextMap<Subject>::value_type* last_ = nullptr;
};

}  // namespace

void ReadMeshTriples(ByteSource& source, MeshVisitor& visitor, const MeshPulse& pulse) {
  LineSource lines(source);
  TripleSubjects subjects;
  std::string_view line;
  while (lines.Next(line)) {
    if (lines.line_number() % 1024 == 0) pulse();
    if (Trimmed(line).empty() || line.starts_with('#')) continue;
    Triple triple;
    if (ParseTriple(line, triple)) {
      subjects.Take(triple);
    } else {
      visitor.OnProblem("lines that are no triples", fmt::format("line {}", lines.line_number()));
    }
  }
  // Only now, since what belongs to a heading may stand anywhere in the file.
  subjects.Tell(visitor, pulse);
}

}  // namespace selvane
