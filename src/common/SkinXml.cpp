#include "common/SkinXml.h"

#include <fstream>
#include <iterator>

#include "common/XmlNesting.h"

SkinXml::SkinXml(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    mFault = Fault::UNREADABLE;
    mProblem = "the file cannot be read";
    return;
  }
  mText.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
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
