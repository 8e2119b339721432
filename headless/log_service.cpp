#include "headless/log_service.h"

#include <optional>
#include <utility>

namespace headless {

namespace {

LogLine::Kind KindOf(zyresult severity) {
  if (ZyFailed(severity)) return LogLine::Kind::Error;
  return severity == kSeverityWarning ? LogLine::Kind::Warning : LogLine::Kind::Info;
}

}  // namespace

void LogStream::SetSink(LogSink sink) {
  Flush();
  sink_ = std::move(sink);
}

void LogStream::Emit(const LogLine& line) const {
  if (sink_) sink_(line);
}

void LogStream::Flush() {
  // Gone before it is told: whom it is told may throw.
  const std::optional<LogLine> waiting = std::exchange(waiting_, std::nullopt);
  unloggedDialog_.reset();
  if (waiting) Emit(*waiting);
}

void LogStream::Add(LogLine::Kind kind, const std::string& text) {
  Flush();
  if (!sink_) return;
  line_.kind = kind;
  line_.text = text;
  Emit(line_);
}

void LogStream::AddMessage(LogLine::Kind kind, const std::string& text) {
  const bool isShown = unloggedDialog_ == text;
  Flush();
  if (!isShown) waiting_ = LogLine{kind, text};
}

void LogStream::AddDialog(LogLine::Kind kind, const std::string& text) {
  const bool isLogged = waiting_ && waiting_->text == text;
  if (isLogged) waiting_.reset();
  Add(kind, text);
  if (!isLogged) unloggedDialog_ = text;
}

LogEntry::~LogEntry() {
  for (LogEntry* child : children_) child->Release();
}

zyresult LogEntry::AddChild(IZyLogEntry* child) {
  if (!child || child == this) return ZYe_FAILED;
  auto* entry = static_cast<LogEntry*>(child);
  if (stream_) {
    stream_->Add(KindOf(severity_), entry->text_);
    return ZYe_OK;
  }
  children_.push_back(entry);
  entry->AddRef();
  return ZYe_OK;
}

// A subsystem of the log.
class LogService::Log final : public PermanentObject<IZyLog> {
 public:
  // "io-status" holds blocks of lines, "logsys" single messages.
  enum class Content { Blocks, Messages };

  Log(LogStream& stream, Content content) : stream_(stream), content_(content) {}

  zyresult AddEntry(IZyLogEntry* entry) override {
    if (!entry) return ZYe_FAILED;
    auto& added = *static_cast<LogEntry*>(entry);
    const LogLine::Kind kind = KindOf(added.Severity());
    if (content_ == Content::Messages)
      stream_.AddMessage(kind, added.Text());
    else if (added.Children().empty())
      stream_.Add(kind, added.Text());
    else
      AddBlock(added, kind);
    added.Open(stream_);
    return ZYe_OK;
  }

 private:
  // The block's own text is a title that every block repeats: only its lines are messages.
  void AddBlock(const LogEntry& block, LogLine::Kind kind) {
    bool isFirst = true;
    for (const LogEntry* child : block.Children()) {
      stream_.Add(isFirst && kind == LogLine::Kind::Info ? LogLine::Kind::Setup : kind, child->Text());
      isFirst = false;
    }
  }

  LogStream& stream_;
  Content content_;
};

LogService::LogService(std::size_t& live, LogStream& stream) : live_(live) {
  logs_["io-status"] = std::make_unique<Log>(stream, Log::Content::Blocks);
  logs_["logsys"] = std::make_unique<Log>(stream, Log::Content::Messages);
}

LogService::~LogService() = default;

zyresult LogService::SubSystemLookup(const char* name, IZyObject*& log) {
  const auto known = name ? logs_.find(name) : logs_.end();
  if (known == logs_.end()) return ZYe_FAILED;
  log = known->second.get();
  log->AddRef();
  return ZYe_OK;
}

zyresult LogService::NewEntry(zyresult severity, const char* text, IZyObject*& entry) {
  entry = new LogEntry(live_, severity, text);
  return ZYe_OK;
}

}  // namespace headless
