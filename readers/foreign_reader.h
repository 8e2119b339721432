// Reads files of foreign formats. Their parsers crash and have faults that a hostile file can use, so they run in
// the program vornel-import, which is confined, and nothing that comes back from it is trusted.
#pragma once

#include "readers/read_scene.h"

#include <filesystem>

namespace readers {

// The importer writes a scene file into a private directory, from which it is read; the directory goes with
// report.keepAlive. Throws InputError.
headless::SceneData ReadForeign(const std::filesystem::path& file, const ReadOptions& options, ReadReport& report);

// The second half of it: reads what the importer wrote for `file` into the directory. Throws InputError.
headless::SceneData ReadImported(const std::filesystem::path& file, const std::filesystem::path& directory,
                                 const ReadOptions& options, ReadReport& report);

}  // namespace readers
