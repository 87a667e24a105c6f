// The Oxel library over Aravis against plain Aravis loops on the same fake
// camera, frame size and picture, in the same run:
//  - free-running frames through our data stream (wait, queue again) against
//    Aravis's own pop/push loop: what our layer adds per frame;
//  - live through the plug-in with software triggers (tavro-host live on the
//    library) against a plain trigger/pop loop: what it adds per trigger.
// Frames per second are the items per second of each row.
#include <arv.h>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/gobject_ref.h"
#include "fake/test_picture.h"
#include "tests/conformance/oxel_library.h"

namespace {

using oxelarv::GRef;
using oxelarv::TestPicture;

constexpr int kFramesPerIteration = 100;
constexpr int kBuffers = 4;

void UseFakeCamera() {
  setenv("OXEL_LIBRARY_UNDER_TEST", TAVRO_BIN_DIR "/aravis/liboxel.so.1", 1);
  setenv("OXEL_ARAVIS_FAKE", "1", 1);
  arv_set_fake_camera_genicam_filename(TAVRO_BIN_DIR "/aravis/oxel-aravis-fake-camera.xml");
  arv_enable_interface("Fake");
}

void Check(GError* error) {
  if (error != nullptr) {
    const std::string message = error->message;
    g_error_free(error);
    throw std::runtime_error(message);
  }
}

// Aravis's fake camera opened directly, with the test picture.
struct PlainFake {
  GRef<ArvDevice> device;
  TestPicture picture;
  // Before the stream, so that the stream (and its thread) goes first.
  std::vector<std::unique_ptr<uint8_t[]>> memory;
  GRef<ArvStream> stream;

  PlainFake(int width, int height, const char* format, bool triggered) {
    UseFakeCamera();
    arv_update_device_list();
    GError* error = nullptr;
    device = GRef<ArvDevice>(arv_open_device("Fake_1", &error));
    Check(error);
    picture.Install(arv_fake_device_get_fake_camera(ARV_FAKE_DEVICE(device.get())));
    arv_device_set_integer_feature_value(device.get(), "Width", width, &error);
    Check(error);
    arv_device_set_integer_feature_value(device.get(), "Height", height, &error);
    Check(error);
    arv_device_set_string_feature_value(device.get(), "PixelFormat", format, &error);
    Check(error);
    arv_device_set_float_feature_value(device.get(), "AcquisitionFrameRate", 2000.0, &error);
    Check(error);
    arv_device_set_string_feature_value(device.get(), "TriggerMode", triggered ? "On" : "Off",
                                        &error);
    Check(error);
    arv_device_set_string_feature_value(device.get(), "TriggerSource", "Software", &error);
    Check(error);
    const gint64 payload =
        arv_device_get_integer_feature_value(device.get(), "PayloadSize", &error);
    Check(error);
    stream = GRef<ArvStream>(arv_device_create_stream(device.get(), nullptr, nullptr, &error));
    Check(error);
    for (int i = 0; i < kBuffers; ++i) {
      memory.push_back(std::make_unique<uint8_t[]>(size_t(payload)));
      arv_stream_push_buffer(stream.get(), arv_buffer_new(size_t(payload), memory.back().get()));
    }
    arv_device_execute_command(device.get(), "AcquisitionStart", &error);
    Check(error);
  }
  ~PlainFake() {
    arv_device_execute_command(device.get(), "AcquisitionStop", nullptr);
    picture.Remove();
  }

  // The next frame the camera sent (frames no trigger asked for go back).
  void NextFrame() {
    for (;;) {
      ArvBuffer* buffer = arv_stream_timeout_pop_buffer(stream.get(), 2000000);
      if (buffer == nullptr) throw std::runtime_error("no frame within 2 s");
      const bool frame = arv_buffer_get_frame_id(buffer) != TestPicture::kUntriggered;
      arv_stream_push_buffer(stream.get(), buffer);
      if (frame) return;
    }
  }
};

void BM_AravisFreeRunningPlainLoop(benchmark::State& state) {
  PlainFake fake(int(state.range(0)), int(state.range(1)), "Mono8", false);
  for (auto _ : state) {
    for (int k = 0; k < kFramesPerIteration; ++k) fake.NextFrame();
  }
  state.SetItemsProcessed(state.iterations() * kFramesPerIteration);
}

void BM_AravisFreeRunningThroughOurLibrary(benchmark::State& state) {
  UseFakeCamera();
  const conformance::Functions& oxel = conformance::Oxel();
  conformance::OpenedCamera camera;
  camera.SetInteger("Width", state.range(0));
  camera.SetInteger("Height", state.range(1));
  OXEL_FLOAT_NODE rate = nullptr;
  oxel.OXEL_Node_ToFloatNode(camera.Node("AcquisitionFrameRate"), &rate);
  if (oxel.OXEL_FloatNode_SetValue(rate, 2000.0) != 0 ||
      camera.SetEntry("TriggerMode", "Off") != 0) {
    state.SkipWithError(conformance::LastErrorText().c_str());
    return;
  }
  size_t payload = 0;
  oxel.OXEL_DataStream_GetPayloadSize(camera.stream, &payload);
  for (int i = 0; i < kBuffers; ++i) {
    OXEL_BUFFER buffer = nullptr;
    oxel.OXEL_DataStream_AllocAndAnnounceBuffer(camera.stream, payload, nullptr, &buffer);
    oxel.OXEL_DataStream_QueueBuffer(camera.stream, buffer);
  }
  oxel.OXEL_DataStream_StartAcquisition(camera.stream, OXEL_ACQUISITION_START_MODE_DEFAULT,
                                        OXEL_INFINITE_NUMBER);
  camera.Execute("AcquisitionStart");
  for (auto _ : state) {
    for (int k = 0; k < kFramesPerIteration; ++k) {
      OXEL_BUFFER buffer = nullptr;
      if (oxel.OXEL_DataStream_WaitForFinishedBuffer(camera.stream, 2000, &buffer) != 0) {
        state.SkipWithError("no frame within 2 s");
        return;
      }
      oxel.OXEL_DataStream_QueueBuffer(camera.stream, buffer);
    }
  }
  state.SetItemsProcessed(state.iterations() * kFramesPerIteration);
  camera.StopCamera();
}

void BM_AravisTriggeredPlainLoop(benchmark::State& state) {
  PlainFake fake(2048, 2048, "BGR8", true);
  GError* error = nullptr;
  for (auto _ : state) {
    for (int k = 0; k < kFramesPerIteration; ++k) {
      arv_device_execute_command(fake.device.get(), "TriggerSoftware", &error);
      Check(error);
      fake.NextFrame();
    }
  }
  state.SetItemsProcessed(state.iterations() * kFramesPerIteration);
}

// tavro-host live on the library over Aravis (the plug-in binds one camera
// library per process, so it runs as a program): its own frame rate.
void BM_AravisLiveThroughThePlugin(benchmark::State& state) {
  const std::string command = std::string("env -u GENICAM_GENTL64_PATH OXEL_ARAVIS_FAKE=1 ") +
                              TAVRO_BIN_DIR "/tavro-host -q --camera-library " TAVRO_BIN_DIR
                                            "/aravis/liboxel.so.1 live --frames " +
                              std::to_string(kFramesPerIteration) + " -o /dev/null 2>/dev/null";
  double seconds = 0;
  int64_t frames = 0;
  for (auto _ : state) {
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
      state.SkipWithError("cannot run tavro-host");
      return;
    }
    char line[512];
    int delivered = 0;
    double took = 0;
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
      std::sscanf(line, "Live on camera 0 (Fake): %d frames delivered in %lf s", &delivered, &took);
    }
    pclose(pipe);
    if (delivered == 0 || took <= 0) {
      state.SkipWithError("tavro-host live reported no frames");
      return;
    }
    frames += delivered;
    seconds += took;
  }
  state.counters["frames_per_second"] = benchmark::Counter(double(frames) / seconds);
}

}  // namespace

BENCHMARK(BM_AravisFreeRunningPlainLoop)->Args({512, 512})->Args({1936, 1216})->UseRealTime();
BENCHMARK(BM_AravisFreeRunningThroughOurLibrary)
    ->Args({512, 512})
    ->Args({1936, 1216})
    ->UseRealTime();
BENCHMARK(BM_AravisTriggeredPlainLoop)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AravisLiveThroughThePlugin)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
