// Which records were met already.
#pragma once

#include <bitset>
#include <charconv>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace selvane {

// A set of PMIDs. These are numbers close together, so each costs a bit: all that there are, some megabytes.
class SeenPmids {
 public:
  // True when it is not in the set; an empty one never is. A PMID that is no number is one by its text.
  bool IsNew(std::string_view pmid) const {
    const std::uint32_t number = NumberOf(pmid);
    if (number == 0) return pmid.empty() || !others_.contains(std::string(pmid));
    const auto page = pages_.find(number / kPageBits);
    return page == pages_.end() || !page->second->test(number % kPageBits);
  }
  void Add(std::string_view pmid) {
    const std::uint32_t number = NumberOf(pmid);
    if (number == 0) {
      if (!pmid.empty()) others_.emplace(pmid);
      return;
    }
    std::unique_ptr<Page>& page = pages_[number / kPageBits];
    if (!page) page = std::make_unique<Page>();
    page->set(number % kPageBits);
  }

 private:
  static constexpr std::uint32_t kPageBits = 1U << 16;
  using Page = std::bitset<kPageBits>;

  // 0 for what is no number, or written with zeros before it.
  static std::uint32_t NumberOf(std::string_view pmid) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(pmid.data(), pmid.data() + pmid.size(), number);
    const bool is_whole = error == std::errc() && end == pmid.data() + pmid.size();
    return is_whole && !pmid.starts_with('0') ? number : 0;
  }

  std::unordered_map<std::uint32_t, std::unique_ptr<Page>> pages_;
  std::unordered_set<std::string> others_;
};

}  // namespace selvane
