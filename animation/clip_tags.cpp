#include "animation/clip_tags.h"

#include "host/user_command.h"

namespace {

constexpr const char* kCommand = "item.exportTags";

std::int32_t ArgumentIndex(const CZyUser_Attributes& arguments, const char* name) {
  std::int32_t index = -1;
  arguments.Lookup(name, index);
  return index;
}

// False when an argument can't be set. `tag` is the index of the argument to be queried.
bool SetArguments(const CZyUser_Attributes& arguments, const CZyUser_ActionClip& clip, std::int32_t& tag) {
  const std::int32_t item = ArgumentIndex(arguments, "item");
  const std::int32_t itemType = ArgumentIndex(arguments, "itemType");
  const std::int32_t tagType = ArgumentIndex(arguments, "tagType");
  tag = ArgumentIndex(arguments, "tag");
  CZyUser_ValueReference itemValue;
  if (ZyFailed(arguments.Value(item, itemValue))) return false;
  itemValue.SetObject(clip.Raw());
  return ZySucceeded(arguments.SetString(itemType, "actionclip")) && ZySucceeded(arguments.SetInt(tagType, 0)) &&
         ZySucceeded(arguments.SetString(tag, ""));
}

std::string QueryTag(const CZyCommandService& service, const CZyUser_Command& command, std::int32_t tag) {
  CZyUser_ValueArray values;
  std::string text;
  if (ZySucceeded(service.QueryArgument(command, tag, values))) values.String(0, text);
  return text;
}

// Reports how the command went; false when its answer is not to be used.
bool ReportResult(GltfLogMsg& log, const CZyUser_Command& command) {
  CZyUser_Message message;
  if (ZyFailed(command.Message(message))) {
    log.Warning("    Result of command execution unknown");
    return false;
  }
  if (ZySucceeded(message.Code())) {
    log.Info("    Success - FB prefix and suffix added to action clip names.");
    return true;
  }
  std::string text;
  CZyMessageService().MessageText(message, text);
  log.Error("    Command failed - %s", text.c_str());
  return false;
}

}  // namespace

std::string ExportTagsPrefix(GltfLogMsg& log, const CZyUser_ActionClip& clip) {
  if (clip.Empty()) {
    log.Error("    Item supplied is not initialized.");
    return {};
  }
  const CZyCommandService service;
  CZyUser_Command command;
  if (ZyFailed(service.NewCommand(kCommand, command))) {
    log.Error("    Failed to create command %s.", kCommand);
    return {};
  }
  CZyUser_Attributes arguments;
  std::int32_t tag = -1;
  if (!arguments.Set(command.Raw()) || !SetArguments(arguments, clip, tag)) {
    log.Error("    Unable to set command argument for %s.", kCommand);
    return {};
  }
  const std::string text = QueryTag(service, command, tag);
  return ReportResult(log, command) ? text : std::string();
}
