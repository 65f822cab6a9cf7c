#include "termdb/record_collector.h"

#include <fmt/format.h>

#include "base/error.h"

namespace selvane {

namespace {

constexpr std::uint32_t kNotAsked = UINT32_MAX - 1;

MarkPlace PlaceOfMention(const Mention& mention) {
  if (mention.is_heading) return mention.is_major ? MarkPlace::kMajorHeading : MarkPlace::kHeading;
  return mention.is_substance ? MarkPlace::kSubstance : MarkPlace::kText;
}

}  // namespace

RecordCollector::RecordCollector(const TermTableRequest& request, const TaxonomyStore& taxonomy,
                                 RowSpool& spool, DocumentWriter& documents, HundredthSteps& steps)
    : request_(request),
      taxonomy_(taxonomy),
      spool_(spool),
      documents_(documents),
      steps_(steps),
      accepted_(taxonomy) {}

std::string RecordCollector::PlaceOf(const Record& record) const {
  const std::string file = file_->string();
  return record.pmid.empty() ? file : fmt::format("{}: PMID {}", file, record.pmid);
}

void RecordCollector::OnRecord(Record&& record) {
  ++records_;
  const auto place = [&] { return PlaceOf(record); };
  if (!IsOfWantedYear(record)) return;
  // A tagged text has always been a row of its own.
  if (format_ != RecordFormat::kTagged && !seen_.IsNew(record.pmid))
    return notices_.Add(notices::kTwice, place);
  CollectTerms(record);
  if (!row_terms_.empty()) return AddRow(std::move(record));
  if (record.mentions.empty()) return;  // its reader has told of it
  notices_.Add(request_.major_only ? notices::kNoMajorTerm : notices::kNoKnownTerm, place);
}

bool RecordCollector::IsOfWantedYear(const Record& record) {
  if (!request_.from_year && !request_.to_year) return true;
  const bool is_wanted = record.year != 0 && (!request_.from_year || record.year >= *request_.from_year) &&
                         (!request_.to_year || record.year <= *request_.to_year);
  if (!is_wanted) {
    notices_.Add(record.year == 0 ? notices::kNoYear : notices::kOtherYear, [&] { return PlaceOf(record); });
  }
  return is_wanted;
}

void RecordCollector::CollectTerms(const Record& record) {
  row_terms_.clear();
  document_.marks.clear();
  for (const Mention& mention : record.mentions) {
    if (request_.major_only && !mention.is_major) continue;
    found_.clear();
    FindTerms(mention, record);
    for (const std::uint32_t term : found_) {
      document_.marks.push_back({term, PlaceOfMention(mention), mention.offset, mention.length});
      if (term >= last_row_.size()) last_row_.resize(term + 1, 0);
      // Tells a term that the row has already, without a set for each row. Rows are counted from 1, so 0
      // stands for no row.
      if (last_row_[term] == rows_ + 1) continue;
      last_row_[term] = rows_ + 1;
      row_terms_.push_back(term);
    }
  }
}

void RecordCollector::FindTerms(const Mention& mention, const Record& record) {
  const auto take = [this](std::uint32_t number) {
    if (number != AcceptedTerms::kRejected) found_.push_back(number);
  };
  if (format_ == RecordFormat::kTagged) {
    take(accepted_.NumberOf(mention.name));
    if (found_.empty()) TellOfMiss(TermMiss::kUnknownName, mention, record);
    return;
  }
  // Not needed for tagged texts, which name terms as the taxonomy does; and filling it takes a while.
  if (!finder_) {
    finder_.emplace(taxonomy_);
    by_finder_.assign(finder_->TermCount(), kNotAsked);
  }
  for (const std::string& id : mention.ids) {
    if (finder_->KnowsId(id)) continue;
    notices_.AddNamed(notices::kUnknownId, id, [&] { return fmt::format("{} in {}", id, PlaceOf(record)); });
  }
  const FoundTerms found = finder_->Find(mention.ids, mention.name);
  for (const TermNumber term : found.terms) {
    std::uint32_t& number = by_finder_[term];
    if (number == kNotAsked) number = accepted_.NumberOf(finder_->Text(term));
    take(number);
  }
  // What is known but does not count has lost its category.
  if (found_.empty()) TellOfMiss(found.terms.empty() ? found.miss : TermMiss::kPruned, mention, record);
}

void RecordCollector::TellOfMiss(TermMiss miss, const Mention& mention, const Record& record) {
  const std::string_view name = mention.name.empty() && !mention.ids.empty() ? mention.ids[0] : mention.name;
  const auto tell = [&](std::string_view kind) {
    notices_.AddNamed(kind, name, [&] { return fmt::format("{} in {}", name, PlaceOf(record)); });
  };
  switch (miss) {
    case TermMiss::kUnknownName:
      return tell(notices::kUnknownName);
    case TermMiss::kNoHeading:
      return tell(notices::kNoHeading);
    case TermMiss::kPruned:
      return tell(notices::kPruned);
    case TermMiss::kUnknownId:  // each identifier is told of by itself
    case TermMiss::kNone:
      return;
  }
}

void RecordCollector::AddRow(Record&& record) {
  if (rows_ == INT32_MAX) {
    throw InputError(fmt::format("a term table holds {} rows; choose fewer files", INT32_MAX));
  }
  ++rows_;
  counts_.resize(accepted_.terms().size(), 0);
  for (const std::uint32_t term : row_terms_) ++counts_[term];
  spool_.Add(row_terms_);
  // Only what has become a row counts as seen: the same record may come again with a term that is known.
  seen_.Add(record.pmid);
  document_.row = rows_;
  document_.pmid = std::move(record.pmid);
  document_.title = std::move(record.title);
  document_.journal = std::move(record.journal);
  document_.year = record.year;
  document_.text = std::move(record.text);
  documents_.Add(document_);
}

}  // namespace selvane
