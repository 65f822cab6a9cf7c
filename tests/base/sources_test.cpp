// Files read in pieces: bytes that may be packed, text in any encoding, lines, XML, and packed texts.
#include <zlib.h>

#include "base/error.h"
#include "base/line_source.h"
#include "base/packing.h"
#include "base/xml_stream.h"
#include "support/test_support.h"

namespace selvane::tests {

using namespace std::string_literals;

using Sources = FolderTest;

// As gzip packs it.
void WriteGzip(const fs::path& path, std::string_view text, const char* mode = "wb") {
  const gzFile file = ::gzopen(path.c_str(), mode);
  ASSERT_EQ(::gzwrite(file, text.data(), static_cast<unsigned>(text.size())), static_cast<int>(text.size()));
  ASSERT_EQ(::gzclose(file), Z_OK);
}

std::string AllOf(ByteSource& source, std::string* fault = nullptr) {
  std::string all;
  try {
    for (std::string_view piece = source.Next(); !piece.empty(); piece = source.Next()) all += piece;
  } catch (const FileError& error) {
    if (fault == nullptr) throw;
    *fault = error.what();
  }
  return all;
}

TEST_F(Sources, UnpackByContent) {
  std::string text;
  for (int i = 0; i < 100'000; ++i) text += fmt::format("line {}\n", i * 7919 % 10'007);
  WriteText("plain", text);
  WriteGzip("packed", text);
  WriteGzip("packed", "and more", "ab");
  WriteText("packed", ReadFile("packed") + std::string(700, '\0'));
  ByteSource plain("plain");
  EXPECT_EQ(plain.Head(), text.substr(0, ByteSource::kPieceSize));
  EXPECT_EQ(AllOf(plain), text);
  EXPECT_EQ(plain.bytes_read(), plain.file_size());
  ByteSource packed("packed");
  EXPECT_EQ(packed.Head(), text.substr(0, ByteSource::kPieceSize));
  EXPECT_EQ(AllOf(packed), text + "and more");
  EXPECT_EQ(packed.bytes_given(), text.size() + 8);

  const std::string bytes = ReadFile("packed");
  std::string fault;
  ByteSource truncated("short.gz", std::string_view(bytes).substr(0, 100'000));
  const std::string read = AllOf(truncated, &fault);
  EXPECT_GT(read.size(), 200'000U);
  EXPECT_TRUE(text.starts_with(read));
  EXPECT_EQ(fault, "short.gz: cannot read: the packed file ends too early; get it again");
  const std::string damaged = bytes.substr(0, 100'000) + std::string(50, 'x') + bytes.substr(100'050);
  ByteSource flipped("flipped.gz", damaged);
  AllOf(flipped, &fault);
  EXPECT_EQ(fault, "flipped.gz: cannot read: its packed bytes are damaged; get it again");
}

TEST_F(Sources, RefuseBombsAndWhatIsNoFile) {
  WriteGzip("bomb", std::string(std::size_t{80} << 20U, 'x'));
  ByteSource bomb("bomb");
  std::string fault;
  EXPECT_LT(AllOf(bomb, &fault).size(), std::size_t{66} << 20U);
  EXPECT_NE(fault.find("250 times its size"), std::string::npos);
  ExpectFault<FileError>("this is no file", [] { ByteSource("."); });
  ExpectFault<FileError>("none: cannot open", [] { ByteSource("none"); });
}

Texts LinesOf(std::string_view bytes, std::size_t piece, std::size_t longest = LineSource::kLongestLine) {
  ByteSource source("file", bytes, piece);
  LineSource lines(source, longest);
  Texts all;
  for (std::string_view line; lines.Next(line);)
    all.emplace_back(fmt::format("{}{}", line, lines.was_cut() ? "|" : ""));
  return all;
}

TEST(LineSource, ReadsAnyEncodingInAnyPieces) {
  const std::string utf16 =
      "\xFF\xFE"
      "A\0\xE4\0\n\0\x3D\xD8\x00\xDE\0\xD8"
      "B\0"s;
  const std::string swapped = "\xFE\xFF\0A\0\xE4\0\n\xD8\x3D\xDE\0\xD8\0\0B"s;
  const struct {
    std::string bytes;
    Texts lines;
  } cases[] = {
      {"", {}},
      {"a\r\nb\n\nc", {"a", "b", "", "c"}},
      {"\xEF\xBB\xBFSj\xC3\xB6gren\n\xE2\x82\xAC\n", {"Sj\xC3\xB6gren", "\xE2\x82\xAC"}},
      {"Sj\xF6gren\nSj\xC3\xB6gren\n\x80\xE2\x82",
       {"Sj\xC3\xB6gren", "Sj\xC3\xB6gren", "\xE2\x82\xAC\xC3\xA2\xE2\x80\x9A"}},
      {"\xE2\x82\xE2\x82\xAC", {"\xC3\xA2\xE2\x80\x9A\xE2\x82\xAC"}},
      {utf16,
       {"A\xC3\xA4",
        "\xF0\x9F\x98\x80\xEF\xBF\xBD"
        "B"}},
      {swapped,
       {"A\xC3\xA4",
        "\xF0\x9F\x98\x80\xEF\xBF\xBD"
        "B"}},
  };
  for (const auto& [bytes, lines] : cases) {
    // The first piece holds the byte order mark, as the first 256 KiB of a file do.
    for (const std::size_t piece : {3, 4, 5, 100}) EXPECT_EQ(LinesOf(bytes, piece), lines) << bytes << piece;
  }
  for (const std::size_t piece : {1, 2, 100}) {
    EXPECT_EQ(LinesOf("1234567\nab\xC3\xA4\nx", piece, 3), (Texts{"123|", "ab|", "x"})) << piece;
  }
}

// Writes down what it is told.
struct Listener : XmlHandler {
  void OnStart(std::string_view name, const XmlAttributes& attributes) override {
    told += fmt::format("<{}{}>", name, attributes["a"]);
    if (name == "stop") stream->Stop();
    if (name == "throw") throw Interrupted();
  }
  void OnEnd(std::string_view name) override { told += fmt::format("</{}>", name); }
  void OnText(std::string_view part) override { told += part; }
  std::string told;
  XmlStream* stream = nullptr;
};

std::string ToldOf(std::string_view bytes, XmlLimits limits = {}, std::size_t piece = 100) {
  ByteSource source("file.xml", bytes, piece);
  Listener listener;
  XmlStream stream(source, listener, limits);
  listener.stream = &stream;
  while (stream.Step()) {
  }
  return listener.told;
}

TEST(XmlStream, TellsTagsAndTexts) {
  EXPECT_EQ(ToldOf("<!DOCTYPE r SYSTEM 'http://none/r.dtd'><r a='1'>x&lt;&#228;&beta;<b/></r>"),
            "<r1>x<\xC3\xA4&beta;<b></b></r>");
  EXPECT_EQ(ToldOf("<?xml version='1.0' encoding='ISO-8859-1'?><r>\xC3\xB6</r>"), "<r>\xC3\x83\xC2\xB6</r>");
  EXPECT_EQ(ToldOf("<r>\xF6\xC3\xB6</r>"), "<r>\xC3\xB6\xC3\xB6</r>");
  EXPECT_EQ(ToldOf("\xFE\xFF\0<\0r\0/\0>"s), "<r></r>");
  EXPECT_EQ(ToldOf("<r><stop/><b/></r>"), "<r><stop>");
  EXPECT_THROW(ToldOf("<r><throw/></r>"), Interrupted);
}

TEST(XmlStream, RefusesWhatIsNoXmlOrBeyondLimits) {
  const XmlLimits limits = {.depth = 3, .tag = 1000, .text = 20};
  const std::string long_tag = "<r a='" + std::string(5000, 'x') + "'/>";
  const std::pair<std::string, const char*> cases[] = {
      {"<!DOCTYPE r [<!ENTITY l 'lol'>]><r>&l;</r>", "declares an entity of its own, \"l\""},
      {"<!DOCTYPE r [<!ENTITY l SYSTEM '/etc/passwd'>]><r>&l;</r>", "declares an entity of its own"},
      {"<a><a><a><a/></a></a></a>", "more than 3 elements within each other"},
      {long_tag, "a tag is longer than 1000 bytes"},
      {"<r>123456789012345678901</r>", "a text is longer than 20 bytes"},
      {"<r>\n<b></r>", "file.xml: line 2: this is no well-formed XML"},
      {"<r>\n", "file.xml: line 2: the file ends too early"},
      {"<?xml version='1.0' encoding='big5'?><r/>", "encoding \"big5\" is not known"},
  };
  for (const auto& [bytes, fault] : cases) {
    ExpectFault<InputError>(fault, [&bytes = bytes, &limits] { ToldOf(bytes, limits); });
  }
}

TEST(Packing, GivesTheTextAgain) {
  Packer packer;
  for (const std::size_t size : {0, 1, 70'000, 10}) {
    const std::string text(size, 'x');
    EXPECT_EQ(Unpack(packer.Pack(text), size), text);
    EXPECT_EQ(Unpack(Pack(text), 100'000), text);
  }
  const std::string bytes = Pack(std::string(70'000, 'x'));
  ExpectFault<InputError>("longer than 69999 bytes", [&] { Unpack(bytes, 69'999); });
  ExpectFault<InputError>("damaged", [&] { Unpack(bytes.substr(0, bytes.size() - 3), 70'000); });
  ExpectFault<InputError>("damaged", [] { Unpack("no packed text", 100); });
}

}  // namespace selvane::tests
