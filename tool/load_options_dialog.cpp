#include "tool/load_options_dialog.h"

#include "headless/module_loader.h"
#include "host/counted_object.h"

#include <fmt/core.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>

namespace tool {
namespace {

using Type = LoadOptionView::Type;

constexpr char kServer[] = "loaderOptions.gltf";

// What the plug-in tells of one option; lives where it stands.
class Hints final : public CountedObject<IZyUIHints> {
 public:
  zyresult SetMinimum(std::int32_t value) override { return minimum = value, ZYe_OK; }
  zyresult SetMaximum(std::int32_t value) override { return maximum = value, ZYe_OK; }
  zyresult SetClass(const char* name) override { return controlClass = name ? name : "", ZYe_OK; }
  zyresult AddText(const char* text) override { return texts.emplace_back(text ? text : ""), ZYe_OK; }

  std::optional<std::int32_t> minimum, maximum;
  std::string controlClass;
  std::vector<std::string> texts;
};

Type TypeOf(std::string_view word) {
  return word == "boolean" ? Type::Boolean : word == "float" ? Type::Float : Type::Integer;
}

template <class T>
std::optional<T> ParseNumber(std::string_view text) {
  T value = {};
  const char* last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, value);
  return error == std::errc() && end == last ? std::optional<T>(value) : std::nullopt;
}

std::optional<std::int32_t> ParseInteger(const LoadOptionView& option, std::string_view text) {
  constexpr std::pair<std::string_view, std::int32_t> kBooleans[] = {{"on", 1},    {"off", 0}, {"true", 1},
                                                                     {"false", 0}, {"1", 1},   {"0", 0}};
  if (option.type == Type::Boolean) {
    for (const auto& [word, value] : kBooleans)
      if (word == text) return value;
    return std::nullopt;
  }
  for (const auto& [value, choice] : option.choices)
    if (choice == text) return value;
  return ParseNumber<std::int32_t>(text);
}

// What the option takes, to go behind "takes".
std::string Range(const LoadOptionView& option) {
  if (option.type == Type::Boolean) return "on or off";
  if (option.type == Type::Float) return "a finite number";
  std::string range = "a whole number";
  if (option.minimum && option.maximum) range = fmt::format("{} to {}", *option.minimum, *option.maximum);
  for (std::size_t i = 0; i < option.choices.size(); ++i)
    range += fmt::format("{}\"{}\"", i == 0 ? ", or one of " : ", ", option.choices[i].second);
  return range;
}

bool IsInRange(const LoadOptionView& option, std::int32_t value) {
  return (!option.minimum || value >= *option.minimum) && (!option.maximum || value <= *option.maximum);
}

[[noreturn]] void Refuse(const LoadOptionView& option, std::string_view value) {
  throw OptionError(fmt::format("{} can't be '{}': it takes {}", option.name, value, Range(option)));
}

}  // namespace

const std::string* LoadOptionView::Choice() const {
  for (const auto& [value, text] : choices)
    if (value == integer) return &text;
  return nullptr;
}

LoadOptionsDialog::LoadOptionsDialog(const headless::LoadedModule& module) {
  const CountedRef<IZyObject> server = module.NewObject(kServer);
  if (!command_.Set(server.Raw()) || !attributes_.Set(server.Raw()) || !ui_.Set(server.Raw()))
    throw headless::ModuleError(std::string("server ") + kServer + " gives no command with a dialog");
  if (ZyFailed(command_.Raw()->DialogInit())) throw headless::ModuleError(std::string(kServer) + ": the dialog can't start");
}

LoadOptionView LoadOptionsDialog::View(std::uint32_t index) const {
  IZyServerAttributes& attributes = *attributes_.Raw();
  LoadOptionView view;
  const char *name = "", *type = "";
  attributes.Name(index, name);
  attributes.TypeName(index, type);
  view.name = name;
  view.type = TypeOf(type);
  attributes.GetInt(index, view.integer);
  attributes.GetDouble(index, view.number);
  view.isEnabled = command_.Raw()->ArgumentEnable(index) != ZYe_DISABLED;

  Hints hints;
  ui_.Raw()->UIHints(index, &hints);
  view.minimum = hints.minimum;
  view.maximum = hints.maximum;
  view.controlClass = hints.controlClass;
  const ZyTextHint* choice = nullptr;
  if (ZySucceeded(attributes.TextHints(index, choice)))
    for (; choice->value != -1; ++choice)
      if (std::find(hints.texts.begin(), hints.texts.end(), choice->text) != hints.texts.end())
        view.choices.emplace_back(choice->value, choice->text);
  return view;
}

std::vector<LoadOptionView> LoadOptionsDialog::Options() const {
  std::vector<LoadOptionView> options;
  for (std::uint32_t index = 0; index < attributes_.Raw()->Count(); ++index) options.push_back(View(index));
  return options;
}

std::uint32_t LoadOptionsDialog::Find(const std::string& name) const {
  const char* known = nullptr;
  for (std::uint32_t index = 0; ZySucceeded(attributes_.Raw()->Name(index, known)); ++index)
    if (name == known) return index;
  throw OptionError("no load option is called '" + name + "'");
}

void LoadOptionsDialog::Set(const std::string& name, const std::string& text) {
  const std::uint32_t index = Find(name);
  const LoadOptionView option = View(index);
  if (option.type == Type::Float) {
    const std::optional<double> value = ParseNumber<double>(text);
    if (!value || !std::isfinite(*value)) Refuse(option, text);
    attributes_.Raw()->SetDouble(index, *value);
  } else {
    const std::optional<std::int32_t> value = ParseInteger(option, text);
    if (!value || !IsInRange(option, *value)) Refuse(option, text);
    attributes_.Raw()->SetInt(index, *value);
  }
}

void LoadOptionsDialog::SetAll(IZyServerAttributes& values) {
  const char* name = nullptr;
  for (std::uint32_t from = 0; ZySucceeded(values.Name(from, name)); ++from) {
    const std::uint32_t index = Find(name);
    const LoadOptionView option = View(index);
    std::int32_t integer = 0;
    double number = 0;
    if (ZySucceeded(values.GetInt(from, integer))) {
      if (!IsInRange(option, integer)) Refuse(option, std::to_string(integer));
      attributes_.Raw()->SetInt(index, integer);
    } else if (ZySucceeded(values.GetDouble(from, number))) {
      if (!std::isfinite(number)) Refuse(option, fmt::format("{}", number));
      attributes_.Raw()->SetDouble(index, number);
    }
  }
}

void LoadOptionsDialog::Execute() {
  if (ZyFailed(command_.Raw()->Execute())) throw headless::ModuleError(std::string(kServer) + ": the command failed");
}

}  // namespace tool
