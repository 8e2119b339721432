// The list of the exports of a batch: a JSON object a line.
#pragma once

#include "tool/export_arguments.h"

#include <cstddef>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <vector>

namespace tool {

struct BatchLine {
  std::size_t number = 0;      // of the line in the manifest, from 1
  std::string text;            // as it stands there
  std::string input, output;   // as they stand there
  std::string options = "{}";  // as JSON
  ExportArguments arguments;   // with paths that start where the manifest lies
};

// A manifest that can't be used. what() is a line each fault: the manifest, the line in it, the key and the
// reason.
class ManifestError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Manifest {
  std::vector<BatchLine> lines;  // those that aren't blank
  std::size_t lineCount = 0;     // blank ones too
};

// Reads a manifest, called `name` in messages. Options are read as the command line of an export reads them; paths
// in them and all others start in the current directory, which must be the manifest's. Throws ManifestError, also
// when two lines write the same file.
Manifest ReadManifest(std::istream& stream, const std::string& name);

}  // namespace tool
