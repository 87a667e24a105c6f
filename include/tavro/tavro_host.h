/*
 * Tavro host interface: the records a host shares with libtavro.so, the
 * result and status conventions, and the nine entry points.
 *
 * The host allocates and owns every record; the plug-in only writes into
 * them. The layouts are a binary interface for Linux x86-64 (little endian,
 * 64-bit pointers): each offset below is fixed and checked at compile time.
 * Fields named abReserved... are padding; abHost... is the host's own
 * space, which the plug-in never touches.
 *
 * Plain C (C99 or later) and C++.
 */
#ifndef TAVRO_TAVRO_HOST_H
#define TAVRO_TAVRO_HOST_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- compile-time layout checks, usable from C99, C11 and C++ ---- */

#if defined(__cplusplus)
#define TAVRO_STATIC_ASSERT(condition, message) static_assert(condition, message)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define TAVRO_STATIC_ASSERT(condition, message) _Static_assert(condition, message)
#else
#define TAVRO_CONCAT_INNER(a, b) a##b
#define TAVRO_CONCAT(a, b) TAVRO_CONCAT_INNER(a, b)
#define TAVRO_STATIC_ASSERT(condition, message) \
  typedef char TAVRO_CONCAT(tavro_static_assert_line_, __LINE__)[(condition) ? 1 : -1]
#endif

#define TAVRO_ASSERT_OFFSET(type, field, offset) \
  TAVRO_STATIC_ASSERT(offsetof(type, field) == (offset), #type "." #field " at " #offset)
#define TAVRO_ASSERT_SIZE(type, size) \
  TAVRO_STATIC_ASSERT(sizeof(type) == (size), #type " size " #size)

TAVRO_STATIC_ASSERT(sizeof(void*) == 8, "the host records assume 64-bit pointers");

/* ---- export of the entry points ---- */

#if defined(__GNUC__)
#define TAVRO_API __attribute__((visibility("default")))
#else
#define TAVRO_API
#endif

/* ---- fixed values ---- */

/* SystemRecord.lMagic once setup has succeeded (the bytes 'H' '8' ')' '0'). */
#define TAVRO_SYSTEM_MAGIC 0x30293848u
/* CamImage.lMagic of a host image. */
#define TAVRO_IMAGE_MAGIC 0x09144894u

#define TAVRO_MAX_CAMERAS 16
#define TAVRO_CAM_KEY_SIZE 63 /* key text of at most 62 characters and its NUL */
#define TAVRO_MAX_FORMATS 32
#define TAVRO_FORMAT_NAME_SIZE 64
#define TAVRO_NUM_PARAMS 19
#define TAVRO_PARAM_NAME_SIZE 64
#define TAVRO_GEOMETRY_VALUES 12

/* Status word bits: an entry point sets its status word to 0 first and
 * leaves one of these in it when it fails. */
#define ACQERR_NO_IMAGE 0x1u
#define ACQERR_CAMERA_OP 0x4u
#define ACQERR_NO_SYSTEM 0x8u
#define ACQERR_WAIT_FAILED 0x10u  /* a frame wait failed */
#define ACQERR_WAIT_TIMEOUT 0x40u /* a frame wait timed out */
#define ACQERR_NO_CAMERA 0x1000u
#define ACQERR_NOT_ACQUIRING 0x40000u
#define ACQERR_LIVE_RUNNING 0x100000u

/* Values written by kxTavroAcquireStatus. */
#define ACQSTATUS_IDLE 0u
#define ACQSTATUS_LIVE 1u
#define ACQSTATUS_ACQUIRING 4u

/* Indices of the parameter table (CameraRecord.tParam, CameraSlot.aiApplied). */
enum TavroParameterIndex {
  TAVRO_PARAM_BRIGHTNESS = 0,
  TAVRO_PARAM_CONTRAST = 1,
  TAVRO_PARAM_HUE = 2,
  TAVRO_PARAM_SATURATION = 3,
  TAVRO_PARAM_SHARPNESS = 4,
  TAVRO_PARAM_GAMMA = 5,
  TAVRO_PARAM_COLOR_ENABLE = 6,
  TAVRO_PARAM_WHITE_BALANCE = 7,
  TAVRO_PARAM_OFFSET = 8,
  TAVRO_PARAM_GAIN_BOOST = 9,
  TAVRO_PARAM_MASTER_GAIN = 10,
  TAVRO_PARAM_RED_GAIN = 11,
  TAVRO_PARAM_GREEN_GAIN = 12,
  TAVRO_PARAM_BLUE_GAIN = 13,
  TAVRO_PARAM_PIXEL_CLOCK = 14,
  TAVRO_PARAM_EXPOSURE = 15,
  TAVRO_PARAM_MANUAL_FOCUS = 16,
  TAVRO_PARAM_DIGITAL_ZOOM = 17,
  TAVRO_PARAM_THROUGHPUT = 18
};

/* Positions in CameraRecord.aiGeometry. */
enum TavroGeometryIndex {
  TAVRO_GEOMETRY_MIN_LEFT = 0,
  TAVRO_GEOMETRY_MIN_TOP = 1,
  TAVRO_GEOMETRY_MAX_LEFT = 2,
  TAVRO_GEOMETRY_MAX_TOP = 3,
  TAVRO_GEOMETRY_INC_LEFT = 4,
  TAVRO_GEOMETRY_INC_TOP = 5,
  TAVRO_GEOMETRY_MIN_WIDTH = 6,
  TAVRO_GEOMETRY_MIN_HEIGHT = 7,
  TAVRO_GEOMETRY_MAX_WIDTH = 8,
  TAVRO_GEOMETRY_MAX_HEIGHT = 9,
  TAVRO_GEOMETRY_INC_WIDTH = 10,
  TAVRO_GEOMETRY_INC_HEIGHT = 11
};

/* ---- records ---- */

typedef struct CamImage CamImage;

/* Called when an acquisition ends, with its image and the user value given
 * to the acquisition; the result is ignored. */
typedef int32_t (*PFN_TavroAcqFinished)(CamImage* ptCamImage, uint32_t iUserValue);

/* One image format of a camera (92 bytes). */
typedef struct FormatDescriptor {
  uint32_t lFormatId;
  int32_t iWidth;
  int32_t iHeight;
  int32_t iLeft;
  int32_t iTop;
  int32_t iBinning;     /* always 0 */
  int32_t iSubsampling; /* always 0 */
  /* NUL-terminated unless the name fills all 64 bytes */
  char szName[TAVRO_FORMAT_NAME_SIZE];
} FormatDescriptor;

/* One host parameter (92 bytes); all values in host units. */
typedef struct ParameterEntry {
  char szName[TAVRO_PARAM_NAME_SIZE];
  int32_t ySupported;
  int32_t iDefault;
  int32_t iCurrent; /* the host writes the value it wants here */
  int32_t iMinimum;
  int32_t iMaximum;
  int32_t iIncrement;
  int32_t iReserved;
} ParameterEntry;

/* One camera's description (4836 bytes). */
typedef struct CameraRecord {
  char szCamKey[TAVRO_CAM_KEY_SIZE];
  uint8_t abReserved63[1];
  int32_t iNumFormats;
  FormatDescriptor tFormat[TAVRO_MAX_FORMATS];
  uint8_t abReserved3012[4]; /* cleared at setup */
  int32_t iNumParams;
  ParameterEntry tParam[TAVRO_NUM_PARAMS];
  int32_t aiGeometry[TAVRO_GEOMETRY_VALUES];
  int32_t iCamNum;
  int32_t iWidthMax;
  int32_t iHeightMax;
  uint32_t yColour;
  uint32_t yEnabled;
} CameraRecord;

/* One camera's attachment state (160 bytes). */
typedef struct CameraSlot {
  uint32_t yAttached;
  uint32_t yReapply;
  double dExposure;
  double adHostValues[5]; /* 1.0, 0.0, 0.0, 1.0, 4.0 after setup and attach */
  int32_t aiApplied[TAVRO_NUM_PARAMS];
  uint32_t yColour;
  int64_t iHostValue136; /* -1 after setup and attach */
  uint32_t yLive;
  uint8_t abReserved148[4];
  void* pCamera; /* the plug-in's camera object; opaque to the host */
} CameraSlot;

/* The whole camera system (80072 bytes). */
typedef struct SystemRecord {
  uint32_t lMagic;
  uint8_t abReserved4[4];
  int32_t iNumCams;
  uint8_t abReserved12[4];
  uint32_t yLive;
  uint8_t abReserved20[4];
  CamImage* ptLiveImage;
  int32_t iLiveCamNum;
  uint8_t abReserved36[4];
  PFN_TavroAcqFinished pfnAcqFinished;
  uint64_t qwLiveDisplayTag;
  char* pszCamSelection; /* the plug-in's copy; hand the record in with it null */
  int32_t lError;
  int32_t aiCamIndex[TAVRO_MAX_CAMERAS];
  CameraRecord tCam[TAVRO_MAX_CAMERAS];
  uint8_t abReserved77508[4];
  CameraSlot tSlot[TAVRO_MAX_CAMERAS];
} SystemRecord;

/* The host's display object, reached through HostView. */
typedef struct HostDisplay {
  uint8_t abHost0[1632];
  uint64_t qwLiveDisplayTag;
  uint8_t abHost1640[92];
  uint32_t yNewLiveFrame; /* set to 1 after each live frame */
} HostDisplay;

/* The host's view object used by the live display. */
typedef struct HostView {
  uint8_t abHost0[280];
  HostDisplay* ptDisplay;
  uint8_t abHost288[120];
  uint32_t yColourDisplay; /* 1: the live display shows colour */
  uint8_t abHost412[4];
} HostView;

/* The host's camera object. */
typedef struct CameraInfo {
  uint8_t abHost0[8];
  int16_t iCamId; /* index into SystemRecord.aiCamIndex */
  uint8_t abHost10[14];
  uint32_t yColourPlanes;
  uint8_t abHost28[4];
  uint32_t yHwTrigger;
  uint8_t abHost36[412];
  HostView* ptHostView;
} CameraInfo;

/* Descriptor of one 8-bit image plane. */
typedef struct PlaneInfo {
  uint8_t abHost0[48];
  uint8_t* pBits;
  uint8_t abHost56[8];
  int32_t iWidth;
  int32_t iHeight;
  int32_t iPitch; /* bytes per row */
  uint8_t abHost76[12];
  int32_t iFirstRow; /* the image starts at pBits + iPitch * iFirstRow */
  uint8_t abHost92[4];
} PlaneInfo;

/* The host's 32-bit live display memory. */
typedef struct LiveBuffer {
  uint8_t abHost0[8];
  uint32_t* plPixels; /* 0x00RRGGBB */
  uint8_t abHost16[16];
  int32_t iStride; /* in pixels */
  uint8_t abHost36[4];
} LiveBuffer;

/* One host image: where a frame must go. */
struct CamImage {
  uint32_t lMagic;
  uint8_t abHost4[12];
  CameraInfo* ptCamera;
  PlaneInfo* ptPlane; /* primary (grey or luminance) plane */
  uint8_t abHost32[16];
  uint64_t qwColourDisplay; /* non-zero for the colour live display */
  /* images of which only ptPlane is used */
  CamImage* ptRed;
  CamImage* ptGreen;
  CamImage* ptBlue;
  LiveBuffer* ptLiveBuffer;
  uint8_t abHost88[176];
  uint32_t yAoi;
  int32_t iAoiLeft;
  int32_t iAoiTop;
  int32_t iAoiRight;  /* exclusive */
  int32_t iAoiBottom; /* exclusive */
  uint8_t abHost284[4];
};

/* ---- layout checks ---- */

TAVRO_ASSERT_OFFSET(FormatDescriptor, lFormatId, 0);
TAVRO_ASSERT_OFFSET(FormatDescriptor, iWidth, 4);
TAVRO_ASSERT_OFFSET(FormatDescriptor, iHeight, 8);
TAVRO_ASSERT_OFFSET(FormatDescriptor, iLeft, 12);
TAVRO_ASSERT_OFFSET(FormatDescriptor, iTop, 16);
TAVRO_ASSERT_OFFSET(FormatDescriptor, iBinning, 20);
TAVRO_ASSERT_OFFSET(FormatDescriptor, iSubsampling, 24);
TAVRO_ASSERT_OFFSET(FormatDescriptor, szName, 28);
TAVRO_ASSERT_SIZE(FormatDescriptor, 92);

TAVRO_ASSERT_OFFSET(ParameterEntry, szName, 0);
TAVRO_ASSERT_OFFSET(ParameterEntry, ySupported, 64);
TAVRO_ASSERT_OFFSET(ParameterEntry, iDefault, 68);
TAVRO_ASSERT_OFFSET(ParameterEntry, iCurrent, 72);
TAVRO_ASSERT_OFFSET(ParameterEntry, iMinimum, 76);
TAVRO_ASSERT_OFFSET(ParameterEntry, iMaximum, 80);
TAVRO_ASSERT_OFFSET(ParameterEntry, iIncrement, 84);
TAVRO_ASSERT_OFFSET(ParameterEntry, iReserved, 88);
TAVRO_ASSERT_SIZE(ParameterEntry, 92);

TAVRO_ASSERT_OFFSET(CameraRecord, szCamKey, 0);
TAVRO_ASSERT_OFFSET(CameraRecord, iNumFormats, 64);
TAVRO_ASSERT_OFFSET(CameraRecord, tFormat, 68);
TAVRO_ASSERT_OFFSET(CameraRecord, abReserved3012, 3012);
TAVRO_ASSERT_OFFSET(CameraRecord, iNumParams, 3016);
TAVRO_ASSERT_OFFSET(CameraRecord, tParam, 3020);
TAVRO_ASSERT_OFFSET(CameraRecord, aiGeometry, 4768);
TAVRO_ASSERT_OFFSET(CameraRecord, iCamNum, 4816);
TAVRO_ASSERT_OFFSET(CameraRecord, iWidthMax, 4820);
TAVRO_ASSERT_OFFSET(CameraRecord, iHeightMax, 4824);
TAVRO_ASSERT_OFFSET(CameraRecord, yColour, 4828);
TAVRO_ASSERT_OFFSET(CameraRecord, yEnabled, 4832);
TAVRO_ASSERT_SIZE(CameraRecord, 4836);

TAVRO_ASSERT_OFFSET(CameraSlot, yAttached, 0);
TAVRO_ASSERT_OFFSET(CameraSlot, yReapply, 4);
TAVRO_ASSERT_OFFSET(CameraSlot, dExposure, 8);
TAVRO_ASSERT_OFFSET(CameraSlot, adHostValues, 16);
TAVRO_ASSERT_OFFSET(CameraSlot, aiApplied, 56);
TAVRO_ASSERT_OFFSET(CameraSlot, yColour, 132);
TAVRO_ASSERT_OFFSET(CameraSlot, iHostValue136, 136);
TAVRO_ASSERT_OFFSET(CameraSlot, yLive, 144);
TAVRO_ASSERT_OFFSET(CameraSlot, pCamera, 152);
TAVRO_ASSERT_SIZE(CameraSlot, 160);

TAVRO_ASSERT_OFFSET(SystemRecord, lMagic, 0);
TAVRO_ASSERT_OFFSET(SystemRecord, iNumCams, 8);
TAVRO_ASSERT_OFFSET(SystemRecord, yLive, 16);
TAVRO_ASSERT_OFFSET(SystemRecord, ptLiveImage, 24);
TAVRO_ASSERT_OFFSET(SystemRecord, iLiveCamNum, 32);
TAVRO_ASSERT_OFFSET(SystemRecord, pfnAcqFinished, 40);
TAVRO_ASSERT_OFFSET(SystemRecord, qwLiveDisplayTag, 48);
TAVRO_ASSERT_OFFSET(SystemRecord, pszCamSelection, 56);
TAVRO_ASSERT_OFFSET(SystemRecord, lError, 64);
TAVRO_ASSERT_OFFSET(SystemRecord, aiCamIndex, 68);
TAVRO_ASSERT_OFFSET(SystemRecord, tCam, 132);
TAVRO_ASSERT_OFFSET(SystemRecord, abReserved77508, 77508);
TAVRO_ASSERT_OFFSET(SystemRecord, tSlot, 77512);
TAVRO_ASSERT_SIZE(SystemRecord, 77512 + 16 * 160);

TAVRO_ASSERT_OFFSET(HostDisplay, qwLiveDisplayTag, 1632);
TAVRO_ASSERT_OFFSET(HostDisplay, yNewLiveFrame, 1732);
TAVRO_ASSERT_OFFSET(HostView, ptDisplay, 280);
TAVRO_ASSERT_OFFSET(HostView, yColourDisplay, 408);

TAVRO_ASSERT_OFFSET(CameraInfo, iCamId, 8);
TAVRO_ASSERT_OFFSET(CameraInfo, yColourPlanes, 24);
TAVRO_ASSERT_OFFSET(CameraInfo, yHwTrigger, 32);
TAVRO_ASSERT_OFFSET(CameraInfo, ptHostView, 448);

TAVRO_ASSERT_OFFSET(PlaneInfo, pBits, 48);
TAVRO_ASSERT_OFFSET(PlaneInfo, iWidth, 64);
TAVRO_ASSERT_OFFSET(PlaneInfo, iHeight, 68);
TAVRO_ASSERT_OFFSET(PlaneInfo, iPitch, 72);
TAVRO_ASSERT_OFFSET(PlaneInfo, iFirstRow, 88);

TAVRO_ASSERT_OFFSET(LiveBuffer, plPixels, 8);
TAVRO_ASSERT_OFFSET(LiveBuffer, iStride, 32);

TAVRO_ASSERT_OFFSET(CamImage, lMagic, 0);
TAVRO_ASSERT_OFFSET(CamImage, ptCamera, 16);
TAVRO_ASSERT_OFFSET(CamImage, ptPlane, 24);
TAVRO_ASSERT_OFFSET(CamImage, qwColourDisplay, 48);
TAVRO_ASSERT_OFFSET(CamImage, ptRed, 56);
TAVRO_ASSERT_OFFSET(CamImage, ptGreen, 64);
TAVRO_ASSERT_OFFSET(CamImage, ptBlue, 72);
TAVRO_ASSERT_OFFSET(CamImage, ptLiveBuffer, 80);
TAVRO_ASSERT_OFFSET(CamImage, yAoi, 264);
TAVRO_ASSERT_OFFSET(CamImage, iAoiLeft, 268);
TAVRO_ASSERT_OFFSET(CamImage, iAoiTop, 272);
TAVRO_ASSERT_OFFSET(CamImage, iAoiRight, 276);
TAVRO_ASSERT_OFFSET(CamImage, iAoiBottom, 280);

/* ---- entry points ----
 * Every function that takes a status word sets it to 0 first. Results are
 * 0 on success and -1 on failure; _kxTavroOrder always answers 0. */

/* Opens up to 16 cameras (all usable ones, or those whose key occurs in
 * pszSelection when that is not empty) and fills the record. */
TAVRO_API int32_t kxTavroSetup(uint64_t qwUnused, const char* pszSelection, int* piWidthMax,
                               int* piHeightMax, SystemRecord* ptSystem);
/* One image; with yWait set it waits for the frame before returning. */
TAVRO_API int32_t kxTavroAcquire(CamImage* ptCamImage, uint32_t yWait, uint32_t iUserValue,
                                 uint32_t* plStatus, SystemRecord* ptSystem);
/* yStart non-zero starts live acquisition into the image, 0 stops it. */
TAVRO_API int32_t kxTavroLiveAcquire(CamImage* ptCamImage, uint32_t yStart, uint32_t iUserValue,
                                     uint32_t* plStatus, SystemRecord* ptSystem);
/* Waits for the acquisition started for the image; the two values are not used. */
TAVRO_API int32_t kxTavroWaitAcquire(CamImage* ptCamImage, uint32_t lValue1, uint32_t lValue2,
                                     uint32_t* plStatus, SystemRecord* ptSystem);
/* Writes ACQSTATUS_IDLE, ACQSTATUS_LIVE or ACQSTATUS_ACQUIRING; never waits. */
TAVRO_API int32_t kxTavroAcquireStatus(CamImage* ptCamImage, uint32_t* plAcqStatus,
                                       uint32_t* plStatus, SystemRecord* ptSystem);
/* Brings the attached cameras and aiCamIndex in line with 16 wanted records
 * (of each only szCamKey, iCamNum and yEnabled are read). */
TAVRO_API int32_t _kxTavroOrder(SystemRecord* ptSystem, const CameraRecord* ptWanted);
TAVRO_API int32_t _kxAttachTavroCamera(SystemRecord* ptSystem, int32_t iCamNum);
TAVRO_API int32_t _kxDetachTavroCamera(SystemRecord* ptSystem, int32_t iCamNum);
TAVRO_API int32_t kxTavroTearDown(SystemRecord* ptSystem);

/* Function-pointer types for hosts that resolve the entry points with
 * dlsym (the leading underscore of a name is dropped). */
typedef int32_t (*PFN_kxTavroSetup)(uint64_t, const char*, int*, int*, SystemRecord*);
typedef int32_t (*PFN_kxTavroAcquire)(CamImage*, uint32_t, uint32_t, uint32_t*, SystemRecord*);
typedef int32_t (*PFN_kxTavroLiveAcquire)(CamImage*, uint32_t, uint32_t, uint32_t*, SystemRecord*);
typedef int32_t (*PFN_kxTavroWaitAcquire)(CamImage*, uint32_t, uint32_t, uint32_t*, SystemRecord*);
typedef int32_t (*PFN_kxTavroAcquireStatus)(CamImage*, uint32_t*, uint32_t*, SystemRecord*);
typedef int32_t (*PFN_kxTavroOrder)(SystemRecord*, const CameraRecord*);
typedef int32_t (*PFN_kxAttachTavroCamera)(SystemRecord*, int32_t);
typedef int32_t (*PFN_kxDetachTavroCamera)(SystemRecord*, int32_t);
typedef int32_t (*PFN_kxTavroTearDown)(SystemRecord*);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* TAVRO_TAVRO_HOST_H */
