#include "headless/channel_read.h"

#include "headless/actions.h"

namespace headless {

namespace {

class TriangleSurface final : public HostObject<IZyTriangleSurface> {
 public:
  using HostObject::HostObject;
};

}  // namespace

bool ChannelRead::IsReadable(ChannelRef ref, ChannelKind kind) const {
  return host_.index.HasChannel(ref) && host_.index.Channel(ref).extras->readable &&
         host_.index.KindOf(ref) == kind;
}

zyresult ChannelRead::ValueObject(IZyItem* item, std::int32_t channel, IZyObject*& object) {
  const ChannelRef ref{HostState::IndexOf(item), channel};
  if (IsReadable(ref, ChannelKind::Mesh))
    object = NewMesh(host_.MeshOf(ref.item), host_.live);
  else if (IsReadable(ref, ChannelKind::Surface))
    object = new TriangleSurface(host_.live);
  else
    return ZYe_FAILED;
  return ZYe_OK;
}

zyresult ChannelRead::Integer(IZyItem* item, std::int32_t channel, std::int32_t& value) {
  double number = 0;
  const zyresult result = Double(item, channel, number);
  if (ZySucceeded(result)) value = TruncateToInteger(number);
  return result;
}

zyresult ChannelRead::Double(IZyItem* item, std::int32_t channel, double& value) {
  const ChannelRef ref{HostState::IndexOf(item), channel};
  if (!IsReadable(ref, ChannelKind::Value)) return ZYe_FAILED;
  const std::optional<double> number = host_.values.Number(state_, ref);
  if (!number) return ZYe_FAILED;
  value = *number;
  return ZYe_OK;
}

zyresult ChannelRead::String(IZyItem* item, std::int32_t channel, const char*& text) {
  const ChannelRef ref{HostState::IndexOf(item), channel};
  if (!IsReadable(ref, ChannelKind::Value)) return ZYe_FAILED;
  const SharedText* value = host_.values.Text(state_, ref);
  if (!value) return ZYe_FAILED;
  text = value->c_str();
  return ZYe_OK;
}

std::int32_t ChannelRead::IsAnimated(IZyItem* item, std::int32_t channel) {
  const ChannelRef ref{HostState::IndexOf(item), channel};
  return host_.index.HasChannel(ref) && host_.values.Envelope(state_.layer, ref) ? 1 : 0;
}

zyresult ChannelRead::ChannelEnvelope(IZyItem* item, std::int32_t channel, IZyObject*& envelope) {
  const ChannelRef ref{HostState::IndexOf(item), channel};
  if (!IsReadable(ref, ChannelKind::Value)) return ZYe_FAILED;
  const EnvelopeData* curve = host_.values.Envelope(state_.layer, ref);
  if (!curve) return ZYe_FAILED;
  envelope = new Envelope(host_.live, *curve);
  return ZYe_OK;
}

const Matrix4& ChannelRead::World(ItemIndex locator) {
  if (!cache_) cache_ = host_.evaluator.TakeCache();
  // Matrices are always the host's evaluation, also for a layer whose numbers are read as they are stored.
  return host_.evaluator.World({state_.layer, Evaluation::Driven, state_.time}, locator, *cache_);
}

}  // namespace headless
