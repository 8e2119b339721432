#include "headless/module_loader.h"

#include <cerrno>
#include <dlfcn.h>
#include <new>
#include <string>

namespace headless {

LoadedModule::LoadedModule(const std::filesystem::path& file, IZyHost& host) : file_(file) {
  // An absolute path, so that the system's library folders aren't searched.
  errno = 0;
  library_ = dlopen(std::filesystem::absolute(file).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library_ && errno == ENOMEM) throw std::bad_alloc();
  if (!library_) throw ModuleError(std::string("can't load the plug-in: ") + dlerror());
  // POSIX gives a function's address as an object pointer.
  auto* const entry = reinterpret_cast<ZyModuleEntry*>(dlsym(library_, "_IZyModule_Create"));
  if (!entry || ZyFailed(entry(&host, &module_)) || !module_) {
    dlclose(library_);
    throw ModuleError(file.string() + ": not a plug-in module: " +
                      (entry ? "its entry _IZyModule_Create failed" : "it has no entry _IZyModule_Create"));
  }
}

LoadedModule::~LoadedModule() {
  module_->Release();
  dlclose(library_);
}

CountedRef<IZyObject> LoadedModule::NewObject(const char* serverName) const {
  IZyFactory* const factory = module_->Factory(serverName);
  if (!factory) throw ModuleError(file_.string() + ": the plug-in has no server " + serverName);
  IZyObject* object = nullptr;
  CountedRef<IZyObject> spawned;
  if (ZyFailed(factory->Spawn(object)) || ZyFailed(spawned.Take(object)))
    throw ModuleError(file_.string() + ": server " + serverName + " gives no object");
  return spawned;
}

CountedRef<IZySaver> LoadedModule::NewSaver(const char* serverName) const {
  CountedRef<IZySaver> saver;
  if (!saver.Set(NewObject(serverName).Raw()))
    throw ModuleError(file_.string() + ": server " + serverName + " gives no saver");
  return saver;
}

}  // namespace headless
