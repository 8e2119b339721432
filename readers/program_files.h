// Where the files lie that belong to the command, in an installation and in a build.
#pragma once

#include <filesystem>

namespace readers {

// Each is found from where the running program stands. What the environment names goes before it.
std::filesystem::path ModuleFile();      // the plug-in
std::filesystem::path ImporterFile();    // vornel-import; $VORNEL_IMPORT
std::filesystem::path ShareDirectory();  // templates and schemas; $VORNEL_SHARE

}  // namespace readers
