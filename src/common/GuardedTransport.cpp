#include "common/GuardedTransport.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <xmlrpc-c/girerr.hpp>

namespace {

constexpr std::string_view kSpaces = " \t\r\n";
constexpr size_t kQuotedLength = 64;
constexpr size_t kLongestReference = 64;

// The library takes UTF-16 as well. What matters here is ASCII in every encoding that it reads; of a UTF-16
// document the other characters become '?'.
std::string asciiView(const std::string& xml) {
  const auto byte = [&xml](size_t n) { return static_cast<unsigned char>(xml[n]); };
  if (xml.size() < 2) return xml;
  const bool littleEndian = (byte(0) == 0xFF && byte(1) == 0xFE) || (byte(0) != 0 && byte(1) == 0);
  const bool bigEndian = (byte(0) == 0xFE && byte(1) == 0xFF) || (byte(0) == 0 && byte(1) != 0);
  if (!littleEndian && !bigEndian) return xml;
  std::string view;
  view.reserve(xml.size() / 2);
  for (size_t n = 0; n + 1 < xml.size(); n += 2) {
    const unsigned unit = littleEndian ? byte(n) | (byte(n + 1) << 8) : byte(n + 1) | (byte(n) << 8);
    view += unit < 0x80 ? static_cast<char>(unit) : '?';
  }
  return view;
}

bool isReadableI8(const std::string& text) {
  if (text.empty() || std::strchr(" \t\r\n\v\f", text[0]) != nullptr) return false;
  char* end = nullptr;
  errno = 0;
  std::strtoll(text.c_str(), &end, 10);
  return errno == 0 && *end == '\0';
}

// Walks over the markup of a document once and collects the character data of every 64-bit integer as an XML parser
// would hand it out. Throws nothing.
class TI8Scan {
 public:
  explicit TI8Scan(std::string_view xml) : mXml(xml) {}

  bool find(std::string& text) {
    while (mAt < mXml.size()) {
      if (mXml[mAt] == '<') {
        if (markup()) {
          text = mFound;
          return true;
        }
      } else if (mXml[mAt] == '&') {
        reference();
      } else {
        collect(mXml[mAt++]);
      }
    }
    return false;
  }

 private:
  bool startsWith(std::string_view prefix) const { return mXml.substr(mAt, prefix.size()) == prefix; }

  void collect(char c) {
    if (mInside) mText += c;
  }

  // Goes behind the next `end`, or to the end of a document that lacks it.
  void skipBehind(std::string_view end) {
    const size_t found = mXml.find(end, mAt);
    mAt = found == std::string_view::npos ? mXml.size() : found + end.size();
  }

  // True when the search is over. mAt stands on '<'.
  bool markup() {
    if (startsWith("<!--")) {
      mAt += 4;
      skipBehind("-->");
    } else if (startsWith("<![CDATA[")) {
      const size_t start = mAt + 9;
      skipBehind("]]>");
      for (size_t n = start; n + 3 < mAt; ++n) collect(mXml[n]);
    } else if (startsWith("<?")) {
      skipBehind("?>");
    } else if (startsWith("<!ENTITY")) {
      mFound = "<!ENTITY";
      return true;
    } else if (startsWith("<!")) {
      declaration();
    } else if (startsWith("</")) {
      return endTag();
    } else {
      return startTag();
    }
    return false;
  }

  // To the '>' of a declaration, or to its '[', behind which more declarations follow; both may stand in quotes.
  void declaration() {
    for (mAt += 2; mAt < mXml.size(); ++mAt) {
      const char c = mXml[mAt];
      if (c == '"' || c == '\'') {
        ++mAt;
        skipBehind(std::string_view(&c, 1));
        --mAt;
      } else if (c == '>' || c == '[') {
        ++mAt;
        return;
      }
    }
  }

  // The element's name without the name space.
  std::string_view localName() {
    const size_t start = mAt;
    while (mAt < mXml.size() && mXml[mAt] != '>' && mXml[mAt] != '/' &&
           kSpaces.find(mXml[mAt]) == std::string_view::npos)
      ++mAt;
    const std::string_view name = mXml.substr(start, mAt - start);
    const size_t colon = name.rfind(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
  }

  bool startTag() {
    ++mAt;
    const bool isI8 = localName() == "i8";
    bool selfClosing = false;
    while (mAt < mXml.size() && mXml[mAt] != '>') {
      const char c = mXml[mAt++];
      selfClosing = c == '/';
      if (c == '"' || c == '\'') skipBehind(std::string_view(&c, 1));
    }
    ++mAt;
    if (!isI8) return false;
    mText.clear();
    mInside = true;
    return selfClosing && judge();
  }

  bool endTag() {
    mAt += 2;
    const bool isI8 = localName() == "i8";
    skipBehind(">");
    return isI8 && mInside && judge();
  }

  bool judge() {
    mInside = false;
    mFound = mText;
    return !isReadableI8(mText);
  }

  // A character or a predefined entity; others cannot be, for a document that declares one is refused.
  void reference() {
    const std::string_view ahead = mXml.substr(mAt + 1, kLongestReference);
    const size_t end = ahead.find(';');
    if (end == std::string_view::npos) {
      collect('?');
      ++mAt;
      return;
    }
    const std::string name(ahead.substr(0, end));
    mAt += end + 2;
    if (name.size() > 1 && name[0] == '#') {
      const bool hexadecimal = name[1] == 'x';
      const unsigned long code = std::strtoul(name.c_str() + (hexadecimal ? 2 : 1), nullptr, hexadecimal ? 16 : 10);
      collect(code > 0 && code < 0x80 ? static_cast<char>(code) : '?');
    } else {
      collect('?');  // any character that is no part of a number
    }
  }

  std::string_view mXml;
  size_t mAt = 0;
  bool mInside = false;
  std::string mText;   // of the integer that is being read
  std::string mFound;  // of the last one that was read
};

}  // namespace

bool findUnreadableI8(const std::string& xml, std::string& text) {
  const std::string view = asciiView(xml);
  return TI8Scan(view).find(text);
}

GuardedTransport::GuardedTransport(const xmlrpc_c::clientXmlTransportPtr& inner) : mInner(inner) {}

void GuardedTransport::call(xmlrpc_c::carriageParm* const carriageParmP, std::string const& callXml,
                            std::string* const responseXmlP) {
  mInner->call(carriageParmP, callXml, responseXmlP);
  std::string text;
  if (findUnreadableI8(*responseXmlP, text))
    throw girerr::error("The reply holds an unreadable <i8>: \"" + text.substr(0, kQuotedLength) + "\"");
}

void GuardedTransport::setInterrupt(int* const interruptP) { mInner->setInterrupt(interruptP); }
