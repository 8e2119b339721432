// The options of every command that reads a scene of a foreign format.
#pragma once

#include "readers/read_scene.h"

namespace CLI {
class App;
}

namespace tool {

// What INPUT is, for the help of a command.
inline constexpr char kInputText[] = "scene to read: .orvo, .obj, or a foreign format such as .fbx, .dae or .ply";

// The command's parsing fills `options`, which must outlive it.
void AddReadOptions(CLI::App& command, readers::ReadOptions& options);

}  // namespace tool
