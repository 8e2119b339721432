#include "options/options_command.h"

#include "options/options_config.h"
#include "options/options_stream.h"

namespace {

constexpr std::uint32_t kCommandFlags = 0x1000000;

int g_registrations = 0;
CountedRef<IZyFactory> g_polymorph;

// One argument, as the value of an option.
struct ArgumentValue {
  zyresult GetInt(std::int32_t& value) const { return attributes.GetInt(index, value); }
  zyresult GetDouble(double& value) const { return attributes.GetDouble(index, value); }
  void SetInt(std::int32_t value) { attributes.SetInt(index, value); }
  void SetDouble(double value) { attributes.SetDouble(index, value); }

  CZyDynamicAttributes& attributes;
  std::uint32_t index;
};

void AddArguments(CZyDynamicAttributes& attributes) {
  for (const LoadOptionRow& row : kLoadOptionTable) attributes.Add(row.name, TypeWord(row.type));
  for (std::uint32_t index = 0; index < kLoadOptionCount; ++index)
    if (kLoadOptionTable[index].choices) attributes.SetTextHints(index, kLoadOptionTable[index].choices);
}

void SetArguments(CZyDynamicAttributes& attributes, const LoadOptions& options) {
  for (std::uint32_t index = 0; index < kLoadOptionCount; ++index)
    WriteOption(options, kLoadOptionTable[index], ArgumentValue{attributes, index});
}

// Shows the options as attributes too, so that a host can look at what it was handed. They are set through the
// stream alone.
class LoadOptionsObject final : public CZyIfc_StreamIO<LoadOptionsIO, CZyIfc_Attributes<LoadOptionsObject>> {
 public:
  CZyDynamicAttributes Attributes() const {
    CZyDynamicAttributes attributes;
    AddArguments(attributes);
    SetArguments(attributes, object_.options);
    return attributes;
  }
  zyresult SetInt(std::uint32_t, std::int32_t) override { return ZYe_FAILED; }
  zyresult SetDouble(std::uint32_t, double) override { return ZYe_FAILED; }
};

// The LoadOptionsIO of an object; null when it isn't one of this module's.
LoadOptionsIO* FindOptions(const CountedRef<IZyObject>& object) {
  return object ? static_cast<LoadOptionsIO*>(object.Raw()->Interface(LoadOptionsIO::kId)) : nullptr;
}

}  // namespace

zyresult LoadOptionsIO::Write(const CZyUser_BlockWriter& writer) { return WriteLoadOptions(options, writer); }

zyresult LoadOptionsIO::Read(const CZyUser_BlockReader& reader) { return ReadLoadOptions(options, reader); }

LoadOptionsCmd::LoadOptionsCmd() {
  ReadyConfig();
  AddArguments(*this);
}

std::uint32_t LoadOptionsCmd::Flags() { return kCommandFlags; }

bool LoadOptionsCmd::IsOn(std::uint32_t index) const {
  std::int32_t value = 0;
  return ZySucceeded(GetInt(index, value)) && value != 0;
}

zyresult LoadOptionsCmd::ArgumentEnable(std::uint32_t index) {
  bool isEnabled = true;
  if (index == kLoadSampleAnimation) isEnabled = IsOn(kLoadAnimation);
  if (index == kLoadSampleAnimationRate) isEnabled = IsOn(kLoadAnimation) && IsOn(kLoadSampleAnimation);
  if (index == kChangeTextureEffect) isEnabled = IsOn(kLoadMaterials);
  return isEnabled ? ZYe_OK : ZYe_DISABLED;
}

void LoadOptionsCmd::UIHints(std::uint32_t index, const CZyUser_UIHints& hints) {
  const ZyTextHint* choice = index < kLoadOptionCount ? kLoadOptionTable[index].choices : nullptr;
  if (!choice) return;
  hints.SetMinimum(choice->value);
  hints.SetClass("iPopChoice");
  std::int32_t last = choice->value;
  for (; choice->value != -1; ++choice) {
    hints.AddText(choice->text);
    last = choice->value;
  }
  hints.SetMaximum(last);
}

void LoadOptionsCmd::DialogInit() {
  LoadOptions options;
  ReadConfig(options);
  SetArguments(*this, options);
}

void LoadOptionsCmd::Execute() {
  IZyObject* spawned = nullptr;
  CountedRef<IZyObject> object;
  if (!g_polymorph || ZyFailed(g_polymorph.Raw()->Spawn(spawned)) || ZyFailed(object.Take(spawned))) return;
  LoadOptions& options = FindOptions(object)->options;
  for (std::uint32_t index = 0; index < kLoadOptionCount; ++index)
    ReadOption(options, kLoadOptionTable[index], ArgumentValue{*this, index});
  WriteConfig(options);
  CZyIOService().SetOptions(object.Raw());
}

LoadOptionsRegistration::LoadOptionsRegistration() {
  if (g_registrations == 0) g_polymorph.Take(new CZyPolymorph<LoadOptionsObject>);
  ++g_registrations;
}

LoadOptionsRegistration::~LoadOptionsRegistration() {
  if (--g_registrations > 0) return;
  DropConfig();
  g_polymorph.Clear();
}

void FetchStoredLoadOptions(LoadOptions& options) {
  ReadyConfig();
  ReadConfig(options);
}

void FetchCurrentLoadOptions(LoadOptions& options) {
  CountedRef<IZyObject> current;
  CZyIOService().Options(current);
  if (const LoadOptionsIO* io = FindOptions(current))
    options = io->options;
  else
    FetchStoredLoadOptions(options);
}
