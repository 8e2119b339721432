// Result codes of the host's calls.
#pragma once

#include <cstdint>

// Signed 32-bit: zero and above is success, the sign bit means failure.
using zyresult = std::int32_t;

constexpr zyresult ZyCode(std::uint32_t bits) { return static_cast<zyresult>(bits); }
constexpr bool ZySucceeded(zyresult result) { return result >= 0; }
constexpr bool ZyFailed(zyresult result) { return result < 0; }

constexpr zyresult ZYe_OK = 0;
constexpr zyresult ZYe_NO_VALUE = 1;                         // a stored map value that isn't there
constexpr zyresult ZYe_FAILED = ZyCode(0x80000000u);         // general failure
constexpr zyresult ZYe_NO_TARGET = ZyCode(0x80000003u);      // VerifyTarget could not bind its target
constexpr zyresult ZYe_NO_INTERFACE = ZyCode(0x80000004u);   // an object lacks the wanted interface
constexpr zyresult ZYe_ABORTED = ZyCode(0x80000007u);        // the monitor refused a step
constexpr zyresult ZYe_NO_FRAME = ZyCode(0x80000009u);       // the frame could not bind its scene handles
constexpr zyresult ZYe_OUT_OF_BOUNDS = ZyCode(0x80000015u);  // index past the end of a tag table
constexpr zyresult ZYe_NO_LOCATOR = ZyCode(0x80000017u);     // the item has no locator interface
constexpr zyresult ZYe_SHORT_BUFFER = ZyCode(0x8000001Eu);   // text buffer too short: double it, call again
constexpr zyresult ZYe_DISABLED = ZyCode(0x84800004u);       // a command argument is disabled
