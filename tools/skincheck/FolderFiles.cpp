#include "FolderFiles.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

namespace fs = std::filesystem;

namespace {

// Linked or mounted in a ring, folders could go on for ever.
constexpr int kMaxDepth = 16;

std::string small(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return text;
}

bool isPaper(const std::string& name) {
  const std::string lower = small(name);
  if (name[0] == '.' || lower == "thumbs.db" || lower == "desktop.ini") return true;
  const std::string stem = lower.substr(0, lower.find_first_of(".-_"));
  const std::string extension = fs::path(lower).extension().string();
  if (!extension.empty() && extension != ".txt" && extension != ".md") return false;
  for (const char* paper : {"readme", "license", "licence", "copying", "copyright", "notice", "ofl", "authors"})
    if (stem == paper) return true;
  return false;
}

std::vector<fs::directory_entry> entriesOf(const std::string& folder, Findings& findings) {
  std::vector<fs::directory_entry> entries;
  std::error_code code;
  fs::directory_iterator entry(folder, code);
  for (; !code && entry != fs::directory_iterator(); entry.increment(code)) entries.push_back(*entry);
  if (code) findings.error("folder", folder, "the folder cannot be read: " + code.message());
  std::sort(entries.begin(), entries.end());
  return entries;
}

void collect(const std::string& folder, int depth, std::vector<std::string>& files, Findings& findings) {
  if (depth > kMaxDepth) {
    findings.error("folder", folder, "the folders are nested too deeply");
    return;
  }
  for (const fs::directory_entry& entry : entriesOf(folder, findings)) {
    const std::string name = entry.path().filename().string();
    std::error_code code;
    if (isPaper(name)) continue;
    if (entry.is_directory(code) && !entry.is_symlink(code))
      collect(folder + name + "/", depth + 1, files, findings);
    else if (entry.is_regular_file(code) || (entry.is_symlink(code) && !entry.exists(code)))
      files.push_back(folder + name);  // a link to nowhere is a file that nothing can read
  }
}

std::string plain(const std::string& path) { return fs::path(path).lexically_normal().string(); }

std::string real(const std::string& path) {
  std::error_code code;
  const fs::path result = fs::canonical(path, code);
  return code ? std::string() : result.string();
}

std::string stemOf(const std::string& path) {
  const fs::path whole(path);
  return (whole.parent_path() / whole.stem()).string();
}

// The name of the description that would ask for the picture `path`: it is there, or one of those `asked` for.
std::string descriptionOf(const std::string& path, const std::set<std::string>& asked) {
  for (const char* extension : {".fnt", ".xml"}) {
    const fs::path description = fs::path(path).replace_extension(extension);
    std::error_code code;
    if (description != path && (asked.count(description.string()) != 0 || fs::is_regular_file(description, code)))
      return description.filename().string();
  }
  return {};
}

}  // namespace

std::vector<std::string> filesBelow(const std::string& folder, Findings& findings) {
  std::vector<std::string> files;
  collect(folder, 0, files, findings);
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<std::string> foldersIn(const std::string& folder, Findings& findings) {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : entriesOf(folder, findings)) {
    std::error_code code;
    const std::string name = entry.path().filename().string();
    if (name[0] != '.' && entry.is_directory(code)) names.push_back(name);
  }
  return names;
}

std::string otherCapitals(const std::string& folder, const std::string& name) {
  std::string found;
  for (const fs::path& part : fs::path(name)) {
    std::error_code code;
    if (part == ".." || fs::exists(folder + found + part.string(), code)) {
      found += part.string() + "/";
      continue;
    }
    std::string like;
    Findings unheard;
    for (const fs::directory_entry& entry : entriesOf(folder + found, unheard))
      if (small(entry.path().filename().string()) == small(part.string())) like = entry.path().filename().string();
    if (like.empty()) return {};
    found += like + "/";
  }
  if (!found.empty() && found.back() == '/') found.pop_back();
  return found == name ? std::string() : found;
}

std::string missingText(const std::string& folder, const std::string& name) {
  const std::string like = otherCapitals(folder, name);
  return like.empty() ? "is missing" : "is missing (\"" + like + "\" has other capitals)";
}

void reportUnused(const std::string& folder, const std::vector<std::string>& welcome, Findings& findings) {
  std::set<std::string> used, usedReally;
  std::map<std::string, std::string> usedStems, welcomeNames;
  for (const std::string& path : findings.used) {
    used.insert(plain(path));
    usedReally.insert(real(path));
    const std::string extension = fs::path(path).extension().string();
    if (extension != ".fnt" && extension != ".xml")
      usedStems[stemOf(plain(path))] = fs::path(path).filename().string();
  }
  std::set<std::string> asked;
  for (const std::string& path : welcome) {
    asked.insert(plain(path));
    welcomeNames[small(plain(path))] = fs::path(path).filename().string();
  }
  for (const std::string& path : filesBelow(folder, findings)) {
    std::error_code code;
    const std::string name = plain(path);
    if (used.count(name) != 0) continue;
    const bool link = fs::is_symlink(path, code);
    if (link && !fs::exists(path, code) && asked.count(name) != 0) continue;  // told as missing
    if (!link && usedReally.count(real(path)) != 0) continue;                 // asked for by way of a link
    std::string why;
    if (const auto like = welcomeNames.find(small(name)); like != welcomeNames.end() && asked.count(name) == 0)
      why = ", but for \"" + like->second + "\"";
    else if (const auto other = usedStems.find(stemOf(name)); other != usedStems.end())
      why = ", the program takes \"" + other->second + "\"";
    else if (const std::string description = descriptionOf(name, asked); !description.empty())
      why = ", as \"" + description + "\" is missing, cannot be used or names another";
    findings.warn("unused", path, "nothing asks for the file" + why);
  }
}
