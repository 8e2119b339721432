// The one channel by which the export talks to the user: the host's event log, and for the worst news a
// dialog.
#pragma once

#include "host/user_services.h"

#include <array>
#include <cstdarg>
#include <cstdint>
#include <optional>
#include <string>

// Blocks of one subsystem in the host's log: an entry with a title, and the lines below it. Without the
// subsystem nothing is logged.
class CZyLogMessage {
 public:
  explicit CZyLogMessage(const char* subsystemName) : subsystemName_(subsystemName) {}
  virtual const char* GetFormat() = 0;
  virtual const char* GetVersion() = 0;
  virtual const char* GetNotice() { return ""; }
  virtual ~CZyLogMessage() = default;

 protected:
  struct Services {
    CZyLogService log;
    CZyMessageService message;
  };

  // Looked up on first use.
  Services& HostServices();

  // Both open a new block with the text as its first line.
  void OpenBlock(const char* text) { AddBlock(BlockKind::Information, text); }
  void ErrorBlock(const char* text) { AddBlock(BlockKind::Error, text); }
  // A line under the open block; opens one when there is none.
  void AddLine(const char* text);

 private:
  enum class BlockKind : std::size_t { Information, Error };

  void AddBlock(BlockKind kind, const char* text);
  const std::string& Title(BlockKind kind);
  CZyUser_LogEntry NewEntry(zyresult severity, const char* text);
  // The subsystem's log, empty when the host lacks it.
  const CZyUser_Log& Subsystem();

  std::string subsystemName_;
  std::optional<Services> services_;
  std::optional<CZyUser_Log> subsystem_;
  CZyUser_LogEntry openBlock_;
  std::array<std::optional<std::string>, 2> titles_;  // by BlockKind
};

class CZyTavrensyLogMessage : public CZyLogMessage {
 public:
  using CZyLogMessage::CZyLogMessage;
  // The application's version, as "10.2v3".
  const char* GetVersion() override;
  const char* GetNotice() override;

 private:
  std::string versionText_;
};

// Counts warnings and errors for the summary of a save. All messages are printf-style and are logged as
// they stand, leading blanks included; a text of more than 1023 bytes is cut.
class GltfLogMsg : public CZyTavrensyLogMessage {
 public:
  GltfLogMsg() : CZyTavrensyLogMessage("io-status") {}
  const char* GetFormat() override { return "gltf"; }
  // A line on the application and its system, with a line end.
  const char* GetVersion() override;

  // Opens a new block of the log with the text as its first line.
  void Setup(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void Info(const char* format, ...) __attribute__((format(printf, 2, 3)));
  // Counted.
  void Warning(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void Error(const char* format, ...) __attribute__((format(printf, 2, 3)));
  // Not counted; the user sees them in a dialog too.
  void WarningDialog(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void ErrorDialog(const char* format, ...) __attribute__((format(printf, 2, 3)));

  void ResetCounters() { warnings_ = errors_ = 0; }
  std::uint32_t WarningCount() const { return warnings_; }
  std::uint32_t ErrorCount() const { return errors_; }

 private:
  void Format(const char* format, std::va_list arguments);
  // False when the host lacks the event log; the text is the formatted one.
  bool AddEvent(zyresult severity);
  void ShowDialog(zyresult code);

  std::array<char, 1024> buffer_ = {};  // the formatted text
  std::optional<CZyUser_Log> log_;      // looked up on first use, empty when the host lacks it
  std::string headerText_;
  std::uint32_t warnings_ = 0;
  std::uint32_t errors_ = 0;
};
