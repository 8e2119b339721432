#include "tool/read_arguments.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <cmath>
#include <map>
#include <string>

namespace tool {
namespace {

struct Unit {
  const char* name;
  double meters;
};

constexpr Unit kUnits[] = {{"m", 1},       {"cm", 0.01},   {"mm", 0.001},  {"dm", 0.1},     {"km", 1000},
                           {"in", 0.0254}, {"ft", 0.3048}, {"yd", 0.9144}, {"mi", 1609.344}};

constexpr std::uint64_t kLongestTimeout = 7 * 24 * 3600;  // seconds
constexpr std::uint64_t kLeastMemory = 64;                // MiB
constexpr std::uint64_t kMostMemory = std::uint64_t{1} << 24;

// Throws a usage error.
double ParseUnit(const std::string& text) {
  std::string names;
  for (const Unit& unit : kUnits) {
    if (text == unit.name) return unit.meters;
    names += unit.name + std::string(", ");
  }
  double meters = 0;
  const char* const last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, meters);
  if (error == std::errc() && end == last && std::isfinite(meters) && meters > 0) return meters;
  throw CLI::ValidationError("--unit", "'" + text + "' is none of " + names + "nor a number of metres above 0");
}

}  // namespace

void AddReadOptions(CLI::App& command, readers::ReadOptions& options) {
  constexpr char kGroup[] = "How files of foreign formats are read";
  using readers::UpAxis;
  static const std::map<std::string, UpAxis> kAxes = {{"x", UpAxis::X}, {"y", UpAxis::Y}, {"z", UpAxis::Z}};
  command
      .add_option_function<std::string>(
          "--unit", [&options](const std::string& text) { options.metersPerUnit = ParseUnit(text); },
          "length of the file's unit: m, cm, mm, dm, km, in, ft, yd, mi or a number of metres [as the file says]")
      ->type_name("UNIT")
      ->group(kGroup);
  command
      .add_option_function<std::string>(
          "--up-axis", [&options](const std::string& axis) { options.upAxis = kAxes.at(axis); },
          "axis of the file that points up [as the file says]")
      ->type_name("x|y|z")
      ->check(CLI::IsMember(kAxes).description(""))
      ->group(kGroup);
  command
      .add_option_function<std::uint64_t>(
          "--import-timeout",
          [&options](std::uint64_t seconds) { options.importTimeout = std::chrono::seconds(seconds); },
          "longest time that reading may take [300]")
      ->type_name("SECONDS")
      ->check(CLI::Range(std::uint64_t{1}, kLongestTimeout).description(""))
      ->group(kGroup);
  command
      .add_option_function<std::uint64_t>(
          "--import-memory", [&options](std::uint64_t count) { options.importMemory = count << 20; },
          "most memory that reading may take [4096]")
      ->type_name("MIB")
      ->check(CLI::Range(kLeastMemory, kMostMemory).description(""))
      ->group(kGroup);
}

}  // namespace tool
