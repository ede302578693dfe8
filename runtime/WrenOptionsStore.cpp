#include "WrenOptionsStore.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <pugixml.hpp>
#include <sstream>
#include <system_error>

#include "WrenFiles.h"
#include "WrenUtils.h"

namespace wren {

namespace {

int LineOf(const std::string& text, ptrdiff_t offset) {
  int line = 1;
  for (ptrdiff_t i = 0; i < offset && i < static_cast<ptrdiff_t>(text.size()); ++i)
    if (text[i] == '\n') ++line;
  return line;
}

/// Reads one key of a store.
class TStoreReader : public IWrenOptionsReader {
 public:
  TStoreReader(const TWrenOptionsStore& store, std::string key)
      : store_(store), key_(std::move(key)) {}
  std::string ReadString(const std::string& name, const std::string& defaultValue) override {
    return store_.Get(key_, name, defaultValue);
  }

 private:
  const TWrenOptionsStore& store_;
  std::string key_;
};

/// Writes one key of a store.
class TStoreWriter : public IWrenOptionsWriter {
 public:
  TStoreWriter(TWrenOptionsStore& store, std::string key) : store_(store), key_(std::move(key)) {}
  void WriteString(const std::string& name, const std::string& value) override {
    store_.Set(key_, name, value);
  }

 private:
  TWrenOptionsStore& store_;
  std::string key_;
};

}  // namespace

bool TWrenOptionsStore::Load(const std::string& path, std::string& error) {
  path_ = path;
  data_.clear();
  changed_ = false;
  if (!FileExists(path)) return true;
  std::string text;
  if (!ReadFileBytes(path, text, error)) return false;

  pugi::xml_document doc;
  // Whitespace-only values are values too.
  const pugi::xml_parse_result parsed =
      doc.load_buffer(text.data(), text.size(), pugi::parse_default | pugi::parse_ws_pcdata);
  if (!parsed) {
    error = path + ":" + std::to_string(LineOf(text, parsed.offset)) + ": " + parsed.description();
    return false;
  }
  pugi::xml_node root = doc.document_element();
  if (std::strcmp(root.name(), "MarrowbyOptions") != 0) {
    error = path + ": the root element must be <MarrowbyOptions>";
    return false;
  }
  const std::string version = root.attribute("version").value();
  if (version != "1") {
    error = path + ": unsupported options file version '" + version + "' (expected 1)";
    return false;
  }
  for (pugi::xml_node options : root.children("Options")) {
    const std::string key = options.attribute("key").value();
    for (pugi::xml_node value : options.children("Value"))
      Set(key, value.attribute("name").value(), value.text().get());
  }
  changed_ = false;
  return true;
}

void TWrenOptionsStore::SetPath(const std::string& path) {
  if (path != path_) changed_ = true;  // the other file does not hold these values
  path_ = path;
}

bool TWrenOptionsStore::Save(std::string& error) {
  if (path_.empty()) {
    error = "the options store has no file to save to";
    return false;
  }
  if (!changed_) return true;
  pugi::xml_document doc;
  pugi::xml_node declaration = doc.append_child(pugi::node_declaration);
  declaration.append_attribute("version").set_value("1.0");
  declaration.append_attribute("encoding").set_value("UTF-8");
  pugi::xml_node root = doc.append_child("MarrowbyOptions");
  root.append_attribute("version").set_value("1");
  for (const auto& [key, values] : data_) {
    pugi::xml_node options = root.append_child("Options");
    options.append_attribute("key").set_value(key.c_str());
    for (const auto& [name, value] : values) {
      pugi::xml_node v = options.append_child("Value");
      v.append_attribute("name").set_value(name.c_str());
      v.append_child(pugi::node_pcdata).set_value(value.c_str());
    }
  }
  std::ostringstream text;
  doc.save(text, "  ", pugi::format_default, pugi::encoding_utf8);

  const std::filesystem::path dir = std::filesystem::path(path_).parent_path();
  if (!dir.empty()) {
    std::error_code ec;
    std::filesystem::create_directories(dir, ec);
    if (ec) {
      error = "cannot create " + dir.string() + ": " + ec.message();
      return false;
    }
  }
  if (!WriteFileAtomic(path_, text.str(), error)) return false;
  changed_ = false;
  return true;
}

std::string TWrenOptionsStore::Get(const std::string& key, const std::string& name,
                                   const std::string& def) const {
  for (const auto& [k, values] : data_) {
    if (!SameText(k, key)) continue;
    for (const auto& [n, v] : values)
      if (SameText(n, name)) return v;
    return def;
  }
  return def;
}

void TWrenOptionsStore::Set(const std::string& key, const std::string& name,
                            const std::string& value) {
  auto entry = data_.begin();
  while (entry != data_.end() && !SameText(entry->first, key)) ++entry;
  if (entry == data_.end()) {
    data_.push_back({key, {}});
    entry = data_.end() - 1;
  }
  for (auto& [n, v] : entry->second) {
    if (SameText(n, name)) {
      if (v != value) changed_ = true;
      v = value;
      return;
    }
  }
  entry->second.emplace_back(name, value);
  changed_ = true;
}

std::vector<std::string> TWrenOptionsStore::Keys() const {
  std::vector<std::string> keys;
  for (const auto& entry : data_) keys.push_back(entry.first);
  return keys;
}

std::vector<std::pair<std::string, std::string>> TWrenOptionsStore::Values(
    const std::string& key) const {
  for (const auto& [k, values] : data_)
    if (SameText(k, key)) return values;
  return {};
}

std::unique_ptr<IWrenOptionsReader> TWrenOptionsStore::Reader(const std::string& key) const {
  return std::make_unique<TStoreReader>(*this, key);
}

std::unique_ptr<IWrenOptionsWriter> TWrenOptionsStore::Writer(const std::string& key) {
  return std::make_unique<TStoreWriter>(*this, key);
}

TWrenOptionsStore& WrenOptionsStore() {
  static TWrenOptionsStore store;
  return store;
}

std::string DefaultOptionsPath() {
  const char* xdg = std::getenv("XDG_CONFIG_HOME");
  if (xdg && *xdg == '/') return std::string(xdg) + "/marrowby/options.xml";
  if (const char* home = std::getenv("HOME"); home && *home)
    return std::string(home) + "/.config/marrowby/options.xml";
  // Windows has no HOME as a rule; its per-user settings live under APPDATA.
  if (const char* appData = std::getenv("APPDATA"); appData && *appData)
    return std::string(appData) + "\\marrowby\\options.xml";
  return ".config/marrowby/options.xml";
}

}  // namespace wren
