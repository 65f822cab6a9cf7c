// What the readers of MeSH files give, one record after the other.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace selvane {

// A heading: a descriptor with its places in the tree and the other texts for it.
struct MeshHeading {
  std::string id;            // D001249
  std::string name;          // as published
  int descriptor_class = 0;  // 1 topic, 2 publication type, 3 check tag, 4 place; 0 where a file does not say
  std::vector<std::string> tree_numbers;  // C08.127.108
  std::vector<std::string> entry_terms;   // may hold the name, and a text twice
};

// A supplementary record, such as a substance: it stands nowhere in the tree but maps to headings.
struct MeshSupplementary {
  std::string id;  // C025735
  std::string name;
  std::vector<std::string> headings;  // identifiers of headings, or their names where a layout has these
};

// Who is told what a reader reads. What an operation throws comes out of the reader.
class MeshVisitor {
 public:
  virtual ~MeshVisitor() = default;
  // One heading may come in several calls, each with other tree numbers.
  virtual void OnHeading(MeshHeading&& heading) = 0;
  virtual void OnSupplementary(MeshSupplementary&& record) = 0;
  // Something that was passed over, by its kind ("lines without three fields") and where it was.
  virtual void OnProblem(std::string_view kind, std::string_view example) = 0;
};

}  // namespace selvane
