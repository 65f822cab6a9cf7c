// Texts of fields, as several formats give them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace selvane {

// The first number of four digits that can be a year, 0 when there is none: of "2017 Apr 17", "1998 Dec-1999
// Jan", "Winter 1999".
int YearOf(std::string_view text);

// Appends a text with each run of blanks and line ends as one blank, none at the beginning of `out`, none
// twice in a row. A blank at its end stays: more may follow.
void AppendFolded(std::string& out, std::string_view text);
// Takes the blank at the end away.
void TrimEnd(std::string& text);

// The beginning of a text, at most so many bytes of it, without a character that is cut.
std::string_view Shortened(std::string_view text, std::size_t most);

// What a mark says that it names.
struct Identifiers {
  std::vector<std::string> ids;  // of MeSH and OMIM, without blanks and without the prefix MESH:
  bool is_none = false;          // the file says that there is none: -1
  bool is_other = false;         // there is one of another vocabulary
};

// Reads D003110|D009369, D1+D2, MESH:D003110, OMIM:123, -1; parts are parted by |, + , or ;.
Identifiers IdentifiersOf(std::string_view text);

}  // namespace selvane
