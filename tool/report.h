// What the command tells its user, on the error stream.
#pragma once

#include "headless/host.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace tool {

enum class Verbosity { Quiet, Normal, Verbose };

enum class MessageKind { Warning, Error };

// Messages of one text.
struct MessageGroup {
  MessageKind kind = MessageKind::Warning;
  std::string text;
  std::size_t count = 1;
};

// Copies share what was told.
class Report {
 public:
  explicit Report(Verbosity verbosity = Verbosity::Normal);

  // A text that was told before is counted and, unless verbose, not printed again.
  void Error(const std::string& text) const;
  void Warning(const std::string& text) const;  // not printed when quiet
  void Note(const std::string& text) const;     // not when quiet
  // A message of the host's log: warnings and errors, all of it when verbose. The saver's own count of them is
  // printed but not counted again.
  void LogMessage(const headless::LogLine& line) const;

  // Warnings and errors in the order in which each was told first.
  const std::vector<MessageGroup>& Messages() const;
  Verbosity HowVerbose() const { return verbosity_; }

 private:
  struct Told;

  void Tell(MessageKind kind, const std::string& text) const;

  Verbosity verbosity_;
  std::shared_ptr<Told> told_;
};

}  // namespace tool
