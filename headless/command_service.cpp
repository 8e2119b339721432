#include "headless/command_service.h"

#include "headless/host_object.h"
#include "headless/message_service.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace headless {

namespace {

enum Argument : std::int32_t { kItem, kItemType, kTagType, kTag };
constexpr const char* kArgumentNames[] = {"item", "itemType", "tagType", "tag"};

class TagCommand final : public HostObject<IZyCommand, IZyAttributes> {
 public:
  explicit TagCommand(std::size_t& live) : HostObject(live), message_(*new headless::Message(live)) {}
  ~TagCommand() override { message_.Release(); }

  zyresult Message(IZyObject*& message) override {
    message = &message_;
    message->AddRef();
    return ZYe_OK;
  }
  zyresult Lookup(const char* name, std::int32_t& index) override;
  zyresult Value(std::int32_t index, IZyObject*& value) override;
  zyresult SetString(std::int32_t index, const char* text) override;
  zyresult SetInt(std::int32_t index, std::int32_t) override { return index == kTagType ? ZYe_OK : ZYe_FAILED; }

  zyresult SetItem(IZyObject* object);
  IZyItem* QueriedItem() const { return itemType_ == "actionclip" ? item_ : nullptr; }
  // Sets the command's message and returns the code.
  zyresult Fail(const char* text);

 private:
  headless::Message& message_;
  IZyItem* item_ = nullptr;
  std::string itemType_;
};

class ItemReference final : public HostObject<IZyValueReference> {
 public:
  ItemReference(std::size_t& live, TagCommand& command) : HostObject(live), command_(command) {
    command_.AddRef();
  }
  ~ItemReference() override { command_.Release(); }

  zyresult SetObject(IZyObject* object) override { return command_.SetItem(object); }

 private:
  TagCommand& command_;
};

class TextArray final : public HostObject<IZyValueArray> {
 public:
  TextArray(std::size_t& live, std::string text) : HostObject(live), text_(std::move(text)) {}

  std::uint32_t Count() override { return 1; }
  zyresult String(std::uint32_t index, char* buffer, std::uint32_t size) override {
    return index == 0 ? CopyText(text_, buffer, size) : ZYe_FAILED;
  }

 private:
  std::string text_;
};

zyresult TagCommand::Lookup(const char* name, std::int32_t& index) {
  if (!name) return ZYe_FAILED;
  const auto* found = std::find(std::begin(kArgumentNames), std::end(kArgumentNames), std::string_view(name));
  if (found == std::end(kArgumentNames)) return ZYe_FAILED;
  index = static_cast<std::int32_t>(found - std::begin(kArgumentNames));
  return ZYe_OK;
}

zyresult TagCommand::Value(std::int32_t index, IZyObject*& value) {
  if (index != kItem) return ZYe_FAILED;
  value = new ItemReference(LiveCounter(), *this);
  return ZYe_OK;
}

zyresult TagCommand::SetString(std::int32_t index, const char* text) {
  if (!text || (index != kItemType && index != kTag)) return ZYe_FAILED;
  if (index == kItemType) itemType_ = text;
  return ZYe_OK;
}

zyresult TagCommand::SetItem(IZyObject* object) {
  item_ = object ? static_cast<IZyItem*>(object->Interface(IZyItem::kId)) : nullptr;
  return item_ ? ZYe_OK : ZYe_FAILED;
}

zyresult TagCommand::Fail(const char* text) {
  message_.SetCode(ZYe_FAILED);
  message_.SetMessage("common", 2020);
  message_.SetArgument(1, text);
  return ZYe_FAILED;
}

}  // namespace

zyresult CommandService::NewCommand(const char* name, IZyObject*& command) {
  const bool isKnown = name && std::string_view(name) == "item.exportTags";
  if (!isKnown || host_.scene.exportTagsCommand == CommandState::Absent) return ZYe_FAILED;
  command = static_cast<IZyCommand*>(new TagCommand(host_.live));
  return ZYe_OK;
}

zyresult CommandService::QueryArgument(IZyCommand* command, std::int32_t argument, IZyObject*& values) {
  if (!command || argument != kTag) return ZYe_FAILED;
  auto& query = *static_cast<TagCommand*>(command);
  if (host_.scene.exportTagsCommand == CommandState::Fails) return query.Fail("Export tags can't be read.");
  IZyItem* item = query.QueriedItem();
  const auto* clip = item ? &host_.Data(HostState::IndexOf(item)).clip : nullptr;
  if (!clip || !*clip) return query.Fail("No action clip to read export tags from.");
  values = new TextArray(host_.live, (*clip)->exportTag);
  return ZYe_OK;
}

}  // namespace headless
