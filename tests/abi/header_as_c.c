/* Compiled as C: the header's own layout checks run in a C compiler too,
 * and each function-pointer type is exactly the type of its entry point. */
#include "tavro/tavro_host.h"

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
