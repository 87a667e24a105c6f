// Devices, remote devices and data stream descriptors: the exported functions
// every Oxel library shares, over the objects of the one being built
// (api/exported.h of that library).
#include "api/exported.h"

using namespace oxellib;

OXEL_RETURN_CODE OXEL_Device_GetID(OXEL_DEVICE device, char* id, size_t* idSize) {
  return RunApiCall(
      __func__, [&] { WriteText(Find<Device>(device, Kind::Device, "device")->Id(), id, idSize); });
}

OXEL_RETURN_CODE OXEL_Device_ToModule(OXEL_DEVICE device, OXEL_MODULE* module) {
  return RunApiCall(__func__, [&] {
    Find<Device>(device, Kind::Device, "device");
    Out(module, "module") = reinterpret_cast<OXEL_MODULE>(device);
  });
}

OXEL_RETURN_CODE OXEL_Device_GetRemoteDevice(OXEL_DEVICE device, OXEL_REMOTE_DEVICE* remoteDevice) {
  return RunApiCall(__func__, [&] {
    auto opened = Find<Device>(device, Kind::Device, "device");
    Out(remoteDevice, "remoteDevice") =
        reinterpret_cast<OXEL_REMOTE_DEVICE>(opened->Remote().get());
  });
}

OXEL_RETURN_CODE OXEL_Device_GetNumDataStreams(OXEL_DEVICE device, size_t* count) {
  return RunApiCall(__func__, [&] {
    auto opened = Find<Device>(device, Kind::Device, "device");
    Out(count, "count") = opened->Streams().size();
  });
}

OXEL_RETURN_CODE OXEL_Device_GetDataStreamDescriptor(OXEL_DEVICE device, size_t index,
                                                     OXEL_DATA_STREAM_DESCRIPTOR* descriptor) {
  return RunApiCall(__func__, [&] {
    auto opened = Find<Device>(device, Kind::Device, "device");
    OXEL_DATA_STREAM_DESCRIPTOR& result = Out(descriptor, "descriptor");
    if (index >= opened->Streams().size()) {
      Fail(OXEL_RETURN_CODE_OUT_OF_RANGE,
           std::string(__func__) + ": data stream index " + std::to_string(index) +
               " but camera '" + opened->Id() + "' has " +
               std::to_string(opened->Streams().size()) + " data streams");
    }
    result = reinterpret_cast<OXEL_DATA_STREAM_DESCRIPTOR>(opened->Streams()[index].get());
  });
}

OXEL_RETURN_CODE OXEL_Device_Close(OXEL_DEVICE device) {
  return RunApiCall(__func__, [&] {
    auto opened = Find<Device>(device, Kind::Device, "device");
    auto lock = LockStructure();
    opened->CloseLocked();
  });
}

OXEL_RETURN_CODE OXEL_RemoteDevice_ToModule(OXEL_REMOTE_DEVICE remoteDevice, OXEL_MODULE* module) {
  return RunApiCall(__func__, [&] {
    Find<RemoteDevice>(remoteDevice, Kind::RemoteDevice, "remoteDevice");
    Out(module, "module") = reinterpret_cast<OXEL_MODULE>(remoteDevice);
  });
}

OXEL_RETURN_CODE OXEL_DataStreamDescriptor_GetID(OXEL_DATA_STREAM_DESCRIPTOR descriptor, char* id,
                                                 size_t* idSize) {
  return RunApiCall(__func__, [&] {
    Find<DataStreamDescriptor>(descriptor, Kind::DataStreamDescriptor, "descriptor");
    WriteText("Stream0", id, idSize);
  });
}

OXEL_RETURN_CODE OXEL_DataStreamDescriptor_OpenDataStream(OXEL_DATA_STREAM_DESCRIPTOR descriptor,
                                                          OXEL_DATA_STREAM* dataStream) {
  return RunApiCall(__func__, [&] {
    auto origin = Find<DataStreamDescriptor>(descriptor, Kind::DataStreamDescriptor, "descriptor");
    OXEL_DATA_STREAM& result = Out(dataStream, "dataStream");
    result = reinterpret_cast<OXEL_DATA_STREAM>(origin->Open().get());
  });
}
