// Messages, their tables of texts, and the dialogs that show them.
#pragma once

#include "headless/host_object.h"
#include "headless/log_service.h"
#include "headless/permanent_object.h"
#include "host/service_api.h"

#include <map>
#include <string>

namespace headless {

class Message final : public HostObject<IZyMessage> {
 public:
  using HostObject::HostObject;

  zyresult Code() override { return code_; }
  zyresult SetCode(zyresult code) override;
  zyresult SetMessage(const char* table, std::uint32_t number) override;
  zyresult SetArgument(std::uint32_t index, const char* text) override;

  // The table's text with the arguments in place.
  std::string Text() const;

 private:
  zyresult code_ = ZYe_OK;
  std::string table_;
  std::uint32_t number_ = 0;
  std::map<std::uint32_t, std::string> arguments_;
};

// Writes a text with its closing zero; ZYe_SHORT_BUFFER when `size` bytes don't hold it.
zyresult CopyText(const std::string& text, char* buffer, std::uint32_t size);

class MessageService final : public PermanentObject<IZyMessageService> {
 public:
  explicit MessageService(std::size_t& live) : live_(live) {}

  zyresult NewMessage(IZyObject*& message) override;
  zyresult TableText(const char* table, std::uint32_t number, char* buffer, std::uint32_t size) override;
  zyresult MessageText(IZyMessage* message, char* buffer, std::uint32_t size) override;

 private:
  std::size_t& live_;
};

// Dialogs become lines of the log stream.
class DialogService final : public PermanentObject<IZyStdDialogService> {
 public:
  explicit DialogService(LogStream& stream) : stream_(stream) {}

  zyresult ShowMessage(IZyMessage* message) override;

 private:
  LogStream& stream_;
};

}  // namespace headless
