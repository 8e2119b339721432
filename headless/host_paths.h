// File paths in the host's form: only the backslash separates directories.
#pragma once

#include <algorithm>
#include <string>

namespace headless {

inline std::string ToHostPath(std::string path) {
  std::replace(path.begin(), path.end(), '/', '\\');
  return path;
}

inline std::string FromHostPath(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

// Begins at a root, or at a drive as in "C:\images".
inline bool IsAbsoluteHostPath(const std::string& path) {
  return path.starts_with('\\') || (path.size() >= 3 && path[1] == ':' && path[2] == '\\');
}

// The host form of a path that starts in `directory` unless it is absolute. An empty directory changes nothing.
inline std::string ResolveHostPath(const std::string& directory, const std::string& path) {
  std::string inHostForm = ToHostPath(path);
  if (directory.empty() || IsAbsoluteHostPath(inHostForm)) return inHostForm;
  std::string start = ToHostPath(directory);
  if (!start.ends_with('\\')) start += '\\';
  return start + inHostForm;
}

}  // namespace headless
