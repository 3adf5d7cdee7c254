#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "vendelo-sdl2/TParamMan.h"

// A persistent side for parameters: a file with one record a line, by raw domain and name. Every call reads or
// rewrites the file, so that several stores, or the test itself in the place of another terminal, can share one.
// Not for several threads. A file that is there and cannot be read throws.
class ParameterFile {
 public:
  struct Record {
    std::string value, caption, description, limits;
    int64_t restrictions = 0;
  };

  explicit ParameterFile(std::filesystem::path path) : mPath(std::move(path)) {}

  std::optional<Record> get(const std::string& domain, const std::string& name) const {
    const auto all = read();
    const auto found = all.find({domain, name});
    return found == all.end() ? std::nullopt : std::optional(found->second);
  }
  void put(const std::string& domain, const std::string& name, const Record& record) {
    auto all = read();
    all[{domain, name}] = record;
    write(all);
  }
  void erase(const std::string& domain, const std::string& name) {
    auto all = read();
    all.erase({domain, name});
    write(all);
  }
  size_t size() const { return read().size(); }

 private:
  using Records = std::map<std::pair<std::string, std::string>, Record>;

  Records read() const {
    Records all;
    if (!std::filesystem::exists(mPath)) return all;
    std::ifstream file(mPath);
    if (std::filesystem::is_directory(mPath) || !file) throw std::runtime_error("cannot read " + mPath.string());
    std::string domain, name, restrictions;
    Record record;
    while (field(file, domain, '\t')) {
      field(file, name, '\t');
      field(file, record.value, '\t');
      field(file, record.caption, '\t');
      field(file, record.description, '\t');
      field(file, record.limits, '\t');
      field(file, restrictions, '\n');
      record.restrictions = std::stoll(restrictions);
      all[{domain, name}] = record;
    }
    return all;
  }
  void write(const Records& all) const {
    const auto fresh = mPath.string() + ".new";
    {
      std::ofstream file(fresh);
      for (const auto& [key, record] : all) {
        for (const auto* text :
             {&key.first, &key.second, &record.value, &record.caption, &record.description, &record.limits})
          file << escaped(*text) << '\t';
        file << std::to_string(record.restrictions) << '\n';
      }
    }
    std::filesystem::rename(fresh, mPath);
  }

  // A separator or a backslash inside a text has a backslash in front.
  static std::string escaped(const std::string& text) {
    std::string out;
    for (const char c : text) {
      if (c == '\t' || c == '\n' || c == '\\') out += '\\';
      out += c;
    }
    return out;
  }
  static bool field(std::ifstream& file, std::string& text, char end) {
    text.clear();
    for (char c = 0; file.get(c);) {
      if (c == end) return true;
      if (c == '\\') file.get(c);
      text += c;
    }
    return false;
  }

  const std::filesystem::path mPath;
};

// A parameter store with such a file behind it, as a subclass with a database would be written: it answers with the
// most specific value at the address asked for or above it, writes what is queued under its own address, and takes
// what was written over as saved.
class FileParamMan : public vendelo_sdl2::TParamMan {
 public:
  FileParamMan(const std::filesystem::path& path, std::string clientId) : id(std::move(clientId)), file(path) {}

  vendelo_sdl2::Parameter OnRequestValue(const std::string& address, const std::string& name) override {
    ++requests;
    std::string domain = address;
    auto record = file.get(domain, name);
    if (!record && domain.find('_') != std::string::npos) record = file.get(domain = GetGroupDomain(address), name);
    if (!record) record = file.get(domain = GetGlobalDomain(), name);
    if (!record) return vendelo_sdl2::Parameter();
    vendelo_sdl2::Parameter answer(domain);
    answer.SetValue(record->value);
    answer.SetCaption(record->caption);
    answer.SetDescription(record->description);
    answer.SetRestrictions(record->restrictions);
    answer.SetLimits(record->limits);
    answer.UpdateOldValue();
    return answer;
  }
  // The mode is the kind of owner to write it for.
  void OnStoreValue(vendelo_sdl2::TAppParam* param, int saveMode) override {
    write(*param, vendelo_sdl2::TAppParam::GetAddressOf(static_cast<vendelo_sdl2::ParameterDomain>(saveMode), id));
  }
  void OnStoreValues(const std::list<vendelo_sdl2::TAppParam*>& params) override {
    for (auto* param : params) {
      write(*param, param->GetRawDomain());
      param->UpdateOldValue();
    }
  }
  void OnDeleteValue(const vendelo_sdl2::TAppParam* param) override {
    file.erase(param->GetRawDomain(), param->Name());
  }
  void OnRebootRequired() override { ++reboots; }

  std::string id;
  ParameterFile file;
  int requests = 0;
  int reboots = 0;

 protected:
  std::string LookUpClientID() const override { return id; }

 private:
  void write(const vendelo_sdl2::TAppParam& param, const std::string& domain) {
    file.put(
      domain, param.Name(),
      {param.Value(), param.Caption(), param.Description(), param.Limits().OriginalString(), param.Restrictions()});
  }
};
