// Animation in the host: action clips, groups, envelopes.
#pragma once

#include "host/mesh_api.h"
#include "host/object.h"

struct IZyActionClip : IZyObject {
  static constexpr std::uint32_t kId = 0x401;

  virtual std::int32_t Active() = 0;   // 0 or 1
  virtual std::int32_t Enabled() = 0;  // 0 or 1
  // 1 makes the clip the one in force, which changes the edit channels and the evaluated scene; 0
  // takes it out of force.
  virtual zyresult SetActive(std::int32_t state) = 0;

 protected:
  ~IZyActionClip() = default;
};

enum class GroupMembers : std::uint32_t { Items = 1, Channels = 2 };

struct IZyGroupEnumerator : IZyObject {
  static constexpr std::uint32_t kId = 0x402;

  virtual zyresult Enumerate(GroupMembers members, CZyImpl_AbstractVisitor& visitor) = 0;
  // The visited item; for a channel, the item that carries it.
  virtual zyresult Item(IZyObject*& item) = 0;

 protected:
  ~IZyGroupEnumerator() = default;
};

struct IZyGroupItem : IZyObject {
  static constexpr std::uint32_t kId = 0x403;

  virtual zyresult Enumerator(IZyObject*& enumerator) = 0;

 protected:
  ~IZyGroupItem() = default;
};

// A cursor over the keys of an envelope. Without keys First and Last fail.
struct IZyKeyframe : IZyObject {
  static constexpr std::uint32_t kId = 0x404;

  virtual zyresult First() = 0;
  virtual zyresult Last() = 0;
  virtual zyresult GetTime(double& seconds) = 0;

 protected:
  ~IZyKeyframe() = default;
};

struct IZyEnvelope : IZyObject {
  static constexpr std::uint32_t kId = 0x405;

  virtual zyresult Keyframe(IZyObject*& keyframe) = 0;

 protected:
  ~IZyEnvelope() = default;
};
