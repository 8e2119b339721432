// The export tag of an action clip, which stands in front of its name.
#pragma once

#include "host/user_action.h"
#include "saver/log_message.h"

#include <string>

// Asks the host's command item.exportTags; empty, with a message, after any failure.
std::string ExportTagsPrefix(GltfLogMsg& log, const CZyUser_ActionClip& clip);
