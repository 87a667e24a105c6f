#include "host_interface/acquisition_table.h"

namespace tavro::host_interface {

std::array<TavroCamAcq, kMaxCameras> tTavroCamAcq;

}  // namespace tavro::host_interface
