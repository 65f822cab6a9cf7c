// The names of elements that a reader of XML knows.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

namespace selvane {

// Finds the element of a name in a moment: readers ask for each tag of files of gigabytes. `Element{}` stands
// for any other name.
template <typename Element, std::size_t kCount>
class ElementNames {
 public:
  using Entry = std::pair<std::string_view, Element>;

  constexpr explicit ElementNames(const std::array<Entry, kCount>& entries) {
    for (const Entry& entry : entries) {
      std::size_t slot = SlotOf(entry.first);
      while (!slots_[slot].first.empty()) slot = (slot + 1) % kSlots;
      slots_[slot] = entry;
    }
  }

  Element Find(std::string_view name) const {
    if (name.empty()) return Element{};
    for (std::size_t slot = SlotOf(name); !slots_[slot].first.empty(); slot = (slot + 1) % kSlots) {
      if (slots_[slot].first == name) return slots_[slot].second;
    }
    return Element{};
  }

 private:
  static constexpr std::size_t kSlots = 128;  // so that most names meet none before them
  static_assert(kCount < kSlots / 2);

  static constexpr std::size_t SlotOf(std::string_view name) {
    const auto code = [](char c) { return static_cast<std::size_t>(static_cast<unsigned char>(c)); };
    return (name.size() * 11 + code(name.front()) * 5 + code(name.back()) + code(name[name.size() / 2]) * 3) %
           kSlots;
  }

  std::array<Entry, kSlots> slots_ = {};
};

}  // namespace selvane
