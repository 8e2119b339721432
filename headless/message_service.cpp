#include "headless/message_service.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace headless {

namespace {

struct TableRow {
  const char* table;
  std::uint32_t number;
  const char* text;
};

constexpr TableRow kTexts[] = {
    {"common", 2020, "%1"},
    {"common", 2401, "load/save error"},
    {"common", 2402, "load/save"},
};

const char* FindText(const std::string& table, std::uint32_t number) {
  const auto* row = std::find_if(std::begin(kTexts), std::end(kTexts), [&](const TableRow& candidate) {
    return candidate.number == number && table == candidate.table;
  });
  return row == std::end(kTexts) ? nullptr : row->text;
}

}  // namespace

zyresult Message::SetCode(zyresult code) {
  code_ = code;
  return ZYe_OK;
}

zyresult Message::SetMessage(const char* table, std::uint32_t number) {
  if (!table || !FindText(table, number)) return ZYe_FAILED;
  table_ = table;
  number_ = number;
  return ZYe_OK;
}

zyresult Message::SetArgument(std::uint32_t index, const char* text) {
  if (index == 0 || !text) return ZYe_FAILED;
  arguments_[index] = text;
  return ZYe_OK;
}

std::string Message::Text() const {
  const char* pattern = FindText(table_, number_);
  std::string text;
  for (; pattern && *pattern; ++pattern) {
    const bool isArgument = pattern[0] == '%' && pattern[1] >= '1' && pattern[1] <= '9';
    if (!isArgument) {
      text += *pattern;
      continue;
    }
    const auto argument = arguments_.find(static_cast<std::uint32_t>(*++pattern - '0'));
    if (argument != arguments_.end()) text += argument->second;
  }
  return text;
}

zyresult CopyText(const std::string& text, char* buffer, std::uint32_t size) {
  if (!buffer) return ZYe_FAILED;
  if (text.size() >= size) return ZYe_SHORT_BUFFER;
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  return ZYe_OK;
}

zyresult MessageService::NewMessage(IZyObject*& message) {
  message = new Message(live_);
  return ZYe_OK;
}

zyresult MessageService::TableText(const char* table, std::uint32_t number, char* buffer, std::uint32_t size) {
  const char* text = table ? FindText(table, number) : nullptr;
  return text ? CopyText(text, buffer, size) : ZYe_FAILED;
}

zyresult MessageService::MessageText(IZyMessage* message, char* buffer, std::uint32_t size) {
  return message ? CopyText(static_cast<Message*>(message)->Text(), buffer, size) : ZYe_FAILED;
}

zyresult DialogService::ShowMessage(IZyMessage* message) {
  if (!message) return ZYe_FAILED;
  const bool isError = ZyFailed(message->Code());
  stream_.AddDialog(isError ? LogLine::Kind::ErrorDialog : LogLine::Kind::WarningDialog,
                    static_cast<Message*>(message)->Text());
  return ZYe_OK;
}

}  // namespace headless
