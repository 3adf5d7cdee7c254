#pragma once

#include <rapidxml/rapidxml.hpp>
#include <string>
#include <vector>

// An XML file of the skin, read whole and parsed. The document points into the text, so both live here. Any thread,
// one at a time.
class SkinXml {
 public:
  enum class Fault { NONE, UNREADABLE, NESTED_TOO_DEEP, NO_XML };

  explicit SkinXml(const std::string& path);
  SkinXml(const SkinXml&) = delete;
  SkinXml& operator=(const SkinXml&) = delete;

  // With a fault the document is empty, or what stands in front of the fault.
  Fault fault() const { return mFault; }
  // The fault in words; empty for none.
  const std::string& problem() const { return mProblem; }
  const rapidxml::xml_document<char>& document() const { return mDocument; }

 private:
  std::vector<char> mText;
  rapidxml::xml_document<char> mDocument;
  Fault mFault = Fault::NONE;
  std::string mProblem;
};
