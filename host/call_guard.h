// Keeps exceptions from leaving a module.
#pragma once

#include "host/result.h"

// The result of `call`; a result code that it throws, and ZYe_FAILED for any other exception.
template <class Call>
zyresult GuardedCall(Call call) {
  try {
    return call();
  } catch (zyresult code) {
    return code;
  } catch (...) {
    return ZYe_FAILED;
  }
}
