#include "data/sql_dialect.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "base/error.h"
#include "base/shown_text.h"
#include "base/text.h"

namespace selvane {

namespace {

using namespace std::string_view_literals;

// Words that keep their meaning; every other word is a name. INDEX is left out on purpose: it is a column.
constexpr std::array kKeywords = {
    "ALL"sv,  "AND"sv,   "AS"sv,     "ASC"sv,   "BETWEEN"sv, "BY"sv,   "DELETE"sv, "DESC"sv,   "DISTINCT"sv,
    "FROM"sv, "GROUP"sv, "HAVING"sv, "IN"sv,    "INSERT"sv,  "INTO"sv, "IS"sv,     "LIKE"sv,   "LIMIT"sv,
    "NOT"sv,  "NULL"sv,  "OR"sv,     "ORDER"sv, "SELECT"sv,  "SET"sv,  "UPDATE"sv, "VALUES"sv, "WHERE"sv};

constexpr std::size_t kLongestKeyword = 8;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// Letters, digits, the underscore and every byte of a character outside ASCII.
bool IsNameByte(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

// The keyword that a word is, in capitals; empty for a name.
std::string_view KeywordOf(std::string_view word) {
  if (word.size() > kLongestKeyword) return {};
  std::array<char, kLongestKeyword> capitals{};
  std::transform(word.begin(), word.end(), capitals.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  const std::string_view upper(capitals.data(), word.size());
  const auto found = std::lower_bound(kKeywords.begin(), kKeywords.end(), upper);
  return found != kKeywords.end() && *found == upper ? *found : std::string_view();
}

// A Like pattern as a GLOB pattern: the wildcards * and ? and sets in brackets are the same in both, but for
// the sign that negates a set; # is a digit.
std::string GlobOf(std::string_view like) {
  std::string glob;
  bool in_set = false;
  for (std::size_t i = 0; i < like.size(); ++i) {
    const char c = like[i];
    if (c == '#' && !in_set) {
      glob += "[0-9]";
    } else if (c == '!' && in_set && like[i - 1] == '[') {
      glob += '^';
    } else {
      glob += c;
    }
    if (c == '[') in_set = true;
    if (c == ']') in_set = false;
  }
  return glob;
}

class Translator {
 public:
  explicit Translator(std::string_view sql) : sql_(sql) { out_.text.reserve(sql.size() + 32); }

  TranslatedSql Run() {
    while (at_ < sql_.size()) {
      const char c = sql_[at_];
      if (c == '\0') throw InputError("the SQL text holds a zero byte");
      if (IsBlank(c)) {
        ++at_;
      } else if (c == '\'' || c == '"') {
        TakeLiteral(c);
      } else if (c == '[') {
        TakeBracketed();
      } else if (IsDigit(c) || (c == '.' && at_ + 1 < sql_.size() && IsDigit(sql_[at_ + 1]))) {
        TakeNumberOrName();
      } else if (IsNameByte(c)) {
        TakeWord();
      } else {
        TakeSign(c);
      }
    }
    return std::move(out_);
  }

 private:
  void Put(std::string_view token) {
    if (!out_.text.empty()) out_.text += ' ';
    out_.text += token;
    previous_ = token.size() <= kLongestKeyword ? std::string(token) : std::string();
  }

  void PutName(std::string_view name) {
    Put(DoubleQuoted(name));
    previous_.clear();
  }

  void PutValue(Variant value) {
    out_.values.push_back(std::move(value));
    Put("?");
  }

  void TakeLiteral(char quote) {
    std::string value;
    for (++at_;; ++at_) {
      if (at_ >= sql_.size()) throw InputError("the SQL text has a quote without its partner");
      if (sql_[at_] == '\0') throw InputError("the SQL text holds a zero byte");
      if (sql_[at_] == quote) {
        if (at_ + 1 >= sql_.size() || sql_[at_ + 1] != quote) break;
        ++at_;
      }
      value += sql_[at_];
    }
    ++at_;
    PutValue(previous_ == "GLOB" ? GlobOf(value) : std::move(value));
  }

  void TakeBracketed() {
    std::string name;
    for (++at_;; ++at_) {
      if (at_ >= sql_.size()) throw InputError("the SQL text has a [ without its ]");
      if (sql_[at_] == '\0') throw InputError("the SQL text holds a zero byte");
      if (sql_[at_] == ']') {
        if (at_ + 1 >= sql_.size() || sql_[at_ + 1] != ']') break;
        ++at_;
      }
      name += sql_[at_];
    }
    ++at_;
    PutName(name);
  }

  // True where a table's name must follow, even one that looks like a number.
  bool ExpectsTable() const { return previous_ == "FROM" || previous_ == "INTO" || previous_ == "UPDATE"; }

  bool ExpectsValue() const { return previous_ == "=" || previous_ == "<" || previous_ == ">" || in_values_; }

  void TakeNumberOrName() {
    std::size_t end = at_;
    while (end < sql_.size() && (IsNameByte(sql_[end]) || sql_[end] == '.' || IsExponentSign(end))) ++end;
    const std::string_view token = sql_.substr(at_, end - at_);
    const std::optional<double> number = ExpectsTable() ? std::nullopt : NumberOf(token);
    if (!number) return TakeWord();
    at_ = end;
    if (!ExpectsValue()) return Put(token);  // such as a LIMIT
    if (const auto integer = Int32Of(token)) return PutValue(std::int64_t{*integer} * sign_);
    PutValue(*number * sign_);
  }

  bool IsExponentSign(std::size_t at) const {
    return (sql_[at] == '+' || sql_[at] == '-') && (sql_[at - 1] == 'e' || sql_[at - 1] == 'E');
  }

  void TakeWord() {
    std::size_t end = at_;
    while (end < sql_.size() && IsNameByte(sql_[end])) ++end;
    const std::string_view word = sql_.substr(at_, end - at_);
    if (word.empty())
      throw InputError(fmt::format("the SQL text cannot be read at \"{}\"", Shortened(sql_.substr(at_))));
    const bool table = ExpectsTable();
    at_ = end;
    const std::string_view keyword = KeywordOf(word);
    if (keyword.empty()) {
      while (end < sql_.size() && IsBlank(sql_[end])) ++end;
      const bool function = !table && !in_values_ && end < sql_.size() && sql_[end] == '(';
      return function ? Put(word) : PutName(word);
    }
    if (keyword == "VALUES") in_values_ = true;
    Put(keyword == "LIKE" ? std::string_view("GLOB") : keyword);
  }

  void TakeSign(char c) {
    if (c == '?') throw InputError("the SQL text holds a ? outside quotes");
    ++at_;
    if (c == '*' && previous_ == "DELETE") return;
    sign_ = 1;
    const bool before_number = at_ < sql_.size() && (IsDigit(sql_[at_]) || sql_[at_] == '.');
    if (c == '-' && before_number && ExpectsValue() && previous_ != "?") {
      sign_ = -1;
      TakeNumberOrName();
      sign_ = 1;
      return;
    }
    // Two-character comparisons are kept together; any other sign stands alone, so that no comment can begin.
    const char next = at_ < sql_.size() ? sql_[at_] : '\0';
    if ((c == '<' && (next == '>' || next == '=')) || (c == '>' && next == '=') ||
        (c == '!' && next == '=')) {
      ++at_;
      const std::array<char, 2> pair = {c, next};
      Put({pair.data(), pair.size()});
      previous_ = "=";
      return;
    }
    Put({&c, 1});
  }

  std::string_view sql_;
  std::size_t at_ = 0;
  TranslatedSql out_;
  std::string previous_;  // the token put last, empty for a name
  bool in_values_ = false;
  int sign_ = 1;
};

}  // namespace

bool SqlDialect::IsPlainName(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), IsNameByte);
}

std::string SqlDialect::NameText(std::string_view name) {
  if (IsPlainName(name) && KeywordOf(name).empty()) return std::string(name);
  std::string text = "[";
  for (const char c : name) text.append(c == ']' ? 2 : 1, c);
  return text + ']';
}

std::string SqlDialect::ValueText(std::string_view value) {
  std::string text = "'";
  for (const char c : value) text.append(c == '\'' ? 2 : 1, c);
  return text + '\'';
}

std::string SqlDialect::BeginningText(std::string_view value) {
  std::string pattern;
  for (const char c : value) {
    const bool is_wildcard = c == '*' || c == '?' || c == '#' || c == '[';
    is_wildcard ? pattern.append({'[', c, ']'}) : pattern.append(1, c);
  }
  return ValueText(pattern + '*');
}

TranslatedSql SqlDialect::Translate(std::string_view sql) {
  return Translator(sql).Run();
}

}  // namespace selvane
