// The function table of the Oxel C library. The plug-in never links against
// the library: every call goes through this table, bound at run time.
#ifndef OXEL_CORE_OXEL_FUNCTIONS_H
#define OXEL_CORE_OXEL_FUNCTIONS_H

#include "oxel/oxel_c.h"

namespace oxel::core {

struct OxelFunctions {
#define OXEL_CORE_TABLE_MEMBER(name) decltype(&::name) name = nullptr;
  OXEL_FOR_EACH_FUNCTION(OXEL_CORE_TABLE_MEMBER)
#undef OXEL_CORE_TABLE_MEMBER
};

// The table in use. Throws NotInitializedException while no library is bound.
const OxelFunctions& Api();

// Whether a table is installed (no C call).
bool IsApiBound();

// Makes `table` the one Api() hands out and returns the previous one (null
// when none). Null unbinds. The table must outlive its installation; tests use
// this to stand in for the C library.
const OxelFunctions* InstallFunctionTable(const OxelFunctions* table);

}  // namespace oxel::core

#endif  // OXEL_CORE_OXEL_FUNCTIONS_H
