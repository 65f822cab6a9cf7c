// From MeSH as it is published to a taxonomy database.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "base/new_file.h"
#include "base/progress.h"
#include "taxonomy/mesh_collection.h"

namespace selvane {

struct MeshLoadRequest {
  std::filesystem::path file;      // of headings, in any layout
  std::filesystem::path database;  // to make
  ExistingFile existing = ExistingFile::kRefuse;
  std::vector<std::filesystem::path> supplementary = {};  // files of supplementary records, in any layout
  bool check_tags = false;  // whether headings without a tree number take part, in a category of their own
};

struct MeshLoadReport {
  MeshCounts counts;
  long rows = 0;     // of `Source`, and of `Taxonomy`
  long unnamed = 0;  // positions that only stand above others: parts of MeSH have them
  std::map<std::string, MeshProblem, std::less<>> problems;
};

// Whether the file is MeSH by its content. False also for a file that cannot be read.
bool HoldsMesh(const std::filesystem::path& file);

// Makes a taxonomy database of MeSH files, with the tables of headings. Nothing is left under the database's
// name when it fails. Throws FileError and InputError for files that cannot be read or hold no headings or no
// supplementary records, DatabaseError when the database is there already or cannot be made.
MeshLoadReport LoadMesh(const MeshLoadRequest& request, Progress& progress);

}  // namespace selvane
