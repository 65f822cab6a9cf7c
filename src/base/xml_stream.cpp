#include "base/xml_stream.h"

#include <expat.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <exception>
#include <new>
#include <string>

#include "base/error.h"
#include "base/text.h"
#include "base/utf8_source.h"

namespace selvane {

namespace {

// What the declaration at the head of a file names as its encoding.
Encoding DeclaredEncoding(ByteSource& source) {
  std::string_view head = source.Head();
  if (head.starts_with("\xEF\xBB\xBF")) head.remove_prefix(3);
  if (!head.starts_with("<?xml")) return Encoding::kUtf8;
  const std::string declaration = LowerCase(head.substr(0, head.find("?>")));
  constexpr std::string_view kAttribute = "encoding";
  std::size_t at = declaration.find(kAttribute);
  if (at == std::string::npos) return Encoding::kUtf8;
  at = declaration.find_first_of("\"'", at);
  const std::size_t end = at == std::string::npos ? at : declaration.find(declaration[at], at + 1);
  if (end == std::string::npos) return Encoding::kUtf8;
  const std::string name = declaration.substr(at + 1, end - at - 1);
  const auto is_one_of = [&name](auto... names) { return ((name == names) || ...); };
  // A file of UTF-16 is told by its byte order mark, whatever it declares.
  if (is_one_of("utf-8", "utf8", "us-ascii", "ascii", "utf-16")) return Encoding::kUtf8;
  if (is_one_of("iso-8859-1", "latin1", "windows-1252", "cp1252")) return Encoding::kCodePage1252;
  throw InputError(fmt::format("{}: its encoding \"{}\" is not known; save the file as UTF-8",
                               source.path().string(), name));
}

}  // namespace

std::string_view XmlAttributes::operator[](std::string_view name) const {
  for (const char* const* pair = pairs_; *pair != nullptr; pair += 2) {
    if (name == *pair) return pair[1];
  }
  return {};
}

class XmlStream::Parser {
 public:
  Parser(ByteSource& source, XmlHandler& handler, XmlLimits limits)
      : text_(source, DeclaredEncoding(source)), handler_(handler), limits_(limits) {
    // The encoding is settled before: what the file declares is not looked at again.
    parser_.reset(::XML_ParserCreate("UTF-8"));
    if (!parser_) throw std::bad_alloc();
    ::XML_SetUserData(parser_.get(), this);
    ::XML_SetElementHandler(parser_.get(), &OnStart, &OnEnd);
    ::XML_SetCharacterDataHandler(parser_.get(), &OnText);
    ::XML_SetEntityDeclHandler(parser_.get(), &OnEntityDeclaration);
    ::XML_SetSkippedEntityHandler(parser_.get(), &OnUnknownEntity);
  }

  bool Step() {
    if (stopped_) return false;
    const std::string_view text = text_.Next();
    const bool is_last = text.empty();
    fed_ += text.size();
    const XML_Status status =
        ::XML_Parse(parser_.get(), text.data(), static_cast<int>(text.size()), is_last ? 1 : 0);
    if (fault_) std::rethrow_exception(fault_);
    if (stopped_) return false;
    if (status == XML_STATUS_ERROR) FailAsNoXml(is_last);
    CheckTag();
    return !is_last;
  }

  void Stop() {
    stopped_ = true;
    ::XML_StopParser(parser_.get(), XML_FALSE);
  }

  void WantText(bool wanted) {
    ::XML_SetCharacterDataHandler(parser_.get(), wanted ? &OnText : nullptr);
    ::XML_SetSkippedEntityHandler(parser_.get(), wanted ? &OnUnknownEntity : nullptr);
  }

  std::uint64_t line_number() const { return ::XML_GetCurrentLineNumber(parser_.get()); }
  const Utf8Source& text() const { return text_; }

 private:
  struct FreeParser {
    void operator()(XML_Parser parser) const { ::XML_ParserFree(parser); }
  };

  // Exceptions must not run through the parser, which is C: they are kept until it has returned.
  template <typename Call>
  static void Guarded(void* data, const Call& call) noexcept {
    Parser& self = *static_cast<Parser*>(data);
    // The parser still tells of the end of an empty element in which it was stopped.
    if (self.stopped_) return;
    try {
      call(self);
    } catch (...) {
      self.fault_ = std::current_exception();
      self.Stop();
    }
  }

  static void OnStart(void* data, const char* name, const char** attributes) {
    Guarded(data, [=](Parser& self) {
      self.text_length_ = 0;
      if (++self.depth_ > self.limits_.depth) {
        self.Fail(fmt::format("there are more than {} elements within each other", self.limits_.depth));
      }
      self.handler_.OnStart(name, XmlAttributes(attributes));
    });
  }

  static void OnEnd(void* data, const char* name) {
    Guarded(data, [=](Parser& self) {
      self.text_length_ = 0;
      --self.depth_;
      self.handler_.OnEnd(name);
    });
  }

  static void OnText(void* data, const char* text, int length) {
    Guarded(data, [=](Parser& self) { self.TakeText({text, static_cast<std::size_t>(length)}); });
  }

  static void OnUnknownEntity(void* data, const char* name, int is_parameter) {
    // A parameter entity stands in the document type, whose content nobody wants.
    if (is_parameter != 0) return;
    Guarded(data, [=](Parser& self) { self.TakeText(fmt::format("&{};", name)); });
  }

  static void OnEntityDeclaration(void* data, const char* name, int, const char*, int, const char*,
                                  const char*, const char*, const char*) {
    Guarded(data, [=](Parser& self) {
      self.Fail(
          fmt::format("the file declares an entity of its own, \"{}\", which is not read; take the "
                      "declaration out",
                      name));
    });
  }

  void TakeText(std::string_view text) {
    text_length_ += text.size();
    if (text_length_ > limits_.text) {
      Fail(fmt::format("a text is longer than {} bytes", limits_.text));
    }
    handler_.OnText(text);
  }

  // A tag is kept by the parser until its end comes, and looked through again with each piece: without a
  // limit a file that is one tag would take the square of its length.
  void CheckTag() {
    const auto parsed = ::XML_GetCurrentByteIndex(parser_.get());
    if (parsed < 0 || fed_ - static_cast<std::uint64_t>(parsed) <= limits_.tag) return;
    Fail(fmt::format("a tag is longer than {} bytes", limits_.tag));
  }

  [[noreturn]] void FailAsNoXml(bool is_last) {
    const XML_Error error = ::XML_GetErrorCode(parser_.get());
    if (error == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
    // All that is there was well-formed: it is the rest that is missing.
    if (is_last) Fail("the file ends too early; get it again");
    Fail(fmt::format("this is no well-formed XML ({})", ::XML_ErrorString(error)));
  }

  [[noreturn]] void Fail(const std::string& reason) {
    throw InputError(fmt::format("{}: line {}: {}", text_.source().path().string(), line_number(), reason));
  }

  Utf8Source text_;
  XmlHandler& handler_;
  XmlLimits limits_;
  std::unique_ptr<std::remove_pointer_t<XML_Parser>, FreeParser> parser_;
  std::exception_ptr fault_;
  std::uint64_t fed_ = 0;
  std::size_t depth_ = 0;
  std::size_t text_length_ = 0;
  bool stopped_ = false;
};

XmlStream::XmlStream(ByteSource& source, XmlHandler& handler, XmlLimits limits)
    : parser_(std::make_unique<Parser>(source, handler, limits)) {}
XmlStream::~XmlStream() = default;

bool XmlStream::Step() {
  return parser_->Step();
}
void XmlStream::Stop() {
  parser_->Stop();
}
void XmlStream::WantText(bool wanted) {
  parser_->WantText(wanted);
}
std::uint64_t XmlStream::line_number() const {
  return parser_->line_number();
}
std::uint64_t XmlStream::bytes_recoded() const {
  return parser_->text().bytes_recoded();
}

}  // namespace selvane
