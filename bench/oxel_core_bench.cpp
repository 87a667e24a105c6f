// What the camera layer adds to a call into the C library: the checked call
// on success against the bare call through the table, a feature look-up and
// read as the plug-in makes them, and the cost of a failure that becomes an
// exception.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

#include "oxel/core/core.h"

namespace {

using namespace oxel::core;

// The library started once, with the bundled producer files, and one camera
// opened.
struct Camera {
  Camera() {
    setenv("GENICAM_GENTL64_PATH", TAVRO_SOURCE_DIR "/sim/producers", 0);
    oxel::Library::Initialize();
    DeviceManager::Instance().Update(DeviceManager::UpdatePolicy::ScanEnvironment, {});
    device = DeviceManager::Instance().Devices().at(0)->OpenDevice(OXEL_DEVICE_ACCESS_TYPE_CONTROL);
    nodeMap = device->RemoteDevice()->NodeMaps().at(0);
  }
  std::shared_ptr<Device> device;
  std::shared_ptr<NodeMap> nodeMap;
};

Camera& TheCamera() {
  static Camera camera;
  return camera;
}

void BM_BareCall(benchmark::State& state) {
  TheCamera();
  const OxelFunctions& api = Api();
  for (auto _ : state) {
    OXEL_BOOL8 initialized = 0;
    benchmark::DoNotOptimize(api.OXEL_Library_IsInitialized(&initialized));
    benchmark::DoNotOptimize(initialized);
  }
}
BENCHMARK(BM_BareCall);

void BM_CheckedQuery(benchmark::State& state) {
  TheCamera();
  for (auto _ : state) {
    benchmark::DoNotOptimize(QueryValue<OXEL_BOOL8>(
        [](OXEL_BOOL8* out) { return Api().OXEL_Library_IsInitialized(out); }));
  }
}
BENCHMARK(BM_CheckedQuery);

void BM_FindNodeAndReadValue(benchmark::State& state) {
  const auto& nodeMap = TheCamera().nodeMap;
  for (auto _ : state) {
    benchmark::DoNotOptimize(nodeMap->FindNode<nodes::IntegerNode>("Width")->Value());
  }
}
BENCHMARK(BM_FindNodeAndReadValue);

void BM_FailedLookUpAsException(benchmark::State& state) {
  const auto& nodeMap = TheCamera().nodeMap;
  for (auto _ : state) {
    try {
      nodeMap->FindNode("NoSuchFeature");
    } catch (const NotFoundException& error) {
      benchmark::DoNotOptimize(error.what());
    }
  }
}
BENCHMARK(BM_FailedLookUpAsException);

}  // namespace
