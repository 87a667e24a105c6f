// The built plug-in as a host meets it: loaded with dlopen, entry points
// found by name, records allocated as raw bytes and read back at the byte
// offsets the host is compiled against.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
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
  int64_t Signed(size_t offset, size_t width) const {
    int64_t value = 0;
    std::memcpy(&value, bytes.data() + offset, width);
    const int unused = 64 - 8 * static_cast<int>(width);
    return static_cast<int64_t>(static_cast<uint64_t>(value) << unused) >> unused;
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

// Integer fields at their byte offsets: {offset, width, value}.
struct Field {
  size_t offset, width;
  int64_t value;
};
struct Range {
  size_t offset, size;
};

void ExpectFields(const RawRecord& record, size_t base, const std::vector<Field>& fields,
                  const std::vector<Range>& untouched) {
  for (const Field& field : fields) {
    EXPECT_EQ(record.Signed(base + field.offset, field.width), field.value) << "+" << field.offset;
  }
  for (const Range& range : untouched) {
    EXPECT_TRUE(record.Untouched(base + range.offset, range.size)) << "+" << range.offset;
  }
}

TEST(PluginAbi, SetupWritesTheInitialValuesAndNothingElse) {
  ASSERT_NE(Plugin(), nullptr) << dlerror();
  RawRecord record;
  std::memcpy(record.bytes.data(), "H8)0", 4);  // a magic left from an earlier setup
  int width = -7;
  int height = -7;
  // With no producer to find cameras through, setup fails after bringing
  // the records to their initial state, and leaves the sizes alone.
  const std::string producers = std::getenv("GENICAM_GENTL64_PATH");
  setenv("GENICAM_GENTL64_PATH", "/nonexistent/tavro-producers", 1);
  CaptureStdout();
  EXPECT_EQ(Entry<PFN_kxTavroSetup>("kxTavroSetup")(0, "", &width, &height, record.get()), -1);
  EXPECT_EQ(GetCapturedStdout(), "No Tavro cameras connected\n");
  setenv("GENICAM_GENTL64_PATH", producers.c_str(), 1);
  EXPECT_EQ(width + height, -14);

  // The magic, the camera count, live flag, image and number, the selection.
  ExpectFields(record, 0, {{0, 4, 0}, {8, 4, 0}, {16, 4, 0}, {24, 8, 0}, {32, 4, -1}, {56, 8, 0}},
               {{4, 4}, {40, 16}, {64, 4}, {77508, 4}});
  for (size_t n = 0; n < 16; ++n) {
    SCOPED_TRACE("camera " + std::to_string(n));
    EXPECT_EQ(record.Signed(68 + 4 * n, 4), -1) << "map entry";
    // Key, format count, the cleared word, parameter count, number, sizes,
    // colour, enabled; the key past its first byte, formats, parameters and
    // geometry stay the host's.
    ExpectFields(record, 132 + 4836 * n,
                 {{0, 1, 0},
                  {64, 4, 0},
                  {3012, 4, 0},
                  {3016, 4, 0},
                  {4816, 4, -1},
                  {4820, 4, 640},
                  {4824, 4, 480},
                  {4828, 4, 0},
                  {4832, 4, 0}},
                 {{1, 62}, {68, 2944}, {3020, 1796}});
    // Attached, re-apply, colour, the i64 at 136, live, camera object.
    const size_t slot = 77512 + 160 * n;
    ExpectFields(record, slot,
                 {{0, 4, 0}, {4, 4, 1}, {132, 4, 0}, {136, 8, -1}, {144, 4, 0}, {152, 8, 0}},
                 {{56, 76}});
    const double doubles[] = {-1.0, 1.0, 0.0, 0.0, 1.0, 4.0};
    for (size_t i = 0; i < 6; ++i) EXPECT_EQ(record.At<double>(slot + 8 + 8 * i), doubles[i]);
  }

  // Without the magic every call with a status word fails on it.
  CameraInfo info{};
  CamImage image{};
  image.lMagic = TAVRO_IMAGE_MAGIC;
  image.ptCamera = &info;
  uint32_t status = 0;
  EXPECT_EQ(Entry<PFN_kxTavroAcquire>("kxTavroAcquire")(&image, 1, 0, &status, record.get()), -1);
  EXPECT_EQ(status, ACQERR_NO_SYSTEM);
  uint32_t value = 99;
  EXPECT_EQ(Entry<PFN_kxTavroAcquireStatus>("kxTavroAcquireStatus")(&image, &value, &status,
                                                                    record.get()),
            -1);
  EXPECT_EQ(status, ACQERR_NO_IMAGE);
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

}  // namespace
