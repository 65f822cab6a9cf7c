#include "mesh_fuzzing.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return FuzzMeshReader(&selvane::ReadMeshTriples, data, size);
}
