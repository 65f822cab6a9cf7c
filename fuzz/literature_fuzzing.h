// What the targets of the readers of literature share.
#pragma once

#include "base/error.h"
#include "base/text.h"
#include "fuzzing.h"
#include "literature/record_sink.h"

// Holds what every reader promises about a record.
struct RequiringVisitor : selvane::RecordVisitor {
  void OnRecord(selvane::Record&& record) override {
    const std::string text = selvane::DocumentText(record);
    Require(selvane::IsUtf8(text) && selvane::IsUtf8(record.journal) && selvane::IsUtf8(record.pmid));
    Require(record.year >= 0 && record.year < 3000);
    for (const selvane::Mention& mention : record.mentions) {
      Require(!mention.ids.empty() || !mention.name.empty());
      Require(selvane::IsUtf8(mention.name) && mention.name.find('\'') == std::string::npos);
      Require(std::uint64_t{mention.offset} + mention.length <= text.size());
      // A mark is whole characters.
      Require(selvane::IsUtf8(std::string_view(text).substr(mention.offset, mention.length)));
    }
  }
  void OnProblem(std::string_view kind, std::string_view example) override {
    Require(!kind.empty() && selvane::IsUtf8(example));
  }
};

// Reads the input in pieces, whose size its first byte says.
inline int FuzzReader(void (*read)(selvane::ByteSource&, selvane::RecordSink&), const std::uint8_t* data,
                      std::size_t size) {
  if (size == 0) return 0;
  selvane::ByteSource source("input.txt", TextOf(data + 1, size - 1), 3 + std::size_t{data[0]});
  RequiringVisitor visitor;
  selvane::SilentProgress progress;
  selvane::RecordSink sink(source, visitor, progress);
  try {
    read(source, sink);
  } catch (const selvane::Error&) {
    // Damage is told.
  }
  return 0;
}
