// The headless Orvo: serves a SceneData through the host's surface.
#pragma once

#include "headless/demand.h"
#include "headless/scene_data.h"
#include "host/module_api.h"
#include "host/service_api.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace headless {

// One message of the host's log, in the order in which it was added.
struct LogLine {
  enum class Kind { Setup, Info, Warning, Error, WarningDialog, ErrorDialog };
  Kind kind = Kind::Info;
  std::string text;
};

using LogSink = std::function<void(const LogLine&)>;

class ConfigStore;

// Owns a scene; everything handed out lives as long as the host.
class Host final : public IZyHost {
 public:
  // What modules store is kept in memory.
  explicit Host(SceneData scene);
  // What modules store goes into `settings`, which are saved by whoever gave them.
  Host(SceneData scene, std::shared_ptr<ConfigStore> settings);
  ~Host();

  IZyObject* Service(std::uint32_t id) override;

  // The scene, as the target of a save. Without a reference.
  IZyScene* Scene();
  // Receives each message of the event log and each dialog. A warning or an error waits for what comes after
  // it, since it is one message with a dialog of the same text; FlushLog passes the last one on.
  void SetLogSink(LogSink sink);
  void FlushLog();
  const SceneData& Data() const;
  void SetUserValue(const std::string& name, std::int32_t value);
  // May be read from any thread.
  const Demand& Asked() const;
  // Temporary objects (channel reads, accessors, messages, ...) handed out and not yet released.
  std::size_t LiveObjects() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace headless
