#include "literature/bioc_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string>
#include <utility>

#include "base/text.h"
#include "literature/bioc_document.h"
#include "literature/element_names.h"
#include "literature/xml_record_reader.h"

namespace selvane {

namespace {

enum class Element {
  kOther,
  kDocument,
  kId,
  kPassage,
  kSentence,
  kInfon,
  kOffset,
  kText,
  kAnnotation,
  kLocation,
  kRelation,
};

constexpr ElementNames kNames(std::to_array<std::pair<std::string_view, Element>>({
    {"document", Element::kDocument},
    {"id", Element::kId},
    {"passage", Element::kPassage},
    {"sentence", Element::kSentence},
    {"infon", Element::kInfon},
    {"offset", Element::kOffset},
    {"text", Element::kText},
    {"annotation", Element::kAnnotation},
    {"location", Element::kLocation},
    {"relation", Element::kRelation},
}));

std::uint64_t NumberIn(std::string_view text) {
  const std::string_view digits = Trimmed(text);
  std::uint64_t value = 0;
  const auto [end, status] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  // No text reaches there, so that what cannot be read lies outside of all.
  const bool is_number = status == std::errc{} && end == digits.data() + digits.size();
  return is_number ? value : UINT64_MAX;
}

// Whether the key of an infon names a vocabulary that is not MeSH and not OMIM.
bool IsOtherVocabulary(std::string_view key) {
  constexpr std::string_view kOthers[] = {"ncbi", "tmvar", "cvcl",    "chebi",       "umls",
                                          "hgnc", "go",    "uniprot", "cellosaurus", "taxonomy"};
  return std::any_of(std::begin(kOthers), std::end(kOthers),
                     [key](std::string_view other) { return key.starts_with(other); });
}

class BiocReader final : public XmlRecordReader {
 public:
  using XmlRecordReader::XmlRecordReader;

  void OnStart(std::string_view name, const XmlAttributes& attributes) override {
    const Element element = kNames.Find(name);
    if (element == Element::kDocument) Begin();
    if (element == Element::kRelation) ++relations_;
    // Tags count too: what they hold is kept until the document ends.
    size_ += name.size();
    // Relations have infons too; and the rest of a huge document is passed over.
    if (!is_open_ || relations_ > 0 || size_ >= kLargestRecord) return;
    switch (element) {
      case Element::kPassage:
        kind_ = BiocText::Kind::kOther;
        is_typed_ = false;
        offset_ = 0;
        break;
      case Element::kAnnotation:
        document_.annotations.emplace_back().line = stream().line_number();
        size_ += sizeof(BiocAnnotation);
        is_in_annotation_ = true;
        break;
      case Element::kLocation:
        if (is_in_annotation_) TakeLocation(attributes);
        break;
      case Element::kInfon:
        key_ = LowerCase(attributes["key"]);
        [[fallthrough]];
      case Element::kId:
      case Element::kOffset:
      case Element::kText:
        value_.clear();
        wants_text_ = true;
        stream().WantText(true);
        break;
      default:
        break;
    }
  }

  void OnEnd(std::string_view name) override {
    const Element element = kNames.Find(name);
    if (std::exchange(wants_text_, false)) {
      stream().WantText(false);
      TakeValue(element);
    }
    if (element == Element::kAnnotation) is_in_annotation_ = false;
    if (element == Element::kDocument && is_open_) End();
    if (element == Element::kRelation && relations_ > 0 && --relations_ == 0) {
      sink().Tell(problems::kRelation, fmt::format("line {}", stream().line_number()));
    }
  }

  void OnText(std::string_view part) override {
    size_ += part.size();
    if (size_ < kLargestRecord) value_ += part;
  }

 private:
  void Begin() {
    document_ = BiocDocument();
    is_open_ = true;
    is_in_annotation_ = false;
    relations_ = 0;
    size_ = 0;
    line_ = stream().line_number();
  }

  void End() {
    is_open_ = false;
    const std::string place =
        document_.id.empty() ? fmt::format("line {}", line_) : "document " + document_.id;
    if (size_ >= kLargestRecord) return sink().Tell(problems::kTooLarge, place);
    if (document_.id.empty()) sink().Tell(problems::kNoPmid, place);
    sink().Take(document_.ToRecord(sink()));
  }

  void TakeLocation(const XmlAttributes& attributes) {
    BiocAnnotation& annotation = document_.annotations.back();
    // The first place of words that lie apart is the one to show.
    if (annotation.locations++ > 0) return;
    annotation.offset = NumberIn(attributes["offset"]);
    annotation.length = NumberIn(attributes["length"]);
  }

  void TakeValue(Element element) {
    if (element == Element::kId && document_.id.empty()) document_.id = Trimmed(value_);
    if (element == Element::kOffset) offset_ = NumberIn(value_);
    if (element == Element::kText) TakeText();
    if (element == Element::kInfon && is_in_annotation_) {
      TakeIdentifiers();
    } else if (element == Element::kInfon) {
      TakePassageInfon();
    }
  }

  void TakeText() {
    // One blank for each, since offsets count them.
    std::replace_if(
        value_.begin(), value_.end(), [](char c) { return c == '\n' || c == '\t'; }, ' ');
    if (is_in_annotation_) {
      document_.annotations.back().words = value_;
      return;
    }
    // A corpus that does not say has the title first.
    const auto by_place = document_.texts.empty() ? BiocText::Kind::kTitle : BiocText::Kind::kAbstract;
    BiocText& text = document_.texts.emplace_back();
    text.kind = is_typed_ ? kind_ : by_place;
    text.offset = offset_;
    if (text.kind != BiocText::Kind::kOther) text.text = value_;
    size_ += sizeof(BiocText);
  }

  void TakeIdentifiers() {
    Identifiers& found = document_.annotations.back().identifiers;
    // Older files name the vocabulary by the key, newer ones by a prefix of the value.
    if (key_ == "mesh" || key_ == "identifier") {
      Identifiers more = IdentifiersOf(value_);
      std::move(more.ids.begin(), more.ids.end(), std::back_inserter(found.ids));
      found.is_none = found.is_none || more.is_none;
      found.is_other = found.is_other || more.is_other;
    } else if (key_ == "omim") {
      found.ids.push_back("OMIM:" + std::string(Trimmed(value_)));
    } else if (IsOtherVocabulary(key_)) {
      found.is_other = true;
    }
  }

  void TakePassageInfon() {
    const std::string value = LowerCase(Trimmed(value_));
    if (key_ == "year" && document_.year.empty()) document_.year = value_;
    if (key_ == "journal" && document_.journal.empty()) document_.journal = value_;
    if (key_ != "type" && key_ != "section_type") return;
    // Full texts have both infons, and one of them says it.
    is_typed_ = true;
    // The titles of sections are called title_1 and so on.
    if (value == "title" || value == "front") kind_ = BiocText::Kind::kTitle;
    if (value.starts_with("abstract")) kind_ = BiocText::Kind::kAbstract;
  }

  BiocDocument document_;
  bool is_open_ = false;
  bool is_in_annotation_ = false;
  bool wants_text_ = false;
  int relations_ = 0;  // within each other
  std::uint64_t line_ = 0;
  std::size_t size_ = 0;
  std::string key_;
  std::string value_;
  // Of the passage at hand.
  BiocText::Kind kind_ = BiocText::Kind::kOther;
  bool is_typed_ = false;
  std::uint64_t offset_ = 0;
};

}  // namespace

void ReadBioc(ByteSource& source, RecordSink& sink) {
  BiocReader(sink).Read(source);
}

}  // namespace selvane
