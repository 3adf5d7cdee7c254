#pragma once

#include <map>
#include <optional>
#include <rapidxml/rapidxml.hpp>
#include <string>
#include <vector>

#include "Findings.h"

// A place in a text file, counted from 1 in lines and characters; 0 where there is none.
struct TextPlace {
  int line = 0, column = 0;
};

// An XML file read by the library that the program reads with, which remembers where everything stood and reports
// what is wrong with it. One thread. Nodes live as long as this object; `findings` must outlive it. Of one kind of
// finding the first ten are told, and how many more there are when this object goes.
class XmlFile {
 public:
  using Node = rapidxml::xml_node<char>;
  using Attribute = rapidxml::xml_attribute<char>;

  XmlFile(std::string path, Findings& findings);
  ~XmlFile();
  XmlFile(const XmlFile&) = delete;
  XmlFile& operator=(const XmlFile&) = delete;

  // The first element of that name at the top. Null when there is none, when the file is missing ("missing") or
  // when it is no XML ("xml"): then it is reported. An element of another name is not.
  const Node* root(const char* name) const;
  // The first element at the top, whatever its name.
  const Node* anyRoot() const;
  // Whether the file was there and could be parsed.
  bool parsed() const { return mParsed; }
  const std::string& path() const { return mPath; }

  TextPlace placeOf(const Node& node) const;
  TextPlace placeOf(const Attribute& attribute) const;

  void error(const std::string& code, const std::string& text, TextPlace place = {});
  void warn(const std::string& code, const std::string& text, TextPlace place = {});

  // The whole number of an attribute as the program takes it; what is wrong with it is reported under `code`. An
  // attribute that is not there gives `fallback`, or an error and 0 without one.
  int number(const Node& node, const char* name, const std::string& code, std::optional<int> fallback);
  // The same for a text between commas, which stands at `place` and is called `name`.
  int number(const std::string& text, const std::string& name, const std::string& code, TextPlace place);
  // An attribute's text, or null and an error under `code`.
  const Attribute* attribute(const Node& node, const char* name, const std::string& code);

 private:
  void parse();
  TextPlace placeAt(size_t offset) const;
  void add(Severity severity, const std::string& code, const std::string& text, TextPlace place);

  std::string mPath;
  Findings& mFindings;
  std::string mText;           // as it was
  std::vector<char> mBuffer;   // what the parser works in
  std::vector<size_t> mLines;  // where they begin
  rapidxml::xml_document<char> mDocument;
  bool mParsed = false;
  struct Count {
    int told = 0, untold = 0;
    Severity worst = Severity::Warning;
    TextPlace firstUntold;
  };
  std::map<std::string, Count> mCounts;
};
