// The readers of the layouts of MeSH, behind ReadMesh.
#pragma once

#include <functional>

#include "base/byte_source.h"
#include "taxonomy/mesh_record.h"

namespace selvane {

// Called every now and then while reading.
using MeshPulse = std::function<void()>;

// Each reads a source to its end; ReadMesh says what it throws.
void ReadMeshXml(ByteSource& source, MeshVisitor& visitor, const MeshPulse& pulse);
void ReadMeshAscii(ByteSource& source, MeshVisitor& visitor, const MeshPulse& pulse);
void ReadMeshTree(ByteSource& source, MeshVisitor& visitor, const MeshPulse& pulse);
void ReadMeshTriples(ByteSource& source, MeshVisitor& visitor, const MeshPulse& pulse);

}  // namespace selvane
