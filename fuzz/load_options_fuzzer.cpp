// The bytes of a stream record, and behind a cut the text of the stored settings: what is read is the same when it
// is written and read again, and a broken file is kept aside.
#include "fuzz/fuzz_support.h"
#include "headless/block_stream.h"
#include "headless/config_store.h"
#include "headless/host.h"
#include "options/load_option_table.h"
#include "options/options_command.h"
#include "options/options_stream.h"
#include "tests/support/save_runner.h"

#include <bit>
#include <memory>
#include <variant>

namespace {

// Bit for bit, so that a NaN equals itself.
std::vector<std::uint64_t> BitsOf(const LoadOptions& options) {
  std::vector<std::uint64_t> bits;
  for (const LoadOptionRow& row : kLoadOptionTable)
    std::visit(
        [&](auto field) {
          if constexpr (std::is_same_v<decltype(field), double LoadOptions::*>)
            bits.push_back(std::bit_cast<std::uint64_t>(options.*field));
          else
            bits.push_back(options.*field);
        },
        row.field);
  return bits;
}

zyresult Read(std::string_view record, LoadOptions& options) {
  headless::BlockReader reader(record);
  CZyIfc_StreamIO<LoadOptionsIO> io;
  LoadOptions& own = static_cast<LoadOptionsIO*>(io.Interface(LoadOptionsIO::kId))->options;
  own = options;
  const zyresult result = io.Read(&reader);
  options = own;
  fuzz::Require(result == ZYe_OK || result == ZYe_FAILED, "a result code that is known");
  return result;
}

void CheckRecord(std::string_view record) {
  LoadOptions options;
  if (Read(record, options) != ZYe_OK) return;
  headless::BlockWriter written;
  CZyUser_BlockWriter writer;
  writer.Set(&written);
  fuzz::Require(WriteLoadOptions(options, writer) == ZYe_OK && written.Bytes().size() == 16,
                "a record is written");
  LoadOptions again;
  fuzz::Require(Read(written.Bytes(), again) == ZYe_OK && BitsOf(again) == BitsOf(options),
                "a record gives back what it was written from");
}

// What the dialog stores over the settings.
LoadOptions Store(const std::shared_ptr<headless::ConfigStore>& store) {
  headless::Host host(headless::MakeScene(), store);
  LoadOptions options;
  {
    const test_support::LoadedModule module(host);
    IZyObject* object = nullptr;
    fuzz::Require(ZySucceeded(module->Factory(kLoadOptionsServer)->Spawn(object)), "the dialog is there");
    CountedRef<IZyCommandServer> dialog;
    dialog.Take(object);
    fuzz::Require(dialog.Raw()->DialogInit() == ZYe_OK && dialog.Raw()->Execute() == ZYe_OK, "the dialog runs");
    FetchCurrentLoadOptions(options);
    LoadOptions stored;
    FetchStoredLoadOptions(stored);
    fuzz::Require(BitsOf(stored) == BitsOf(options), "what is stored is what was handed over");
    CZyIOService().SetOptions(nullptr);
  }
  fuzz::Require(host.LiveObjects() == 0, "the module lets go of all objects");
  return options;
}

void CheckSettings(std::string_view text) {
  const auto file = fuzz::Folder() / "config.json";
  auto aside = file;
  aside += ".damaged";
  std::filesystem::remove(aside);
  fuzz::WriteFile(file, text);
  const auto store = std::make_shared<headless::ConfigStore>(file);
  const bool isDamaged = !store->Warnings().empty();
  fuzz::Require(std::filesystem::exists(aside) == isDamaged, "a damaged file is kept aside, with a warning");
  const LoadOptions options = Store(store);
  for (const std::string& warning : store->Warnings())
    fuzz::Require(warning.starts_with(file.string() + ": ") && warning.find('\n') == std::string::npos,
                  "a warning is one line with the file: " + warning);
  store->Save();
  const auto saved = std::make_shared<headless::ConfigStore>(file);
  const LoadOptions again = Store(saved);
  fuzz::Require(saved->Warnings().empty() && BitsOf(again) == BitsOf(options), "settings come back as they were");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto pieces = fuzz::Pieces(data, size, 2);
  CheckRecord(pieces[0]);
  if (!pieces[1].empty()) CheckSettings(pieces[1]);
  return 0;
}
