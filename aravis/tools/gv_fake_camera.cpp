// oxel-aravis-gv-fake: a GigE Vision camera on a network interface of this
// machine (the loopback by default), made of Aravis's GigE Vision fake camera
// with our GenICam description and test picture. Real GVCP and GVSP packets
// over UDP, for testing the Aravis library end to end; it runs until
// SIGINT or SIGTERM.
//
//   oxel-aravis-gv-fake [--interface NAME] [--serial TEXT]
#include <arv.h>
#include <glib-unix.h>

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "core/gobject_ref.h"
#include "core/library.h"
#include "fake/test_picture.h"

namespace {

gboolean Quit(gpointer loop) {
  g_main_loop_quit(static_cast<GMainLoop*>(loop));
  return G_SOURCE_REMOVE;
}

// The process that started this one; when it is gone (a test that was
// killed), so is the camera.
pid_t starter = 0;

gboolean QuitWithoutStarter(gpointer loop) {
  if (getppid() == starter) return G_SOURCE_CONTINUE;
  g_main_loop_quit(static_cast<GMainLoop*>(loop));
  return G_SOURCE_REMOVE;
}

}  // namespace

int main(int argc, char** argv) {
  std::string interfaceName = "lo";
  std::string serial = "GV01";
  for (int i = 1; i < argc; ++i) {
    const std::string option = argv[i];
    if ((option == "--interface" || option == "--serial") && i + 1 < argc) {
      (option == "--interface" ? interfaceName : serial) = argv[++i];
    } else {
      std::fprintf(stderr, "usage: oxel-aravis-gv-fake [--interface NAME] [--serial TEXT]\n");
      return 2;
    }
  }
  const std::string genicam = oxelarv::Library::FakeCameraGenicamPath();
  oxelarv::GRef<ArvGvFakeCamera> camera(
      arv_gv_fake_camera_new_full(interfaceName.c_str(), serial.c_str(), genicam.c_str()));
  if (!camera || !arv_gv_fake_camera_is_running(camera.get())) {
    std::fprintf(stderr, "oxel-aravis-gv-fake: cannot start on interface %s\n",
                 interfaceName.c_str());
    return 1;
  }
  ArvFakeCamera* fake = arv_gv_fake_camera_get_fake_camera(camera.get());
  // It looks for a software trigger once per frame period: 100 frames per
  // second rather than Aravis's 25 answer a trigger sooner.
  arv_fake_camera_write_register(fake, ARV_FAKE_CAMERA_REGISTER_ACQUISITION_FRAME_PERIOD_US, 10000);
  oxelarv::TestPicture picture;
  // The GigE Vision fake answers software triggers itself.
  picture.Install(fake, oxelarv::TestPicture::Triggers::kCameraAnswers);
  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
  g_unix_signal_add(SIGINT, Quit, loop);
  g_unix_signal_add(SIGTERM, Quit, loop);
  starter = getppid();
  g_timeout_add(200, QuitWithoutStarter, loop);
  std::printf("GigE Vision fake camera Aravis-Fake-%s on %s\n", serial.c_str(),
              interfaceName.c_str());
  std::fflush(stdout);
  g_main_loop_run(loop);
  picture.Remove();
  g_main_loop_unref(loop);
  return 0;
}
