/* Compiled as C: the header must be valid C, and the layout that a C
 * compiler gives the records must be the one the C++ side sees. */
#include "tavro/tavro_host.h"

#include "abi/layout_from_c.h"

#define TAVRO_AS_ELEMENT(value) value,
static const size_t kLayoutFromC[] = {TAVRO_LAYOUT_ITEMS(TAVRO_AS_ELEMENT)};

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
