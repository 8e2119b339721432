// The host's commands: item.exportTags, which knows the export tag of an action clip.
#pragma once

#include "headless/host_state.h"
#include "headless/permanent_object.h"
#include "host/command_api.h"

namespace headless {

class CommandService final : public PermanentObject<IZyCommandService> {
 public:
  explicit CommandService(HostState& host) : host_(host) {}

  zyresult NewCommand(const char* name, IZyObject*& command) override;
  zyresult QueryArgument(IZyCommand* command, std::int32_t argument, IZyObject*& values) override;

 private:
  HostState& host_;
};

}  // namespace headless
