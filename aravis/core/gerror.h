// GLib errors from Aravis as failures of the calling Oxel function.
#pragma once

#include <glib.h>

#include <string>

#include "oxel/oxel_c.h"

namespace oxelarv {

// Fails with `code` and "<function>: <what>: <message>" when `error` is set,
// freeing it either way.
void FailOnError(GError*& error, OXEL_RETURN_CODE code, const std::string& what);

// The Oxel return code that matches an Aravis device error.
OXEL_RETURN_CODE CodeOfError(const GError* error);

}  // namespace oxelarv
