// The one symbol that the module exports.

#include "saver/module.h"

extern "C" __attribute__((visibility("default"))) zyresult _IZyModule_Create(IZyHost* host, IZyModule** module) {
  return CreateModule(host, module);
}
