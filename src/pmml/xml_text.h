// Names as an XML file can hold them.
#pragma once

#include <string>
#include <string_view>

namespace selvane {

// The text as a reader of the file gets it back: a control character becomes a blank, and what else XML has
// no way to write, which is U+FFFE, U+FFFF and bytes that are no UTF-8, a question mark. Tabs and line ends
// stay.
std::string HeldByXml(std::string_view text);

// The value of an attribute that a reader takes for HeldByXml(text).
std::string XmlAttribute(std::string_view text);
// The same in ISO-8859-1 as version 1.1 has it: line ends, which would break its lines, and characters beyond
// the encoding are numeric character references, all else stands as it is, & < and > too.
std::string PlainLatin1(std::string_view text);

}  // namespace selvane
