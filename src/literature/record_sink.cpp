#include "literature/record_sink.h"

#include <fmt/format.h>

#include <utility>

#include "base/text.h"
#include "literature/field_text.h"

namespace selvane {

template <typename Call>
void RecordSink::Guarded(const Call& call) {
  try {
    call();
  } catch (...) {
    throw VisitorFault{std::current_exception()};
  }
}

void RecordSink::Take(Record&& record) {
  ++records_;
  if (record.mentions.empty()) {
    Tell(problems::kNoTerms,
         record.pmid.empty() ? fmt::format("record {}", records_) : "PMID " + record.pmid);
  }
  for (Mention& mention : record.mentions) ReplaceQuotes(mention.name);
  Guarded([&] { visitor_.OnRecord(std::move(record)); });
  Advance();
}

void RecordSink::Tell(std::string_view kind, std::string_view place) {
  // What a hostile file gives as an example may be long.
  place = Shortened(place, 200);
  const std::string file = source_.path().string();
  Guarded([&] { visitor_.OnProblem(kind, place.empty() ? file : fmt::format("{}: {}", file, place)); });
}

void RecordSink::TellRecoded(std::uint64_t bytes) {
  if (bytes > 0) Tell(problems::kNotUtf8, fmt::format("{} bytes", bytes));
}

void RecordSink::TellUnreadable(const Error& error) {
  const std::string what = fmt::format("{} (records read before: {})", error.what(), records_);
  Guarded([&] { visitor_.OnProblem(problems::kUnreadable, what); });
}

void RecordSink::Advance(std::uint64_t bytes) {
  if (bytes == bytes_told_) return;
  Guarded([&] {
    visitor_.OnBytes(bytes - std::exchange(bytes_told_, bytes));
    progress_.Pulse();
  });
}

}  // namespace selvane
