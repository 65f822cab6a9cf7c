// MeSH in XML: sets of descriptor or of supplementary records.
#include <array>
#include <charconv>
#include <vector>

#include "base/text.h"
#include "base/xml_stream.h"
#include "taxonomy/mesh_readers.h"

namespace selvane {

namespace {

// Where the stream stands. An element that leads to nothing wanted is passed over with all that it holds.
enum class Place {
  kTop,
  kSet,
  kRecord,
  kId,
  kName,
  kNameText,
  kTrees,
  kTree,
  kConcepts,
  kConcept,
  kTerms,
  kTerm,
  kTermText,
  kMappings,
  kMapping,
  kMapped,
  kMappedId,
};

struct Path {
  Place parent;
  std::string_view element;
  Place place;
};

constexpr std::array kPaths = std::to_array<Path>({
    {Place::kTop, "DescriptorRecordSet", Place::kSet},
    {Place::kTop, "SupplementalRecordSet", Place::kSet},
    {Place::kSet, "DescriptorRecord", Place::kRecord},
    {Place::kSet, "SupplementalRecord", Place::kRecord},
    {Place::kRecord, "DescriptorUI", Place::kId},
    {Place::kRecord, "SupplementalRecordUI", Place::kId},
    {Place::kRecord, "DescriptorName", Place::kName},
    {Place::kRecord, "SupplementalRecordName", Place::kName},
    {Place::kName, "String", Place::kNameText},
    {Place::kRecord, "TreeNumberList", Place::kTrees},
    {Place::kTrees, "TreeNumber", Place::kTree},
    {Place::kRecord, "ConceptList", Place::kConcepts},
    {Place::kConcepts, "Concept", Place::kConcept},
    {Place::kConcept, "TermList", Place::kTerms},
    {Place::kTerms, "Term", Place::kTerm},
    {Place::kTerm, "String", Place::kTermText},
    {Place::kRecord, "HeadingMappedToList", Place::kMappings},
    {Place::kMappings, "HeadingMappedTo", Place::kMapping},
    {Place::kMapping, "DescriptorReferredTo", Place::kMapped},
    {Place::kMapped, "DescriptorUI", Place::kMappedId},
});

bool HoldsText(Place place) {
  return place == Place::kId || place == Place::kNameText || place == Place::kTree ||
         place == Place::kTermText || place == Place::kMappedId;
}

constexpr std::size_t kLongestText = std::size_t{64} << 10U;

class MeshXmlHandler final : public XmlHandler {
 public:
  explicit MeshXmlHandler(MeshVisitor& visitor) : visitor_(visitor) {}
  void Follow(XmlStream& stream) {
    stream_ = &stream;
    // Most of a record is of no use here, and text that nobody wants need not be collected.
    stream.WantText(false);
  }

  void OnStart(std::string_view name, const XmlAttributes& attributes) override {
    if (passed_over_ > 0 || !Enter(name)) {
      ++passed_over_;
      return;
    }
    text_.clear();
    if (HoldsText(places_.back())) stream_->WantText(true);
    if (places_.back() != Place::kRecord) return;
    heading_ = {};
    mapped_.clear();
    is_supplementary_ = name == "SupplementalRecord";
    const std::string_view descriptor_class = attributes["DescriptorClass"];
    std::from_chars(descriptor_class.data(), descriptor_class.data() + descriptor_class.size(),
                    heading_.descriptor_class);
  }

  void OnText(std::string_view part) override {
    // A text that tags divide has no limit of its own; one that is too long is told of as it stands.
    if (passed_over_ == 0 && text_.size() < kLongestText) text_ += part;
  }

  void OnEnd(std::string_view) override {
    if (passed_over_ > 0) {
      --passed_over_;
      return;
    }
    const Place place = places_.back();
    places_.pop_back();
    if (HoldsText(place)) stream_->WantText(false);
    Leave(place);
  }

 private:
  bool Enter(std::string_view name) {
    const Place parent = places_.back();
    for (const Path& path : kPaths) {
      if (path.parent != parent || path.element != name) continue;
      places_.push_back(path.place);
      return true;
    }
    return false;
  }

  void Leave(Place place) {
    const std::string_view text = Trimmed(text_);
    if (place == Place::kId) {
      heading_.id = text;
    } else if (place == Place::kNameText) {
      heading_.name = text;
    } else if (place == Place::kTree) {
      heading_.tree_numbers.emplace_back(text);
    } else if (place == Place::kTermText) {
      heading_.entry_terms.emplace_back(text);
    } else if (place == Place::kMappedId) {
      mapped_.emplace_back(text);
    } else if (place == Place::kRecord && is_supplementary_) {
      visitor_.OnSupplementary({std::move(heading_.id), std::move(heading_.name), std::move(mapped_)});
    } else if (place == Place::kRecord) {
      visitor_.OnHeading(std::move(heading_));
    }
  }

  MeshVisitor& visitor_;
  XmlStream* stream_ = nullptr;
  std::vector<Place> places_{Place::kTop};
  std::size_t passed_over_ = 0;  // depth within an element that is passed over
  std::string text_;
  MeshHeading heading_;
  std::vector<std::string> mapped_;
  bool is_supplementary_ = false;
};

}  // namespace

void ReadMeshXml(ByteSource& source, MeshVisitor& visitor, const MeshPulse& pulse) {
  MeshXmlHandler handler(visitor);
  XmlStream stream(source, handler);
  handler.Follow(stream);
  while (stream.Step()) pulse();
}

}  // namespace selvane
