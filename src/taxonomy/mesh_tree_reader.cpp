// The tree of MeSH as a text: a line for each position.
#include <fmt/format.h>

#include "base/line_source.h"
#include "base/text.h"
#include "taxonomy/mesh_readers.h"

namespace selvane {

void ReadMeshTree(ByteSource& source, MeshVisitor& visitor, const MeshPulse& pulse) {
  LineSource lines(source);
  std::string_view line;
  bool is_first = true;
  while (lines.Next(line)) {
    if (lines.line_number() % 1024 == 0) pulse();
    if (Trimmed(line).empty() || line.starts_with('#')) continue;
    const std::size_t first = line.find('\t');
    const std::size_t second = first == std::string_view::npos ? first : line.find('\t', first + 1);
    const bool is_heading = is_first && LowerCase(line).starts_with("tree number");
    is_first = false;
    if (is_heading) continue;
    if (second == std::string_view::npos || line.find('\t', second + 1) != std::string_view::npos) {
      visitor.OnProblem("lines of the tree without three fields",
                        fmt::format("line {}", lines.line_number()));
      continue;
    }
    MeshHeading heading;
    heading.tree_numbers.emplace_back(Trimmed(line.substr(0, first)));
    heading.id = Trimmed(line.substr(first + 1, second - first - 1));
    heading.name = Trimmed(line.substr(second + 1));
    visitor.OnHeading(std::move(heading));
  }
}

}  // namespace selvane
