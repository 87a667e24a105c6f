/* The record layout as seen by a C compiler, for comparison from C++. */
#ifndef TAVRO_TESTS_ABI_LAYOUT_FROM_C_H
#define TAVRO_TESTS_ABI_LAYOUT_FROM_C_H

#include <stddef.h>

#include "tavro/tavro_host.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Sizes and offsets, each evaluated by whichever compiler expands the list. */
#define TAVRO_LAYOUT_ITEMS(X)                \
  X(sizeof(SystemRecord))                    \
  X(sizeof(CameraRecord))                    \
  X(sizeof(CameraSlot))                      \
  X(sizeof(FormatDescriptor))                \
  X(sizeof(ParameterEntry))                  \
  X(offsetof(SystemRecord, tCam))            \
  X(offsetof(SystemRecord, tSlot))           \
  X(offsetof(SystemRecord, pfnAcqFinished))  \
  X(offsetof(SystemRecord, pszCamSelection)) \
  X(offsetof(CameraRecord, tParam))          \
  X(offsetof(CameraRecord, iCamNum))         \
  X(offsetof(CameraSlot, pCamera))           \
  X(offsetof(CamImage, ptLiveBuffer))        \
  X(offsetof(CamImage, iAoiBottom))          \
  X(offsetof(CameraInfo, iCamId))            \
  X(offsetof(CameraInfo, ptHostView))        \
  X(offsetof(PlaneInfo, iFirstRow))          \
  X(offsetof(LiveBuffer, iStride))           \
  X(offsetof(HostDisplay, yNewLiveFrame))    \
  X(offsetof(HostView, yColourDisplay))

/* Fills up to `capacity` values of the list as the C compiler sees them;
 * answers how many there are. */
size_t TavroLayoutFromC(size_t* values, size_t capacity);

#ifdef __cplusplus
}
#endif

#endif
