// The plug-in module with its servers.
#pragma once

#include "host/module_api.h"

// Makes the module for a host, which must outlive it. On success `module` comes counted; on failure it stays
// as it was.
zyresult CreateModule(IZyHost* host, IZyModule** module);
