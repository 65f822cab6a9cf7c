#include "base/error.h"
#include "base/text.h"
#include "fuzzing.h"
#include "taxonomy/position_code.h"
#include "taxonomy/taxonomy_file.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  selvane::TaxonomyFile file;
  selvane::SilentProgress progress;
  try {
    ParseTaxonomyText(std::string(TextOf(data, size)), "input", file, progress);
  } catch (const selvane::InputError&) {
    return 0;
  }
  Require(selvane::IsUtf8(file.text));
  for (const selvane::TaxonomyLine& line : file.lines) {
    for (const std::string_view part : {line.term, line.type, line.tree}) {
      Require(part.data() >= file.text.data() && part.data() + part.size() <= &file.text.back());
    }
    for (const std::string& code : selvane::PositionCodes(line.tree)) {
      Require(!code.empty() && code.find_first_of(";'") == std::string::npos);
      Require(code.size() == 1 || code[1] == '.');
      Require(selvane::CharacterCount(code) <= 127);  // the width of the field for it
    }
  }
  return 0;
}
