/*
 * The Oxel camera library's C interface.
 *
 * Call shapes shared by every function:
 *  - each function returns an OXEL_RETURN_CODE, 0 on success;
 *  - objects are opaque handles, passed first;
 *  - a result comes back through the last parameter (a value, a handle or an
 *    OXEL_BOOL8);
 *  - texts out take two calls: a null buffer with a size pointer yields the
 *    size counting the terminator, the second call passes a buffer of that size
 *    (a buffer smaller than the text fails with OXEL_RETURN_CODE_BUFFER_TOO_SMALL);
 *  - texts in are a pointer and their length plus 1;
 *  - lists are a count query followed by one query per index;
 *  - callbacks are registered with a function and a context pointer and yield a
 *    callback handle; unregistering takes that handle;
 *  - every failing call records a last error (code and description) for the
 *    calling thread, read with OXEL_Library_GetLastError.
 *
 * The library is loaded at run time as liboxel.so.1; OXEL_FOR_EACH_FUNCTION
 * lists every function so that a loader can resolve them all by name.
 */
#ifndef OXEL_OXEL_C_H
#define OXEL_OXEL_C_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- return codes ------------------------------------------------------- */

typedef int32_t OXEL_RETURN_CODE;
enum {
  OXEL_RETURN_CODE_SUCCESS = 0,
  OXEL_RETURN_CODE_ERROR = 1,
  OXEL_RETURN_CODE_NOT_INITIALIZED = 2,
  OXEL_RETURN_CODE_ABORTED = 3,
  OXEL_RETURN_CODE_BAD_ACCESS = 4,
  OXEL_RETURN_CODE_BAD_ALLOC = 5,
  OXEL_RETURN_CODE_BUFFER_TOO_SMALL = 6,
  OXEL_RETURN_CODE_INVALID_ADDRESS = 7,
  OXEL_RETURN_CODE_INVALID_ARGUMENT = 8,
  OXEL_RETURN_CODE_INVALID_CAST = 9,
  OXEL_RETURN_CODE_INVALID_HANDLE = 10,
  OXEL_RETURN_CODE_NOT_FOUND = 11,
  OXEL_RETURN_CODE_OUT_OF_RANGE = 12,
  OXEL_RETURN_CODE_TIMEOUT = 13,
  OXEL_RETURN_CODE_NOT_AVAILABLE = 14,
  OXEL_RETURN_CODE_NOT_IMPLEMENTED = 15,
  OXEL_RETURN_CODE_CTI_LOADING_ERROR = 16
};

/* ---- basic types and enumerations -------------------------------------- */

typedef uint8_t OXEL_BOOL8; /* 0 false, anything else true */

typedef int32_t OXEL_NODE_TYPE;
enum {
  OXEL_NODE_TYPE_INTEGER = 0,
  OXEL_NODE_TYPE_BOOLEAN = 1,
  OXEL_NODE_TYPE_COMMAND = 2,
  OXEL_NODE_TYPE_FLOAT = 3,
  OXEL_NODE_TYPE_STRING = 4,
  OXEL_NODE_TYPE_REGISTER = 5,
  OXEL_NODE_TYPE_CATEGORY = 6,
  OXEL_NODE_TYPE_ENUMERATION = 7,
  OXEL_NODE_TYPE_ENUMERATION_ENTRY = 8
};

typedef int32_t OXEL_NODE_ACCESS_STATUS;
enum {
  OXEL_NODE_ACCESS_STATUS_NOT_IMPLEMENTED = 0,
  OXEL_NODE_ACCESS_STATUS_NOT_AVAILABLE = 1,
  OXEL_NODE_ACCESS_STATUS_WRITE_ONLY = 2,
  OXEL_NODE_ACCESS_STATUS_READ_ONLY = 3,
  OXEL_NODE_ACCESS_STATUS_READ_WRITE = 4
};

/* How a value query may use cached values; passed through unchanged. */
typedef int32_t OXEL_NODE_CACHE_POLICY;
enum { OXEL_NODE_CACHE_POLICY_USE_CACHE = 0, OXEL_NODE_CACHE_POLICY_BYPASS = 1 };

typedef int32_t OXEL_DEVICE_ACCESS_STATUS;
enum {
  OXEL_DEVICE_ACCESS_STATUS_UNKNOWN = 0,
  OXEL_DEVICE_ACCESS_STATUS_READ_WRITE = 1,
  OXEL_DEVICE_ACCESS_STATUS_READ_ONLY = 2,
  OXEL_DEVICE_ACCESS_STATUS_NO_ACCESS = 3,
  OXEL_DEVICE_ACCESS_STATUS_BUSY = 4,
  OXEL_DEVICE_ACCESS_STATUS_OPEN_READ_WRITE = 5,
  OXEL_DEVICE_ACCESS_STATUS_OPEN_READ_ONLY = 6,
  OXEL_DEVICE_ACCESS_STATUS_CUSTOM = 1000
};

typedef int32_t OXEL_DEVICE_ACCESS_TYPE;
enum {
  OXEL_DEVICE_ACCESS_TYPE_NONE = 1,
  OXEL_DEVICE_ACCESS_TYPE_READ_ONLY = 2,
  OXEL_DEVICE_ACCESS_TYPE_CONTROL = 3,
  OXEL_DEVICE_ACCESS_TYPE_EXCLUSIVE = 4
};

typedef int32_t OXEL_ACQUISITION_START_MODE;
enum { OXEL_ACQUISITION_START_MODE_DEFAULT = 0 };
#define OXEL_INFINITE_NUMBER UINT64_C(0xFFFFFFFFFFFFFFFF)

typedef int32_t OXEL_ACQUISITION_STOP_MODE;
enum { OXEL_ACQUISITION_STOP_MODE_DEFAULT = 0, OXEL_ACQUISITION_STOP_MODE_KILL = 1 };

/* Where Flush moves buffers (the GenTL queue operations). */
typedef int32_t OXEL_DATA_STREAM_FLUSH_MODE;
enum {
  OXEL_DATA_STREAM_FLUSH_MODE_INPUT_TO_OUTPUT = 0,
  OXEL_DATA_STREAM_FLUSH_MODE_DISCARD_OUTPUT = 1,
  OXEL_DATA_STREAM_FLUSH_MODE_ALL_TO_INPUT = 2,
  OXEL_DATA_STREAM_FLUSH_MODE_UNQUEUED_TO_INPUT = 3,
  OXEL_DATA_STREAM_FLUSH_MODE_DISCARD_ALL = 4
};

/* ---- handles ----------------------------------------------------------- */

typedef struct OXEL_PRODUCER_LIBRARY_T* OXEL_PRODUCER_LIBRARY;
typedef struct OXEL_SYSTEM_DESCRIPTOR_T* OXEL_SYSTEM_DESCRIPTOR;
typedef struct OXEL_SYSTEM_T* OXEL_SYSTEM;
typedef struct OXEL_INTERFACE_DESCRIPTOR_T* OXEL_INTERFACE_DESCRIPTOR;
typedef struct OXEL_INTERFACE_T* OXEL_INTERFACE;
typedef struct OXEL_DEVICE_DESCRIPTOR_T* OXEL_DEVICE_DESCRIPTOR;
typedef struct OXEL_DEVICE_T* OXEL_DEVICE;
typedef struct OXEL_REMOTE_DEVICE_T* OXEL_REMOTE_DEVICE;
typedef struct OXEL_DATA_STREAM_DESCRIPTOR_T* OXEL_DATA_STREAM_DESCRIPTOR;
typedef struct OXEL_DATA_STREAM_T* OXEL_DATA_STREAM;
typedef struct OXEL_BUFFER_T* OXEL_BUFFER;
/* Any opened module (system, interface, device, remote device, data stream,
 * buffer) seen through what all modules share: their node maps. */
typedef struct OXEL_MODULE_T* OXEL_MODULE;
typedef struct OXEL_NODE_MAP_T* OXEL_NODE_MAP;
typedef struct OXEL_NODE_T* OXEL_NODE;
typedef struct OXEL_INTEGER_NODE_T* OXEL_INTEGER_NODE;
typedef struct OXEL_BOOLEAN_NODE_T* OXEL_BOOLEAN_NODE;
typedef struct OXEL_COMMAND_NODE_T* OXEL_COMMAND_NODE;
typedef struct OXEL_FLOAT_NODE_T* OXEL_FLOAT_NODE;
typedef struct OXEL_STRING_NODE_T* OXEL_STRING_NODE;
typedef struct OXEL_REGISTER_NODE_T* OXEL_REGISTER_NODE;
typedef struct OXEL_CATEGORY_NODE_T* OXEL_CATEGORY_NODE;
typedef struct OXEL_ENUMERATION_NODE_T* OXEL_ENUMERATION_NODE;
typedef struct OXEL_ENUMERATION_ENTRY_NODE_T* OXEL_ENUMERATION_ENTRY_NODE;
typedef struct OXEL_CALLBACK_T* OXEL_CALLBACK_HANDLE;

/* ---- callbacks ----------------------------------------------------------- */

typedef void (*OXEL_InterfaceFoundCallback)(OXEL_INTERFACE_DESCRIPTOR found, void* context);
typedef void (*OXEL_InterfaceLostCallback)(const char* key, size_t keySize, void* context);
typedef void (*OXEL_DeviceFoundCallback)(OXEL_DEVICE_DESCRIPTOR found, void* context);
typedef void (*OXEL_DeviceLostCallback)(const char* key, size_t keySize, void* context);
typedef void (*OXEL_NodeChangedCallback)(OXEL_NODE node, void* context);

/* ---- library ------------------------------------------------------------- */

/* Counts its users: IsInitialized stays true until every Initialize has been
 * matched by a Close. */
OXEL_RETURN_CODE OXEL_Library_Initialize(void);
OXEL_RETURN_CODE OXEL_Library_Close(void);
OXEL_RETURN_CODE OXEL_Library_IsInitialized(OXEL_BOOL8* isInitialized);
/* The calling thread's last error: code, then the description through the
 * two-call text protocol (description may be null to ask for its size). */
OXEL_RETURN_CODE OXEL_Library_GetLastError(OXEL_RETURN_CODE* lastErrorCode, char* description,
                                           size_t* descriptionSize);

/* ---- producer-library search -------------------------------------------- */

OXEL_RETURN_CODE OXEL_ProducerSearch_Refresh(void);
OXEL_RETURN_CODE OXEL_ProducerSearch_GetCount(size_t* count);
OXEL_RETURN_CODE OXEL_ProducerSearch_GetPath(size_t index, char* path, size_t* pathSize);

/* ---- producer library ----------------------------------------------------- */

OXEL_RETURN_CODE OXEL_ProducerLibrary_Open(const char* path, size_t pathSize,
                                           OXEL_PRODUCER_LIBRARY* producerLibrary);
OXEL_RETURN_CODE OXEL_ProducerLibrary_GetPath(OXEL_PRODUCER_LIBRARY producerLibrary, char* path,
                                              size_t* pathSize);
OXEL_RETURN_CODE OXEL_ProducerLibrary_GetVendor(OXEL_PRODUCER_LIBRARY producerLibrary, char* vendor,
                                                size_t* vendorSize);
OXEL_RETURN_CODE OXEL_ProducerLibrary_GetSystem(OXEL_PRODUCER_LIBRARY producerLibrary,
                                                OXEL_SYSTEM_DESCRIPTOR* systemDescriptor);
OXEL_RETURN_CODE OXEL_ProducerLibrary_Release(OXEL_PRODUCER_LIBRARY producerLibrary);

/* ---- system ---------------------------------------------------------------- */

OXEL_RETURN_CODE OXEL_SystemDescriptor_GetID(OXEL_SYSTEM_DESCRIPTOR descriptor, char* id,
                                             size_t* idSize);
OXEL_RETURN_CODE OXEL_SystemDescriptor_GetDisplayName(OXEL_SYSTEM_DESCRIPTOR descriptor,
                                                      char* displayName, size_t* displayNameSize);
OXEL_RETURN_CODE OXEL_SystemDescriptor_OpenSystem(OXEL_SYSTEM_DESCRIPTOR descriptor,
                                                  OXEL_SYSTEM* system);

OXEL_RETURN_CODE OXEL_System_GetID(OXEL_SYSTEM system, char* id, size_t* idSize);
OXEL_RETURN_CODE OXEL_System_ToModule(OXEL_SYSTEM system, OXEL_MODULE* module);
OXEL_RETURN_CODE OXEL_System_RegisterInterfaceFoundCallback(OXEL_SYSTEM system,
                                                            OXEL_InterfaceFoundCallback callback,
                                                            void* context,
                                                            OXEL_CALLBACK_HANDLE* callbackHandle);
OXEL_RETURN_CODE OXEL_System_UnregisterInterfaceFoundCallback(OXEL_SYSTEM system,
                                                              OXEL_CALLBACK_HANDLE callbackHandle);
OXEL_RETURN_CODE OXEL_System_RegisterInterfaceLostCallback(OXEL_SYSTEM system,
                                                           OXEL_InterfaceLostCallback callback,
                                                           void* context,
                                                           OXEL_CALLBACK_HANDLE* callbackHandle);
OXEL_RETURN_CODE OXEL_System_UnregisterInterfaceLostCallback(OXEL_SYSTEM system,
                                                             OXEL_CALLBACK_HANDLE callbackHandle);
/* Refreshes the interface list; found and lost interfaces are reported through
 * the registered callbacks before the call returns. */
OXEL_RETURN_CODE OXEL_System_UpdateInterfaces(OXEL_SYSTEM system, uint64_t timeoutMs);
OXEL_RETURN_CODE OXEL_System_Close(OXEL_SYSTEM system);

/* ---- interface ------------------------------------------------------------- */

OXEL_RETURN_CODE OXEL_InterfaceDescriptor_GetID(OXEL_INTERFACE_DESCRIPTOR descriptor, char* id,
                                                size_t* idSize);
OXEL_RETURN_CODE OXEL_InterfaceDescriptor_GetDisplayName(OXEL_INTERFACE_DESCRIPTOR descriptor,
                                                         char* displayName,
                                                         size_t* displayNameSize);
OXEL_RETURN_CODE OXEL_InterfaceDescriptor_OpenInterface(OXEL_INTERFACE_DESCRIPTOR descriptor,
                                                        OXEL_INTERFACE* interfaceHandle);

OXEL_RETURN_CODE OXEL_Interface_GetID(OXEL_INTERFACE interfaceHandle, char* id, size_t* idSize);
OXEL_RETURN_CODE OXEL_Interface_GetDisplayName(OXEL_INTERFACE interfaceHandle, char* displayName,
                                               size_t* displayNameSize);
OXEL_RETURN_CODE OXEL_Interface_ToModule(OXEL_INTERFACE interfaceHandle, OXEL_MODULE* module);
OXEL_RETURN_CODE OXEL_Interface_RegisterDeviceFoundCallback(OXEL_INTERFACE interfaceHandle,
                                                            OXEL_DeviceFoundCallback callback,
                                                            void* context,
                                                            OXEL_CALLBACK_HANDLE* callbackHandle);
OXEL_RETURN_CODE OXEL_Interface_UnregisterDeviceFoundCallback(OXEL_INTERFACE interfaceHandle,
                                                              OXEL_CALLBACK_HANDLE callbackHandle);
OXEL_RETURN_CODE OXEL_Interface_RegisterDeviceLostCallback(OXEL_INTERFACE interfaceHandle,
                                                           OXEL_DeviceLostCallback callback,
                                                           void* context,
                                                           OXEL_CALLBACK_HANDLE* callbackHandle);
OXEL_RETURN_CODE OXEL_Interface_UnregisterDeviceLostCallback(OXEL_INTERFACE interfaceHandle,
                                                             OXEL_CALLBACK_HANDLE callbackHandle);
/* Refreshes the device list; found and lost devices are reported through the
 * registered callbacks before the call returns. */
OXEL_RETURN_CODE OXEL_Interface_UpdateDevices(OXEL_INTERFACE interfaceHandle, uint64_t timeoutMs);
OXEL_RETURN_CODE OXEL_Interface_Close(OXEL_INTERFACE interfaceHandle);

/* ---- device ------------------------------------------------------------------ */

OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetID(OXEL_DEVICE_DESCRIPTOR descriptor, char* id,
                                             size_t* idSize);
OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetDisplayName(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                      char* displayName, size_t* displayNameSize);
OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetModelName(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                    char* modelName, size_t* modelNameSize);
OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetSerialNumber(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                       char* serialNumber,
                                                       size_t* serialNumberSize);
OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetUserDefinedName(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                          char* userDefinedName,
                                                          size_t* userDefinedNameSize);
OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetTLType(OXEL_DEVICE_DESCRIPTOR descriptor, char* tlType,
                                                 size_t* tlTypeSize);
OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetAccessStatus(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                       OXEL_DEVICE_ACCESS_STATUS* accessStatus);
OXEL_RETURN_CODE OXEL_DeviceDescriptor_IsOpenable(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                  OXEL_DEVICE_ACCESS_TYPE accessType,
                                                  OXEL_BOOL8* isOpenable);
OXEL_RETURN_CODE OXEL_DeviceDescriptor_OpenDevice(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                  OXEL_DEVICE_ACCESS_TYPE accessType,
                                                  OXEL_DEVICE* device);

OXEL_RETURN_CODE OXEL_Device_GetID(OXEL_DEVICE device, char* id, size_t* idSize);
OXEL_RETURN_CODE OXEL_Device_ToModule(OXEL_DEVICE device, OXEL_MODULE* module);
OXEL_RETURN_CODE OXEL_Device_GetRemoteDevice(OXEL_DEVICE device, OXEL_REMOTE_DEVICE* remoteDevice);
OXEL_RETURN_CODE OXEL_Device_GetNumDataStreams(OXEL_DEVICE device, size_t* count);
OXEL_RETURN_CODE OXEL_Device_GetDataStreamDescriptor(OXEL_DEVICE device, size_t index,
                                                     OXEL_DATA_STREAM_DESCRIPTOR* descriptor);
OXEL_RETURN_CODE OXEL_Device_Close(OXEL_DEVICE device);

OXEL_RETURN_CODE OXEL_RemoteDevice_ToModule(OXEL_REMOTE_DEVICE remoteDevice, OXEL_MODULE* module);

/* ---- data stream --------------------------------------------------------------- */

OXEL_RETURN_CODE OXEL_DataStreamDescriptor_GetID(OXEL_DATA_STREAM_DESCRIPTOR descriptor, char* id,
                                                 size_t* idSize);
OXEL_RETURN_CODE OXEL_DataStreamDescriptor_OpenDataStream(OXEL_DATA_STREAM_DESCRIPTOR descriptor,
                                                          OXEL_DATA_STREAM* dataStream);

OXEL_RETURN_CODE OXEL_DataStream_GetID(OXEL_DATA_STREAM dataStream, char* id, size_t* idSize);
OXEL_RETURN_CODE OXEL_DataStream_ToModule(OXEL_DATA_STREAM dataStream, OXEL_MODULE* module);
OXEL_RETURN_CODE OXEL_DataStream_GetNumBuffersAnnouncedMinRequired(OXEL_DATA_STREAM dataStream,
                                                                   size_t* count);
OXEL_RETURN_CODE OXEL_DataStream_GetNumBuffersAnnounced(OXEL_DATA_STREAM dataStream, size_t* count);
OXEL_RETURN_CODE OXEL_DataStream_GetNumBuffersQueued(OXEL_DATA_STREAM dataStream, size_t* count);
OXEL_RETURN_CODE OXEL_DataStream_GetNumBuffersAwaitDelivery(OXEL_DATA_STREAM dataStream,
                                                            size_t* count);
OXEL_RETURN_CODE OXEL_DataStream_GetNumBuffersDelivered(OXEL_DATA_STREAM dataStream,
                                                        uint64_t* count);
OXEL_RETURN_CODE OXEL_DataStream_GetNumUnderruns(OXEL_DATA_STREAM dataStream, uint64_t* count);
OXEL_RETURN_CODE OXEL_DataStream_GetDefinesPayloadSize(OXEL_DATA_STREAM dataStream,
                                                       OXEL_BOOL8* definesPayloadSize);
OXEL_RETURN_CODE OXEL_DataStream_GetPayloadSize(OXEL_DATA_STREAM dataStream, size_t* payloadSize);
OXEL_RETURN_CODE OXEL_DataStream_GetIsGrabbing(OXEL_DATA_STREAM dataStream, OXEL_BOOL8* isGrabbing);
/* Allocates a buffer of the given size inside the library and announces it. */
OXEL_RETURN_CODE OXEL_DataStream_AllocAndAnnounceBuffer(OXEL_DATA_STREAM dataStream,
                                                        size_t bufferSize, void* userPtr,
                                                        OXEL_BUFFER* buffer);
OXEL_RETURN_CODE OXEL_DataStream_RevokeBuffer(OXEL_DATA_STREAM dataStream, OXEL_BUFFER buffer,
                                              void** userPtr);
OXEL_RETURN_CODE OXEL_DataStream_QueueBuffer(OXEL_DATA_STREAM dataStream, OXEL_BUFFER buffer);
/* Blocks until a buffer is finished, the time limit passes
 * (OXEL_RETURN_CODE_TIMEOUT) or KillWait ends the wait (OXEL_RETURN_CODE_ABORTED). */
OXEL_RETURN_CODE OXEL_DataStream_WaitForFinishedBuffer(OXEL_DATA_STREAM dataStream,
                                                       uint64_t timeoutMs, OXEL_BUFFER* buffer);
OXEL_RETURN_CODE OXEL_DataStream_KillWait(OXEL_DATA_STREAM dataStream);
OXEL_RETURN_CODE OXEL_DataStream_StartAcquisition(OXEL_DATA_STREAM dataStream,
                                                  OXEL_ACQUISITION_START_MODE startMode,
                                                  uint64_t numToAcquire);
OXEL_RETURN_CODE OXEL_DataStream_StopAcquisition(OXEL_DATA_STREAM dataStream,
                                                 OXEL_ACQUISITION_STOP_MODE stopMode);
OXEL_RETURN_CODE OXEL_DataStream_Flush(OXEL_DATA_STREAM dataStream,
                                       OXEL_DATA_STREAM_FLUSH_MODE flushMode);
OXEL_RETURN_CODE OXEL_DataStream_Close(OXEL_DATA_STREAM dataStream);

/* ---- buffer ------------------------------------------------------------------ */

OXEL_RETURN_CODE OXEL_Buffer_ToModule(OXEL_BUFFER buffer, OXEL_MODULE* module);
OXEL_RETURN_CODE OXEL_Buffer_GetBasePtr(OXEL_BUFFER buffer, void** basePtr);
OXEL_RETURN_CODE OXEL_Buffer_GetSize(OXEL_BUFFER buffer, size_t* size);
OXEL_RETURN_CODE OXEL_Buffer_GetUserPtr(OXEL_BUFFER buffer, void** userPtr);
OXEL_RETURN_CODE OXEL_Buffer_GetWidth(OXEL_BUFFER buffer, size_t* width);
OXEL_RETURN_CODE OXEL_Buffer_GetHeight(OXEL_BUFFER buffer, size_t* height);
OXEL_RETURN_CODE OXEL_Buffer_GetXOffset(OXEL_BUFFER buffer, size_t* xOffset);
OXEL_RETURN_CODE OXEL_Buffer_GetYOffset(OXEL_BUFFER buffer, size_t* yOffset);
/* PFNC pixel format code of the delivered image (Mono8 0x01080001, BGR8 0x02180015). */
OXEL_RETURN_CODE OXEL_Buffer_GetPixelFormat(OXEL_BUFFER buffer, uint64_t* pixelFormat);
OXEL_RETURN_CODE OXEL_Buffer_GetFrameID(OXEL_BUFFER buffer, uint64_t* frameId);
OXEL_RETURN_CODE OXEL_Buffer_GetTimestampNs(OXEL_BUFFER buffer, uint64_t* timestampNs);
OXEL_RETURN_CODE OXEL_Buffer_GetIsIncomplete(OXEL_BUFFER buffer, OXEL_BOOL8* isIncomplete);

/* ---- modules and node maps ----------------------------------------------------- */

OXEL_RETURN_CODE OXEL_Module_GetNumNodeMaps(OXEL_MODULE module, size_t* count);
OXEL_RETURN_CODE OXEL_Module_GetNodeMap(OXEL_MODULE module, size_t index, OXEL_NODE_MAP* nodeMap);

/* Fails with OXEL_RETURN_CODE_NOT_FOUND when the map has no node of that name. */
OXEL_RETURN_CODE OXEL_NodeMap_FindNode(OXEL_NODE_MAP nodeMap, const char* name, size_t nameSize,
                                       OXEL_NODE* node);
OXEL_RETURN_CODE OXEL_NodeMap_GetNumNodes(OXEL_NODE_MAP nodeMap, size_t* count);
OXEL_RETURN_CODE OXEL_NodeMap_GetNode(OXEL_NODE_MAP nodeMap, size_t index, OXEL_NODE* node);

/* ---- nodes ---------------------------------------------------------------------- */

OXEL_RETURN_CODE OXEL_Node_GetName(OXEL_NODE node, char* name, size_t* nameSize);
OXEL_RETURN_CODE OXEL_Node_GetDisplayName(OXEL_NODE node, char* displayName,
                                          size_t* displayNameSize);
OXEL_RETURN_CODE OXEL_Node_GetType(OXEL_NODE node, OXEL_NODE_TYPE* type);
OXEL_RETURN_CODE OXEL_Node_GetAccessStatus(OXEL_NODE node, OXEL_NODE_ACCESS_STATUS* accessStatus);
OXEL_RETURN_CODE OXEL_Node_RegisterChangedCallback(OXEL_NODE node,
                                                   OXEL_NodeChangedCallback callback, void* context,
                                                   OXEL_CALLBACK_HANDLE* callbackHandle);
OXEL_RETURN_CODE OXEL_Node_UnregisterChangedCallback(OXEL_NODE node,
                                                     OXEL_CALLBACK_HANDLE callbackHandle);
/* The kind handle of a node; OXEL_RETURN_CODE_INVALID_CAST for another kind. */
OXEL_RETURN_CODE OXEL_Node_ToIntegerNode(OXEL_NODE node, OXEL_INTEGER_NODE* integerNode);
OXEL_RETURN_CODE OXEL_Node_ToBooleanNode(OXEL_NODE node, OXEL_BOOLEAN_NODE* booleanNode);
OXEL_RETURN_CODE OXEL_Node_ToCommandNode(OXEL_NODE node, OXEL_COMMAND_NODE* commandNode);
OXEL_RETURN_CODE OXEL_Node_ToFloatNode(OXEL_NODE node, OXEL_FLOAT_NODE* floatNode);
OXEL_RETURN_CODE OXEL_Node_ToStringNode(OXEL_NODE node, OXEL_STRING_NODE* stringNode);
OXEL_RETURN_CODE OXEL_Node_ToRegisterNode(OXEL_NODE node, OXEL_REGISTER_NODE* registerNode);
OXEL_RETURN_CODE OXEL_Node_ToCategoryNode(OXEL_NODE node, OXEL_CATEGORY_NODE* categoryNode);
OXEL_RETURN_CODE OXEL_Node_ToEnumerationNode(OXEL_NODE node,
                                             OXEL_ENUMERATION_NODE* enumerationNode);
OXEL_RETURN_CODE OXEL_Node_ToEnumerationEntryNode(OXEL_NODE node,
                                                  OXEL_ENUMERATION_ENTRY_NODE* entryNode);

OXEL_RETURN_CODE OXEL_IntegerNode_GetValue(OXEL_INTEGER_NODE node,
                                           OXEL_NODE_CACHE_POLICY cachePolicy, int64_t* value);
OXEL_RETURN_CODE OXEL_IntegerNode_SetValue(OXEL_INTEGER_NODE node, int64_t value);
OXEL_RETURN_CODE OXEL_IntegerNode_GetMinimum(OXEL_INTEGER_NODE node, int64_t* minimum);
OXEL_RETURN_CODE OXEL_IntegerNode_GetMaximum(OXEL_INTEGER_NODE node, int64_t* maximum);
OXEL_RETURN_CODE OXEL_IntegerNode_GetIncrement(OXEL_INTEGER_NODE node, int64_t* increment);

OXEL_RETURN_CODE OXEL_FloatNode_GetValue(OXEL_FLOAT_NODE node, OXEL_NODE_CACHE_POLICY cachePolicy,
                                         double* value);
OXEL_RETURN_CODE OXEL_FloatNode_SetValue(OXEL_FLOAT_NODE node, double value);
OXEL_RETURN_CODE OXEL_FloatNode_GetMinimum(OXEL_FLOAT_NODE node, double* minimum);
OXEL_RETURN_CODE OXEL_FloatNode_GetMaximum(OXEL_FLOAT_NODE node, double* maximum);
OXEL_RETURN_CODE OXEL_FloatNode_GetHasConstantIncrement(OXEL_FLOAT_NODE node,
                                                        OXEL_BOOL8* hasConstantIncrement);
OXEL_RETURN_CODE OXEL_FloatNode_GetIncrement(OXEL_FLOAT_NODE node, double* increment);

OXEL_RETURN_CODE OXEL_BooleanNode_GetValue(OXEL_BOOLEAN_NODE node,
                                           OXEL_NODE_CACHE_POLICY cachePolicy, OXEL_BOOL8* value);
OXEL_RETURN_CODE OXEL_BooleanNode_SetValue(OXEL_BOOLEAN_NODE node, OXEL_BOOL8 value);

OXEL_RETURN_CODE OXEL_StringNode_GetValue(OXEL_STRING_NODE node, OXEL_NODE_CACHE_POLICY cachePolicy,
                                          char* value, size_t* valueSize);
OXEL_RETURN_CODE OXEL_StringNode_SetValue(OXEL_STRING_NODE node, const char* value,
                                          size_t valueSize);

OXEL_RETURN_CODE OXEL_CommandNode_Execute(OXEL_COMMAND_NODE node);
OXEL_RETURN_CODE OXEL_CommandNode_GetIsDone(OXEL_COMMAND_NODE node, OXEL_BOOL8* isDone);

OXEL_RETURN_CODE OXEL_RegisterNode_GetLength(OXEL_REGISTER_NODE node, int64_t* length);
OXEL_RETURN_CODE OXEL_CategoryNode_GetNumFeatures(OXEL_CATEGORY_NODE node, size_t* count);

OXEL_RETURN_CODE OXEL_EnumerationNode_GetCurrentEntry(OXEL_ENUMERATION_NODE node,
                                                      OXEL_NODE_CACHE_POLICY cachePolicy,
                                                      OXEL_ENUMERATION_ENTRY_NODE* entry);
/* Fails with OXEL_RETURN_CODE_NOT_FOUND for an unknown symbolic value and with
 * OXEL_RETURN_CODE_NOT_AVAILABLE for an entry that is not available. */
OXEL_RETURN_CODE OXEL_EnumerationNode_SetCurrentEntry(OXEL_ENUMERATION_NODE node,
                                                      const char* symbolicValue,
                                                      size_t symbolicValueSize);
OXEL_RETURN_CODE OXEL_EnumerationNode_GetNumEntries(OXEL_ENUMERATION_NODE node, size_t* count);
OXEL_RETURN_CODE OXEL_EnumerationNode_GetEntry(OXEL_ENUMERATION_NODE node, size_t index,
                                               OXEL_ENUMERATION_ENTRY_NODE* entry);

OXEL_RETURN_CODE OXEL_EnumerationEntryNode_ToNode(OXEL_ENUMERATION_ENTRY_NODE entry,
                                                  OXEL_NODE* node);
OXEL_RETURN_CODE OXEL_EnumerationEntryNode_GetSymbolicValue(OXEL_ENUMERATION_ENTRY_NODE entry,
                                                            char* symbolicValue,
                                                            size_t* symbolicValueSize);
OXEL_RETURN_CODE OXEL_EnumerationEntryNode_GetValue(OXEL_ENUMERATION_ENTRY_NODE entry,
                                                    int64_t* value);

/* ---- every function, for loaders that bind by name ------------------------------ */

#define OXEL_FOR_EACH_FUNCTION(X)                      \
  X(OXEL_Library_Initialize)                           \
  X(OXEL_Library_Close)                                \
  X(OXEL_Library_IsInitialized)                        \
  X(OXEL_Library_GetLastError)                         \
  X(OXEL_ProducerSearch_Refresh)                       \
  X(OXEL_ProducerSearch_GetCount)                      \
  X(OXEL_ProducerSearch_GetPath)                       \
  X(OXEL_ProducerLibrary_Open)                         \
  X(OXEL_ProducerLibrary_GetPath)                      \
  X(OXEL_ProducerLibrary_GetVendor)                    \
  X(OXEL_ProducerLibrary_GetSystem)                    \
  X(OXEL_ProducerLibrary_Release)                      \
  X(OXEL_SystemDescriptor_GetID)                       \
  X(OXEL_SystemDescriptor_GetDisplayName)              \
  X(OXEL_SystemDescriptor_OpenSystem)                  \
  X(OXEL_System_GetID)                                 \
  X(OXEL_System_ToModule)                              \
  X(OXEL_System_RegisterInterfaceFoundCallback)        \
  X(OXEL_System_UnregisterInterfaceFoundCallback)      \
  X(OXEL_System_RegisterInterfaceLostCallback)         \
  X(OXEL_System_UnregisterInterfaceLostCallback)       \
  X(OXEL_System_UpdateInterfaces)                      \
  X(OXEL_System_Close)                                 \
  X(OXEL_InterfaceDescriptor_GetID)                    \
  X(OXEL_InterfaceDescriptor_GetDisplayName)           \
  X(OXEL_InterfaceDescriptor_OpenInterface)            \
  X(OXEL_Interface_GetID)                              \
  X(OXEL_Interface_GetDisplayName)                     \
  X(OXEL_Interface_ToModule)                           \
  X(OXEL_Interface_RegisterDeviceFoundCallback)        \
  X(OXEL_Interface_UnregisterDeviceFoundCallback)      \
  X(OXEL_Interface_RegisterDeviceLostCallback)         \
  X(OXEL_Interface_UnregisterDeviceLostCallback)       \
  X(OXEL_Interface_UpdateDevices)                      \
  X(OXEL_Interface_Close)                              \
  X(OXEL_DeviceDescriptor_GetID)                       \
  X(OXEL_DeviceDescriptor_GetDisplayName)              \
  X(OXEL_DeviceDescriptor_GetModelName)                \
  X(OXEL_DeviceDescriptor_GetSerialNumber)             \
  X(OXEL_DeviceDescriptor_GetUserDefinedName)          \
  X(OXEL_DeviceDescriptor_GetTLType)                   \
  X(OXEL_DeviceDescriptor_GetAccessStatus)             \
  X(OXEL_DeviceDescriptor_IsOpenable)                  \
  X(OXEL_DeviceDescriptor_OpenDevice)                  \
  X(OXEL_Device_GetID)                                 \
  X(OXEL_Device_ToModule)                              \
  X(OXEL_Device_GetRemoteDevice)                       \
  X(OXEL_Device_GetNumDataStreams)                     \
  X(OXEL_Device_GetDataStreamDescriptor)               \
  X(OXEL_Device_Close)                                 \
  X(OXEL_RemoteDevice_ToModule)                        \
  X(OXEL_DataStreamDescriptor_GetID)                   \
  X(OXEL_DataStreamDescriptor_OpenDataStream)          \
  X(OXEL_DataStream_GetID)                             \
  X(OXEL_DataStream_ToModule)                          \
  X(OXEL_DataStream_GetNumBuffersAnnouncedMinRequired) \
  X(OXEL_DataStream_GetNumBuffersAnnounced)            \
  X(OXEL_DataStream_GetNumBuffersQueued)               \
  X(OXEL_DataStream_GetNumBuffersAwaitDelivery)        \
  X(OXEL_DataStream_GetNumBuffersDelivered)            \
  X(OXEL_DataStream_GetNumUnderruns)                   \
  X(OXEL_DataStream_GetDefinesPayloadSize)             \
  X(OXEL_DataStream_GetPayloadSize)                    \
  X(OXEL_DataStream_GetIsGrabbing)                     \
  X(OXEL_DataStream_AllocAndAnnounceBuffer)            \
  X(OXEL_DataStream_RevokeBuffer)                      \
  X(OXEL_DataStream_QueueBuffer)                       \
  X(OXEL_DataStream_WaitForFinishedBuffer)             \
  X(OXEL_DataStream_KillWait)                          \
  X(OXEL_DataStream_StartAcquisition)                  \
  X(OXEL_DataStream_StopAcquisition)                   \
  X(OXEL_DataStream_Flush)                             \
  X(OXEL_DataStream_Close)                             \
  X(OXEL_Buffer_ToModule)                              \
  X(OXEL_Buffer_GetBasePtr)                            \
  X(OXEL_Buffer_GetSize)                               \
  X(OXEL_Buffer_GetUserPtr)                            \
  X(OXEL_Buffer_GetWidth)                              \
  X(OXEL_Buffer_GetHeight)                             \
  X(OXEL_Buffer_GetXOffset)                            \
  X(OXEL_Buffer_GetYOffset)                            \
  X(OXEL_Buffer_GetPixelFormat)                        \
  X(OXEL_Buffer_GetFrameID)                            \
  X(OXEL_Buffer_GetTimestampNs)                        \
  X(OXEL_Buffer_GetIsIncomplete)                       \
  X(OXEL_Module_GetNumNodeMaps)                        \
  X(OXEL_Module_GetNodeMap)                            \
  X(OXEL_NodeMap_FindNode)                             \
  X(OXEL_NodeMap_GetNumNodes)                          \
  X(OXEL_NodeMap_GetNode)                              \
  X(OXEL_Node_GetName)                                 \
  X(OXEL_Node_GetDisplayName)                          \
  X(OXEL_Node_GetType)                                 \
  X(OXEL_Node_GetAccessStatus)                         \
  X(OXEL_Node_RegisterChangedCallback)                 \
  X(OXEL_Node_UnregisterChangedCallback)               \
  X(OXEL_Node_ToIntegerNode)                           \
  X(OXEL_Node_ToBooleanNode)                           \
  X(OXEL_Node_ToCommandNode)                           \
  X(OXEL_Node_ToFloatNode)                             \
  X(OXEL_Node_ToStringNode)                            \
  X(OXEL_Node_ToRegisterNode)                          \
  X(OXEL_Node_ToCategoryNode)                          \
  X(OXEL_Node_ToEnumerationNode)                       \
  X(OXEL_Node_ToEnumerationEntryNode)                  \
  X(OXEL_IntegerNode_GetValue)                         \
  X(OXEL_IntegerNode_SetValue)                         \
  X(OXEL_IntegerNode_GetMinimum)                       \
  X(OXEL_IntegerNode_GetMaximum)                       \
  X(OXEL_IntegerNode_GetIncrement)                     \
  X(OXEL_FloatNode_GetValue)                           \
  X(OXEL_FloatNode_SetValue)                           \
  X(OXEL_FloatNode_GetMinimum)                         \
  X(OXEL_FloatNode_GetMaximum)                         \
  X(OXEL_FloatNode_GetHasConstantIncrement)            \
  X(OXEL_FloatNode_GetIncrement)                       \
  X(OXEL_BooleanNode_GetValue)                         \
  X(OXEL_BooleanNode_SetValue)                         \
  X(OXEL_StringNode_GetValue)                          \
  X(OXEL_StringNode_SetValue)                          \
  X(OXEL_CommandNode_Execute)                          \
  X(OXEL_CommandNode_GetIsDone)                        \
  X(OXEL_RegisterNode_GetLength)                       \
  X(OXEL_CategoryNode_GetNumFeatures)                  \
  X(OXEL_EnumerationNode_GetCurrentEntry)              \
  X(OXEL_EnumerationNode_SetCurrentEntry)              \
  X(OXEL_EnumerationNode_GetNumEntries)                \
  X(OXEL_EnumerationNode_GetEntry)                     \
  X(OXEL_EnumerationEntryNode_ToNode)                  \
  X(OXEL_EnumerationEntryNode_GetSymbolicValue)        \
  X(OXEL_EnumerationEntryNode_GetValue)

#ifdef __cplusplus
}
#endif

#endif /* OXEL_OXEL_C_H */
