#include "taxonomy/mesh_loading.h"

#include <fmt/format.h>

#include "base/error.h"
#include "data/new_database.h"
#include "taxonomy/mesh_reading.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

// Passes on what a file is read for: some layouts have headings and supplementary records in one file.
class Wanted final : public MeshVisitor {
 public:
  enum class Kind { kHeadings, kSupplementary };

  Wanted(MeshCollection& collection, Kind kind) : collection_(collection), kind_(kind) {}

  void OnHeading(MeshHeading&& heading) override {
    if (kind_ != Kind::kHeadings) return;
    ++count_;
    collection_.OnHeading(std::move(heading));
  }
  void OnSupplementary(MeshSupplementary&& record) override {
    if (kind_ != Kind::kSupplementary) return;
    ++count_;
    collection_.OnSupplementary(std::move(record));
  }
  void OnProblem(std::string_view kind, std::string_view example) override {
    collection_.OnProblem(kind, example);
  }
  long count() const { return count_; }

 private:
  MeshCollection& collection_;
  Kind kind_;
  long count_ = 0;
};

void Read(const fs::path& file, Wanted::Kind kind, MeshCollection& collection, Progress& progress) {
  ByteSource source(file);
  const MeshFormat format = RecognizeMesh(source.Head());
  Wanted wanted(collection, kind);
  ReadMesh(source, format, wanted, progress);
  if (wanted.count() > 0) return;
  if (kind == Wanted::Kind::kSupplementary) {
    throw InputError(fmt::format(
        "{}: it holds no supplementary records of MeSH; choose the file that has them", file.string()));
  }
  throw InputError(
      fmt::format("{}: it holds no headings of MeSH; choose the file of descriptors, and name the one of "
                  "supplementary records beside it",
                  file.string()));
}

void WriteTables(const fs::path& path, MeshCollection& collection) {
  Database database = Database::Open(path, OpenMode::kWritable);
  Transaction transaction(database);
  HeadingWriter writer(database);
  collection.FillTables(writer);
  transaction.Commit();
}

}  // namespace

bool HoldsMesh(const fs::path& file) {
  try {
    return RecognizeMesh(ByteSource(file).Head()) != MeshFormat::kNone;
  } catch (const FileError&) {
    return false;  // whoever reads it says why
  }
}

MeshLoadReport LoadMesh(const MeshLoadRequest& request, Progress& progress) {
  MeshLoadReport report;
  MakeDatabase(request.database, request.existing, [&](const fs::path& path) {
    MeshCollection collection(request.check_tags);
    progress.SetStatus("Initializing taxonomies database....");
    Read(request.file, Wanted::Kind::kHeadings, collection, progress);
    for (const fs::path& file : request.supplementary) {
      Read(file, Wanted::Kind::kSupplementary, collection, progress);
    }
    progress.SetStatus("Loading taxonomies in database....");
    const SourceRows rows = collection.MakeRows();
    if (collection.counts().headings == 0) {
      throw InputError(fmt::format("{}: none of its headings has a tree number; choose a file of descriptors",
                                   request.file.string()));
    }
    MakeTaxonomy(path, rows, progress);
    WriteTables(path, collection);
    report.rows = static_cast<long>(rows.rows().size());
    report.unnamed = rows.CountUnnamed();
    report.counts = collection.counts();
    report.problems = collection.problems();
  });
  progress.SetStatus("Completed!!");
  return report;
}

}  // namespace selvane
