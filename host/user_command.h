// Wrappers of the command interfaces. Each call on an empty wrapper fails; see object.h.
#pragma once

#include "host/command_api.h"
#include "host/user_services.h"

class CZyUser_Command : public CountedRef<IZyCommand> {
 public:
  zyresult Message(CZyUser_Message& message) const { return CallFor(message, &IZyCommand::Message); }
};

class CZyUser_ValueReference : public CountedRef<IZyValueReference> {
 public:
  zyresult SetObject(IZyObject* object) const { return Call(&IZyValueReference::SetObject, object); }
};

class CZyUser_Attributes : public CountedRef<IZyAttributes> {
 public:
  zyresult Lookup(const char* name, std::int32_t& index) const {
    return Call(&IZyAttributes::Lookup, name, index);
  }
  zyresult Value(std::int32_t index, CZyUser_ValueReference& value) const {
    return CallFor(value, &IZyAttributes::Value, index);
  }
  zyresult SetString(std::int32_t index, const char* text) const {
    return Call(&IZyAttributes::SetString, index, text);
  }
  zyresult SetInt(std::int32_t index, std::int32_t value) const {
    return Call(&IZyAttributes::SetInt, index, value);
  }
};

class CZyUser_ValueArray : public CountedRef<IZyValueArray> {
 public:
  zyresult String(std::uint32_t index, std::string& text) const {
    return ReadHostText(
        [&](char* buffer, std::uint32_t size) { return Call(&IZyValueArray::String, index, buffer, size); }, text,
        512);
  }
};

class CZyCommandService : public CZyService<IZyCommandService> {
 public:
  zyresult NewCommand(const char* name, CZyUser_Command& command) const {
    return CallFor(command, &IZyCommandService::NewCommand, name);
  }
  zyresult QueryArgument(const CZyUser_Command& command, std::int32_t argument, CZyUser_ValueArray& values) const {
    return CallFor(values, &IZyCommandService::QueryArgument, command.Raw(), argument);
  }
};
