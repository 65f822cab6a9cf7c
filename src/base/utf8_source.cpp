#include "base/utf8_source.h"

#include <algorithm>
#include <utility>

#include "base/text.h"

namespace selvane {

namespace {

// How many bytes the character has that begins with this one; 1 for what begins none.
std::size_t LengthByLead(char lead) {
  const unsigned byte = static_cast<unsigned char>(lead);
  if (byte < 0xC2 || byte > 0xF4) return 1;
  return byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
}

bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

// True when the bytes may be the first ones of a longer character.
bool IsBegun(std::string_view bytes) {
  return bytes.size() < LengthByLead(bytes.front()) &&
         std::all_of(bytes.begin() + 1, bytes.end(), IsContinuation);
}

}  // namespace

Utf8Source::Utf8Source(ByteSource& source, Encoding encoding) : source_(source), encoding_(encoding) {}

std::string_view Utf8Source::Next() {
  for (;;) {
    std::string_view piece = source_.Next();
    const bool is_last = piece.empty();
    if (form_ == Form::kUnknown) DropMark(piece);
    text_.clear();
    const std::string_view text = form_ == Form::kBytes ? FromUtf8(piece, is_last) : FromUtf16(piece);
    // A piece may hold nothing but the beginning of a character; an empty text would mean the end.
    if (is_last || !text.empty()) return text;
  }
}

void Utf8Source::DropMark(std::string_view& piece) {
  const auto drop = [&piece](std::string_view mark) {
    const bool found = piece.starts_with(mark);
    if (found) piece.remove_prefix(mark.size());
    return found;
  };
  // No text of UTF-8 begins with the bytes of either mark.
  form_ = drop("\xFF\xFE") ? Form::kUtf16Low : drop("\xFE\xFF") ? Form::kUtf16High : Form::kBytes;
  if (form_ == Form::kBytes && drop("\xEF\xBB\xBF")) encoding_ = Encoding::kUtf8;
}

// Valid text is handed on as it lies there, without a copy.
std::string_view Utf8Source::FromUtf8(std::string_view piece, bool is_last) {
  if (encoding_ == Encoding::kCodePage1252) return text_ = FromCodePage1252(piece);
  if (!begun_.empty()) {
    std::size_t more = 0;
    while (more < piece.size() && begun_.size() + more < LengthByLead(begun_[0]) &&
           IsContinuation(piece[more])) {
      ++more;
    }
    begun_ += piece.substr(0, more);
    piece.remove_prefix(more);
    AppendMixed(std::exchange(begun_, {}), is_last || !piece.empty());
  }
  if (text_.empty()) {
    const std::size_t valid = ValidUtf8Length(piece);
    const std::string_view rest = piece.substr(valid);
    if (rest.empty() || IsBegun(rest)) {
      begun_ = rest;
      return piece.substr(0, valid);
    }
  }
  AppendMixed(piece, is_last);
  return text_;
}

void Utf8Source::AppendMixed(std::string_view bytes, bool is_end) {
  for (;;) {
    const std::size_t valid = ValidUtf8Length(bytes);
    text_ += bytes.substr(0, valid);
    bytes.remove_prefix(valid);
    if (bytes.empty()) return;
    if (!is_end && IsBegun(bytes)) {
      begun_ = bytes;
      return;
    }
    // By itself: the bytes behind it may well be UTF-8.
    text_ += FromCodePage1252(bytes.substr(0, 1));
    bytes.remove_prefix(1);
    ++bytes_recoded_;
  }
}

// Halves of pairs without the other half, and a last byte by itself, become U+FFFD.
std::string_view Utf8Source::FromUtf16(std::string_view piece) {
  constexpr char32_t kUnreadable = 0xFFFD;
  const auto unreadable = [this](bool when) {
    if (when) AppendUtf8(text_, kUnreadable);
  };
  if (piece.empty()) unreadable(std::exchange(first_half_, 0) != 0 || !std::exchange(begun_, {}).empty());
  for (const char byte : piece) {
    begun_ += byte;
    if (begun_.size() < 2) continue;
    const auto at = [this](std::size_t i) {
      return static_cast<char32_t>(static_cast<unsigned char>(begun_[i]));
    };
    const char32_t unit = form_ == Form::kUtf16Low ? at(0) | at(1) << 8U : at(1) | at(0) << 8U;
    begun_.clear();
    const char32_t first = std::exchange(first_half_, 0);
    const bool is_second = unit >= 0xDC00 && unit < 0xE000;
    unreadable(first != 0 && !is_second);
    if (unit >= 0xD800 && unit < 0xDC00) {
      first_half_ = unit;
    } else if (is_second) {
      AppendUtf8(text_, first == 0 ? kUnreadable : 0x10000 + ((first - 0xD800) << 10U) + (unit - 0xDC00));
    } else {
      AppendUtf8(text_, unit);
    }
  }
  return text_;
}

}  // namespace selvane
