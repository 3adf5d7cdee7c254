#include "Report.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

const char* nameOf(Severity severity) { return severity == Severity::Error ? "error" : "warning"; }

std::string printable(const std::string& text) {
  std::string out;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 32 && byte != 127) {
      out += c;
      continue;
    }
    char code[8];
    std::snprintf(code, sizeof code, "\\x%02X", byte);
    out += code;
  }
  return out;
}

std::string megabytes(int64_t bytes) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", static_cast<double>(bytes) / 1e6);
  return text;
}

std::string counted(int count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace

std::string reportText(const CheckReport& report, bool sizes) {
  std::string out;
  for (const Finding& f : report.findings) {
    out += printable(f.file) + ":";
    if (f.line > 0) out += std::to_string(f.line) + ":" + std::to_string(f.column) + ":";
    out += std::string(" ") + nameOf(f.severity) + ": " + printable(f.text) + " [" + f.code + "]\n";
  }
  if (sizes)
    for (const CheckedPart& part : report.parts)
      for (const DecodedFile& file : part.files) {
        char size[64];
        std::snprintf(size, sizeof size, "%6s MB  %5d x %-5d  ", megabytes(file.bytes).c_str(), file.width,
                      file.height);
        out += size + printable(file.file) + "\n";
      }
  out += counted(report.count(Severity::Error), "error") + ", " +
         counted(report.count(Severity::Warning), "warning") + "; decoded";
  for (const CheckedPart& part : report.parts)
    out += (&part == &report.parts.front() ? " " : ", ") + printable(part.name) + " " + megabytes(part.bytes) +
           " of " + megabytes(part.budget) + " MB";
  return out + "\n";
}

std::string reportJson(const CheckReport& report) {
  Json root;
  root["errors"] = report.count(Severity::Error);
  root["warnings"] = report.count(Severity::Warning);
  root["findings"] = Json::array();
  for (const Finding& f : report.findings) {
    Json item;
    item["severity"] = nameOf(f.severity);
    item["code"] = f.code;
    item["file"] = f.file;
    if (f.line > 0) {
      item["line"] = f.line;
      item["column"] = f.column;
    }
    item["text"] = f.text;
    root["findings"].push_back(item);
  }
  root["parts"] = Json::array();
  for (const CheckedPart& part : report.parts) {
    Json item;
    item["name"] = part.name;
    item["folder"] = part.folder;
    item["bytes"] = part.bytes;
    item["budget"] = part.budget;
    item["files"] = Json::array();
    for (const DecodedFile& file : part.files)
      item["files"].push_back(
        Json{{"file", file.file}, {"width", file.width}, {"height", file.height}, {"bytes", file.bytes}});
    root["parts"].push_back(item);
  }
  // A file's name may be no text.
  return root.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}
