#pragma once

#include "oxel/oxel_c.h"

namespace oxelc {

// "OXEL_RETURN_CODE_OUT_OF_RANGE" for 12; "" for codes without a name.
const char* ReturnCodeName(OXEL_RETURN_CODE code);

}  // namespace oxelc
