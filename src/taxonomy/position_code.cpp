#include "taxonomy/position_code.h"

#include <algorithm>

#include "base/text.h"

namespace selvane {

bool IsCategory(std::string_view code) {
  return code.size() == 1;
}

std::string_view CategoryOf(std::string_view code) {
  return code.substr(0, 1);
}

std::string_view ParentCode(std::string_view code) {
  const std::size_t dot = code.rfind('.');
  return dot == std::string_view::npos ? std::string_view() : code.substr(0, dot);
}

std::ptrdiff_t LevelOf(std::string_view code) {
  return std::count(code.begin(), code.end(), '.');
}

bool IsAtOrBelow(std::string_view code, std::string_view top) {
  // The dot behind `top` is what tells C.1.2 from C.12.
  return top.empty() || (code.starts_with(top) && (code.size() == top.size() || code[top.size()] == '.'));
}

std::string PositionCode(std::string_view tree_number) {
  std::string code(tree_number);
  if (code.size() > 1) code.insert(1, ".");
  return code;
}

std::string TreeNumber(std::string_view position_code) {
  std::string number(position_code);
  // Whatever stands behind the letter goes: foreign databases may have no dot there, and files are written
  // so.
  if (number.size() > 1) number.erase(1, 1);
  return number;
}

std::vector<std::string> PositionCodes(std::string_view tree) {
  std::vector<std::string> codes;
  while (!tree.empty()) {
    const std::size_t end = std::min(tree.find(';'), tree.size());
    const std::string_view number = Trimmed(tree.substr(0, end));
    tree.remove_prefix(std::min(end + 1, tree.size()));
    if (!number.empty()) codes.push_back(PositionCode(number));
  }
  return codes;
}

}  // namespace selvane
