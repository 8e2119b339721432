#include "readers/read_scene.h"
#include "tool/command_line.h"
#include "tool/exit_codes.h"
#include "tool/memory_limit.h"
#include "tool/read_arguments.h"
#include "tool/report.h"
#include "tool/screen.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <system_error>

namespace tool {
namespace {

using headless::ItemData;
using headless::MeshData;
using headless::SceneData;

struct InfoArguments {
  std::filesystem::path input;
  readers::ReadOptions reading;
  std::optional<std::uint64_t> maxMemory;  // bytes
};

std::string MapTypeName(std::uint32_t type) {
  std::string name;
  for (int shift = 24; shift >= 0; shift -= 8) name += static_cast<char>(type >> shift);
  return name.substr(0, name.find_last_not_of(' ') + 1);
}

void PrintMesh(const ItemData& item) {
  const MeshData& mesh = *item.mesh;
  fmt::print("  {}: {} points, {} polygons, {} polygon corners\n", PlainText(item.name), mesh.PointCount(),
             mesh.PolygonCount(), mesh.polygonPoints.size());
  for (const headless::MeshMapData& map : mesh.maps)
    fmt::print("    {} \"{}\"\n", PlainText(MapTypeName(map.type)), PlainText(map.name));
  for (const std::string& tag : mesh.material.texts) fmt::print("    material \"{}\"\n", PlainText(tag));
}

std::size_t CountKeyedChannels(const SceneData& scene) {
  std::size_t count = 0;
  for (const ItemData& item : scene.items)
    for (const headless::ChannelData& channel : item.channels) count += channel.extras->envelope.has_value();
  return count;
}

void PrintScene(const SceneData& scene) {
  std::map<std::string, std::size_t> byType;
  for (const ItemData& item : scene.items) ++byType[item.type];
  fmt::print("{} items\n", scene.items.size());
  for (const auto& [type, count] : byType) fmt::print("  {} {}\n", count, PlainText(type));
  if (byType.count("mesh") != 0) fmt::print("meshes\n");
  for (const ItemData& item : scene.items)
    if (item.mesh) PrintMesh(item);
  fmt::print("{} keyed channels, {} channel links, {} selected items\n", CountKeyedChannels(scene),
             scene.channelLinks.size(), scene.selection.size());
  for (const auto& [name, value] : scene.userValues) fmt::print("{} = {}\n", PlainText(name), value);
}

// Lists what a scene holds on the output stream.
int RunInfo(const InfoArguments& arguments) {
  LimitMemory(arguments.maxMemory);
  const Report report;
  try {
    readers::ReadReport read;
    const SceneData scene = readers::ReadScene(arguments.input, arguments.reading, read);
    for (const std::string& warning : read.warnings) report.Warning(warning);
    PrintScene(scene);
    if (std::fflush(stdout) == 0) return kDone;
    report.Error(std::string("standard output: ") + std::strerror(errno));
    return kOutput;
  } catch (const readers::InputError& error) {
    report.Error(error.what());
    return kInput;
  } catch (const std::system_error& error) {
    report.Error(std::string("standard output: ") + error.what());
    return kOutput;
  } catch (const std::bad_alloc&) {
    const MemoryFailure failure = OutOfMemory(kInput);
    report.Error(arguments.input.string() + ": " + failure.reason);
    return failure.exitCode;
  }
}

}  // namespace

RunCommand AddInfo(CLI::App& app) {
  CLI::App& command = *app.add_subcommand("info", "List what a scene holds.");
  const auto arguments = std::make_shared<InfoArguments>();
  command.add_option("input", arguments->input, kInputText)->required()->type_name("INPUT");
  AddReadOptions(command, arguments->reading);
  AddMemoryOption(command, arguments->maxMemory);
  return [arguments] { return RunInfo(*arguments); };
}

}  // namespace tool
