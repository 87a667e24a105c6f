/* Compiled as C: the header must be valid C, and the layout that a C
 * compiler gives the records must be the one the C++ side sees. */
#include "tavro/tavro_host.h"

#include "abi/layout_from_c.h"

static const size_t kLayoutFromC[] = {
    sizeof(SystemRecord),
    sizeof(CameraRecord),
    sizeof(CameraSlot),
    sizeof(FormatDescriptor),
    sizeof(ParameterEntry),
    offsetof(SystemRecord, tCam),
    offsetof(SystemRecord, tSlot),
    offsetof(SystemRecord, pfnAcqFinished),
    offsetof(SystemRecord, pszCamSelection),
    offsetof(CameraRecord, tParam),
    offsetof(CameraRecord, iCamNum),
    offsetof(CameraSlot, pCamera),
    offsetof(CamImage, ptLiveBuffer),
    offsetof(CamImage, iAoiBottom),
    offsetof(CameraInfo, iCamId),
    offsetof(CameraInfo, ptHostView),
    offsetof(PlaneInfo, iFirstRow),
    offsetof(LiveBuffer, iStride),
    offsetof(HostDisplay, yNewLiveFrame),
    offsetof(HostView, yColourDisplay),
};

size_t TavroLayoutFromC(size_t* values, size_t capacity) {
  size_t count = sizeof kLayoutFromC / sizeof kLayoutFromC[0];
  size_t i;
  for (i = 0; i < count && i < capacity; ++i) values[i] = kLayoutFromC[i];
  return count;
}

/* Each function-pointer type is exactly the type of its entry point. */
#define TAVRO_SAME_TYPE(function, type) \
  _Static_assert(_Generic(&function, type : 1, default : 0), #type " matches " #function)
TAVRO_SAME_TYPE(kxTavroSetup, PFN_kxTavroSetup);
TAVRO_SAME_TYPE(kxTavroAcquire, PFN_kxTavroAcquire);
TAVRO_SAME_TYPE(kxTavroLiveAcquire, PFN_kxTavroLiveAcquire);
TAVRO_SAME_TYPE(kxTavroWaitAcquire, PFN_kxTavroWaitAcquire);
TAVRO_SAME_TYPE(kxTavroAcquireStatus, PFN_kxTavroAcquireStatus);
TAVRO_SAME_TYPE(_kxTavroOrder, PFN_kxTavroOrder);
TAVRO_SAME_TYPE(_kxAttachTavroCamera, PFN_kxAttachTavroCamera);
TAVRO_SAME_TYPE(_kxDetachTavroCamera, PFN_kxDetachTavroCamera);
TAVRO_SAME_TYPE(kxTavroTearDown, PFN_kxTavroTearDown);
