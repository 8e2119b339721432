// vornel load-options: shows, sets, saves and reads the plug-in's options for a load.
#include "headless/block_stream.h"
#include "headless/config_store.h"
#include "headless/host.h"
#include "headless/module_loader.h"
#include "host/user_config.h"
#include "readers/program_files.h"
#include "tool/command_line.h"
#include "tool/exit_codes.h"
#include "tool/failure.h"
#include "tool/load_options_dialog.h"
#include "tool/load_options_print.h"
#include "tool/memory_limit.h"
#include "tool/report.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace tool {
namespace {

namespace fs = std::filesystem;

struct LoadOptionsArguments {
  std::vector<std::pair<std::string, std::string>> values;  // name and text, in the order given
  fs::path readFrom, writeTo;                               // empty for none
  bool isStored = false;                                    // what is read goes into the configuration
  bool isJson = false;
  fs::path module;  // empty: found beside the command
};

constexpr std::size_t kLargestBlock = 65536;

// Tells warnings of the store that haven't been told.
class StoreWarnings {
 public:
  StoreWarnings(const headless::ConfigStore& store, const Report& report) : store_(store), report_(report) {}
  void Tell() {
    for (; told_ < store_.Warnings().size(); ++told_) report_.Warning(store_.Warnings()[told_]);
  }

 private:
  const headless::ConfigStore& store_;
  const Report& report_;
  std::size_t told_ = 0;
};

// The options object that the host was handed. It is of the module, so it goes before that.
class HandedOptions {
 public:
  explicit HandedOptions(headless::Host& host) { service_.Set(host.Service(IZyIOService::kId)); }
  ~HandedOptions() { service_.Raw()->SetOptions(nullptr); }
  HandedOptions(const HandedOptions&) = delete;
  HandedOptions& operator=(const HandedOptions&) = delete;

  // The object as one of its interfaces. Throws ModuleError.
  template <class I>
  CountedRef<I> As() const {
    IZyObject* object = nullptr;
    CountedRef<I> options;
    if (ZyFailed(service_.Raw()->Options(object)) || ZyFailed(options.Take(object)))
      throw headless::ModuleError("the plug-in handed over no options that can be saved and read");
    return options;
  }

 private:
  CountedRef<IZyIOService> service_;
};

// Reads a record into the options object, and from there into the dialog.
void ReadRecord(const fs::path& file, const HandedOptions& handed, LoadOptionsDialog& dialog,
                const Report& report) {
  const std::string bytes = headless::ReadSmallFile(file, kLargestBlock);
  headless::BlockReader reader(bytes);
  dialog.Execute();  // hands the object over
  const zyresult result = handed.As<IZyStreamIO>().Raw()->Read(&reader);
  if (ZyFailed(result))
    throw headless::ReadError(
        file.string() + ": " +
        (reader.Fault().empty() ? "is no record of load options, or one of a later version" : reader.Fault()));
  if (reader.Left() > 0)
    report.Warning(fmt::format("{}: {} bytes behind the record are skipped", file.string(), reader.Left()));
  try {
    dialog.SetAll(*handed.As<IZyServerAttributes>().Raw());
  } catch (const OptionError& error) {
    throw headless::ReadError(file.string() + ": " + error.what());
  }
}

void WriteRecord(const fs::path& file, const HandedOptions& handed) {
  headless::BlockWriter writer;
  const zyresult result = handed.As<IZyStreamIO>().Raw()->Write(&writer);
  if (ZyFailed(result) && MemoryRanOut()) throw std::bad_alloc();
  if (ZyFailed(result))
    throw headless::WriteError(
        fmt::format("{}: the plug-in failed: code 0x{:08X}", file.string(), static_cast<std::uint32_t>(result)));
  headless::WriteFileAtomically(file, writer.Bytes());
}

void WarnOfDisabled(const LoadOptionsArguments& arguments, const std::vector<LoadOptionView>& options,
                    const Report& report) {
  for (const LoadOptionView& option : options)
    for (const auto& [name, text] : arguments.values)
      if (name == option.name && !option.isEnabled) {
        report.Warning(name + " is disabled by the other options; it is stored all the same");
        break;
      }
}

void Print(const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
    throw headless::WriteError(std::string("standard output: ") + std::strerror(errno));
}

void Run(const LoadOptionsArguments& arguments, const Report& report) {
  const auto store = std::make_shared<headless::ConfigStore>(headless::UserConfigFile());
  StoreWarnings warnings(*store, report);
  warnings.Tell();
  headless::Host host(headless::MakeScene(), store);
  const headless::LoadedModule module(arguments.module.empty() ? readers::ModuleFile() : arguments.module, host);
  const HandedOptions handed(host);
  LoadOptionsDialog dialog(module);
  warnings.Tell();

  if (!arguments.readFrom.empty()) ReadRecord(arguments.readFrom, handed, dialog, report);
  for (const auto& [name, text] : arguments.values) dialog.Set(name, text);
  const bool isStored = arguments.isStored || !arguments.values.empty();
  if (isStored || !arguments.writeTo.empty()) dialog.Execute();
  const std::vector<LoadOptionView> options = dialog.Options();
  WarnOfDisabled(arguments, options, report);
  if (MemoryRanOut()) throw std::bad_alloc();  // the plug-in leaves out what there was no room for
  if (!arguments.writeTo.empty()) WriteRecord(arguments.writeTo, handed);
  if (isStored) store->Save();
  Print(arguments.isJson ? LoadOptionsJson(options) : LoadOptionsText(options));
}

int RunLoadOptions(const LoadOptionsArguments& arguments) {
  IgnoreWriteSignals();
  const Report report;
  try {
    Run(arguments, report);
    return kDone;
  } catch (const OptionError& error) {
    report.Error(std::string("--set: ") + error.what());
    return kUsage;
  } catch (const headless::ModuleError& error) {
    report.Error(MemoryRanOut() ? "out of memory" : error.what());
    return MemoryRanOut() ? kOutput : kUsage;
  } catch (const headless::ReadError& error) {
    report.Error(error.what());
    return kInput;
  } catch (const headless::WriteError& error) {
    report.Error(error.what());
    return kOutput;
  } catch (const std::bad_alloc&) {
    report.Error("out of memory");
    return kOutput;
  }
}

std::pair<std::string, std::string> SplitSetting(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == 0 || equals == std::string::npos)
    throw CLI::ValidationError("--set", "'" + text + "' is not NAME=VALUE");
  return {text.substr(0, equals), text.substr(equals + 1)};
}

}  // namespace

RunCommand AddLoadOptions(CLI::App& app) {
  CLI::App& command = *app.add_subcommand(
      "load-options", "Show and set the options that the plug-in stores for a loader of glTF files.");
  const auto arguments = std::make_shared<LoadOptionsArguments>();
  command
      .add_option_function<std::vector<std::string>>(
          "--set",
          [arguments](const std::vector<std::string>& texts) {
            for (const std::string& text : texts) arguments->values.push_back(SplitSetting(text));
          },
          "set an option and store all of them; a choice by its number or its text; may be repeated")
      ->type_name("NAME=VALUE")
      ->allow_extra_args(false);
  CLI::Option* read = command
                          .add_option("--read", arguments->readFrom,
                                      "start from the options in a file that --write wrote; they aren't stored "
                                      "unless --set or --store says so")
                          ->type_name("FILE");
  command.add_option("--write", arguments->writeTo, "write the options to a file")->type_name("FILE");
  command.add_flag("--store", arguments->isStored, "store what --read gives")->needs(read);
  command.add_flag("--json", arguments->isJson, "print a JSON object instead of a table");
  command.add_option("--module", arguments->module, "the plug-in to load")
      ->type_name("FILE")
      ->envname("VORNEL_MODULE");
  return [arguments] { return RunLoadOptions(*arguments); };
}

}  // namespace tool
