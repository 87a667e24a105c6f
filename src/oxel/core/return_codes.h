// Names of the Oxel C library's return codes, as they appear in error texts.
#ifndef OXEL_CORE_RETURN_CODES_H
#define OXEL_CORE_RETURN_CODES_H

#include <string>

#include "oxel/oxel_c.h"

namespace oxel::core {

// "OXEL_RETURN_CODE_TIMEOUT" for 13 and so on; "" for a code without a name.
std::string ReturnCodeName(OXEL_RETURN_CODE code);

}  // namespace oxel::core

#endif  // OXEL_CORE_RETURN_CODES_H
