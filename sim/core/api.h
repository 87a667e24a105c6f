// The parts every Oxel library shares (handles, last errors, the text
// conventions, callback lists, the test picture), seen from the simulator's
// namespace.
#pragma once

#include "oxelc/api_call.h"
#include "oxelc/callback_list.h"
#include "oxelc/handle_registry.h"
#include "oxelc/return_code_names.h"

namespace oxelsim {
using namespace oxelc;
}  // namespace oxelsim
