#include "saver/log_message.h"

#include <cstdio>
#include <locale.h>

namespace {

constexpr const char* kMessageTable = "common";
constexpr std::uint32_t kDialogMessage = 2020;

// Of the two kinds of blocks: the host's title with the text that stands in for it, and the severity of
// the block and of its first line.
struct BlockStyle {
  std::uint32_t titleNumber;
  const char* titleFallback;
  zyresult severity;
};
constexpr BlockStyle kBlockStyles[] = {
    {2402, "load/save", kSeverityInfo},
    {2401, "load/save error", kSeverityWarning},
};

}  // namespace

CZyLogMessage::Services& CZyLogMessage::HostServices() {
  if (!services_) services_.emplace();
  return *services_;
}

const CZyUser_Log& CZyLogMessage::Subsystem() {
  if (!subsystem_) HostServices().log.SubSystemLookup(subsystemName_.c_str(), subsystem_.emplace());
  return *subsystem_;
}

CZyUser_LogEntry CZyLogMessage::NewEntry(zyresult severity, const char* text) {
  CZyUser_LogEntry entry;
  HostServices().log.NewEntry(severity, text, entry);
  return entry;
}

const std::string& CZyLogMessage::Title(BlockKind kind) {
  const auto place = static_cast<std::size_t>(kind);
  std::optional<std::string>& title = titles_[place];
  if (!title) {
    title = kBlockStyles[place].titleFallback;
    HostServices().message.TableText(kMessageTable, kBlockStyles[place].titleNumber, *title);
  }
  return *title;
}

void CZyLogMessage::AddBlock(BlockKind kind, const char* text) {
  const CZyUser_Log& subsystem = Subsystem();
  if (!subsystem) return;
  const zyresult severity = kBlockStyles[static_cast<std::size_t>(kind)].severity;
  const std::string title = std::string(GetFormat()) + ": " + Title(kind);
  CZyUser_LogEntry block = NewEntry(severity, title.c_str());
  if (!block) return;
  if (const CZyUser_LogEntry line = NewEntry(severity, text)) block.AddChild(line);
  subsystem.AddEntry(block);
  openBlock_ = std::move(block);
}

void CZyLogMessage::AddLine(const char* text) {
  if (!openBlock_) return OpenBlock(text);
  if (const CZyUser_LogEntry line = NewEntry(kSeverityInfo, text)) openBlock_.AddChild(line);
}

const char* CZyTavrensyLogMessage::GetVersion() {
  if (versionText_.empty()) {
    std::int32_t parts[3] = {1, 0, 0};
    CZyPlatformService().AppVersionParts(parts);
    versionText_ = std::to_string(parts[0]) + "." + std::to_string(parts[1]) + "v" + std::to_string(parts[2]);
  }
  return versionText_.c_str();
}

const char* CZyTavrensyLogMessage::GetNotice() { return "Kelbrin Orvo scene export"; }

const char* GltfLogMsg::GetVersion() {
  if (headerText_.empty()) {
    const CZyPlatformService platform;
    const char* name = "";
    const char* osName = "";
    const char* osVersion = "";
    std::int32_t version = 0, build = 0;
    platform.AppName(name);
    platform.AppVersion(version);
    platform.AppBuild(build);
    platform.OsName(osName);
    platform.OsVersion(osVersion);
    headerText_ = std::string(name) + " " + std::to_string(version) + " [Build " + std::to_string(build) + "], " +
                  osName + " (" + osVersion + ")\n";
  }
  return headerText_.c_str();
}

void GltfLogMsg::Format(const char* format, std::va_list arguments) {
  // The host may run under a locale with a decimal comma.
  static const locale_t kPlain = newlocale(LC_ALL_MASK, "C", nullptr);
  const locale_t before = uselocale(kPlain);
  std::vsnprintf(buffer_.data(), buffer_.size(), format, arguments);
  uselocale(before);
}

bool GltfLogMsg::AddEvent(zyresult severity) {
  const CZyLogService& service = HostServices().log;
  if (!log_) service.SubSystemLookup("logsys", log_.emplace());
  if (!*log_) return false;
  CZyUser_LogEntry entry;
  service.NewEntry(severity, buffer_.data(), entry);
  if (entry) log_->AddEntry(entry);
  return true;
}

void GltfLogMsg::ShowDialog(zyresult code) {
  CZyUser_Message message;
  if (ZyFailed(HostServices().message.NewMessage(message))) return;
  message.SetCode(code);
  message.SetMessage(kMessageTable, kDialogMessage);
  message.SetArgument(1, buffer_.data());
  CZyStdDialogService().ShowMessage(message);
}

void GltfLogMsg::Setup(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Format(format, arguments);
  va_end(arguments);
  OpenBlock(buffer_.data());
}

void GltfLogMsg::Info(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Format(format, arguments);
  va_end(arguments);
  AddLine(buffer_.data());
}

void GltfLogMsg::Warning(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Format(format, arguments);
  va_end(arguments);
  ++warnings_;
  if (!AddEvent(kSeverityWarning)) ErrorBlock(buffer_.data());
}

void GltfLogMsg::Error(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Format(format, arguments);
  va_end(arguments);
  ++errors_;
  if (!AddEvent(kSeverityError)) ErrorBlock(buffer_.data());
}

void GltfLogMsg::WarningDialog(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Format(format, arguments);
  va_end(arguments);
  if (!AddEvent(kSeverityWarning)) AddLine(buffer_.data());
  ShowDialog(kSeverityWarning);
}

void GltfLogMsg::ErrorDialog(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Format(format, arguments);
  va_end(arguments);
  if (!AddEvent(kSeverityError)) AddLine(buffer_.data());
  ShowDialog(kSeverityError);
}
