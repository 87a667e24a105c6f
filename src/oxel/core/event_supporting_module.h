// A module that can deliver events. The plug-in uses none, so this adds
// nothing yet; it keeps the class tree the users code against.
#ifndef OXEL_CORE_EVENT_SUPPORTING_MODULE_H
#define OXEL_CORE_EVENT_SUPPORTING_MODULE_H

#include "oxel/core/module.h"

namespace oxel::core {

class EventSupportingModule : public Module {
 protected:
  EventSupportingModule() = default;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_EVENT_SUPPORTING_MODULE_H
