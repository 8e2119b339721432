#include "headless/host.h"

#include "headless/command_service.h"
#include "headless/deform.h"
#include "headless/host_state.h"
#include "headless/log_service.h"
#include "headless/message_service.h"
#include "headless/persistence.h"
#include "headless/services.h"

namespace headless {

struct Host::Impl {
  Impl(SceneData scene, std::shared_ptr<ConfigStore> settings)
      : state(std::move(scene)),
        sceneService(state),
        selection(state),
        platform(state.scene.application),
        values(state),
        deformers(state),
        log(state.live, stream),
        messages(state.live),
        dialogs(stream),
        commands(state),
        persistence(state.live, std::move(settings)) {}

  HostState state;
  LogStream stream;
  SceneService sceneService;
  SelectionService selection;
  PlatformService platform;
  ValueService values;
  DeformerService deformers;
  LogService log;
  MessageService messages;
  DialogService dialogs;
  CommandService commands;
  PersistenceService persistence;
  IOService io;
};

Host::Host(SceneData scene) : Host(std::move(scene), std::make_shared<ConfigStore>()) {}

Host::Host(SceneData scene, std::shared_ptr<ConfigStore> settings)
    : impl_(std::make_unique<Impl>(std::move(scene), std::move(settings))) {}

Host::~Host() = default;

IZyObject* Host::Service(std::uint32_t id) {
  IZyObject* const services[] = {&impl_->sceneService, &impl_->selection,   &impl_->platform, &impl_->values,
                                 &impl_->deformers,    &impl_->log,         &impl_->messages, &impl_->dialogs,
                                 &impl_->commands,     &impl_->persistence, &impl_->io};
  if (id == IZyObject::kId) return nullptr;
  for (IZyObject* service : services)
    if (service->Interface(id)) return service;
  return nullptr;
}

IZyScene* Host::Scene() { return impl_->state.Scene(); }

void Host::SetLogSink(LogSink sink) { impl_->stream.SetSink(std::move(sink)); }

void Host::FlushLog() { impl_->stream.Flush(); }

const SceneData& Host::Data() const { return impl_->state.scene; }

void Host::SetUserValue(const std::string& name, std::int32_t value) { impl_->values.Set(name, value); }

const Demand& Host::Asked() const { return impl_->state.demand; }

std::size_t Host::LiveObjects() const { return impl_->state.live; }

}  // namespace headless
