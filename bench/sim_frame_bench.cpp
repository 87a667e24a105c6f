// What a simulated frame costs: software trigger, wait and queue of one
// full-sensor frame of the bundled colour camera (its instant variant, so that
// no exposure or read-out time is counted), beside a plain copy of the same
// number of bytes in the same run. A frame should cost about one copy.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "oxel/oxel_c.h"
#include "oxel_sim.h"

namespace {

void Check(OXEL_RETURN_CODE code, const char* what) {
  if (code != OXEL_RETURN_CODE_SUCCESS) {
    throw std::runtime_error(std::string(what) + " failed with " + std::to_string(code));
  }
}

// The bundled colour camera opened and acquiring on software triggers.
class ColourCamera {
 public:
  explicit ColourCamera(const char* pixelFormat) {
    Check(OXEL_Library_Initialize(), "Initialize");
    const std::string file = std::string(TAVRO_INSTANT_PRODUCERS) + "/oxel_u3v.cti";
    Check(OXEL_ProducerLibrary_Open(file.c_str(), file.size() + 1, &library_), "Open");
    OXEL_SYSTEM_DESCRIPTOR systemDescriptor = nullptr;
    Check(OXEL_ProducerLibrary_GetSystem(library_, &systemDescriptor), "GetSystem");
    OXEL_SYSTEM system = nullptr;
    Check(OXEL_SystemDescriptor_OpenSystem(systemDescriptor, &system), "OpenSystem");
    OXEL_INTERFACE_DESCRIPTOR bus = nullptr;
    OXEL_CALLBACK_HANDLE handle = nullptr;
    Check(OXEL_System_RegisterInterfaceFoundCallback(
              system,
              [](OXEL_INTERFACE_DESCRIPTOR found, void* context) {
                *static_cast<OXEL_INTERFACE_DESCRIPTOR*>(context) = found;
              },
              &bus, &handle),
          "RegisterInterfaceFound");
    Check(OXEL_System_UpdateInterfaces(system, 100), "UpdateInterfaces");
    OXEL_INTERFACE opened = nullptr;
    Check(OXEL_InterfaceDescriptor_OpenInterface(bus, &opened), "OpenInterface");
    OXEL_DEVICE_DESCRIPTOR first = nullptr;  // the colour camera comes first on its bus
    Check(OXEL_Interface_RegisterDeviceFoundCallback(
              opened,
              [](OXEL_DEVICE_DESCRIPTOR found, void* context) {
                auto* slot = static_cast<OXEL_DEVICE_DESCRIPTOR*>(context);
                if (*slot == nullptr) *slot = found;
              },
              &first, &handle),
          "RegisterDeviceFound");
    Check(OXEL_Interface_UpdateDevices(opened, 300), "UpdateDevices");
    Check(OXEL_DeviceDescriptor_OpenDevice(first, OXEL_DEVICE_ACCESS_TYPE_CONTROL, &device_),
          "OpenDevice");
    OXEL_REMOTE_DEVICE remote = nullptr;
    Check(OXEL_Device_GetRemoteDevice(device_, &remote), "GetRemoteDevice");
    OXEL_MODULE module = nullptr;
    Check(OXEL_RemoteDevice_ToModule(remote, &module), "ToModule");
    Check(OXEL_Module_GetNodeMap(module, 0, &features_), "GetNodeMap");
    OXEL_DATA_STREAM_DESCRIPTOR streamDescriptor = nullptr;
    Check(OXEL_Device_GetDataStreamDescriptor(device_, 0, &streamDescriptor), "Stream");
    Check(OXEL_DataStreamDescriptor_OpenDataStream(streamDescriptor, &stream_), "OpenStream");

    Check(OXEL_EnumerationNode_SetCurrentEntry(Enumeration("PixelFormat"), pixelFormat,
                                               std::strlen(pixelFormat) + 1),
          "PixelFormat");
    for (const auto& [name, entry] :
         {std::pair{"TriggerSelector", "ExposureStart"}, std::pair{"TriggerMode", "On"},
          std::pair{"TriggerSource", "Software"}}) {
      Check(OXEL_EnumerationNode_SetCurrentEntry(Enumeration(name), entry, std::strlen(entry) + 1),
            name);
    }
    OXEL_INTEGER_NODE payload = nullptr;
    Check(OXEL_Node_ToIntegerNode(Node("PayloadSize"), &payload), "PayloadSize");
    int64_t size = 0;
    Check(OXEL_IntegerNode_GetValue(payload, OXEL_NODE_CACHE_POLICY_USE_CACHE, &size), "Payload");
    payloadSize_ = static_cast<size_t>(size);
    for (int i = 0; i < 3; ++i) {
      OXEL_BUFFER buffer = nullptr;
      Check(OXEL_DataStream_AllocAndAnnounceBuffer(stream_, payloadSize_, nullptr, &buffer),
            "Announce");
      Check(OXEL_DataStream_QueueBuffer(stream_, buffer), "Queue");
    }
    OXEL_INTEGER_NODE locked = nullptr;
    Check(OXEL_Node_ToIntegerNode(Node("TLParamsLocked"), &locked), "TLParamsLocked");
    Check(OXEL_IntegerNode_SetValue(locked, 1), "Lock");
    Check(OXEL_DataStream_StartAcquisition(stream_, OXEL_ACQUISITION_START_MODE_DEFAULT,
                                           OXEL_INFINITE_NUMBER),
          "StartAcquisition");
    Check(OXEL_CommandNode_Execute(Command("AcquisitionStart")), "AcquisitionStart");
    trigger_ = Command("TriggerSoftware");
  }

  ~ColourCamera() {
    OXEL_ProducerLibrary_Release(library_);
    OXEL_Library_Close();
  }

  size_t PayloadSize() const { return payloadSize_; }

  void OneFrame() {
    Check(OXEL_CommandNode_Execute(trigger_), "TriggerSoftware");
    OXEL_BUFFER buffer = nullptr;
    Check(OXEL_DataStream_WaitForFinishedBuffer(stream_, 1000, &buffer), "Wait");
    Check(OXEL_DataStream_QueueBuffer(stream_, buffer), "Queue");
  }

 private:
  OXEL_NODE Node(const char* name) const {
    OXEL_NODE node = nullptr;
    Check(OXEL_NodeMap_FindNode(features_, name, std::strlen(name) + 1, &node), name);
    return node;
  }
  OXEL_ENUMERATION_NODE Enumeration(const char* name) const {
    OXEL_ENUMERATION_NODE node = nullptr;
    Check(OXEL_Node_ToEnumerationNode(Node(name), &node), name);
    return node;
  }
  OXEL_COMMAND_NODE Command(const char* name) const {
    OXEL_COMMAND_NODE node = nullptr;
    Check(OXEL_Node_ToCommandNode(Node(name), &node), name);
    return node;
  }

  OXEL_PRODUCER_LIBRARY library_ = nullptr;
  OXEL_DEVICE device_ = nullptr;
  OXEL_NODE_MAP features_ = nullptr;
  OXEL_DATA_STREAM stream_ = nullptr;
  OXEL_COMMAND_NODE trigger_ = nullptr;
  size_t payloadSize_ = 0;
};

const char* FormatOf(const benchmark::State& state) {
  return state.range(0) == 3 ? "BGR8" : "Mono8";
}

void BM_SimSoftwareTriggeredFrame(benchmark::State& state) {
  OxelSim_ResetAll();
  ColourCamera camera(FormatOf(state));
  for (auto _ : state) camera.OneFrame();
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * camera.PayloadSize()));
  state.SetLabel(FormatOf(state));
}

void BM_SimPlainCopyOfAFrame(benchmark::State& state) {
  const size_t size = 1936u * 1216u * static_cast<size_t>(state.range(0));
  std::vector<char> source(size, 1), target(size);
  for (auto _ : state) {
    std::memcpy(target.data(), source.data(), size);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * size));
  state.SetLabel(FormatOf(state));
}

BENCHMARK(BM_SimSoftwareTriggeredFrame)->Arg(3)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SimPlainCopyOfAFrame)->Arg(3)->Arg(1)->Unit(benchmark::kMicrosecond);

}  // namespace
