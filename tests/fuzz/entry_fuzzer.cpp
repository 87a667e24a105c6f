// libFuzzer harness: drives libtavro.so as a hostile but plausible host does.
//
// The plug-in is loaded and set up once per process on three small simulated
// cameras. Each input is a set of host images (geometry, flags, null
// pointers and AOIs taken from the input) followed by a sequence of entry
// point calls, host record changes and simulator faults. After every call,
// and while live acquisition runs, the harness checks:
//  - no byte changed outside what the host described: guard bytes around
//    every record and plane, and every host record except the display's
//    new-frame flag equal to the harness's own copy;
//  - results, status words and status values are documented ones, and the
//    finished callback comes on the calling thread with one of the images;
//  - the system record stays consistent: magic, camera numbers, camera ids,
//    the live fields and the slots' live flags;
//  - no call outlasts the documented time limits (a watchdog aborts).
// Stats (calls, live starts, acquisitions) go to standard error every ten
// seconds and at exit.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "guarded_block.h"
#include "host/plugin.h"
#include "oxel_sim.h"
#include "tavro/tavro_host.h"

namespace tavro::fuzz {
namespace {

// ---- the simulated cameras ----

struct FuzzCamera {
  const char* id;
  const char* key;
};
constexpr std::array<FuzzCamera, 3> kCameras{
    {{"FZ-C-01", "FZ-C-Left"}, {"FZ-M-02", "FZ-M"}, {"FZ-S-03", "FZ-S"}}};
constexpr int kNumCameras = static_cast<int>(kCameras.size());

// Small sensors keep each frame cheap. Frames arrive as soon as they are
// triggered, so that only injected faults wait.
const char* const kProducer = R"({
  "system": {"id": "FuzzSystem", "interfaces": [{"id": "FuzzBus", "cameras": [
    {"id": "FZ-C-01", "model": "FZ-C", "userDefinedName": "Left", "instantFrames": true,
     "sensor": {"width": 32, "height": 16}, "pixelFormats": ["BGR8", "Mono8"],
     "aoi": {"offsetXIncrement": 8, "offsetYIncrement": 2, "widthIncrement": 8,
             "heightIncrement": 2, "widthMinimum": 16, "heightMinimum": 2}},
    {"id": "FZ-M-02", "model": "FZ-M", "instantFrames": true, "sensor": {"width": 24, "height": 12},
     "aoi": {"offsetXIncrement": 4, "offsetYIncrement": 2, "widthIncrement": 4,
             "heightIncrement": 2, "offsetRule": "strict"},
     "stream": {"minBufferCount": 4, "definesPayloadSize": false}},
    {"id": "FZ-S-03", "model": "FZ-S", "instantFrames": true, "sensor": {"width": 16, "height": 8}}
  ]}]}})";

const char* const kFeatures[] = {"ExposureTime",
                                 "Gain",
                                 "BlackLevel",
                                 "OffsetX",
                                 "OffsetY",
                                 "Width",
                                 "Height",
                                 "PixelFormat",
                                 "TriggerMode",
                                 "TriggerSource",
                                 "TriggerActivation",
                                 "TriggerSelector",
                                 "TriggerSoftware",
                                 "AcquisitionStart",
                                 "AcquisitionStop",
                                 "AcquisitionAbort",
                                 "TLParamsLocked",
                                 "AcquisitionMode",
                                 "UserSetLoad",
                                 "UserSetSelector",
                                 "DeviceLinkThroughputLimit",
                                 "AcquisitionFrameRate",
                                 "BalanceWhiteAuto",
                                 "GainSelector"};
constexpr int kNumFeatures = static_cast<int>(sizeof kFeatures / sizeof kFeatures[0]);

// The longest a single call may take: live stop (5 s), a pending frame and
// the call's own frame (3 s each), and camera objects closed on the way.
constexpr auto kCallLimit = std::chrono::seconds(30);
// Faults that end in a 3 s frame time-out (a dropped frame, an unplugged
// camera, a hardware trigger nobody pulses) are let through at most once in
// this many inputs (about every 15 s at the fuzzer's usual pace), so that
// time-outs stay a small part of the run.
constexpr uint64_t kSlowFaultInputs = 1000;

// ---- statistics ----

enum Call { kSetup, kAcquire, kLive, kWait, kStatus, kOrder, kAttach, kDetach, kTearDown, kCalls };
const char* const kCallNames[kCalls] = {"setup", "acquire", "live",   "wait",    "status",
                                        "order", "attach",  "detach", "teardown"};

struct Stats {
  std::array<uint64_t, kCalls> calls{};
  std::array<double, kCalls> seconds{};
  uint64_t inputs = 0;
  uint64_t liveStarted = 0;     // live starts answered 0
  uint64_t liveFrames = 0;      // new-frame flags seen
  uint64_t acquired = 0;        // acquire (waiting) or wait answered 0
  uint64_t acquireStarted = 0;  // acquire without waiting answered 0
  uint64_t callbacks = 0;
  uint64_t faults = 0;
  uint64_t drops = 0;
  uint64_t fullResets = 0;
  uint64_t slowCalls = 0;  // calls that took over a second
  double liveSeconds = 0;  // spent letting live runs deliver between calls
  uint64_t Total() const {
    uint64_t total = 0;
    for (uint64_t c : calls) total += c;
    return total;
  }
};
Stats stats;

void PrintStats(const char* when) {
  std::fprintf(stderr,
               "tavro-fuzz %s: inputs %llu calls %llu (setup %llu acquire %llu live %llu wait %llu "
               "status %llu order %llu attach %llu detach %llu teardown %llu) live starts %llu "
               "live frames %llu acquisitions %llu started %llu callbacks %llu faults %llu drops "
               "%llu full resets %llu\n",
               when, (unsigned long long)stats.inputs, (unsigned long long)stats.Total(),
               (unsigned long long)stats.calls[kSetup], (unsigned long long)stats.calls[kAcquire],
               (unsigned long long)stats.calls[kLive], (unsigned long long)stats.calls[kWait],
               (unsigned long long)stats.calls[kStatus], (unsigned long long)stats.calls[kOrder],
               (unsigned long long)stats.calls[kAttach], (unsigned long long)stats.calls[kDetach],
               (unsigned long long)stats.calls[kTearDown], (unsigned long long)stats.liveStarted,
               (unsigned long long)stats.liveFrames, (unsigned long long)stats.acquired,
               (unsigned long long)stats.acquireStarted, (unsigned long long)stats.callbacks,
               (unsigned long long)stats.faults, (unsigned long long)stats.drops,
               (unsigned long long)stats.fullResets);
  std::fprintf(stderr, "tavro-fuzz calls over 1 s: %llu; seconds letting live run %.1f; in calls:",
               (unsigned long long)stats.slowCalls, stats.liveSeconds);
  for (int c = 0; c < kCalls; ++c)
    std::fprintf(stderr, " %s %.1f", kCallNames[c], stats.seconds[c]);
  std::fprintf(stderr, "\n");
}

[[noreturn]] void Finding(const char* what, const std::string& detail = "") {
  std::fprintf(stderr, "tavro-fuzz FINDING: %s %s\n", what, detail.c_str());
  PrintStats("at finding");
  std::abort();
}

// ---- watchdog ----

std::atomic<int64_t> callDeadline{0};  // steady-clock ticks; 0: no call running
std::atomic<int> callRunning{-1};

int64_t Now() {
  return std::chrono::steady_clock::now().time_since_epoch().count();
}

void Watchdog() {
  auto lastReport = std::chrono::steady_clock::now();
  for (;;) {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    const int64_t deadline = callDeadline.load();
    if (deadline != 0 && Now() > deadline) {
      Finding("call outlasted its time limit:", kCallNames[callRunning.load()]);
    }
    if (std::chrono::steady_clock::now() - lastReport > std::chrono::seconds(10)) {
      lastReport = std::chrono::steady_clock::now();
      PrintStats("progress");
    }
  }
}

// ---- input ----

class Reader {
 public:
  Reader(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  bool Empty() const { return at_ >= size_; }
  uint8_t Byte() { return at_ < size_ ? data_[at_++] : 0; }
  int8_t Signed() { return static_cast<int8_t>(Byte()); }
  int32_t Int() {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value |= uint32_t{Byte()} << (8 * i);
    return static_cast<int32_t>(value);
  }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t at_ = 0;
};

// Camera numbers and ids as a host might hand them in: mostly real ones.
int32_t NumberFrom(uint8_t byte) {
  static constexpr int32_t kNumbers[] = {0, 1, 2, 0, 1, 2, 3, 15, 16, -1, INT32_MIN, INT32_MAX};
  return kNumbers[byte % (sizeof kNumbers / sizeof kNumbers[0])];
}

// ---- host images ----

// A plane record and its pixels, sized exactly as the host guide asks for
// the geometry given: `pitch` x (`rows` + first row) bytes, nothing when the
// geometry describes no memory.
struct Plane {
  GuardedBlock record{sizeof(PlaneInfo)};
  GuardedBlock pixels;
  PlaneInfo& info() { return *record.As<PlaneInfo>(); }
};

size_t PlaneBytes(int32_t pitch, int32_t firstRow, int32_t height) {
  if (pitch <= 0 || firstRow < 0 || height <= 0) return 0;
  return static_cast<size_t>(pitch) * static_cast<size_t>(firstRow + height);
}

constexpr uint8_t kHasDisplay = 0x0C;  // view and display both present

struct Image {
  GuardedBlock camImage{sizeof(CamImage)};
  GuardedBlock camera{sizeof(CameraInfo)};
  GuardedBlock view{sizeof(HostView)};
  GuardedBlock display{sizeof(HostDisplay)};
  GuardedBlock live{sizeof(LiveBuffer)};
  GuardedBlock livePixels;
  std::array<GuardedBlock, 3> colourImages{GuardedBlock(sizeof(CamImage)),
                                           GuardedBlock(sizeof(CamImage)),
                                           GuardedBlock(sizeof(CamImage))};
  std::array<Plane, 4> planes;  // grey, red, green, blue
  // What every record must still hold after a call (the new-frame flag aside).
  std::vector<std::vector<uint8_t>> expected;
  uint8_t flags = 0;  // the input's flags byte, kHas... below

  CamImage& image() { return *camImage.As<CamImage>(); }
  CameraInfo& info() { return *camera.As<CameraInfo>(); }
  HostDisplay& hostDisplay() { return *display.As<HostDisplay>(); }
  // Fixed arrays rather than vectors: these are walked after every call.
  static constexpr size_t kRecords = 12;
  static constexpr size_t kDisplayRecord = 3;
  std::array<GuardedBlock*, kRecords> Records() {
    return {&camImage,
            &camera,
            &view,
            &display,
            &live,
            &colourImages[0],
            &colourImages[1],
            &colourImages[2],
            &planes[0].record,
            &planes[1].record,
            &planes[2].record,
            &planes[3].record};
  }
  std::array<GuardedBlock*, kRecords + 5> Blocks() {
    std::array<GuardedBlock*, kRecords + 5> blocks{};
    const auto records = Records();
    std::copy(records.begin(), records.end(), blocks.begin());
    blocks[kRecords] = &livePixels;
    for (size_t k = 0; k < planes.size(); ++k) blocks[kRecords + 1 + k] = &planes[k].pixels;
    return blocks;
  }
  void Remember() {
    expected.clear();
    for (GuardedBlock* record : Records()) {
      expected.emplace_back(record->data(), record->data() + record->size());
    }
  }
  uint32_t NewFrameFlag() {
    return std::atomic_ref<uint32_t>(hostDisplay().yNewLiveFrame).load(std::memory_order_acquire);
  }
  void ClearNewFrameFlag() {
    std::atomic_ref<uint32_t>(hostDisplay().yNewLiveFrame).store(0, std::memory_order_relaxed);
  }

  void Build(Reader& in);
};

void FillPlane(Plane& plane, int32_t width, int32_t height, int32_t pitch, int32_t firstRow,
               int32_t memoryFirstRow, bool nullBits) {
  plane.pixels.Reset(PlaneBytes(pitch, memoryFirstRow, height));
  plane.record.Reset(sizeof(PlaneInfo));
  PlaneInfo& info = plane.info();
  info.pBits = nullBits ? nullptr : plane.pixels.data();
  info.iWidth = width;
  info.iHeight = height;
  info.iPitch = pitch;
  info.iFirstRow = firstRow;
}

// The live display's pixels: `stride` x (rows + the grey plane's first row)
// when the stride is positive, nothing otherwise.
size_t LivePixels(int32_t stride, int32_t firstRow, int32_t rows) {
  return PlaneBytes(stride, firstRow, rows);
}

void Image::Build(Reader& in) {
  for (GuardedBlock* record : Records()) record->Reset(record->size());
  const uint8_t id = in.Byte();
  flags = in.Byte();
  const uint8_t nulls = in.Byte();
  const int32_t width = in.Signed();
  const int32_t height = in.Signed();
  const uint8_t pitchByte = in.Byte();
  const int32_t pitch =
      (pitchByte & 0x80) ? static_cast<int8_t>(pitchByte << 1) : width + (pitchByte & 0x1F) - 4;
  const int32_t firstRow = in.Signed() >> 4;  // -8 to 7
  const uint8_t colourShape = in.Byte();
  const uint8_t strideByte = in.Byte();
  const uint8_t aoi = in.Byte();

  CamImage& im = image();
  im.lMagic = (flags & 0x80) ? TAVRO_IMAGE_MAGIC ^ 1 : TAVRO_IMAGE_MAGIC;
  im.ptCamera = (nulls & 0x04) ? nullptr : &info();
  info().iCamId = static_cast<int16_t>(NumberFrom(id));
  info().yColourPlanes = flags & 0x01;
  info().yHwTrigger = (flags & 0x40) ? 1 : 0;
  info().ptHostView = (flags & 0x04) ? view.As<HostView>() : nullptr;
  view.As<HostView>()->ptDisplay = (flags & 0x08) ? display.As<HostDisplay>() : nullptr;
  view.As<HostView>()->yColourDisplay = (flags & 0x10) ? 1 : 0;
  hostDisplay().qwLiveDisplayTag = 0x1122334455667788;
  hostDisplay().yNewLiveFrame = 0;
  im.qwColourDisplay = (flags & 0x20) ? 1 : 0;

  FillPlane(planes[0], width, height, pitch, firstRow, firstRow, nulls & 0x01);
  im.ptPlane = (nulls & 0x02) ? nullptr : &planes[0].info();
  // Colour planes: the grey plane's shape unless the input gives them their
  // own; they start at the grey plane's first row.
  const bool ownShape = colourShape & 0x80;
  for (int k = 1; k < 4; ++k) {
    const int32_t w = ownShape ? width + ((colourShape >> 0) & 3) - 2 : width;
    const int32_t h = ownShape ? height + ((colourShape >> 2) & 3) - 2 : height;
    const int32_t p = ownShape ? pitch + ((colourShape >> 4) & 3) - 1 : pitch;
    FillPlane(planes[k], w, h, p, firstRow, firstRow, (nulls & 0x10) && k == 2);
    CamImage& colour = *colourImages[k - 1].As<CamImage>();
    colour.ptPlane = &planes[k].info();
  }
  const bool colourImagesPresent = !(nulls & 0x08);
  im.ptRed = colourImagesPresent ? colourImages[0].As<CamImage>() : nullptr;
  im.ptGreen = colourImagesPresent ? colourImages[1].As<CamImage>() : nullptr;
  im.ptBlue = colourImagesPresent ? colourImages[2].As<CamImage>() : nullptr;

  LiveBuffer& buffer = *live.As<LiveBuffer>();
  const int32_t stride =
      (strideByte & 0x80) ? static_cast<int8_t>(strideByte << 1) : width + (strideByte & 0x0F) - 2;
  livePixels.Reset(LivePixels(stride, firstRow, height) * sizeof(uint32_t));
  buffer.plPixels = (nulls & 0x20) ? nullptr : livePixels.As<uint32_t>();
  buffer.iStride = stride;
  im.ptLiveBuffer = (flags & 0x02) ? &buffer : nullptr;

  im.yAoi = aoi & 1;
  if (im.yAoi != 0) {
    im.iAoiLeft = in.Signed();
    im.iAoiTop = in.Signed();
    im.iAoiRight = in.Signed();
    im.iAoiBottom = in.Signed();
  }
  Remember();
}

// ---- the host ----

struct Host {
  const tavro_host::Plugin* plugin = nullptr;
  GuardedBlock systemBlock{sizeof(SystemRecord), 0};
  SystemRecord* system = systemBlock.As<SystemRecord>();
  std::array<Image, 3> images;
  std::thread::id hostThread;
  bool setUp = false;     // the record holds a system of all three cameras
  bool tampered = false;  // this input wrote plug-in fields of the record
  bool reset = false;     // a setup or teardown of the input changed the cameras
  // The host itself may have hidden a running live acquisition from the
  // plug-in: it changed the live image's camera id.
  bool hidLive = false;
  std::array<int32_t, TAVRO_MAX_CAMERAS> cameraIndex{};  // aiCamIndex as last set
  uint64_t lastSlowFault = 0;                            // the input that had the last one
  bool unpulsedTrigger = false;  // this input's hardware triggers get no edge
  std::atomic<bool> pulsing{false};
  // Cameras this input asked for a frame that may not have been reported.
  std::array<bool, TAVRO_MAX_CAMERAS> armed{};

  // Whether a fault that costs a time-out may happen now.
  // Counted in inputs, not in time, so that the same inputs take the same
  // path however fast the machine runs them.
  bool SlowFaultAllowed() {
    if (lastSlowFault != 0 && stats.inputs - lastSlowFault < kSlowFaultInputs) return false;
    lastSlowFault = stats.inputs;
    ++stats.drops;
    return true;
  }

  Image* ImageOf(const CamImage* image) {
    for (Image& candidate : images) {
      if (&candidate.image() == image) return &candidate;
    }
    return nullptr;
  }
};
Host host;

void Pulser() {
  for (;;) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (!host.pulsing) continue;
    for (const FuzzCamera& camera : kCameras) OxelSim_PulseLine0(camera.id);
  }
}

int32_t Finished(CamImage* image, uint32_t) {
  ++stats.callbacks;
  if (std::this_thread::get_id() != host.hostThread)
    Finding("finished callback off the host thread");
  if (host.ImageOf(image) == nullptr)
    Finding("finished callback with an image the host never gave");
  return 0;
}

std::string Describe(Image& image) {
  const CamImage& im = image.image();
  std::string text = "camera id " + std::to_string(image.info().iCamId) + " colour planes " +
                     std::to_string(image.info().yColourPlanes) + " hw " +
                     std::to_string(image.info().yHwTrigger) + " aoi " + std::to_string(im.yAoi) +
                     " (" + std::to_string(im.iAoiLeft) + "," + std::to_string(im.iAoiTop) + "," +
                     std::to_string(im.iAoiRight) + "," + std::to_string(im.iAoiBottom) + ")";
  for (Plane& plane : image.planes) {
    const PlaneInfo& info = plane.info();
    text += " plane " + std::to_string(info.iWidth) + "x" + std::to_string(info.iHeight) +
            " pitch " + std::to_string(info.iPitch) + " first " + std::to_string(info.iFirstRow) +
            " bytes " + std::to_string(plane.pixels.size()) + (info.pBits ? "" : " null");
  }
  const LiveBuffer& live = *image.live.As<LiveBuffer>();
  text += " stride " + std::to_string(live.iStride) + " live bytes " +
          std::to_string(image.livePixels.size());
  return text;
}

void CheckMemory() {
  ptrdiff_t at = 0;
  if (!host.systemBlock.Intact(&at))
    Finding("write beside the system record at", std::to_string(at));
  for (size_t i = 0; i < host.images.size(); ++i) {
    Image& image = host.images[i];
    const auto blocks = image.Blocks();
    for (size_t b = 0; b < blocks.size(); ++b) {
      if (!blocks[b]->Intact(&at)) {
        Finding("write outside host memory:", "image " + std::to_string(i) + " block " +
                                                  std::to_string(b) + " offset " +
                                                  std::to_string(at) + ": " + Describe(image));
      }
    }
    const auto records = image.Records();
    for (size_t r = 0; r < image.expected.size(); ++r) {
      const uint8_t* now = records[r]->data();
      const uint8_t* expected = image.expected[r].data();
      const size_t size = records[r]->size();
      bool same = size == image.expected[r].size();
      if (same && r == Image::kDisplayRecord) {  // the display: its flag is the plug-in's to set
        constexpr size_t flag = offsetof(HostDisplay, yNewLiveFrame);
        same = std::memcmp(now, expected, flag) == 0 &&
               std::memcmp(now + flag + 4, expected + flag + 4, size - flag - 4) == 0;
      } else if (same) {
        same = std::memcmp(now, expected, size) == 0;
      }
      if (!same) {
        Finding("plug-in changed a host record:",
                "image " + std::to_string(i) + " record " + std::to_string(r));
      }
    }
  }
}

void CheckRecord(Call call) {
  const SystemRecord& s = *host.system;
  const char* after = kCallNames[call];
  auto fail = [&](const char* what) { Finding(what, std::string("after ") + after); };
  if (host.tampered) return;
  // Setup and order are the calls that set the host's camera ids.
  // An attach, also the one inside an acquisition, maps camera n's id to n.
  for (int n = 0; n < TAVRO_MAX_CAMERAS; ++n) {
    const bool attachMark = (call == kAttach || call == kAcquire) && s.aiCamIndex[n] == n;
    if (call == kSetup || call == kOrder || attachMark) host.cameraIndex[n] = s.aiCamIndex[n];
  }
  if (s.lMagic != TAVRO_SYSTEM_MAGIC) {
    if (host.setUp) fail("magic lost");
    return;
  }
  if (s.iNumCams < 0 || s.iNumCams > TAVRO_MAX_CAMERAS) fail("camera count out of range");
  if (s.yLive > 1) fail("yLive neither 0 nor 1");
  int liveSlots = 0;
  for (int n = 0; n < TAVRO_MAX_CAMERAS; ++n) {
    const CameraSlot& slot = s.tSlot[n];
    if (s.aiCamIndex[n] != host.cameraIndex[n]) fail("aiCamIndex changed");
    if (slot.yLive > 1 || slot.yAttached > 1) fail("slot flag neither 0 nor 1");
    if (slot.yLive != 0) ++liveSlots;
    if (slot.yLive != 0 && slot.yAttached == 0) fail("a detached slot is live");
    if (n < s.iNumCams && s.tCam[n].iCamNum != n) fail("camera number changed");
    if ((slot.pCamera != nullptr) != (slot.yAttached != 0)) fail("camera object without attach");
  }
  if (liveSlots > 1) fail("more than one live slot");
  if (s.yLive != 0) {
    if (host.ImageOf(s.ptLiveImage) == nullptr) fail("live image is not a host image");
    if (s.iLiveCamNum < 0 || s.iLiveCamNum >= s.iNumCams) fail("live camera number out of range");
  }
  if (liveSlots == 1 && s.yLive == 0 && !host.hidLive) fail("a slot is live but the record is not");
}

constexpr uint32_t kDocumentedBits = ACQERR_NO_IMAGE | ACQERR_CAMERA_OP | ACQERR_NO_SYSTEM |
                                     ACQERR_WAIT_FAILED | ACQERR_WAIT_TIMEOUT | ACQERR_NO_CAMERA |
                                     ACQERR_NOT_ACQUIRING | ACQERR_LIVE_RUNNING;

// TAVRO_FUZZ_TRACE set: every call and its result on standard error.
const bool trace = std::getenv("TAVRO_FUZZ_TRACE") != nullptr;

// The input being run, kept for TAVRO_FUZZ_SLOW_DIR: inputs with a call
// over a second are written there.
std::vector<uint8_t> currentInput;

// Runs one entry point call under the watchdog and checks what it left.
template <typename Work>
int32_t Run(Call call, Work work) {
  ++stats.calls[call];
  callRunning = call;
  callDeadline =
      Now() + std::chrono::duration_cast<std::chrono::steady_clock::duration>(kCallLimit).count();
  const int64_t started = Now();
  // The line 0 edge of a hardware trigger comes from outside while the host
  // waits (an order waits for pending images too), as a real trigger source
  // would give it.
  host.pulsing = (call == kAcquire || call == kWait || call == kOrder) && !host.unpulsedTrigger;
  const int32_t result = work();
  host.pulsing = false;
  const double took =
      std::chrono::duration<double>(std::chrono::steady_clock::duration(Now() - started)).count();
  stats.seconds[call] += took;
  if (took > 1.0) {
    ++stats.slowCalls;
    if (const char* dir = std::getenv("TAVRO_FUZZ_SLOW_DIR")) {
      std::ofstream(std::string(dir) + "/slow-" + std::to_string(stats.slowCalls), std::ios::binary)
          .write(reinterpret_cast<const char*>(currentInput.data()),
                 static_cast<std::streamsize>(currentInput.size()));
    }
  }
  callDeadline = 0;
  if (trace) {
    std::fprintf(stderr, "tavro-fuzz call %s -> %d (yLive %u, live camera %d) %.1f ms\n",
                 kCallNames[call], result, host.system->yLive, host.system->iLiveCamNum,
                 took * 1000);
  }
  if (result != 0 && result != -1) Finding("result neither 0 nor -1 from", kCallNames[call]);
  CheckMemory();
  CheckRecord(call);
  return result;
}

void CheckStatus(Call call, int32_t result, uint32_t status) {
  if ((status & ~kDocumentedBits) != 0) Finding("undocumented status bits from", kCallNames[call]);
  if (result == 0 && status != 0 && (call == kLive || call == kStatus)) {
    Finding("success with status bits from", kCallNames[call]);
  }
}

int32_t Setup(const char* selection) {
  int widest = 0, highest = 0;
  // A failed setup leaves the magic 0; the record is checked as such.
  host.setUp = false;
  const int32_t result =
      Run(kSetup, [&] { return host.plugin->setup(0, selection, &widest, &highest, host.system); });
  host.setUp = result == 0;
  return result;
}

void TearDown() {
  host.setUp = false;
  Run(kTearDown, [&] { return host.plugin->tearDown(host.system); });
}

// A host tears down before it lets its record go: the record (the selection
// copy in it included) is freed with this program's globals, before the leak
// check at exit looks for what is still reachable. Registered once the
// plug-in has built its own statics (at the first setup), so that it runs
// before they are destroyed.
void TearDownAtExit() {
  if (host.system->lMagic == TAVRO_SYSTEM_MAGIC || host.system->pszCamSelection != nullptr) {
    TearDown();
  }
}

// A fresh system of all three cameras, as a host's first setup gives.
void FullReset() {
  ++stats.fullResets;
  host.setUp = false;
  if (host.system->lMagic == TAVRO_SYSTEM_MAGIC || host.system->pszCamSelection != nullptr) {
    TearDown();
  }
  OxelSim_ResetAll();
  std::memset(host.system, 0, sizeof(SystemRecord));
  host.system->pfnAcqFinished = Finished;
  host.tampered = false;
  if (Setup(nullptr) != 0 || host.system->iNumCams != kNumCameras) {
    Finding("setup of the fuzz cameras failed");
  }
  host.reset = false;
  static const bool tearDownAtExit = std::atexit(TearDownAtExit) == 0;
  if (!tearDownAtExit) Finding("cannot register the teardown at exit");
}

// ---- calls ----

Image& ImageFrom(uint8_t byte) {
  return host.images[byte % host.images.size()];
}

void Acquire(Reader& in) {
  const uint8_t which = in.Byte();
  Image& image = ImageFrom(which);
  const uint32_t wait = (which >> 2) & 1;
  uint32_t status = 0;
  if (trace) {
    std::fprintf(stderr, "tavro-fuzz acquire image %d wait %u hw %d id %d\n",
                 static_cast<int>(which % host.images.size()), wait, image.info().yHwTrigger,
                 image.info().iCamId);
  }
  const int32_t result = Run(kAcquire, [&] {
    return host.plugin->acquire((which & 0x80) ? nullptr : &image.image(), wait, in.Byte(),
                                (which & 0x40) ? nullptr : &status, host.system);
  });
  CheckStatus(kAcquire, result, status);
  if (result == 0) ++(wait ? stats.acquired : stats.acquireStarted);
  // Whatever did not end with a report may still write into the image.
  if (!(which & 0x80) && !(result == 0 && wait) && image.info().iCamId >= 0 &&
      image.info().iCamId < TAVRO_MAX_CAMERAS && image.image().ptCamera != nullptr) {
    const int32_t number = host.system->aiCamIndex[image.info().iCamId];
    if (number >= 0 && number < TAVRO_MAX_CAMERAS) host.armed[number] = true;
  }
}

void Live(Reader& in, bool start) {
  const uint8_t which = in.Byte();
  Image& image = ImageFrom(which);
  uint32_t status = 0;
  const int32_t result = Run(kLive, [&] {
    return host.plugin->liveAcquire((which & 0x80) ? nullptr : &image.image(), start ? 1 : 0, which,
                                    &status, host.system);
  });
  CheckStatus(kLive, result, status);
  if (start && result == 0) ++stats.liveStarted;
}

void Wait(Reader& in) {
  const uint8_t which = in.Byte();
  Image& image = ImageFrom(which);
  uint32_t status = 0;
  const int32_t result = Run(kWait, [&] {
    return host.plugin->waitAcquire((which & 0x80) ? nullptr : &image.image(), 0, 0, &status,
                                    host.system);
  });
  CheckStatus(kWait, result, status);
  if (result == 0 && !(which & 0x80)) ++stats.acquired;
}

int64_t Status(Image& image, bool nullImage = false) {
  uint32_t value = 99, status = 0;
  const int32_t result = Run(kStatus, [&] {
    return host.plugin->acquireStatus(nullImage ? nullptr : &image.image(), &value, &status,
                                      host.system);
  });
  CheckStatus(kStatus, result, status);
  if (result != 0) return -1;
  if (value != ACQSTATUS_IDLE && value != ACQSTATUS_LIVE && value != ACQSTATUS_ACQUIRING) {
    Finding("undocumented acquisition status value");
  }
  return value;
}

void Attach(int32_t number) {
  Run(kAttach, [&] { return host.plugin->attach(host.system, number); });
}

void Detach(int32_t number) {
  Run(kDetach, [&] { return host.plugin->detach(host.system, number); });
}

void Order(Reader& in) {
  const uint8_t enabled = in.Byte();
  const uint8_t mode = in.Byte();
  const uint8_t corrupt = in.Byte();
  std::vector<CameraRecord> wanted(TAVRO_MAX_CAMERAS);
  for (int i = 0; i < TAVRO_MAX_CAMERAS; ++i) {
    CameraRecord& record = wanted[i];
    std::memcpy(record.szCamKey, host.system->tCam[i].szCamKey, sizeof record.szCamKey);
    record.yEnabled = (i < 8 && (enabled >> i) & 1) ? 1 : 0;
    switch (mode % 4) {
      case 0:
        record.iCamNum = i;
        break;  // identity
      case 1:
        record.iCamNum = i < kNumCameras ? (i + mode / 4) % kNumCameras : i;
        break;
      case 2:
        record.iCamNum = i < kNumCameras ? 0 : i;
        break;  // duplicates
      default:
        record.iCamNum = NumberFrom(static_cast<uint8_t>(mode + i));
        break;
    }
  }
  if (corrupt & 0x80) wanted[corrupt % TAVRO_MAX_CAMERAS].szCamKey[corrupt & 3] ^= 0x20;
  const int32_t result = Run(kOrder, [&] {
    return host.plugin->order(host.system,
                              (corrupt & 0x40) && (corrupt & 0x20) ? nullptr : wanted.data());
  });
  if (result != 0) Finding("order answered other than 0");
}

// Lets a running live acquisition deliver a few frames, checking the
// host's memory while the worker writes.
void LetLiveRun(Reader& in) {
  const int frames = 1 + in.Byte() % 4;
  // Only a live image with a display shows its frames.
  const SystemRecord& s = *host.system;
  const Image* live = s.yLive != 0 ? host.ImageOf(s.ptLiveImage) : nullptr;
  if (live == nullptr || (live->flags & kHasDisplay) != kHasDisplay) return;
  const auto started = std::chrono::steady_clock::now();
  const auto deadline = started + std::chrono::milliseconds(20);
  for (Image& image : host.images) image.ClearNewFrameFlag();
  int seen = 0;
  while (seen < frames && std::chrono::steady_clock::now() < deadline) {
    for (Image& image : host.images) {
      if (image.NewFrameFlag() != 0) {
        image.ClearNewFrameFlag();
        ++seen;
        ++stats.liveFrames;
      }
    }
    CheckMemory();
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  stats.liveSeconds +=
      std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
}

// Ends every fault the input armed. Unlike a reset of the simulator, this
// leaves the cameras' settings as the plug-in made them.
void ClearFaults() {
  for (const FuzzCamera& camera : kCameras) {
    OxelSim_ReplugCamera(camera.id);
    OxelSim_DropFrames(camera.id, 0);
    OxelSim_DelayFrames(camera.id, 0, 0);
    OxelSim_IncompleteFrames(camera.id, 0);
    OxelSim_FailStreamStarts(camera.id, 0, OXEL_RETURN_CODE_ERROR);
    for (const char* feature : kFeatures) {
      OxelSim_FailFeatureWrites(camera.id, feature, 0, OXEL_RETURN_CODE_SUCCESS);
    }
  }
}

void SimulatorFault(Reader& in) {
  const uint8_t kind = in.Byte();
  const uint8_t arg = in.Byte();
  const char* camera = kCameras[arg % kNumCameras].id;
  ++stats.faults;
  switch (kind % 10) {
    case 0:
      if (host.SlowFaultAllowed()) OxelSim_UnplugCamera(camera);
      break;
    case 1:
      OxelSim_ReplugCamera(camera);
      break;
    case 2:
      if (host.SlowFaultAllowed()) OxelSim_DropFrames(camera, 1);
      break;
    case 3:
      OxelSim_FailFeatureWrites(
          camera, kFeatures[in.Byte() % kNumFeatures], 1 + (arg >> 6),
          (arg & 0x20) ? OXEL_RETURN_CODE_OUT_OF_RANGE : OXEL_RETURN_CODE_BAD_ACCESS);
      break;
    case 6: {
      // Late frames: most well inside the frame time-out, rarely past it.
      const uint32_t delay = 1 + (arg >> 3) % 8;
      if (arg & 0x80 && host.SlowFaultAllowed()) {
        OxelSim_DelayFrames(camera, 1, 3100);
      } else {
        OxelSim_DelayFrames(camera, 1 + (arg & 1), delay);
      }
      break;
    }
    case 7:
      OxelSim_IncompleteFrames(camera, 1 + (arg >> 6));
      break;
    case 8:
      OxelSim_FailStreamStarts(camera, 1 + (arg >> 7),
                               (arg & 0x20) ? OXEL_RETURN_CODE_ERROR : OXEL_RETURN_CODE_BAD_ACCESS);
      break;
    case 4:
      OxelSim_PulseLine0(camera);
      break;
    default:
      ClearFaults();
      break;
  }
}

// The host writes a value it wants into the parameter table.
void SetParameter(Reader& in) {
  const int n = in.Byte() % kNumCameras;
  const int p = in.Byte() % TAVRO_NUM_PARAMS;
  const uint8_t how = in.Byte();
  ParameterEntry& entry = host.system->tCam[n].tParam[p];
  switch (how % 4) {
    case 0:
      entry.iCurrent = entry.iMinimum;
      break;
    case 1:
      entry.iCurrent = entry.iMaximum;
      break;
    case 2:
      entry.iCurrent = entry.iMinimum + (how >> 2) * entry.iIncrement;
      break;
    default:
      entry.iCurrent = in.Int();
      break;
  }
}

// The host changes fields of its own image between calls: camera id, AOI,
// magic, trigger and colour flags. Memory stays as described.
void ChangeImage(Reader& in) {
  Image& image = ImageFrom(in.Byte());
  const uint8_t field = in.Byte();
  const uint8_t value = in.Byte();
  CamImage& im = image.image();
  const bool live = host.system->yLive != 0 && host.system->ptLiveImage == &im;
  if (live && field % 6 == 0) host.hidLive = true;
  switch (field % 6) {
    case 0:
      image.info().iCamId = static_cast<int16_t>(NumberFrom(value));
      break;
    case 1:
      im.yAoi = value & 1;
      im.iAoiLeft = static_cast<int8_t>(in.Byte());
      im.iAoiTop = static_cast<int8_t>(in.Byte());
      im.iAoiRight = static_cast<int8_t>(in.Byte());
      im.iAoiBottom = static_cast<int8_t>(in.Byte());
      break;
    case 2:
      im.lMagic = (value & 1) ? TAVRO_IMAGE_MAGIC : value;
      break;
    case 3:
      image.info().yHwTrigger = value & 1;
      break;
    case 4:
      image.info().yColourPlanes = value & 1;
      break;
    default:
      im.qwColourDisplay = value & 1;
      break;
  }
  image.Remember();
}

// The host scribbles over fields the plug-in owns in the system record.
void Tamper(Reader& in) {
  const uint8_t field = in.Byte();
  const uint8_t value = in.Byte();
  SystemRecord& s = *host.system;
  // The next input then needs a fresh setup, so only some arguments act.
  if (field >= 0x20) return;
  // Live fields the plug-in no longer recognises can leave a worker taking
  // another request's frames, which then waits out its time-out.
  const bool liveField = field % 6 >= 2 && field % 6 <= 4;
  if (liveField && !host.SlowFaultAllowed()) return;
  host.tampered = true;
  switch (field % 6) {
    case 0:
      s.aiCamIndex[value % TAVRO_MAX_CAMERAS] = NumberFrom(in.Byte());
      break;
    case 1:
      s.tCam[value % TAVRO_MAX_CAMERAS].iCamNum = NumberFrom(in.Byte());
      break;
    case 2:
      s.yLive = value & 1;
      break;
    case 3:
      s.ptLiveImage = (value & 1) ? nullptr : &ImageFrom(value >> 1).image();
      break;
    case 4:
      s.iLiveCamNum = NumberFrom(value);
      break;
    default:
      s.lMagic = (value & 1) ? TAVRO_SYSTEM_MAGIC : 0;
      break;
  }
}

// Setup again or teardown: costly, so only on some arguments.
void Lifecycle(Reader& in) {
  const uint8_t what = in.Byte();
  if (what % 16 != 0) return;
  switch ((what >> 4) % 4) {
    case 0:
      TearDown();
      break;
    case 1:
      Setup(nullptr);
      break;
    case 2:
      Setup(kCameras[what % kNumCameras].key);
      break;
    default:
      Setup("no such camera");
      break;
  }
  host.reset = true;  // the cameras need not be the three fixed ones any more
}

void NullArguments(Reader& in) {
  uint32_t status = 0, value = 0;
  int size = 0;
  switch (in.Byte() % 6) {
    case 0:
      Run(kAcquire,
          [&] { return host.plugin->acquire(&host.images[0].image(), 1, 0, &status, nullptr); });
      break;
    case 1:
      Run(kStatus, [&] {
        return host.plugin->acquireStatus(&host.images[0].image(), nullptr, &status, host.system);
      });
      break;
    case 2:
      Run(kStatus,
          [&] { return host.plugin->acquireStatus(nullptr, &value, &status, host.system); });
      break;
    case 3:
      Run(kSetup, [&] { return host.plugin->setup(0, nullptr, &size, nullptr, host.system); });
      break;
    case 4:
      Run(kAttach, [&] { return host.plugin->attach(nullptr, 0); });
      break;
    default:
      Run(kTearDown, [&] { return host.plugin->tearDown(nullptr); });
      break;
  }
}

// ---- one input ----

// Brings the system back to three attached, idle cameras with the host's
// own camera ids, cheaply when the last input left it healthy.
void Normalise() {
  const SystemRecord& s = *host.system;
  bool healthy = host.setUp && !host.tampered && !host.reset && s.lMagic == TAVRO_SYSTEM_MAGIC &&
                 s.iNumCams == kNumCameras && s.yLive == 0;
  ClearFaults();
  if (healthy) {
    for (int n = 0; n < TAVRO_MAX_CAMERAS; ++n) {
      host.system->aiCamIndex[n] = n;
      host.cameraIndex[n] = n;
    }
    for (int n = 0; n < kNumCameras; ++n) {
      if (s.tSlot[n].yAttached == 0) Attach(n);
      if (s.tSlot[n].yAttached == 0) healthy = false;
    }
  }
  if (!healthy) FullReset();
  for (int n = 0; n < TAVRO_MAX_CAMERAS; ++n) {
    host.system->aiCamIndex[n] = n;
    host.cameraIndex[n] = n;
  }
}

// Ends everything that may still point into this input's memory: live runs
// and pending images. A worker whose live run the plug-in may have lost
// track of ends with its camera object.
void Quiesce() {
  SystemRecord& s = *host.system;
  const bool trusted = host.setUp && !host.tampered;
  if (trusted && s.yLive != 0 && host.ImageOf(s.ptLiveImage) != nullptr) {
    uint32_t status = 0;
    Run(kLive, [&] { return host.plugin->liveAcquire(s.ptLiveImage, 0, 0, &status, host.system); });
  }
  for (Image& image : host.images) {
    if (!trusted) break;
    if (Status(image) == ACQSTATUS_ACQUIRING) {
      uint32_t status = 0;
      Run(kWait,
          [&] { return host.plugin->waitAcquire(&image.image(), 0, 0, &status, host.system); });
    }
  }
  // An acquisition the host lost track of (no image maps to its camera any
  // more) ends with its camera object; the next input attaches it afresh.
  // Every other one was ended above, and the next input's images are new
  // memory, so a later write into these shows as a use after free. A camera
  // whose session the simulator ended stays: its next use must renew it.
  for (int32_t n = 0; n < TAVRO_MAX_CAMERAS; ++n) {
    if (!std::exchange(host.armed[n], false)) continue;
    if (s.tSlot[n].yAttached == 0 || host.hidLive || host.reset || !trusted) continue;
    bool mapped = false;
    for (Image& image : host.images) {
      const int32_t id = image.info().iCamId;
      mapped = mapped || (image.image().ptCamera != nullptr && id >= 0 && id < TAVRO_MAX_CAMERAS &&
                          s.aiCamIndex[id] == n);
    }
    if (!mapped) Detach(n);
  }
  if (host.hidLive || host.reset || !trusted) {
    for (int n = 0; n < TAVRO_MAX_CAMERAS; ++n) {
      if (s.tSlot[n].yAttached != 0) Detach(n);
    }
  }
}

// Calls per input: many, so that setting an input up costs little beside
// the calls themselves.
constexpr int kMaxOps = 256;

void RunInput(const uint8_t* data, size_t size) {
  ++stats.inputs;
  currentInput.assign(data, data + size);
  Normalise();
  Reader in(data, size);
  for (Image& image : host.images) {
    image.Build(in);
    if (trace) std::fprintf(stderr, "tavro-fuzz image %s\n", Describe(image).c_str());
  }
  host.hidLive = false;
  host.unpulsedTrigger = (size % 7 == 0) && host.SlowFaultAllowed();
  int lifecycleOps = 0;
  for (int op = 0; op < kMaxOps && !in.Empty(); ++op) {
    const int code = in.Byte() % 16;
    if (trace) std::fprintf(stderr, "tavro-fuzz op %d\n", code);
    switch (code) {
      case 0:
      case 1:
        Acquire(in);
        break;
      case 2:
        Live(in, true);
        break;
      case 3:
        Live(in, false);
        break;
      case 4:
        Wait(in);
        break;
      case 5: {
        const uint8_t which = in.Byte();
        Status(ImageFrom(which), which & 0x80);
        break;
      }
      case 6:
        Attach(NumberFrom(in.Byte()));
        break;
      case 7:
        Detach(NumberFrom(in.Byte()));
        break;
      case 8:
        Order(in);
        break;
      case 9:
        SimulatorFault(in);
        break;
      case 10:
        LetLiveRun(in);
        break;
      case 11:
        SetParameter(in);
        break;
      case 12:
        ChangeImage(in);
        break;
      case 13:
        Tamper(in);
        break;
      case 14:
        if (++lifecycleOps <= 2) Lifecycle(in);
        break;
      default:
        NullArguments(in);
        break;
    }
  }
  Quiesce();
  CheckMemory();
}

}  // namespace
}  // namespace tavro::fuzz

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  using namespace tavro::fuzz;
  // The plug-in's diagnostics would drown libFuzzer's own output.
  if (std::getenv("TAVRO_FUZZ_VERBOSE") == nullptr) {
    std::freopen("/dev/null", "w", stdout);
  }
  char pattern[] = "/tmp/tavro-fuzz-XXXXXX";
  if (mkdtemp(pattern) == nullptr) Finding("cannot make the producer directory");
  std::ofstream(std::string(pattern) + "/fuzz.cti") << kProducer;
  setenv("GENICAM_GENTL64_PATH", pattern, 1);
  host.plugin = &tavro_host::LoadPlugin();
  host.hostThread = std::this_thread::get_id();
  std::thread(Watchdog).detach();
  std::thread(Pulser).detach();
  std::atexit([] {
    PrintStats("done");
    std::error_code ignored;
    std::filesystem::remove_all(std::getenv("GENICAM_GENTL64_PATH"), ignored);
  });
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavro::fuzz::RunInput(data, size);
  return 0;
}
