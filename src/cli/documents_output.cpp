#include "cli/documents_output.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "base/shown_text.h"
#include "base/text.h"

namespace selvane {

namespace {

// In bytes. The list of all documents of a large table must not be held as a whole.
constexpr std::size_t kPendingBytes = std::size_t{64} << 10;

// Each term of the document once, in the order of its marks.
std::vector<std::string> TermsOf(const Document& document, const std::vector<std::string>& terms) {
  std::vector<std::uint32_t> met;
  std::vector<std::string> names;
  for (const DocumentMark& mark : document.marks) {
    if (std::find(met.begin(), met.end(), mark.term) != met.end()) continue;
    met.push_back(mark.term);
    names.push_back(terms[mark.term]);
  }
  return names;
}

nlohmann::ordered_json JsonOf(const DocumentMark& mark, const Document& document, const std::string& term) {
  static constexpr std::array kPlaces = {"text", "heading", "major heading", "substance"};
  nlohmann::ordered_json json = {{"term", term}, {"place", kPlaces[static_cast<std::size_t>(mark.place)]}};
  if (mark.place != MarkPlace::kText) return json;
  json["offset"] = mark.offset;
  json["length"] = mark.length;
  const std::string whole = document.title + ' ' + document.text;
  json["words"] = mark.offset < whole.size() ? whole.substr(mark.offset, mark.length) : std::string();
  return json;
}

}  // namespace

DocumentPrinter::DocumentPrinter(const CliContext& context, const RuleLayout& layout,
                                 const std::vector<std::string>& terms)
    : context_(context), layout_(layout), terms_(terms) {
  if (layout.format == RuleFormat::kCsv) pending_ = "ROW,PMID,YEAR,JOURNAL,TITLE,TERMS,TEXT\n";
  if (layout.format == RuleFormat::kJson) pending_ = "[";
}

void DocumentPrinter::AppendCsv(const Document& document) {
  const auto cell = [this](const std::string& text) {
    return DoubleQuoted(layout_.guards_formulas ? Guarded(text) : text);
  };
  fmt::format_to(std::back_inserter(pending_), "{},{},{},{},{},{},{}\n", document.row, cell(document.pmid),
                 document.year > 0 ? fmt::to_string(document.year) : "", cell(document.journal),
                 cell(document.title), cell(fmt::format("{}", fmt::join(TermsOf(document, terms_), "; "))),
                 cell(document.text));
}

void DocumentPrinter::AppendJson(const Document& document) {
  auto marks = nlohmann::ordered_json::array();
  for (const DocumentMark& mark : document.marks) marks.push_back(JsonOf(mark, document, terms_[mark.term]));
  const nlohmann::ordered_json json = {
      {"row", document.row},
      {"pmid", document.pmid},
      {"year", document.year > 0 ? nlohmann::ordered_json(document.year) : nullptr},
      {"journal", document.journal},
      {"title", document.title},
      {"text", document.text},
      {"marks", std::move(marks)}};
  pending_ += first_ ? "\n" : ",\n";
  // Where a mark cuts through a character, the bytes are replaced: the library would throw otherwise, and one
  // mark would end the whole listing.
  pending_ += json.dump(1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

void DocumentPrinter::Print(const Document& document) {
  switch (layout_.format) {
    case RuleFormat::kCsv:
      AppendCsv(document);
      break;
    case RuleFormat::kJson:
      AppendJson(document);
      break;
    default:
      fmt::format_to(std::back_inserter(pending_), "{:>5}  {:>8}  {:>4}  {}\n", document.row, document.pmid,
                     document.year > 0 ? fmt::to_string(document.year) : "", document.title);
  }
  first_ = false;
  if (pending_.size() < kPendingBytes) return;
  WriteOut(context_, pending_);
  pending_.clear();
}

void DocumentPrinter::Finish() {
  if (layout_.format == RuleFormat::kJson) pending_ += first_ ? "]\n" : "\n]\n";
  WriteOut(context_, pending_);
  pending_.clear();
}

}  // namespace selvane
