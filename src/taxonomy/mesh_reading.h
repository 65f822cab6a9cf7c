// MeSH as it is published, in any of its layouts (docs/formats/mesh.md).
#pragma once

#include <string_view>

#include "base/byte_source.h"
#include "base/progress.h"
#include "taxonomy/mesh_record.h"

namespace selvane {

enum class MeshFormat {
  kNone,              // no MeSH file
  kDescriptorXml,     // <DescriptorRecordSet>
  kSupplementaryXml,  // <SupplementalRecordSet>
  kAscii,             // *NEWRECORD, descriptors or supplementary records
  kTree,              // tree number, identifier and name, separated by tabs
  kTriples,           // N-Triples
};

// The layout of a file by its first bytes, unpacked.
MeshFormat RecognizeMesh(std::string_view head);

// Reads all of a file. Throws FileError when it cannot be read to its end, InputError when it is no XML or
// goes beyond what is believable, and what the visitor and the progress throw.
void ReadMesh(ByteSource& source, MeshFormat format, MeshVisitor& visitor, Progress& progress);

}  // namespace selvane
