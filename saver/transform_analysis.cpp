#include "saver/transform_analysis.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace {

// Modelling programs name the parts of a transform stack in many ways. An item whose name holds one of the
// needles plays the part; the first row with a hit settles it.
struct NeedleRow {
  std::span<const std::string_view> needles;
  std::int32_t TransformInfo::*place;
};

constexpr std::string_view kRotationOffset[] = {"RotationOffset", "RotationOff", "RotOffset", "RotOff"};
constexpr std::string_view kRotationPivot[] = {"RotationPivot", "RotationPiv", "RotationPvt",
                                               "RotPivot",      "RotPiv",      "RotPvt"};
constexpr std::string_view kScaleOffset[] = {"ScalingOffset", "ScalingOff", "ScaleOffset",
                                             "ScaleOff",      "SclOffset",  "SclOff"};
constexpr std::string_view kScalePivot[] = {"ScalingPivot", "ScalingPiv", "ScalingPvt", "ScalePivot", "ScalePiv",
                                            "ScalePvt",     "SclPivot",   "SclPiv",     "SclPvt"};

constexpr NeedleRow kTranslationRows[] = {
    {kRotationOffset, &TransformInfo::rotationOffsetIndex},
    {kRotationPivot, &TransformInfo::rotationPivotIndex},
    {kScaleOffset, &TransformInfo::scaleOffsetIndex},
    {kScalePivot, &TransformInfo::scalePivotIndex},
};
constexpr NeedleRow kTransformRows[] = {
    {kRotationPivot, &TransformInfo::rotationPivotCompensationIndex},
    {kScalePivot, &TransformInfo::scalePivotCompensationIndex},
};

struct DrivenRow {
  std::int32_t MatrixChannels::*channel;
  std::int32_t TransformInfo::*count;
};
constexpr DrivenRow kDrivenRows[] = {
    {&MatrixChannels::wposMatrix, &TransformInfo::drivenWpos},
    {&MatrixChannels::wrotMatrix, &TransformInfo::drivenWrot},
    {&MatrixChannels::wsclMatrix, &TransformInfo::drivenWscl},
    {&MatrixChannels::worldMatrix, &TransformInfo::drivenWorld},
    {&MatrixChannels::localMatrix, &TransformInfo::drivenLocal},
    {&MatrixChannels::parentMatrix, &TransformInfo::drivenParent},
};

struct MainTransforms {
  CZyUser_Item position, rotation, scale;
};

std::int32_t LinkCount(const SaveState& state, const CZyUser_Item& item, std::int32_t channel) {
  std::uint32_t count = 0;
  state.chanLinks.RevCount(item, channel, count);
  return static_cast<std::int32_t>(count);
}

const char* ChannelName(const CZyUser_Item& item, std::int32_t channel) {
  const char* name = "";
  item.ChannelName(channel, name);
  return name ? name : "";
}

// Calls `visit` with the number of each channel of the item that a link drives.
template <class Visit>
void VisitDrivenChannels(const SaveState& state, const CZyUser_Item& item, Visit visit) {
  std::uint32_t count = 0;
  item.ChannelCount(count);
  for (std::int32_t channel = 0; channel < static_cast<std::int32_t>(count); ++channel)
    if (LinkCount(state, item, channel) != 0) visit(channel);
}

// The transform items of a locator, outermost first; an item that can't be had leaves an empty place.
std::vector<CZyUser_Item> TransformStack(const SaveState& state, const CZyUser_Item& item) {
  std::uint32_t count = 0;
  state.xfrmCore.RevCount(item, count);
  std::vector<CZyUser_Item> stack(count);
  for (std::uint32_t index = 0; index < count; ++index) state.xfrmCore.RevByIndex(item, index, stack[index]);
  return stack;
}

bool IsSameItem(const CZyUser_Item& left, const CZyUser_Item& right) {
  const char* leftIdent = nullptr;
  const char* rightIdent = nullptr;
  left.Ident(leftIdent);
  right.Ident(rightIdent);
  return leftIdent && leftIdent == rightIdent;
}

void ClassifyByName(std::span<const NeedleRow> rows, std::string_view name, std::int32_t place,
                    TransformInfo& info) {
  const auto inName = [&](std::string_view needle) { return name.find(needle) != std::string_view::npos; };
  for (const NeedleRow& row : rows) {
    if (std::none_of(row.needles.begin(), row.needles.end(), inName)) continue;
    info.*row.place = place;
    return;
  }
}

void ClassifyRotation(bool isMain, std::int32_t place, TransformInfo& info) {
  if (isMain)
    info.rotationIndex = place;
  else if (info.rotationIndex == -1)
    info.rotationBeforeIndex = place;
  else if (info.rotationIndex != place)
    info.rotationAfterIndex = place;
}

void Classify(const ItemTypeCodes& types, const MainTransforms& main, const CZyUser_Item& item, std::int32_t place,
              TransformInfo& info) {
  if (IsOfType(item, types.scale)) {
    if (IsSameItem(main.scale, item)) info.scaleIndex = place;
  } else if (IsOfType(item, types.rotation)) {
    ClassifyRotation(IsSameItem(main.rotation, item), place, info);
  } else if (IsOfType(item, types.translation)) {
    if (IsSameItem(main.position, item)) info.positionIndex = place;
    ClassifyByName(kTranslationRows, NameOf(item), place, info);
  } else if (IsOfType(item, types.transform)) {
    ClassifyByName(kTransformRows, NameOf(item), place, info);
  }
}

}  // namespace

zyresult AnalyseTransforms(SaveState& state, const CZyUser_Item& item, TransformInfo& info) {
  info = TransformInfo();
  CZyUser_Locator locator;
  if (!locator.Set(item.Raw())) {
    state.log.Info("   !!! No locator !!!");
    return ZYe_NO_LOCATOR;
  }
  MainTransforms main;
  locator.TransformItem(TransformKind::Position, main.position);
  locator.TransformItem(TransformKind::Rotation, main.rotation);
  locator.TransformItem(TransformKind::Scale, main.scale);

  for (const DrivenRow& row : kDrivenRows) info.*row.count = LinkCount(state, item, state.channels.*row.channel);
  VisitDrivenChannels(state, item, [&](std::int32_t channel) {
    ++info.drivenChannels;
    state.log.Info("   Driven channel:%s", ChannelName(item, channel));
  });

  const std::vector<CZyUser_Item> stack = TransformStack(state, item);
  for (const CZyUser_Item& transform : stack) {
    VisitDrivenChannels(state, transform, [&](std::int32_t channel) {
      ++info.drivenXformChannels;
      // The channel's name is the locator's on purpose, though the number is the transform item's.
      state.log.Info("   Driven xform channel:%s.%s", NameOf(transform), ChannelName(item, channel));
    });
  }
  for (std::size_t place = 0; place < stack.size(); ++place)
    Classify(state.typeCodes, main, stack[place], static_cast<std::int32_t>(place), info);
  return ZYe_OK;
}
