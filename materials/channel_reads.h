// Reads of channels by name. What isn't there or can't be read leaves the value as the caller preset it.
#pragma once

#include "host/user_scene.h"

// The channel's index, -1 when the item has none of the name.
inline std::int32_t ChannelIndex(const CZyUser_Item& item, const char* name) {
  std::int32_t channel = -1;
  item.ChannelLookup(name, channel);
  return channel;
}

// True when the value was read.
inline bool ReadInteger(const CZyUser_ChannelRead& read, const CZyUser_Item& item, const char* name,
                        std::int32_t& value) {
  const std::int32_t channel = ChannelIndex(item, name);
  return channel >= 0 && ZySucceeded(read.Integer(item, channel, value));
}

inline bool ReadDouble(const CZyUser_ChannelRead& read, const CZyUser_Item& item, const char* name,
                       double& value) {
  const std::int32_t channel = ChannelIndex(item, name);
  return channel >= 0 && ZySucceeded(read.Double(item, channel, value));
}

// Empty when there is no text.
inline const char* ReadText(const CZyUser_ChannelRead& read, const CZyUser_Item& item, const char* name) {
  const char* text = "";
  const std::int32_t channel = ChannelIndex(item, name);
  if (channel >= 0) read.String(item, channel, text);
  return text ? text : "";
}
