#include "host/user_services.h"

namespace {
IZyHost* g_host = nullptr;
}

IZyHost* ZyHost() { return g_host; }
void SetZyHost(IZyHost* host) { g_host = host; }
