// The event log and the dialogs, turned into one stream of lines.
#pragma once

#include "headless/host.h"
#include "headless/host_object.h"
#include "headless/permanent_object.h"
#include "host/service_api.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace headless {

// Passes lines on in order. A message that is logged and shown in a dialog, in either order, is one line; so a
// logged message that may yet be shown waits for the next event.
class LogStream {
 public:
  void SetSink(LogSink sink);
  void Add(LogLine::Kind kind, const std::string& text);
  // A line of "logsys", where the messages are that dialogs show.
  void AddMessage(LogLine::Kind kind, const std::string& text);
  void AddDialog(LogLine::Kind kind, const std::string& text);
  void Flush();

 private:
  void Emit(const LogLine& line) const;

  LogSink sink_;
  LogLine line_;                               // scratch
  std::optional<LogLine> waiting_;             // the last line, when it is a message that no dialog has shown
  std::optional<std::string> unloggedDialog_;  // text of the last line, when it is a dialog that isn't logged
};

class LogEntry final : public HostObject<IZyLogEntry> {
 public:
  LogEntry(std::size_t& live, zyresult severity, const char* text)
      : HostObject(live), severity_(severity), text_(text ? text : "") {}
  ~LogEntry() override;

  zyresult AddChild(IZyLogEntry* child) override;

  zyresult Severity() const { return severity_; }
  const std::string& Text() const { return text_; }
  const std::vector<LogEntry*>& Children() const { return children_; }
  // From now on children are lines of the log as soon as they are added.
  void Open(LogStream& stream) { stream_ = &stream; }

 private:
  zyresult severity_;
  std::string text_;
  std::vector<LogEntry*> children_;  // counted; those added before the entry was logged
  LogStream* stream_ = nullptr;
};

class LogService final : public PermanentObject<IZyLogService> {
 public:
  // Both outlive the service.
  LogService(std::size_t& live, LogStream& stream);
  ~LogService() override;

  zyresult SubSystemLookup(const char* name, IZyObject*& log) override;
  zyresult NewEntry(zyresult severity, const char* text, IZyObject*& entry) override;

 private:
  class Log;

  std::size_t& live_;
  std::map<std::string, std::unique_ptr<Log>> logs_;
};

}  // namespace headless
