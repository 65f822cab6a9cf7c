// The lines of a text file, one after the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/utf8_source.h"

namespace selvane {

// Lines that end in LF or CR LF, as UTF-8; the last one needs no end.
class LineSource {
 public:
  // No line of literature or of MeSH comes near it.
  static constexpr std::size_t kLongestLine = std::size_t{16} << 20U;

  // The source outlives this and is read by it alone.
  explicit LineSource(ByteSource& source, std::size_t longest_line = kLongestLine)
      : text_(source), longest_line_(longest_line) {}

  // The next line without its end, valid until the next call; false at the end of the file. Of a line that is
  // longer than the limit the beginning is given and the rest passed over. Throws FileError.
  bool Next(std::string_view& line);
  // The number of the line that Next gave, from 1 on, and whether its end is missing.
  std::uint64_t line_number() const { return line_number_; }
  bool was_cut() const { return was_cut_; }
  std::uint64_t bytes_recoded() const { return text_.bytes_recoded(); }

 private:
  bool Join(std::string_view& line);
  std::string_view Ended(std::string_view line);

  Utf8Source text_;
  std::size_t longest_line_;
  std::string_view rest_;  // of the piece at hand
  std::string joined_;     // a line that runs over pieces
  std::uint64_t line_number_ = 0;
  bool was_cut_ = false;
};

}  // namespace selvane
