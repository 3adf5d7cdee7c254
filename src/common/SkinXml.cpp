#include "common/SkinXml.h"

#include <fstream>

#include "common/XmlNesting.h"

SkinXml::SkinXml(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  // By read, which notes a failing medium or a folder where the stream's iterators throw.
  for (char piece[4096]; file.read(piece, sizeof piece) || file.gcount() > 0;)
    mText.insert(mText.end(), piece, piece + file.gcount());
  if (!file.is_open() || file.bad()) {
    mText.clear();
    mFault = Fault::UNREADABLE;
    mProblem = "the file cannot be read";
    return;
  }
  mText.push_back('\0');
  if (IsNestedTooDeep(mText.data())) {
    mFault = Fault::NESTED_TOO_DEEP;
    mProblem = "its elements are nested too deep";
    return;
  }
  try {
    mDocument.parse<0>(mText.data());
  } catch (const rapidxml::parse_error& error) {
    mFault = Fault::NO_XML;
    mProblem = error.what();
  }
}
