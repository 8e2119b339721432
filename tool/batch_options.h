// The options of one export in a manifest, by the names of the flags of `vornel export`.
#pragma once

#include "tool/export_arguments.h"

#include <rapidjson/document.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace tool {

// Something wrong in a line of a manifest. what() is the key and the reason.
class LineFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Gives options to the parser of the command line, so that both know the same ones.
class OptionParser {
 public:
  OptionParser();
  ~OptionParser();

  // `options` is an object with a member an option: a string or a number, true or false for a flag, a list for
  // what may be repeated, and for NAME=VALUE an object of values by name. Throws LineFault.
  ExportArguments Parse(const std::string& input, const std::string& output, const rapidjson::Value& options);

 private:
  struct Command;
  std::unique_ptr<Command> command_;
};

}  // namespace tool
