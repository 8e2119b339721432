// Runs commands over old files again and again while memory, or a call on a file, fails.
#pragma once

#include "tests/support/command_fixture.h"
#include "tests/support/fault_server.h"

#include <cstdlib>
#include <map>
#include <optional>
#include <ostream>

namespace test_support {

struct FaultCase {
  const char* name;
  std::vector<std::string>
      arguments;         // as for Command; "SOURCE/" at the start of one stands for the project's folder
  int exitCode = kDone;  // without a fault
};

inline std::string NameOf(const testing::TestParamInfo<FaultCase>& info) { return info.param.name; }
inline void PrintTo(const FaultCase& run, std::ostream* stream) { *stream << run.name; }

// One of so many faults is tried; all of them with 1.
inline std::uint64_t FaultStep(std::uint64_t usual) {
  const char* const text = std::getenv("VORNEL_FAULT_STEP");
  return text ? std::strtoull(text, nullptr, 10) : usual;
}

class FaultTest : public Command, public testing::WithParamInterface<FaultCase> {
 protected:
  using Folder = std::map<std::string, std::string>;

  // Runs the case over nothing, and over old files. Null when that failed.
  FaultServer* Start(const FaultCase& run) {
    std::vector<std::string> arguments = {VORNEL_COMMAND};
    for (std::string argument : run.arguments) {
      if (argument.starts_with("SOURCE/")) argument.replace(0, 6, VORNEL_SOURCE_DIR);
      arguments.push_back(argument);
    }
    server_.emplace(
        VORNEL_FAULT_LIBRARY, Completed(arguments),
        std::vector<std::string>{"XDG_CONFIG_HOME=" + (Out() / "config").string(), "TMPDIR=" + Out().string()});
    server_->Run({});
    for (const auto& [name, text] : ReadFolder()) old_[name] = name.ends_with(".json") ? "{}" : "old " + name;
    sound_ = RunFaulty({FaultKind::Trace});
    EXPECT_EQ(sound_.exitCode, run.exitCode) << sound_.errors;
    new_ = ReadFolder();
    return sound_.exitCode == run.exitCode ? &*server_ : nullptr;
  }

  const FaultRun& Sound() const { return sound_; }

  // Runs it over old files.
  FaultRun RunFaulty(const FaultPlan& plan) {
    for (const std::string& name : Files())
      if (!old_.contains(name)) fs::remove_all(Out() / name);
    for (const auto& [name, text] : old_) {
      fs::create_directories((Out() / name).parent_path());
      WriteFile(name, text);
    }
    return server_->Run(plan);
  }

  enum class Stand { Old, New, Mixed };

  // Old when just the old files are there, New when just the new ones are.
  Stand FindStand() const {
    const Folder folder = ReadFolder();
    return folder == old_ ? Stand::Old : folder == new_ ? Stand::New : Stand::Mixed;
  }
  // Also where these are the same.
  bool StandsNew() const { return ReadFolder() == new_; }
  // Staging directories that are left.
  std::vector<std::string> FindStaging() const {
    std::vector<std::string> files = Files();
    std::erase_if(files, [](const std::string& name) { return !name.starts_with(".vornel-"); });
    return files;
  }
  // Whether a run that failed did no harm. A report comes last, and so
  // does the flush of the names: when these are what fails, the export stands.
  bool LeftOld(const FaultRun& run) const {
    const Stand stand = FindStand();
    const bool wasFlush = fs::path(run.result.path) == Out() && run.result.call != std::string("stat");
    return stand == Stand::Old || (stand == Stand::New && (run.Says("report.json") || wasFlush));
  }

 private:
  Folder ReadFolder() const {
    Folder folder;
    for (const std::string& name : Files()) {
      if (fs::is_directory(Out() / name)) continue;
      folder[name] = Read(name);
      // A report holds times, and is written of a failure too.
      if (name == "report.json" && folder[name].starts_with("{") && folder[name].ends_with("}\n"))
        folder[name] = "{}";
    }
    return folder;
  }

  std::optional<FaultServer> server_;
  FaultRun sound_;
  Folder old_, new_;
};

}  // namespace test_support
