// Runs the command in a directory of its own.
#pragma once

#include "tests/support/command_runner.h"
#include "tests/support/glb_reader.h"
#include "tests/support/temp_directory.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace test_support {

namespace fs = std::filesystem;

enum ExitCode : int { kDone = 0, kWarnings = 1, kUsage = 2, kInput = 3, kOutput = 4, kSomeFailed = 5 };

inline const fs::path kGoldens = fs::path(VORNEL_SOURCE_DIR) / "tests" / "golden";
inline const std::string kScene = (kGoldens / "meshes.orvo").string();

inline rapidjson::Document Parsed(const std::string& text) {
  rapidjson::Document json;
  json.Parse(text.c_str(), text.size());
  return json;
}

// Runs in a new directory; "OUT" at the start of an argument stands for it.
class Command : public testing::Test {
 protected:
  CommandRun Run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), VORNEL_COMMAND);
    return RunCommand(Completed(std::move(arguments)));
  }
  CommandRun Export(const std::string& scene, const std::string& output, std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"export", scene, "-o", output});
    return Run(std::move(more));
  }
  std::vector<std::string> Completed(std::vector<std::string> arguments) const {
    for (std::string& argument : arguments)
      if (argument.starts_with("OUT")) argument.replace(0, 3, Out().string());
    return arguments;
  }

  const fs::path& Out() const { return directory_.Path(); }
  // All files below the directory, hidden ones too.
  std::vector<std::string> Files() const {
    std::vector<std::string> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Out()))
      files.push_back(fs::relative(entry.path(), Out()).string());
    std::sort(files.begin(), files.end());
    return files;
  }
  void WriteFile(const std::string& name, const std::string& text) const {
    std::ofstream(Out() / name, std::ios::binary) << text;
  }
  std::string Read(const std::string& name) const { return ReadWholeFile(Out() / name); }

 private:
  TempDirectory directory_;
};

// One line that begins with "vornel: error: ".
inline void ExpectOneError(const CommandRun& run, int exitCode, const std::string& text) {
  EXPECT_EQ(run.exitCode, exitCode);
  EXPECT_THAT(run.output, testing::IsEmpty());
  ASSERT_THAT(run.ErrorLines(), testing::ElementsAre(testing::StartsWith("vornel: error: ")));
  EXPECT_THAT(run.errors, testing::HasSubstr(text));
}

}  // namespace test_support
