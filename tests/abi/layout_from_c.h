/* The record layout as seen by a C compiler, for comparison from C++. */
#ifndef TAVRO_TESTS_ABI_LAYOUT_FROM_C_H
#define TAVRO_TESTS_ABI_LAYOUT_FROM_C_H

#include <stddef.h>

#include "tavro/tavro_host.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Fills up to `capacity` sizes and offsets in a fixed order; answers how
 * many there are. */
size_t TavroLayoutFromC(size_t* values, size_t capacity);

#ifdef __cplusplus
}
#endif

#endif
