#include "literature/pubmed_xml_reader.h"

#include <fmt/format.h>

#include <string>
#include <utility>
#include <vector>

#include "literature/element_names.h"
#include "literature/field_text.h"
#include "literature/xml_record_reader.h"

namespace selvane {

namespace {

enum class Element {
  kOther,
  kPassedOver,  // long, and nothing in it is wanted: authors, references, ...
  kArticle,     // of a set: PubmedArticle, PubmedBookArticle
  kCitation,    // MedlineCitation, BookDocument: by itself in older files
  kPmid,
  kJournal,
  kTitle,
  kShortTitle,
  kBookTitle,
  kPubDate,
  kYear,
  kMedlineDate,
  kArticleTitle,
  kAbstract,
  kAbstractText,
  kSubstance,
  kHeading,
  kDescriptor,
  kQualifier,
};

constexpr ElementNames kNames(std::to_array<std::pair<std::string_view, Element>>({
    {"PubmedArticle", Element::kArticle},
    {"PubmedBookArticle", Element::kArticle},
    {"MedlineCitation", Element::kCitation},
    {"BookDocument", Element::kCitation},
    {"PMID", Element::kPmid},
    {"Journal", Element::kJournal},
    {"Title", Element::kTitle},
    {"MedlineTA", Element::kShortTitle},
    {"BookTitle", Element::kBookTitle},
    {"PubDate", Element::kPubDate},
    {"Year", Element::kYear},
    {"MedlineDate", Element::kMedlineDate},
    {"ArticleTitle", Element::kArticleTitle},
    {"Abstract", Element::kAbstract},
    {"AbstractText", Element::kAbstractText},
    {"NameOfSubstance", Element::kSubstance},
    {"SupplMeshName", Element::kSubstance},
    {"MeshHeading", Element::kHeading},
    {"DescriptorName", Element::kDescriptor},
    {"QualifierName", Element::kQualifier},
    {"AuthorList", Element::kPassedOver},
    {"CommentsCorrectionsList", Element::kPassedOver},
    {"DataBankList", Element::kPassedOver},
    {"DateCompleted", Element::kPassedOver},
    {"DateRevised", Element::kPassedOver},
    {"GrantList", Element::kPassedOver},
    {"InvestigatorList", Element::kPassedOver},
    {"OtherAbstract", Element::kPassedOver},
    {"PersonalNameSubjectList", Element::kPassedOver},
    {"PublicationTypeList", Element::kPassedOver},
    {"PubmedBookData", Element::kPassedOver},
    {"PubmedData", Element::kPassedOver},
    {"Sections", Element::kPassedOver},
}));

class PubmedXmlReader final : public XmlRecordReader {
 public:
  using XmlRecordReader::XmlRecordReader;

  void OnStart(std::string_view name, const XmlAttributes& attributes) override {
    // Within a text there is only its markup.
    if (passed_over_ > 0 || target_ != nullptr) {
      ++(passed_over_ > 0 ? passed_over_ : markup_);
      return;
    }
    const Element element = kNames.Find(name);
    if (element == Element::kPassedOver) {
      passed_over_ = 1;
      return;
    }
    // Above what is asked in Begin is the parent.
    Begin(element, attributes);
    above_.push_back(element);
  }

  void OnEnd(std::string_view) override {
    if (passed_over_ > 0) {
      --passed_over_;
    } else if (markup_ > 0) {
      --markup_;
    } else {
      const Element element = above_.back();
      above_.pop_back();
      if (target_ != nullptr) EndText();
      End(element);
    }
  }

  void OnText(std::string_view part) override {
    size_ += part.size();
    // The rest of a huge record is passed over.
    if (target_ != nullptr && size_ < kLargestRecord) AppendFolded(*target_, part);
  }

 private:
  Element Parent() const { return above_.empty() ? Element::kOther : above_.back(); }

  // Texts are told only while one is wanted: half of what the parser would tell is blanks between tags.
  void BeginText(std::string& target) {
    target_ = &target;
    stream().WantText(true);
  }

  void EndText() {
    TrimEnd(*target_);
    target_ = nullptr;
    stream().WantText(false);
  }

  // The first of its kind counts.
  void BeginFirst(std::string& target) {
    if (target.empty()) BeginText(target);
  }

  void Begin(Element element, const XmlAttributes& attributes) {
    if (opened_by_ == Element::kOther) {
      if (element == Element::kArticle || element == Element::kCitation) BeginRecord(element);
      return;
    }
    switch (element) {
      case Element::kPmid:
        // Comments and corrections name other articles.
        if (Parent() == Element::kCitation) BeginFirst(record_.pmid);
        return;
      case Element::kTitle:
        if (Parent() == Element::kJournal) BeginFirst(record_.journal);
        return;
      case Element::kShortTitle:
        return BeginFirst(short_title_);
      case Element::kBookTitle:
        return BeginFirst(book_title_);
      case Element::kArticleTitle:
        return BeginFirst(record_.title);
      case Element::kYear:
      case Element::kMedlineDate:
        // A record has many dates, and one on which it was published.
        if (Parent() == Element::kPubDate) BeginFirst(date_);
        return;
      case Element::kAbstractText:
        if (Parent() == Element::kAbstract) BeginParagraph(attributes["Label"]);
        return;
      default:
        return BeginMention(element, attributes);
    }
  }

  void BeginMention(Element element, const XmlAttributes& attributes) {
    const bool is_major = attributes["MajorTopicYN"] == "Y";
    if (element == Element::kDescriptor || element == Element::kSubstance) {
      size_ += sizeof(Mention);
      // The record will be left out; its texts are not even looked at any more.
      if (size_ >= kLargestRecord) return;
      Mention& mention = record_.mentions.emplace_back();
      mention.is_heading = element == Element::kDescriptor;
      mention.is_substance = element == Element::kSubstance;
      mention.is_major = is_major;
      mention.ids = IdentifiersOf(attributes["UI"]).ids;
      BeginText(mention.name);
    } else if (element == Element::kQualifier && is_major && !record_.mentions.empty() &&
               record_.mentions.back().is_heading) {
      record_.mentions.back().is_major = true;
    }
  }

  void BeginParagraph(std::string_view label) {
    if (!record_.text.empty()) record_.text += ' ';
    // As PubMed shows it, and as MEDLINE layout has it in one text.
    if (!label.empty() && label != "UNLABELLED") {
      AppendFolded(record_.text, label);
      record_.text += ": ";
    }
    BeginText(record_.text);
  }

  // An article holds a citation; older files have citations by themselves.
  void BeginRecord(Element element) {
    opened_by_ = element;
    line_ = stream().line_number();
  }

  void End(Element element) {
    if (element == Element::kOther || element != opened_by_) return;
    opened_by_ = Element::kOther;
    const std::string place = record_.pmid.empty() ? fmt::format("line {}", line_) : "PMID " + record_.pmid;
    if (size_ >= kLargestRecord) {
      sink().Tell(problems::kTooLarge, place);
    } else {
      if (record_.pmid.empty()) sink().Tell(problems::kNoPmid, place);
      sink().Take(Finished());
    }
    record_ = Record();
    short_title_.clear();
    book_title_.clear();
    date_.clear();
    size_ = 0;
  }

  Record Finished() {
    if (record_.title.empty()) record_.title = book_title_;
    if (record_.journal.empty()) record_.journal = short_title_.empty() ? book_title_ : short_title_;
    record_.year = YearOf(date_);
    std::erase_if(record_.mentions,
                  [](const Mention& mention) { return mention.ids.empty() && mention.name.empty(); });
    return std::move(record_);
  }

  std::vector<Element> above_;  // of the tags that are open, but for those passed over and markup
  std::size_t passed_over_ = 0;
  std::size_t markup_ = 0;
  std::string* target_ = nullptr;  // where the text at hand goes
  Element opened_by_ = Element::kOther;
  std::uint64_t line_ = 0;
  Record record_;
  std::string short_title_;
  std::string book_title_;
  std::string date_;
  std::size_t size_ = 0;
};

}  // namespace

void ReadPubmedXml(ByteSource& source, RecordSink& sink) {
  PubmedXmlReader(sink).Read(source);
}

}  // namespace selvane
