// Texts as they are shown to people: a name from a file must not command the terminal or the spreadsheet that
// shows it, nor fill the screen.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace selvane {

// The text with each control character, and each byte that is no UTF-8, as \x1b. Line feeds and tabs stay, as
// lines and columns are made of them.
std::string Visible(std::string_view text);

// The text with an apostrophe before it where a spreadsheet would take it for a formula: where it begins with
// =, +, -, @, a tab or a line end and is no number.
std::string Guarded(std::string_view text);

// The beginning of a text of more than so many bytes, too long for a message, with "..." behind it; any other
// as it is.
std::string Shortened(std::string_view text, std::size_t most = 120);

}  // namespace selvane
