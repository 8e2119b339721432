// Loads a plug-in module and finds its servers.
#pragma once

#include "host/module_api.h"
#include "host/object.h"

#include <filesystem>
#include <memory>
#include <stdexcept>

namespace headless {

// A module that can't be loaded or lacks a server. what() is one line with the file and the reason.
class ModuleError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A loaded module. Everything that came from it must be released before it is destroyed.
class LoadedModule {
 public:
  // Throws ModuleError. The host must outlive the module.
  LoadedModule(const std::filesystem::path& file, IZyHost& host);
  ~LoadedModule();
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  // A new object of the server. Throws ModuleError.
  CountedRef<IZyObject> NewObject(const char* serverName) const;
  // A new saver of the server. Throws ModuleError.
  CountedRef<IZySaver> NewSaver(const char* serverName) const;

 private:
  std::filesystem::path file_;
  void* library_ = nullptr;
  IZyModule* module_ = nullptr;
};

}  // namespace headless
