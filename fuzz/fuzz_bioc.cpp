#include "literature/bioc_reader.h"
#include "literature_fuzzing.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return FuzzReader(&selvane::ReadBioc, data, size);
}
