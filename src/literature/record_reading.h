// From files of literature to records, whatever their format.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>
#include <vector>

#include "base/byte_source.h"
#include "base/progress.h"
#include "literature/record.h"

namespace selvane {

enum class RecordFormat {
  kUnknown,
  kTagged,     // an abstract in which a tagger has marked terms
  kMedline,    // MEDLINE layout, as PubMed saves it: nbib
  kPubmedXml,  // PubMed XML
  kPubtator,   // PubTator: texts and rows of marks
  kBioc,       // BioC XML
};

// What a reader tells as it goes. What an operation throws ends the reading and comes out of ReadRecords.
class RecordVisitor {
 public:
  virtual ~RecordVisitor() = default;
  // The format of what comes now, before its first record.
  virtual void OnFormat(RecordFormat) {}
  virtual void OnRecord(Record&& record) = 0;
  // Something that gives less than it seems to, or nothing. `kind` is one of the texts below; `example` names
  // the file and the place. It comes once for each, to be counted by kind.
  virtual void OnProblem(std::string_view kind, std::string_view example) = 0;
  // So many more bytes of the file, as it stands on the disk, were read: for progress over many files.
  virtual void OnBytes(std::uint64_t) {}
};

// The kinds of problems, as the heads of a list: "records with neither headings nor marks: 12, as ...".
namespace problems {
inline constexpr std::string_view kUnreadable = "files that could not be read to their end";
inline constexpr std::string_view kUnknownFormat = "files of no known format";
inline constexpr std::string_view kNoRecords = "files without a record";
inline constexpr std::string_view kNoTerms = "records with neither headings nor marks";
inline constexpr std::string_view kTooLarge = "records of more than 16 MiB, which are left out";
inline constexpr std::string_view kNoPmid = "records without a PMID";
inline constexpr std::string_view kNotUtf8 = "files with bytes that are no UTF-8, read as code page 1252";
inline constexpr std::string_view kOutside = "marks outside of the text, which are left out";
inline constexpr std::string_view kMisplaced =
    "marks whose words stand elsewhere in the text, and count there";
inline constexpr std::string_view kNotFound = "marks whose words are not in the text, which are left out";
inline constexpr std::string_view kNoIdentifier =
    "marks for which the file says that they have no identifier";
inline constexpr std::string_view kOtherVocabulary = "marks with identifiers of other vocabularies";
inline constexpr std::string_view kRelation = "relations, which are not read";
inline constexpr std::string_view kPassage = "passages beside title and abstract, which are not read";
inline constexpr std::string_view kUnknownLine = "lines that belong to no record";
inline constexpr std::string_view kNoName = "substances without a name";
}  // namespace problems

// The format of a file, by its first bytes (unpacked; 256 KiB are enough). The name matters for tagged texts
// only, which are named *.txt, packed *.txt.gz.
RecordFormat RecognizeFormat(std::string_view first_bytes, const std::filesystem::path& name);

// Reads a file, packed or not, and hands its records on as they come: memory does not grow with the file.
// What is wrong with the file is told to the visitor, and what was read before counts; nothing is thrown but
// what visitor and progress throw. A record with neither headings nor marks is handed on and told. Gives the
// format.
RecordFormat ReadRecords(const std::filesystem::path& file, RecordVisitor& visitor, Progress& progress);
// The same for bytes at hand.
RecordFormat ReadRecords(ByteSource& source, RecordVisitor& visitor, Progress& progress);

// The files that a list of files and folders stands for: each folder gives all files directly in it, in name
// order, but for hidden ones. Throws InputError for a folder without any and for a name that does not exist.
std::vector<std::filesystem::path> LiteratureFiles(std::span<const std::filesystem::path> names);

}  // namespace selvane
