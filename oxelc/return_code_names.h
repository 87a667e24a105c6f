#pragma once

#include "oxel/oxel_c.h"

namespace oxelc {

// "OXEL_RETURN_CODE_OUT_OF_RANGE" for 12; "" for codes without a name.
const char* ReturnCodeName(OXEL_RETURN_CODE code);

// "Integer", "Enumeration", ... and "ReadWrite", "NotAvailable", ... for texts.
const char* NodeTypeName(OXEL_NODE_TYPE type);
const char* AccessName(OXEL_NODE_ACCESS_STATUS access);

}  // namespace oxelc
