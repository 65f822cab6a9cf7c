// What the targets of the MeSH readers share.
#pragma once

#include "base/error.h"
#include "base/text.h"
#include "fuzzing.h"
#include "taxonomy/mesh_collection.h"
#include "taxonomy/mesh_readers.h"

// Reads the input in small pieces, so that texts run over them, and makes rows of what was read: whatever a
// file holds, these must fit the database.
template <typename Reader>
int FuzzMeshReader(Reader read, const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kPieceSize = 61;
  constexpr std::size_t kWidth = 127;
  selvane::MeshCollection collection(true);
  try {
    selvane::ByteSource source("input", TextOf(data, size), kPieceSize);
    read(source, collection, [] {});
    const selvane::SourceRows rows = collection.MakeRows();
    for (const auto& row : rows.rows()) {
      Require(row.code.size() <= kWidth && row.code[0] >= 'A' && row.code[0] <= 'Z');
      Require(selvane::CharacterCount(row.term) <= kWidth && selvane::IsUtf8(row.term));
      Require(row.term.find_first_of("'\n\t") == std::string::npos);
    }
  } catch (const selvane::Error&) {
    return 0;
  }
  for (const auto& [kind, problem] : collection.problems()) {
    Require(problem.count > 0 && selvane::IsUtf8(problem.example));
  }
  return 0;
}
