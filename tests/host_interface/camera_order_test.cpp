// _kxTavroOrder: a wanted configuration that does not fit the cameras
// changes nothing; one that fits detaches, attaches and re-maps; an
// acquisition that cannot be ended stops the work where it is.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "host_records.h"
#include "oxel/core/device_manager.h"
#include "oxel/core/library.h"

namespace tavro::testing {
namespace {

using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;
using Wanted = std::array<CameraRecord, TAVRO_MAX_CAMERAS>;

struct Expected {
  std::array<uint32_t, 3> attached;  // slots 0 to 2 afterwards
  bool remapped;                     // aiCamIndex taken from the wanted records
  int detachLines;
  bool reattachTried = false;  // announces itself before it looks for the camera
};

struct Row {
  const char* what;
  std::function<void(HostRecords&, Wanted&)> arrange;
  Expected expected;
};

void Want(Wanted& wanted, int32_t i, const char* key, int32_t number) {
  std::strcpy(wanted[i].szCamKey, key);
  wanted[i].iCamNum = number;
  wanted[i].yEnabled = 1;
}

TEST(CameraOrder, AppliesOnlyAFittingConfiguration) {
  const Expected unchanged{{1, 1, 0}, false, 0};
  const std::vector<Row> rows = {
      {"two wanted records on one number",
       [](HostRecords&, Wanted& w) {
         Want(w, 0, "M1", 0);
         Want(w, 1, "M2-Left", 0);
       },
       unchanged},
      {"key differs", [](HostRecords&, Wanted& w) { Want(w, 0, "M1x", 0); }, unchanged},
      {"key is a prefix", [](HostRecords&, Wanted& w) { Want(w, 0, "M", 0); }, unchanged},
      {"no camera known there", [](HostRecords&, Wanted& w) { Want(w, 3, "", 3); }, unchanged},
      {"number outside the table", [](HostRecords&, Wanted& w) { Want(w, 0, "M1", 16); },
       unchanged},
      {"nothing wanted", [](HostRecords&, Wanted&) {}, {{0, 0, 0}, true, 2}},
      {"one kept, one dropped, ids swapped",
       [](HostRecords&, Wanted& w) {
         Want(w, 1, "M2-Left", 0);
         w[0].iCamNum = 1;
       },
       {{0, 1, 0}, true, 1}},
      // Camera 2 cannot be re-attached: the detach before it stays done.
      {"a detached camera wanted",
       [](HostRecords& h, Wanted& w) {
         std::strcpy(h.system->tCam[2].szCamKey, "M3");
         Want(w, 2, "M3", 2);
         Want(w, 0, "M1", 0);
       },
       {{1, 0, 0}, false, 1, true}},
      {"live image unusable",
       [](HostRecords& h, Wanted&) {
         h.system->yLive = 1;
         h.system->ptLiveImage = nullptr;
       },
       unchanged},
      // Live is stopped first; then nothing wanted detaches both.
      {"live running",
       [](HostRecords& h, Wanted&) {
         h.system->yLive = 1;
         h.system->ptLiveImage = &h.image;
       },
       {{0, 0, 0}, true, 2}},
      {"acquisition without its image",
       [](HostRecords&, Wanted&) { host_interface::tTavroCamAcq[1].yAcquiring = 1; }, unchanged},
  };

  // Re-attach looks for the camera among the listed cameras.
  oxel::Library::Initialize();
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    HostRecords host;
    host.Attach(0, "M1", true);
    host.Attach(1, "M2-Left");
    Wanted wanted{};
    for (int32_t i = 0; i < TAVRO_MAX_CAMERAS; ++i) wanted[i].iCamNum = 15 - i;
    row.arrange(host, wanted);
    const std::array<int32_t, TAVRO_MAX_CAMERAS> mapBefore = std::to_array(host.system->aiCamIndex);

    CaptureStdout();
    EXPECT_EQ(_kxTavroOrder(host.system.get(), wanted.data()), 0);
    const std::string out = GetCapturedStdout();

    std::string detachLines;
    for (int i = 0; i < row.expected.detachLines; ++i)
      detachLines += "_kxDetachTavroCamera() called\n";
    if (row.expected.reattachTried) {
      // A camera object is made before its key is looked for.
      detachLines +=
          "_kxTavroReattachAndInit: Number of cameras at startup = 0\n"
          "Acquire thread started.\n";
    }
    EXPECT_EQ(out, detachLines);
    EXPECT_EQ(host.system->yLive, 0u) << "live is stopped or forgotten before anything else";
    for (int32_t n = 0; n < 3; ++n) {
      EXPECT_EQ(host.system->tSlot[n].yAttached, row.expected.attached[n]) << "slot " << n;
    }
    for (int32_t i = 0; i < TAVRO_MAX_CAMERAS; ++i) {
      const int32_t expected = row.expected.remapped ? wanted[i].iCamNum : mapBefore[i];
      EXPECT_EQ(host.system->aiCamIndex[i], expected) << "id " << i;
    }
  }
  oxel::Library::Close();
  oxel::core::DeviceManager::Instance().Reset(true);
}

TEST(CameraOrder, UnusableImagesAreForgotten) {
  HostRecords host;
  host.Attach(0, "M1");
  host.system->yLive = 1;
  host.system->ptLiveImage = nullptr;
  Wanted wanted{};
  EXPECT_EQ(_kxTavroOrder(host.system.get(), wanted.data()), 0);
  EXPECT_EQ(host.system->yLive, 0u);

  CamImage stale{};  // magic gone: the host has dropped the image
  host_interface::tTavroCamAcq[0].yAcquiring = 1;
  host_interface::tTavroCamAcq[0].ptCamImage = &stale;
  EXPECT_EQ(_kxTavroOrder(host.system.get(), wanted.data()), 0);
  EXPECT_EQ(host_interface::tTavroCamAcq[0].yAcquiring, 0u);
  EXPECT_EQ(host.system->tSlot[0].yAttached, 1u) << "the work ended before any detach";
}

}  // namespace
}  // namespace tavro::testing
