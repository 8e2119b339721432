// What the command tells its user, on the error stream.
#pragma once

#include "headless/host.h"

#include <string>

namespace tool {

enum class Verbosity { Quiet, Normal, Verbose };

class Report {
 public:
  explicit Report(Verbosity verbosity = Verbosity::Normal) : verbosity_(verbosity) {}

  void Error(const std::string& text) const;
  void Warning(const std::string& text) const;  // not when quiet
  void Note(const std::string& text) const;     // not when quiet
  // A message of the host's log: warnings and errors, all of it when verbose.
  void LogMessage(const headless::LogLine& line) const;

 private:
  Verbosity verbosity_;
};

}  // namespace tool
