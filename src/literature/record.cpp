#include "literature/record.h"

namespace selvane {

std::string DocumentText(const Record& record) {
  std::string text;
  text.reserve(record.title.size() + 1 + record.text.size());
  return text.append(record.title).append(1, ' ').append(record.text);
}

}  // namespace selvane
