// What the fuzz targets share.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "base/file.h"

// Called by libFuzzer, which has no header of its own.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

inline std::string_view TextOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// Ends the process as a finding that no sanitizer would see.
inline void Require(bool holds) {
  if (!holds) std::abort();
}

// A new folder, in memory where that can be had, removed when the process ends in order.
struct ScratchFolder {
  ScratchFolder() {
    std::string name =
        std::filesystem::is_directory("/dev/shm") ? "/dev/shm/fuzz-XXXXXX" : "/tmp/fuzz-XXXXXX";
    Require(::mkdtemp(name.data()) != nullptr);
    path = name;
  }
  ~ScratchFolder() { std::filesystem::remove_all(path); }
  std::filesystem::path path;
};

// The input as a file of this name, for what reads files; alone in a folder that lives as long as the
// process.
inline std::filesystem::path AsFile(const char* name, const std::uint8_t* data, std::size_t size) {
  static const ScratchFolder kScratch;
  std::filesystem::path path = kScratch.path / name;
  selvane::OutputFile file(path);
  file.Write(TextOf(data, size));
  file.Close();
  return path;
}
