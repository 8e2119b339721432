#include "saver/module.h"

#include "host/saver_adapter.h"
#include "options/options_command.h"
#include "saver/gltf_saver.h"
#include "saver/server_table.h"

namespace {

class Module final : public CountedObject<IZyModule> {
 public:
  Module() {
    servers_.Add(kLoadOptionsServer, new CommandFactory<LoadOptionsCmd>);
    servers_.Add("gltf.bin", new SaverFactory<GltfSaver>);
    servers_.Add("gltf.gltf", new SaverFactory<GltfSaverGLTF>);
  }

  std::uint32_t ServerCount() override { return servers_.Count(); }
  zyresult ServerName(std::uint32_t index, const char*& text) override {
    const char* name = servers_.Name(index);
    if (!name) return ZYe_OUT_OF_BOUNDS;
    text = name;
    return ZYe_OK;
  }
  IZyFactory* Factory(const char* name) override { return name ? servers_.Find(name) : nullptr; }

 private:
  LoadOptionsRegistration loadOptions_;
  ServerTable servers_;
};

}  // namespace

zyresult CreateModule(IZyHost* host, IZyModule** module) {
  if (!host || !module) return ZYe_FAILED;
  SetZyHost(host);
  try {
    *module = new Module;
  } catch (...) {
    return ZYe_FAILED;
  }
  return ZYe_OK;
}
