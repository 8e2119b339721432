#include "document/path_rules.h"

#include <algorithm>
#include <cerrno>
#include <new>

namespace {

FilePtr Open(const std::string& path, const char* mode) {
  FilePtr file(std::fopen(SystemPath(path).string().c_str(), mode));
  if (!file && errno == ENOMEM) throw std::bad_alloc();  // which says nothing about the file
  return file;
}

}  // namespace

std::string CutExtension(const std::string& path) { return path.substr(0, path.rfind('.')); }

std::string ExtensionOf(const std::string& path) { return path.substr(path.rfind('.') + 1); }

std::string FileNameOf(const std::string& path) { return path.substr(path.rfind('\\') + 1); }

std::filesystem::path SystemPath(const std::string& path) {
  std::string text = path;
#ifndef _WIN32
  std::replace(text.begin(), text.end(), '\\', '/');
#endif
  return text;
}

FilePtr OpenForReading(const std::string& path) { return Open(path, "rb"); }

FilePtr OpenForWriting(const std::string& path) { return Open(path, "wb"); }
