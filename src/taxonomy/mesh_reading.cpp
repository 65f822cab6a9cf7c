#include "taxonomy/mesh_reading.h"

#include <algorithm>

#include "base/line_source.h"
#include "base/text.h"
#include "taxonomy/mesh_readers.h"

namespace selvane {

namespace {

// Whether this line, the first that says anything, is one of a tree: its heading or a position.
bool IsTreeLine(std::string_view line) {
  if (std::count(line.begin(), line.end(), '\t') != 2) return false;
  const std::string_view number = line.substr(0, line.find('\t'));
  const bool is_number = number.size() >= 2 && number[0] >= 'A' && number[0] <= 'Z' &&
                         number.find_first_not_of("0123456789.", 1) == std::string_view::npos;
  return is_number || LowerCase(number).starts_with("tree number");
}

// Triples of any vocabulary look alike, so one of MeSH must be among the first.
bool IsTriple(std::string_view line, std::string_view text) {
  return line.starts_with('<') && line.ends_with('.') && line.find("> <") != std::string_view::npos &&
         text.find("/mesh/") != std::string_view::npos;
}

}  // namespace

MeshFormat RecognizeMesh(std::string_view head) {
  // Bytes in memory, read as the file will be: in whatever encoding it is.
  ByteSource source("head", head);
  Utf8Source texts(source);
  const std::string text(texts.Next());
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::string_view line = Trimmed(NextLine(rest));
    if (line.empty() || line.starts_with('#')) continue;
    if (line == "*NEWRECORD") return MeshFormat::kAscii;
    if (IsTreeLine(line)) return MeshFormat::kTree;
    if (IsTriple(line, text)) return MeshFormat::kTriples;
    break;
  }
  const std::size_t descriptors = text.find("<DescriptorRecordSet");
  const std::size_t supplementary = text.find("<SupplementalRecordSet");
  if (!Trimmed(text).starts_with('<') || descriptors == supplementary) return MeshFormat::kNone;
  return descriptors < supplementary ? MeshFormat::kDescriptorXml : MeshFormat::kSupplementaryXml;
}

void ReadMesh(ByteSource& source, MeshFormat format, MeshVisitor& visitor, Progress& progress) {
  HundredthSteps steps(progress, source.file_size());
  const auto pulse = [&] {
    steps.Reached(source.bytes_read());
    progress.Pulse();
  };
  switch (format) {
    case MeshFormat::kDescriptorXml:
    case MeshFormat::kSupplementaryXml:
      return ReadMeshXml(source, visitor, pulse);
    case MeshFormat::kAscii:
      return ReadMeshAscii(source, visitor, pulse);
    case MeshFormat::kTree:
      return ReadMeshTree(source, visitor, pulse);
    case MeshFormat::kTriples:
      return ReadMeshTriples(source, visitor, pulse);
    case MeshFormat::kNone:
      break;
  }
}

}  // namespace selvane
