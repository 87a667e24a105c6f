// The built plug-in as a host meets it: loaded with dlopen, entry points
// found by name, records allocated as raw bytes and read back at the byte
// offsets the host is compiled against.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "tavro/tavro_host.h"

namespace {

using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;

constexpr const char* kPluginPath = TAVRO_BIN_DIR "/libtavro.so";

// Loaded once and kept for the process: a host does not unload it either.
void* Plugin() {
  static void* handle = dlopen(kPluginPath, RTLD_NOW | RTLD_LOCAL);
  return handle;
}

template <typename Function>
Function Entry(const char* name) {
  return reinterpret_cast<Function>(dlsym(Plugin(), name));
}

// A host's SystemRecord: bytes it filled with its own pattern, the
// selection pointer null as the host hands it in.
struct RawRecord {
  static constexpr std::byte kHostByte{0xAB};
  std::vector<std::byte> bytes = std::vector<std::byte>(80072, kHostByte);
  RawRecord() { std::memset(bytes.data() + 56, 0, 8); }
  SystemRecord* get() { return reinterpret_cast<SystemRecord*>(bytes.data()); }

  template <typename T>
  T At(size_t offset) const {
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
  }
  bool Untouched(size_t offset, size_t size) const {
    for (size_t i = offset; i < offset + size; ++i) {
      if (bytes[i] != kHostByte) return false;
    }
    return true;
  }
};

TEST(PluginAbi, ExportsExactlyTheNineEntryPoints) {
  ASSERT_NE(Plugin(), nullptr) << dlerror();
  const std::set<std::string> expected = {
      "kxTavroSetup",         "kxTavroAcquire",       "kxTavroLiveAcquire",
      "kxTavroWaitAcquire",   "kxTavroAcquireStatus", "_kxTavroOrder",
      "_kxAttachTavroCamera", "_kxDetachTavroCamera", "kxTavroTearDown"};
  for (const auto& name : expected) EXPECT_NE(dlsym(Plugin(), name.c_str()), nullptr) << name;

  const std::string command = std::string("nm -D --defined-only ") + kPluginPath;
  FILE* pipe = popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::set<std::string> exported;
  char line[512];
  while (std::fgets(line, sizeof line, pipe) != nullptr) {
    char address[64], kind[8], name[400];
    if (std::sscanf(line, "%63s %7s %399s", address, kind, name) == 3) exported.insert(name);
  }
  ASSERT_EQ(pclose(pipe), 0) << command;
  EXPECT_EQ(exported, expected);
}

TEST(PluginAbi, SetupWritesTheInitialValuesAndNothingElse) {
  ASSERT_NE(Plugin(), nullptr) << dlerror();
  RawRecord record;
  std::memcpy(record.bytes.data(), "H8)0", 4);  // a magic left from an earlier setup
  int width = -7;
  int height = -7;
  // No camera can be listed yet, so setup fails after bringing the records
  // to their initial state.
  EXPECT_EQ(Entry<PFN_kxTavroSetup>("kxTavroSetup")(0, "", &width, &height, record.get()), -1);
  EXPECT_EQ(width, -7);
  EXPECT_EQ(height, -7);

  EXPECT_EQ(record.At<uint32_t>(0), 0u);
  EXPECT_EQ(record.At<int32_t>(8), 0);
  EXPECT_EQ(record.At<uint32_t>(16), 0u);
  EXPECT_EQ(record.At<void*>(24), nullptr);
  EXPECT_EQ(record.At<int32_t>(32), -1);
  EXPECT_EQ(record.At<void*>(56), nullptr) << "an empty selection is not copied";
  EXPECT_TRUE(record.Untouched(4, 4));
  EXPECT_TRUE(record.Untouched(40, 16)) << "callback and display tag are the host's";
  EXPECT_TRUE(record.Untouched(64, 4)) << "lError";
  EXPECT_TRUE(record.Untouched(77508, 4));

  for (size_t n = 0; n < 16; ++n) {
    SCOPED_TRACE("camera " + std::to_string(n));
    EXPECT_EQ(record.At<int32_t>(68 + 4 * n), -1);
    const size_t cam = 132 + 4836 * n;
    EXPECT_EQ(record.At<char>(cam), '\0');
    EXPECT_TRUE(record.Untouched(cam + 1, 62)) << "only the key's first byte";
    EXPECT_EQ(record.At<int32_t>(cam + 64), 0);
    EXPECT_TRUE(record.Untouched(cam + 68, 2944)) << "format entries";
    EXPECT_EQ(record.At<uint32_t>(cam + 3012), 0u);
    EXPECT_EQ(record.At<int32_t>(cam + 3016), 0);
    EXPECT_TRUE(record.Untouched(cam + 3020, 1748 + 48)) << "parameters and geometry";
    EXPECT_EQ(record.At<int32_t>(cam + 4816), -1);
    EXPECT_EQ(record.At<int32_t>(cam + 4820), 640);
    EXPECT_EQ(record.At<int32_t>(cam + 4824), 480);
    EXPECT_EQ(record.At<uint32_t>(cam + 4828), 0u);
    EXPECT_EQ(record.At<uint32_t>(cam + 4832), 0u);

    const size_t slot = 77512 + 160 * n;
    EXPECT_EQ(record.At<uint32_t>(slot), 0u);
    EXPECT_EQ(record.At<uint32_t>(slot + 4), 1u);
    EXPECT_EQ(record.At<double>(slot + 8), -1.0);
    const double hostValues[] = {1.0, 0.0, 0.0, 1.0, 4.0};
    for (size_t i = 0; i < 5; ++i) EXPECT_EQ(record.At<double>(slot + 16 + 8 * i), hostValues[i]);
    EXPECT_TRUE(record.Untouched(slot + 56, 76)) << "applied values";
    EXPECT_EQ(record.At<uint32_t>(slot + 132), 0u);
    EXPECT_EQ(record.At<int64_t>(slot + 136), -1);
    EXPECT_EQ(record.At<uint32_t>(slot + 144), 0u);
    EXPECT_EQ(record.At<void*>(slot + 152), nullptr);
  }
  EXPECT_EQ(Entry<PFN_kxTavroTearDown>("kxTavroTearDown")(record.get()), 0);
}

TEST(PluginAbi, AfterAFailedSetupEveryCallFailsOnTheMagic) {
  ASSERT_NE(Plugin(), nullptr) << dlerror();
  RawRecord record;
  int size = 0;
  ASSERT_EQ(Entry<PFN_kxTavroSetup>("kxTavroSetup")(0, nullptr, &size, &size, record.get()), -1);
  CameraInfo info{};
  CamImage image{};
  image.lMagic = TAVRO_IMAGE_MAGIC;
  image.ptCamera = &info;

  uint32_t status = 0xFFFFFFFFu;
  EXPECT_EQ(Entry<PFN_kxTavroAcquire>("kxTavroAcquire")(&image, 1, 0, &status, record.get()), -1);
  EXPECT_EQ(status, ACQERR_NO_SYSTEM);
  status = 0xFFFFFFFFu;
  EXPECT_EQ(
      Entry<PFN_kxTavroLiveAcquire>("kxTavroLiveAcquire")(&image, 1, 0, &status, record.get()), -1);
  EXPECT_EQ(status, ACQERR_NO_SYSTEM);
  status = 0xFFFFFFFFu;
  EXPECT_EQ(
      Entry<PFN_kxTavroWaitAcquire>("kxTavroWaitAcquire")(&image, 0, 0, &status, record.get()), -1);
  EXPECT_EQ(status, ACQERR_NO_SYSTEM);
  status = 0xFFFFFFFFu;
  uint32_t value = 99;
  EXPECT_EQ(Entry<PFN_kxTavroAcquireStatus>("kxTavroAcquireStatus")(&image, &value, &status,
                                                                    record.get()),
            -1);
  EXPECT_EQ(status, ACQERR_NO_IMAGE);
  EXPECT_EQ(value, 99u);
  EXPECT_EQ(Entry<PFN_kxTavroTearDown>("kxTavroTearDown")(record.get()), 0);
}

TEST(PluginAbi, SetupAndTeardownCyclesOwnTheSelectionCopy) {
  ASSERT_NE(Plugin(), nullptr) << dlerror();
  auto setup = Entry<PFN_kxTavroSetup>("kxTavroSetup");
  auto tearDown = Entry<PFN_kxTavroTearDown>("kxTavroTearDown");
  RawRecord record;
  int size = 0;
  for (int cycle = 0; cycle < 3; ++cycle) {
    const char selection[] = "M1-Left;M2";
    EXPECT_EQ(setup(0, selection, &size, &size, record.get()), -1);
    EXPECT_EQ(setup(0, selection, &size, &size, record.get()), -1) << "frees the first copy";
    const char* copy = record.At<const char*>(56);
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, selection);
    EXPECT_STREQ(copy, selection);
    CaptureStdout();
    EXPECT_EQ(tearDown(record.get()), 0);
    EXPECT_EQ(GetCapturedStdout(), "") << "no camera was attached";
    EXPECT_EQ(record.At<const char*>(56), nullptr);
  }
  CaptureStdout();
  EXPECT_EQ(tearDown(nullptr), -1);
  EXPECT_EQ(GetCapturedStdout(), "kxTavroTearDown sent NULL pointer\n");
}

TEST(PluginAbi, NullPointersAreRefusedWithoutACrash) {
  ASSERT_NE(Plugin(), nullptr) << dlerror();
  RawRecord record;
  CamImage image{};
  int size = 0;
  uint32_t value = 0;
  EXPECT_EQ(Entry<PFN_kxTavroSetup>("kxTavroSetup")(0, nullptr, &size, &size, nullptr), -1);
  EXPECT_EQ(Entry<PFN_kxTavroAcquire>("kxTavroAcquire")(nullptr, 1, 0, nullptr, nullptr), -1);
  EXPECT_EQ(Entry<PFN_kxTavroLiveAcquire>("kxTavroLiveAcquire")(&image, 1, 0, nullptr, nullptr),
            -1);
  EXPECT_EQ(Entry<PFN_kxTavroWaitAcquire>("kxTavroWaitAcquire")(&image, 0, 0, nullptr, nullptr),
            -1);
  EXPECT_EQ(Entry<PFN_kxTavroAcquireStatus>("kxTavroAcquireStatus")(nullptr, &value, &value,
                                                                    record.get()),
            -1);
  EXPECT_EQ(value, ACQERR_NO_IMAGE) << "status word written, status value not";
  EXPECT_EQ(Entry<PFN_kxTavroOrder>("_kxTavroOrder")(nullptr, nullptr), 0);
  EXPECT_EQ(Entry<PFN_kxTavroOrder>("_kxTavroOrder")(record.get(), nullptr), 0);
  EXPECT_EQ(Entry<PFN_kxAttachTavroCamera>("_kxAttachTavroCamera")(nullptr, 0), -1);
  EXPECT_EQ(Entry<PFN_kxDetachTavroCamera>("_kxDetachTavroCamera")(nullptr, 0), -1);
  EXPECT_TRUE(record.Untouched(0, 4));
}

}  // namespace
