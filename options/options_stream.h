// The stream record of the load options.
//
//   u32  version, 1
//   u32  flags: bits 0 to 13, 16 and 17 as in kLoadOptionTable, importUnits from bit 18 on
//   f64  globalScalingFactor; not in version 0
#pragma once

#include "host/user_config.h"
#include "options/load_options.h"

// Throws the result code of a block write that fails.
zyresult WriteLoadOptions(const LoadOptions& options, const CZyUser_BlockWriter& writer);

// Throws the result code of a block read that fails; the options may hold a part of the record then. ZYe_FAILED,
// with nothing changed, for a version that isn't known.
zyresult ReadLoadOptions(LoadOptions& options, const CZyUser_BlockReader& reader);
